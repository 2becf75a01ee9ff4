// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMutex>
#include <QString>
#include <QStringList>

#include <vector>

/// Records what goes to Qt's message output while the object lives. One at a time; any thread may log.
class MessageCapture
{
public:
    struct Message
    {
        QtMsgType type;
        QString text;
    };

    MessageCapture();
    ~MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    std::vector<Message> messages() const;

    /// The messages' texts alone.
    QStringList texts() const;

    /// The texts of one severity.
    QStringList texts(QtMsgType type) const;

private:
    static void record(QtMsgType type, const QMessageLogContext& context, const QString& text);

    static MessageCapture* s_current;

    mutable QMutex m_mutex;
    std::vector<Message> m_messages;
    QtMessageHandler m_previousHandler;
};
