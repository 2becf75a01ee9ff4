// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"

#include <QObject>
#include <QTimer>

/// Ticks once a second of recorded time. A pause keeps the part of the second that has passed.
class RecordingClock : public QObject
{
    Q_OBJECT

public:
    explicit RecordingClock(QObject* parent, int tickMs = Durations().clockTickMs);

    void setRunning(bool running);
    /// Ignored while the clock does not run.
    void setPaused(bool paused);

signals:
    void tick();

private:
    void onTimeout();

    QTimer m_timer;
    int m_tickMs;
    bool m_running = false;
    /// Of the second that a pause has interrupted; -1 while not paused.
    int m_remainingMs = -1;
};
