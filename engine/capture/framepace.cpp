// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/framepace.h"

FramePace::Frame FramePace::take(std::uint64_t nowNs)
{
    const std::uint64_t lateNs = nowNs > m_dueNs ? nowNs - m_dueNs : 0;
    const std::uint64_t missed = lateNs / m_intervalNs;
    const Frame frame{m_dueNs + missed * m_intervalNs, static_cast<int>(missed)};
    m_dueNs = frame.timestampNs + m_intervalNs;
    return frame;
}
