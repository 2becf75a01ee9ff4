// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/messagecapture.h"

#include <QMutexLocker>

MessageCapture* MessageCapture::s_current = nullptr;

MessageCapture::MessageCapture()
{
    s_current = this;
    m_previousHandler = qInstallMessageHandler(record);
}

MessageCapture::~MessageCapture()
{
    qInstallMessageHandler(m_previousHandler);
    s_current = nullptr;
}

std::vector<MessageCapture::Message> MessageCapture::messages() const
{
    const QMutexLocker locker(&m_mutex);
    return m_messages;
}

QStringList MessageCapture::texts() const
{
    QStringList result;
    for (const Message& message : messages())
        result.append(message.text);
    return result;
}

QStringList MessageCapture::texts(QtMsgType type) const
{
    QStringList result;
    for (const Message& message : messages()) {
        if (message.type == type)
            result.append(message.text);
    }
    return result;
}

void MessageCapture::record(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
{
    const QMutexLocker locker(&s_current->m_mutex);
    s_current->m_messages.push_back({type, text});
}
