#include "platform/shared_segment.h"

#include <QSharedMemory>

#include <cstring>

namespace platform {

void nameSegment(QSharedMemory& segment, const QString& key)
{
    segment.setKey(key);
}

void readSegment(QSharedMemory& segment, void* destination, qsizetype size)
{
    segment.lock();
    std::memcpy(destination, segment.constData(), static_cast<std::size_t>(size));
    segment.unlock();
}

void writeSegment(QSharedMemory& segment, const void* source, qsizetype size)
{
    segment.lock();
    std::memcpy(segment.data(), source, static_cast<std::size_t>(size));
    segment.unlock();
}

} // namespace platform
