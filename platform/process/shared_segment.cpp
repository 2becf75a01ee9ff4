// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/shared_segment.h"

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
    forget();
    return false;
}

void SharedSegment::detach()
{
    m_memory->detach();
    forget();
}

void SharedSegment::forget()
{
    // In Qt 6.4 an object without Qt's lock that once made its segment, or tried to, fails from then on.
    m_memory = makeMemory(m_key);
}

bool SharedSegment::noteResult(bool succeeded)
{
    if (succeeded)
        return true;
    m_error = m_memory->error();
    m_errorString = m_memory->errorString();
    return false;
}

} // namespace platform
