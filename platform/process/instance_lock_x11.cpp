// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/instance_lock.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

/// Beside the file from which Qt derives the segment's key: instances with different temporary folders have different
/// segments. Users who share a temporary folder cannot share a lock, hence the user's id in the name.
QByteArray lockPath(const QString& name)
{
    return QFile::encodeName(QDir::tempPath() + u'/' + name + u'-' + QString::number(geteuid()) +
                             QLatin1String(".lock"));
}

/// Anyone can leave a file in a public temporary folder: only a plain file of the user's own is locked.
bool isOwnPlainFile(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

int openLockFile(const QString& name)
{
    // Closed on exec: a browser that the program starts must not go on holding the lock.
    const int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const int descriptor = open(lockPath(name).constData(), flags, S_IRUSR | S_IWUSR);
    if (descriptor < 0 || isOwnPlainFile(descriptor))
        return descriptor;
    close(descriptor);
    return -1;
}

} // namespace

InstanceLock::InstanceLock(const QString& name) : m_name(name) {}

InstanceLock::~InstanceLock()
{
    release();
}

InstanceLock::State InstanceLock::tryLock()
{
    if (m_descriptor >= 0)
        return State::Acquired;
    const int descriptor = openLockFile(m_name);
    if (descriptor < 0)
        return State::Unavailable;
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        m_descriptor = descriptor;
        return State::Acquired;
    }
    const bool heldByAnother = errno == EWOULDBLOCK;
    close(descriptor);
    return heldByAnother ? State::HeldByAnother : State::Unavailable;
}

void InstanceLock::release()
{
    if (m_descriptor < 0)
        return;
    // Not left to closing: a process that is just being started may still have the descriptor.
    flock(m_descriptor, LOCK_UN);
    close(m_descriptor);
    m_descriptor = -1;
}

} // namespace platform
