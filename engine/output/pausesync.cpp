// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/pausesync.h"

void PauseSync::schedule(std::uint64_t momentNs)
{
    {
        const std::lock_guard lock(m_mutex);
        m_momentNs = momentNs;
        m_videoArrived = false;
        m_audioPassed = false;
    }
    // Whoever waits for the moment before may have missed that it was cancelled.
    m_changed.notify_all();
}

void PauseSync::videoArrives(std::uint64_t timestampNs)
{
    std::unique_lock lock(m_mutex);
    if (m_momentNs == kNone || timestampNs < m_momentNs)
        return;
    const std::uint64_t momentNs = m_momentNs;
    m_videoArrived = true;
    m_changed.notify_all();
    m_changed.wait_for(lock, m_limit, [this, momentNs] { return m_audioPassed || m_momentNs != momentNs; });
    if (m_momentNs == momentNs)
        m_momentNs = kNone;
    m_changed.notify_all();
}

void PauseSync::audioHasPassed(std::uint64_t beginNs, std::uint64_t endNs)
{
    std::unique_lock lock(m_mutex);
    if (m_momentNs == kNone)
        return;
    if (endNs >= m_momentNs) {
        m_audioPassed = true;
        m_changed.notify_all();
        return;
    }
    const std::uint64_t nextEndNs = endNs + (endNs - beginNs);
    if (nextEndNs >= m_momentNs)
        m_changed.wait_for(lock, m_limit,
                           [this, momentNs = m_momentNs] { return m_videoArrived || m_momentNs != momentNs; });
}

void PauseSync::cancel()
{
    {
        const std::lock_guard lock(m_mutex);
        m_momentNs = kNone;
    }
    m_changed.notify_all();
}

bool PauseSync::waitUntilDone(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [this] { return m_momentNs == kNone; });
}
