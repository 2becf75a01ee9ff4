// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <functional>

class Notices;
class RecordingSession;

namespace platform {
class GlobalHotkey;
}

/// Shift with the recording's hotkey pauses a recording and goes on with it. Other programs have that key while nothing
/// is recorded. One that cannot be had is reported in a notice. User-interface thread.
class PauseKey : public QObject
{
    Q_OBJECT

public:
    /// All else must outlive this object.
    /// @param recordingKey empty where there is none
    PauseKey(QObject* parent, RecordingSession& session, Notices& notices, std::function<QString()> recordingKey);

signals:
    /// The one that pauses now, empty where there is none.
    void keyChanged(const QString& key);

private:
    void follow();
    void take();
    void toggle();
    void onAvailabilityChanged(bool available, const QString& reason);
    void report(const QString& reason);

    RecordingSession& m_session;
    Notices& m_notices;
    std::function<QString()> m_recordingKey;
    platform::GlobalHotkey* const m_key;
    bool m_isWanted = false;
    QString m_name;
    /// The text that was last posted.
    QString m_reported;
};
