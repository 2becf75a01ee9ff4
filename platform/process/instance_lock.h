#pragma once

#include <QString>

namespace platform {

/// A lock that cannot outlive the copy of the program that holds it. Held for life it proves that the owner of a shared
/// segment is alive; held for a moment it keeps other copies from the segment without ever being left shut.
///
/// On Windows a segment goes with the last process that holds it, so nothing needs proving and tryLock() says
/// NotNeeded. On X11 systems a segment stays behind when its owner is killed; there the lock is an advisory lock
/// (flock) on a file, which the kernel drops with the process, however it ends. A lock file with the owner's process id
/// in it would not do: ids are used again, and between being made and being filled in it proves nothing. What clears
/// away old temporary files may take that file from a copy that runs for many days; a lock of the same name is free
/// then.
class InstanceLock
{
public:
    enum class State
    {
        NotNeeded,     ///< the system leaves no stale segments behind
        Acquired,      ///< this object holds the lock
        HeldByAnother, ///< another copy is alive
        Unavailable,   ///< the lock file cannot be made; the caller does without the proof
    };

    /// @param name names the lock, as the segment's key names the segment.
    explicit InstanceLock(const QString& name);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// Takes the lock if it is free; never waits. Acquired again at once by the object that holds it.
    State tryLock();

    /// Gives the lock back. Harmless when it is not held. The lock file stays: removing it would let two copies each
    /// hold the lock of a file of the same name.
    void release();

private:
    QString m_name;
    int m_descriptor = -1;
};

} // namespace platform
