// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingclock.h"

RecordingClock::RecordingClock(QObject* parent, int tickMs) : QObject(parent), m_tickMs(tickMs)
{
    m_timer.setInterval(m_tickMs);
    connect(&m_timer, &QTimer::timeout, this, &RecordingClock::onTimeout);
}

void RecordingClock::setRunning(bool running)
{
    m_running = running;
    m_remainingMs = -1;
    if (running)
        m_timer.start(m_tickMs);
    else
        m_timer.stop();
}

void RecordingClock::setPaused(bool paused)
{
    if (!m_running || paused == (m_remainingMs >= 0))
        return;
    if (paused) {
        m_remainingMs = qMax(0, m_timer.remainingTime());
        m_timer.stop();
    } else {
        m_timer.start(m_remainingMs);
        m_remainingMs = -1;
    }
}

void RecordingClock::onTimeout()
{
    // The second that a pause has cut is over.
    if (m_timer.interval() != m_tickMs)
        m_timer.start(m_tickMs);
    emit tick();
}
