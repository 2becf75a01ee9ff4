#include "engine/linegate.h"

#include <chrono>

void LineGate::pass()
{
    std::unique_lock lock(m_mutex);
    if (!m_closed)
        return;
    m_held = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_closed; });
    m_held = false;
}

void LineGate::close()
{
    const std::lock_guard lock(m_mutex);
    m_closed = true;
}

bool LineGate::waitUntilHeld(int timeoutMs)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return m_held; });
}

void LineGate::open()
{
    {
        const std::lock_guard lock(m_mutex);
        m_closed = false;
    }
    m_changed.notify_all();
}
