// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"

#include <QObject>
#include <QTimer>

/// Ticks once a second while a recording runs. A pause keeps the part of the second that has passed.
class RecordingClock : public QObject
{
    Q_OBJECT

public:
    explicit RecordingClock(QObject* parent, int tickMs = Durations().clockTickMs);

    /// Starts with a whole second, or stops.
    void setRunning(bool running);
    /// Ignored by a clock that does not run.
    void setPaused(bool paused);

signals:
    void tick();

private:
    void onTimeout();

    QTimer m_timer;
    int m_tickMs;
    bool m_running = false;
    /// Of the second in which the clock was paused; -1 while it is not paused.
    int m_remainingMs = -1;
};
