// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDeadlineTimer>
#include <QThread>

/// Blocks the thread until the condition holds or the deadline expires, looking every millisecond. For what takes
/// milliseconds and nobody signals.
/// @return whether the condition holds
template <typename Condition>
bool waitUntil(Condition condition, QDeadlineTimer deadline)
{
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(1);
    }
    return true;
}
