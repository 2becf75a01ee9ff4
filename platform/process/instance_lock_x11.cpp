// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/private_files.h"
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

/// Users who share a folder cannot share a lock, hence the user's id in the name.
QByteArray lockPath(const QString& folder, const QString& name)
{
    return QFile::encodeName(folder + u'/' + name + u'-' + QString::number(geteuid()) + QLatin1String(".lock"));
}

bool isOwnPlainFile(const struct stat& status)
{
    return S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

/// -1 where it is not the user's own: anyone can leave something in a public folder.
int openOwnFile(const QByteArray& path)
{
    // Closed on exec: a browser that the program starts must not go on holding the lock.
    const int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const int descriptor = open(path.constData(), flags, S_IRUSR | S_IWUSR);
    struct stat status = {};
    if (descriptor < 0 || (fstat(descriptor, &status) == 0 && isOwnPlainFile(status)))
        return descriptor;
    close(descriptor);
    return -1;
}

bool isSomethingElse(const QByteArray& path)
{
    struct stat status = {};
    return lstat(path.constData(), &status) == 0 && !isOwnPlainFile(status);
}

} // namespace

InstanceLock::InstanceLock(const QString& name, const QString& ownFolder) : m_name(name), m_ownFolder(ownFolder) {}

InstanceLock::~InstanceLock()
{
    release();
}

/// Beside the file from which Qt derives the segment's key: instances with different temporary folders have different
/// segments.
int InstanceLock::openFile()
{
    const QByteArray path = lockPath(QDir::tempPath(), m_name);
    const int descriptor = openOwnFile(path);
    m_isInOwnFolder = descriptor < 0 && !m_ownFolder.isEmpty() && isSomethingElse(path);
    if (!m_isInOwnFolder || !makePrivateFolder(m_ownFolder))
        return descriptor;
    return openOwnFile(lockPath(m_ownFolder, m_name));
}

InstanceLock::State InstanceLock::tryLock()
{
    if (m_descriptor >= 0)
        return State::Acquired;
    const int descriptor = openFile();
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
