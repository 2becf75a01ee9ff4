// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Blocks one of libobs' streams (video or audio) between two of its items.
///
/// libobs calls the listeners of a stream one after the other on one thread: while that waits in pass(), no other
/// listener is being called. Any thread; several may close the gate, which is open again when each has opened it.
class StreamGate
{
public:
    /// From the stream: waits while the gate is closed.
    void pass();

    void close();
    /// Undoes one close().
    void open();

    /// Whether the stream waits in pass(); false when it does not within the time.
    bool waitUntilBlocked(std::chrono::milliseconds limit);

    /// While set, nothing waits, neither in pass() nor for it: the stream is being disconnected.
    void setBypassed(bool bypassed);

private:
    bool isClosed() const { return m_closers > 0 && !m_bypassed; }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Guarded by m_mutex.
    int m_closers = 0;
    bool m_bypassed = false;
    bool m_blocked = false;
};
