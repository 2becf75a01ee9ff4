// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/shared_segment.h"

#include <cstring>

namespace platform {

std::unique_ptr<QSharedMemory> SharedSegment::makeMemory(const QString& key)
{
    // Qt makes no lock for a segment that is named by its native key.
    auto memory = std::make_unique<QSharedMemory>();
    memory->setNativeKey(QSharedMemory(key).nativeKey());
    return memory;
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
