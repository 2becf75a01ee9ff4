// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/shared_segment.h"
#include "platform/system_failure.h"

#include <QFile>

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
constexpr mode_t kFileMode = S_IRUSR | S_IWUSR | S_IRGRP;
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

} // namespace

struct SharedSegment::Private
{
    /// The system makes the segment's number from this file's.
    QByteArray keyFile;
    key_t number = -1;
    int id = -1;
    void* memory = nullptr;
    QSharedMemory::SharedMemoryError error = QSharedMemory::NoError;
    QString errorString;

    key_t numberOfFile() const { return ftok(keyFile.constData(), kProject); }
    bool find(qsizetype size, int flags);
    bool map();
    bool fail();
    shmid_ds status() const;
};

/// @param flags of shmget(), which finds or makes the segment.
bool SharedSegment::Private::find(qsizetype size, int flags)
{
    number = numberOfFile();
    id = number == -1 ? -1 : shmget(number, static_cast<std::size_t>(size), flags | kUserOnly);
    return id != -1 || fail();
}

bool SharedSegment::Private::map()
{
    void* const address = shmat(id, nullptr, 0);
    if (reinterpret_cast<std::intptr_t>(address) == -1)
        return fail();
    memory = address;
    return true;
}

bool SharedSegment::Private::fail()
{
    const int code = errno;
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

SharedSegment::SharedSegment(const QString& key) : m_private(std::make_unique<Private>())
{
    m_private->keyFile = QFile::encodeName(QSharedMemory(key).nativeKey());
}

SharedSegment::~SharedSegment()
{
    detach();
}

bool SharedSegment::attach()
{
    return !isAttached() && m_private->find(0, 0) && m_private->map();
}

bool SharedSegment::create(qsizetype size)
{
    if (isAttached())
        return false;
    const QByteArray& path = m_private->keyFile;
    const int file = open(path.constData(), O_RDONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
    if (file < 0 && errno != EEXIST)
        return m_private->fail();
    if (file >= 0)
        close(file);
    if (m_private->find(size, IPC_CREAT | IPC_EXCL))
        return m_private->map();
    if (file >= 0 && error() != QSharedMemory::AlreadyExists)
        unlink(path.constData());
    return false;
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
