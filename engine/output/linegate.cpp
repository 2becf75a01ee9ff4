#include "engine/output/linegate.h"

#include <chrono>

void LineGate::pass()
{
    std::unique_lock lock(m_mutex);
    if (!isShut())
        return;
    m_held = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !isShut(); });
    m_held = false;
}

void LineGate::close()
{
    const std::lock_guard lock(m_mutex);
    ++m_closers;
}

bool LineGate::waitUntilHeld(int timeoutMs)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return m_held || m_bypassed; });
    return m_held;
}

void LineGate::open()
{
    {
        const std::lock_guard lock(m_mutex);
        --m_closers;
    }
    m_changed.notify_all();
}

void LineGate::setBypassed(bool bypassed)
{
    {
        const std::lock_guard lock(m_mutex);
        m_bypassed = bypassed;
    }
    m_changed.notify_all();
}
