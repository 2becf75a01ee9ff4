#include "platform/shared_segment.h"

#include <QFile>
#include <QTemporaryFile>

#include <cstdio>
#include <cstring>
#include <sys/ipc.h>

namespace platform {

namespace {

/// As the toolkit numbers the segment whose key stands for that file.
key_t numberOf(const QString& keyFile)
{
    return ftok(QFile::encodeName(keyFile).constData(), 'Q');
}

/// Puts a file of another number in the place of the one that the number is made of. Both are there for a moment, so
/// that they are two; their numbers may agree all the same in the bits that count.
bool replaceKeyFile(const QString& keyFile)
{
    QTemporaryFile next(keyFile + QLatin1String("-XXXXXX"));
    if (!next.open() || numberOf(next.fileName()) == numberOf(keyFile))
        return false;
    if (std::rename(QFile::encodeName(next.fileName()).constData(), QFile::encodeName(keyFile).constData()) != 0)
        return false;
    next.setAutoRemove(false);
    return true;
}

} // namespace

std::unique_ptr<QSharedMemory> SharedSegment::makeMemory(const QString& key)
{
    // A segment that is named by its native key is one whose access the toolkit leaves to the caller.
    auto memory = std::make_unique<QSharedMemory>();
    memory->setNativeKey(QSharedMemory(key).nativeKey());
    return memory;
}

bool SharedSegment::isKeyUnused() const
{
    return !QFile::exists(m_memory->nativeKey());
}

bool SharedSegment::renumber()
{
    return replaceKeyFile(m_memory->nativeKey());
}

bool SharedSegment::read(void* destination, qsizetype size)
{
    if (m_memory->size() < size)
        return false;
    std::memcpy(destination, m_memory->constData(), static_cast<std::size_t>(size));
    return true;
}

void SharedSegment::write(const void* source, qsizetype size)
{
    std::memcpy(m_memory->data(), source, static_cast<std::size_t>(size));
}

} // namespace platform
