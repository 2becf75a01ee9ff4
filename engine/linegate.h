#pragma once

#include <condition_variable>
#include <mutex>

/// A gate on one of libobs' lines (the picture's or the sound's), through which each item passes before the line goes
/// on.
///
/// A line calls its listeners one after the other on a thread of its own: while it waits at this gate, no other
/// listener of the line is being called. Thread-safe.
class LineGate
{
public:
    /// From the line: waits while the gate is closed.
    void pass();

    /// From elsewhere: the next item will wait.
    void close();

    /// After close(): whether the line waits at the gate; false when none came within the time.
    bool waitUntilHeld(int timeoutMs);

    /// Lets the line go on.
    void open();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_closed = false;
    bool m_held = false;
};
