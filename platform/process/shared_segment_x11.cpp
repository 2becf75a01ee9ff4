// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/private_files.h"
#include "platform/process/shared_segment.h"
#include "platform/system_failure.h"

#include <QFile>
#include <QFileInfo>
#include <QList>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

/// QSharedMemory numbers its segments with it.
constexpr int kProject = 'Q';
constexpr int kUserOnly = S_IRUSR | S_IWUSR;

QSharedMemory::SharedMemoryError meaningOf(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return QSharedMemory::PermissionDenied;
    case EEXIST:
        return QSharedMemory::AlreadyExists;
    case ENOENT:
        return QSharedMemory::NotFound;
    case ENOMEM:
    case ENOSPC:
        return QSharedMemory::OutOfResources;
    default:
        return QSharedMemory::UnknownError;
    }
}

/// Anyone can leave something in a public folder, and takes it away again.
bool isOfAnotherUser(const QByteArray& path)
{
    struct stat status = {};
    return lstat(path.constData(), &status) == 0 && status.st_uid != geteuid();
}

} // namespace

struct SharedSegment::Private
{
    /// The system makes the segment's number from the file's.
    QByteArray keyFile;
    /// Where Qt has it.
    QByteArray sharedKeyFile;
    QString ownFolder;
    key_t number = -1;
    int id = -1;
    void* memory = nullptr;
    QSharedMemory::SharedMemoryError error = QSharedMemory::NoError;
    QString errorString;

    QList<QByteArray> keyFiles() const;
    void take(const QByteArray& file) { keyFile = file; }
    key_t numberOfFile() const { return ftok(keyFile.constData(), kProject); }
    bool find();
    bool isAnotherUsers();
    bool make(qsizetype size);
    bool map();
    bool fail(int code = errno);
    shmid_ds status() const;
};

/// In the order in which they are tried.
QList<QByteArray> SharedSegment::Private::keyFiles() const
{
    if (ownFolder.isEmpty())
        return {sharedKeyFile};
    const QString name = QFileInfo(QFile::decodeName(sharedKeyFile)).fileName();
    return {sharedKeyFile, QFile::encodeName(ownFolder + u'/' + name)};
}

/// Not what another user made.
bool SharedSegment::Private::find()
{
    if (isOfAnotherUser(keyFile))
        return fail(EPERM);
    number = numberOfFile();
    id = number == -1 ? -1 : shmget(number, 0, kUserOnly);
    if (id == -1)
        return fail();
    const ipc_perm permissions = status().shm_perm;
    return (permissions.uid == geteuid() && permissions.cuid == geteuid()) || fail(EPERM);
}

/// Whether the file of the key, or the segment that belongs to it, is.
bool SharedSegment::Private::isAnotherUsers()
{
    return isOfAnotherUser(keyFile) || (numberOfFile() != -1 && !find() && error == QSharedMemory::PermissionDenied);
}

bool SharedSegment::Private::make(qsizetype size)
{
    if (keyFile != sharedKeyFile && !makePrivateFolder(ownFolder))
        return fail(EACCES);
    const int file = open(keyFile.constData(), O_RDONLY | O_CREAT | O_EXCL | O_CLOEXEC, kUserOnly);
    if (file < 0 && errno != EEXIST)
        return fail();
    if (file >= 0)
        close(file);
    number = numberOfFile();
    id = number == -1 ? -1 : shmget(number, static_cast<std::size_t>(size), IPC_CREAT | IPC_EXCL | kUserOnly);
    if (id != -1)
        return map();
    fail();
    if (file >= 0 && error != QSharedMemory::AlreadyExists)
        unlink(keyFile.constData());
    return false;
}

bool SharedSegment::Private::map()
{
    void* const address = shmat(id, nullptr, 0);
    if (reinterpret_cast<std::intptr_t>(address) == -1)
        return fail();
    memory = address;
    return true;
}

bool SharedSegment::Private::fail(int code)
{
    error = meaningOf(code);
    errorString = systemErrorText(static_cast<unsigned long>(code));
    return false;
}

shmid_ds SharedSegment::Private::status() const
{
    shmid_ds status = {};
    shmctl(id, IPC_STAT, &status);
    return status;
}

SharedSegment::SharedSegment(const QString& key, const QString& ownFolder) : m_private(std::make_unique<Private>())
{
    m_private->sharedKeyFile = QFile::encodeName(QSharedMemory(key).nativeKey());
    m_private->ownFolder = ownFolder;
}

SharedSegment::~SharedSegment()
{
    detach();
}

bool SharedSegment::attach()
{
    if (isAttached())
        return false;
    for (const QByteArray& file : m_private->keyFiles())
        if (m_private->take(file); m_private->find())
            return m_private->map();
    return false;
}

bool SharedSegment::create(qsizetype size)
{
    if (isAttached())
        return false;
    for (const QByteArray& file : m_private->keyFiles())
        if (m_private->take(file); m_private->find())
            return m_private->fail(EEXIST);
    for (const QByteArray& file : m_private->keyFiles())
        if (m_private->take(file); !m_private->isAnotherUsers())
            return m_private->make(size);
    return m_private->fail(EPERM);
}

void SharedSegment::detach()
{
    if (!isAttached())
        return;
    shmdt(m_private->memory);
    m_private->memory = nullptr;
    if (m_private->status().shm_nattch > 0 || shmctl(m_private->id, IPC_RMID, nullptr) != 0)
        return;
    // A file that was removed and made again is another segment's.
    if (m_private->numberOfFile() == m_private->number)
        unlink(m_private->keyFile.constData());
}

bool SharedSegment::isAttached() const
{
    return m_private->memory != nullptr;
}

bool SharedSegment::isOfOwnFolder() const
{
    return isAttached() && m_private->keyFile != m_private->sharedKeyFile;
}

QSharedMemory::SharedMemoryError SharedSegment::error() const
{
    return m_private->error;
}

QString SharedSegment::errorString() const
{
    return m_private->errorString;
}

bool SharedSegment::read(void* destination, qsizetype size)
{
    if (m_private->status().shm_segsz < static_cast<std::size_t>(size))
        return false;
    std::memcpy(destination, m_private->memory, static_cast<std::size_t>(size));
    return true;
}

void SharedSegment::write(const void* source, qsizetype size)
{
    std::memcpy(m_private->memory, source, static_cast<std::size_t>(size));
}

} // namespace platform
