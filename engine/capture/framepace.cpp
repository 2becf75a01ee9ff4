// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/framepace.h"

FramePace::Frame FramePace::take(std::uint64_t nowNs)
{
    const std::uint64_t lateNs = nowNs > m_dueNs ? nowNs - m_dueNs : 0;
    const std::uint64_t count = 1 + lateNs / m_intervalNs;
    const Frame frame{m_dueNs, static_cast<int>(count)};
    m_dueNs += count * m_intervalNs;
    m_frames += count;
    m_repeatedFrames += count - 1;
    return frame;
}
