// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/pausekey.h"

#include "app/sclogger.h"
#include "mainwindow/hotkeys.h"
#include "mainwindow/recording/recordingsession.h"
#include "platform/input/global_hotkey.h"

#include <QKeySequence>

using platform::GlobalHotkey;

PauseKey::PauseKey(QObject* parent, RecordingSession& session, const Hotkeys& hotkeys)
    : QObject(parent), m_session(session), m_hotkeys(hotkeys), m_key(new GlobalHotkey(this))
{
    connect(&m_session, &RecordingSession::stateChanged, this, &PauseKey::follow);
    connect(m_key, &GlobalHotkey::activated, this, &PauseKey::toggle);
}

void PauseKey::follow()
{
    const RecordingState state = m_session.state();
    const bool isWanted = state == RecordingState::Recording || state == RecordingState::Paused;
    if (isWanted && !m_isTaken) {
        take();
    } else if (!isWanted && m_isTaken) {
        m_key->registerKey({});
        m_isTaken = false;
    }
}

void PauseKey::take()
{
    const QString key = m_hotkeys.recordingKey();
    if (key.isEmpty())
        return;
    m_isTaken = m_key->registerKey(QKeySequence(QLatin1String("Shift+") + key, QKeySequence::PortableText));
    // The bar pauses all the same.
    if (!m_isTaken)
        SCLogger::warning(
            QStringLiteral("The hotkey \"Shift+%1\" cannot be used: %2").arg(key, m_key->failureReason()));
}

void PauseKey::toggle()
{
    m_session.setPaused(m_session.state() != RecordingState::Paused);
}
