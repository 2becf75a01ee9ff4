// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/shared_segment.h"
#include "platform/system_failure.h"

#include <cstring>

namespace platform {

namespace {

/// The segment's own lock for as long as the object lives. Where it cannot be had the segment is used without: of its
/// few bytes a half-written number names no window, and nothing else hangs on them.
class SegmentLocker
{
public:
    explicit SegmentLocker(QSharedMemory& memory) : m_memory(memory), m_isLocked(memory.lock())
    {
        if (!m_isLocked)
            reportFailure(QStringLiteral("The shared memory cannot be locked: %1").arg(memory.errorString()));
    }
    ~SegmentLocker()
    {
        if (m_isLocked && !m_memory.unlock())
            reportFailure(QStringLiteral("The shared memory cannot be unlocked: %1").arg(m_memory.errorString()));
    }
    SegmentLocker(const SegmentLocker&) = delete;
    SegmentLocker& operator=(const SegmentLocker&) = delete;

private:
    QSharedMemory& m_memory;
    bool m_isLocked;
};

} // namespace

std::unique_ptr<QSharedMemory> SharedSegment::makeMemory(const QString& key)
{
    return std::make_unique<QSharedMemory>(key);
}

bool SharedSegment::read(void* destination, qsizetype size)
{
    if (m_memory->size() < size)
        return false;
    const SegmentLocker locker(*m_memory);
    std::memcpy(destination, m_memory->constData(), static_cast<std::size_t>(size));
    return true;
}

void SharedSegment::write(const void* source, qsizetype size)
{
    const SegmentLocker locker(*m_memory);
    std::memcpy(m_memory->data(), source, static_cast<std::size_t>(size));
}

} // namespace platform
