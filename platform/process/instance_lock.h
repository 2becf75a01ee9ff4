// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace platform {

/// A lock that ends with its process (docs/single-instance.md): flock on a file on X11 systems. Not needed on Windows.
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

    /// @param ownFolder where the lock file is when another user's has its name in the folder for temporary files;
    /// empty
    ///                  where there is none
    explicit InstanceLock(const QString& name, const QString& ownFolder = {});
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// Never waits.
    State tryLock();

    /// The lock file stays: if it were removed, two instances could lock two files of that name.
    void release();

    /// Of the last tryLock().
    bool isInOwnFolder() const { return m_isInOwnFolder; }

private:
    int openFile();

    QString m_name;
    QString m_ownFolder;
    bool m_isInOwnFolder = false;
    int m_descriptor = -1;
};

} // namespace platform
