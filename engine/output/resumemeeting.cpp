#include "engine/output/resumemeeting.h"

void ResumeMeeting::appoint(std::uint64_t momentNs)
{
    {
        const std::lock_guard lock(m_mutex);
        m_momentNs = momentNs;
        m_pictureIsThere = false;
        m_soundIsThrough = false;
    }
    // Whoever waits for the moment before may have missed that it was called off.
    m_changed.notify_all();
}

void ResumeMeeting::pictureArrives(std::uint64_t takenNs)
{
    std::unique_lock lock(m_mutex);
    if (m_momentNs == kNone || takenNs < m_momentNs)
        return;
    const std::uint64_t momentNs = m_momentNs;
    m_pictureIsThere = true;
    m_changed.notify_all();
    m_changed.wait_for(lock, m_limit, [this, momentNs] { return m_soundIsThrough || m_momentNs != momentNs; });
    if (m_momentNs == momentNs)
        m_momentNs = kNone;
    m_changed.notify_all();
}

void ResumeMeeting::soundHasPassed(std::uint64_t beginNs, std::uint64_t endNs)
{
    std::unique_lock lock(m_mutex);
    if (m_momentNs == kNone)
        return;
    if (endNs >= m_momentNs) {
        m_soundIsThrough = true;
        m_changed.notify_all();
        return;
    }
    const std::uint64_t nextEndNs = endNs + (endNs - beginNs);
    if (nextEndNs >= m_momentNs)
        m_changed.wait_for(lock, m_limit,
                           [this, momentNs = m_momentNs] { return m_pictureIsThere || m_momentNs != momentNs; });
}

void ResumeMeeting::callOff()
{
    {
        const std::lock_guard lock(m_mutex);
        m_momentNs = kNone;
    }
    m_changed.notify_all();
}

bool ResumeMeeting::waitUntilOver(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [this] { return m_momentNs == kNone; });
}
