// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Blocks one of libobs' streams (video or audio) in a raw callback: libobs calls all listeners of a stream on one
/// thread. Any thread; several may close the gate.
class StreamGate
{
public:
    /// In the callback: waits while the gate is closed.
    void pass();

    void close();
    /// Undoes one close().
    void open();

    /// False when the stream does not wait in pass() within the limit.
    bool waitUntilBlocked(std::chrono::milliseconds limit);

    /// While set, nothing waits: the stream is being disconnected.
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
