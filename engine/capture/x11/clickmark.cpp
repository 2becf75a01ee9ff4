// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/clickmark.h"

void ClickMark::press()
{
    if (m_state == State::Down)
        return;
    m_state = State::Down;
    m_firstFrameNs.reset();
}

void ClickMark::release(std::int64_t timeNs)
{
    if (m_state != State::Down)
        return;
    m_state = State::Remaining;
    m_releasedNs = timeNs;
}

bool ClickMark::isIn(std::int64_t frameTimeNs)
{
    if (m_state == State::Remaining && !isRemaining(frameTimeNs))
        m_state = State::Off;
    if (m_state == State::Off)
        return false;
    if (!m_firstFrameNs)
        m_firstFrameNs = frameTimeNs;
    return true;
}

bool ClickMark::isRemaining(std::int64_t frameTimeNs) const
{
    return m_firstFrameNs ? frameTimeNs - *m_firstFrameNs < kShortestNs : frameTimeNs - m_releasedNs < kForgottenNs;
}
