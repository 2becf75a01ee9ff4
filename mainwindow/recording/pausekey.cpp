// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/pausekey.h"

#include "app/sclogger.h"
#include "mainwindow/hotkeys.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/recording/recordingsession.h"
#include "platform/input/global_hotkey.h"

#include <QKeySequence>

#include <utility>

using platform::GlobalHotkey;

PauseKey::PauseKey(QObject* parent, RecordingSession& session, Notices& notices, std::function<QString()> recordingKey)
    : QObject(parent)
    , m_session(session)
    , m_notices(notices)
    , m_recordingKey(std::move(recordingKey))
    , m_key(new GlobalHotkey(this))
{
    connect(&m_session, &RecordingSession::stateChanged, this, &PauseKey::follow);
    connect(m_key, &GlobalHotkey::activated, this, &PauseKey::toggle);
    connect(m_key, &GlobalHotkey::availabilityChanged, this, &PauseKey::onAvailabilityChanged);
}

void PauseKey::follow()
{
    const RecordingState state = m_session.state();
    const bool isWanted = state == RecordingState::Recording || state == RecordingState::Paused;
    if (std::exchange(m_isWanted, isWanted) == isWanted)
        return;
    if (isWanted) {
        take();
        return;
    }
    m_key->registerKey({});
    emit keyChanged({});
}

void PauseKey::take()
{
    const QString key = m_recordingKey();
    if (key.isEmpty())
        return;
    m_name = QLatin1String("Shift+") + key;
    const bool isTaken = m_key->registerKey(QKeySequence(m_name, QKeySequence::PortableText));
    emit keyChanged(isTaken ? m_name : QString());
    if (isTaken)
        m_reported.clear();
    else
        report(m_key->failureReason());
}

void PauseKey::toggle()
{
    m_session.setPaused(m_session.state() != RecordingState::Paused);
}

void PauseKey::onAvailabilityChanged(bool available, const QString& reason)
{
    emit keyChanged(available ? m_name : QString());
    if (!available) {
        report(reason);
        return;
    }
    SCLogger::info(QStringLiteral("The hotkey \"%1\" works again").arg(m_name));
    m_reported.clear();
}

/// The bar pauses all the same: in a notice once, not with every recording.
void PauseKey::report(const QString& reason)
{
    SCLogger::warning(QStringLiteral("The hotkey \"%1\" cannot be used: %2").arg(m_name, reason));
    const QString text = Hotkeys::unusableText(m_name);
    if (std::exchange(m_reported, text) != text)
        m_notices.post({.text = text, .isOfTheMoment = true});
}
