// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace platform {

/// A lock that cannot outlive the process that holds it (docs/single-instance.md). On X11 systems an advisory lock
/// (flock) on a file, which the kernel drops with the process, however that ends. On Windows nothing has to be proven.
class InstanceLock
{
public:
    enum class State
    {
        NotNeeded,     ///< the system leaves no stale segments behind
        Acquired,      ///< this object holds the lock
        HeldByAnother, ///< another instance is alive
        Unavailable,   ///< the lock file cannot be made; the caller does without the proof
    };

    explicit InstanceLock(const QString& name);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// Takes the lock if it is free; never waits. Acquired again at once by the object that holds it.
    State tryLock();

    /// Harmless when it is not held. The lock file stays: with it removed, two instances could each hold the lock of a
    /// file of the same name.
    void release();

private:
    QString m_name;
    int m_descriptor = -1;
};

} // namespace platform
