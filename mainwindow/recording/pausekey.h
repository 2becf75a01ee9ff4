// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class Hotkeys;
class RecordingSession;

namespace platform {
class GlobalHotkey;
}

/// Shift with the recording's hotkey pauses a recording and goes on with it. Other programs have that key while nothing
/// is recorded. User-interface thread.
class PauseKey : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object.
    PauseKey(QObject* parent, RecordingSession& session, const Hotkeys& hotkeys);

private:
    void follow();
    void take();
    void toggle();

    RecordingSession& m_session;
    const Hotkeys& m_hotkeys;
    platform::GlobalHotkey* const m_key;
    bool m_isTaken = false;
};
