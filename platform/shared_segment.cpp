#include "platform/shared_segment.h"

#include <utility>

namespace platform {

SharedSegment::SharedSegment(QString key) : m_key(std::move(key)), m_memory(makeMemory(m_key)) {}

bool SharedSegment::attach()
{
    return noteResult(m_memory->attach());
}

bool SharedSegment::create(qsizetype size)
{
    if (noteResult(m_memory->create(size)))
        return true;
    // Without the toolkit's lock, an object that once failed to make its segment takes that for an error of the lock
    // from then on, and can do nothing any more (seen in Qt 6.4).
    m_memory = makeMemory(m_key);
    return false;
}

void SharedSegment::detach()
{
    m_memory->detach();
}

bool SharedSegment::noteResult(bool succeeded)
{
    m_error = m_memory->error();
    m_errorString = m_memory->errorString();
    return succeeded;
}

} // namespace platform
