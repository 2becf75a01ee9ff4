#include "platform/shared_segment.h"

#include <QSharedMemory>
#include <QString>

#include <cstring>

namespace platform {

void nameSegment(QSharedMemory& segment, const QString& key)
{
    // A segment that is named by its native key is one whose access the toolkit leaves to the caller.
    segment.setNativeKey(QSharedMemory(key).nativeKey());
}

void readSegment(QSharedMemory& segment, void* destination, qsizetype size)
{
    std::memcpy(destination, segment.constData(), static_cast<std::size_t>(size));
}

void writeSegment(QSharedMemory& segment, const void* source, qsizetype size)
{
    std::memcpy(segment.data(), source, static_cast<std::size_t>(size));
}

} // namespace platform
