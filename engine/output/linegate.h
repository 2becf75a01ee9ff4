#pragma once

#include <condition_variable>
#include <mutex>

/// A gate on one of libobs' lines (the picture's or the sound's), through which each item passes before the line goes
/// on.
///
/// A line calls its listeners one after the other on a thread of its own: while it waits at this gate, no other
/// listener of the line is being called. Thread-safe; several may close it, and it is open again when the last of them
/// has opened it.
class LineGate
{
public:
    /// From the line: waits while the gate is closed.
    void pass();

    /// From elsewhere: the next item will wait.
    void close();

    /// After close(): whether the line waits at the gate; false when none came within the time.
    bool waitUntilHeld(int timeoutMs);

    /// Undoes one close(); the last one lets the line go on.
    void open();

    /// While set, nothing waits at the gate, and nobody waits for it: the line is being taken down.
    void setBypassed(bool bypassed);

private:
    bool isShut() const { return m_closers > 0 && !m_bypassed; }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_closers = 0;
    bool m_bypassed = false;
    bool m_held = false;
};
