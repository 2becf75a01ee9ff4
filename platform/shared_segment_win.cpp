#include "platform/shared_segment.h"

#include <cstring>

namespace platform {

std::unique_ptr<QSharedMemory> SharedSegment::makeMemory(const QString& key)
{
    return std::make_unique<QSharedMemory>(key);
}

bool SharedSegment::isKeyUnused() const
{
    return false;
}

bool SharedSegment::renumber()
{
    return false;
}

bool SharedSegment::read(void* destination, qsizetype size)
{
    if (m_memory->size() < size)
        return false;
    m_memory->lock();
    std::memcpy(destination, m_memory->constData(), static_cast<std::size_t>(size));
    m_memory->unlock();
    return true;
}

void SharedSegment::write(const void* source, qsizetype size)
{
    m_memory->lock();
    std::memcpy(m_memory->data(), source, static_cast<std::size_t>(size));
    m_memory->unlock();
}

} // namespace platform
