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

struct SharedSegment::Private
{
    QSharedMemory memory;

    /// Closes the handle, which Qt keeps of a segment that exists already or cannot be locked, and with it the segment.
    void forget()
    {
        const QString key = memory.key();
        memory.setKey(QString());
        memory.setKey(key);
    }
};

SharedSegment::SharedSegment(const QString& key, const QString& /*ownFolder*/) : m_private(std::make_unique<Private>())
{
    m_private->memory.setKey(key);
}

SharedSegment::~SharedSegment() = default;

bool SharedSegment::attach()
{
    return m_private->memory.attach();
}

bool SharedSegment::create(qsizetype size)
{
    if (isAttached())
        return false;
    if (m_private->memory.create(size))
        return true;
    m_private->forget();
    return false;
}

void SharedSegment::detach()
{
    if (!isAttached() || m_private->memory.detach())
        return;
    reportFailure(errorString());
    m_private->forget();
}

bool SharedSegment::isAttached() const
{
    return m_private->memory.isAttached();
}

bool SharedSegment::isOfOwnFolder() const
{
    return false;
}

QSharedMemory::SharedMemoryError SharedSegment::error() const
{
    return m_private->memory.error();
}

QString SharedSegment::errorString() const
{
    return m_private->memory.errorString();
}

bool SharedSegment::read(void* destination, qsizetype size)
{
    QSharedMemory& memory = m_private->memory;
    if (memory.size() < size)
        return false;
    const SegmentLocker locker(memory);
    std::memcpy(destination, memory.constData(), static_cast<std::size_t>(size));
    return true;
}

void SharedSegment::write(const void* source, qsizetype size)
{
    const SegmentLocker locker(m_private->memory);
    std::memcpy(m_private->memory.data(), source, static_cast<std::size_t>(size));
}

} // namespace platform
