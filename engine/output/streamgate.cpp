// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/streamgate.h"

void StreamGate::pass()
{
    std::unique_lock lock(m_mutex);
    if (!isClosed())
        return;
    m_blocked = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !isClosed(); });
    m_blocked = false;
}

void StreamGate::close()
{
    const std::lock_guard lock(m_mutex);
    ++m_closers;
}

void StreamGate::open()
{
    {
        const std::lock_guard lock(m_mutex);
        --m_closers;
    }
    m_changed.notify_all();
}

bool StreamGate::waitUntilBlocked(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, limit, [this] { return m_blocked || m_bypassed; });
    return m_blocked;
}

void StreamGate::setBypassed(bool bypassed)
{
    {
        const std::lock_guard lock(m_mutex);
        m_bypassed = bypassed;
    }
    m_changed.notify_all();
}
