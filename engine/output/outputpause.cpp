// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/outputpause.h"

#include "engine/core/waituntil.h"
#include "engine/output/streamtap.h"

#include <util/platform.h>

bool OutputPause::set(obs_output_t* output, bool pause)
{
    m_tap.pauseSync().waitUntilDone(m_timings.pauseLimit);
    if (!pause)
        waitUntilBegun();
    return apply(output, pause);
}

/// A pause shorter than a block of audio would end in the block in which it begins, which libobs cannot do.
void OutputPause::waitUntilBegun() const
{
    const std::uint64_t frameIntervalNs = video_output_get_frame_time(obs_get_video());
    waitUntil([&] { return m_tap.pauseEffectNs(os_gettime_ns()) > m_effectNs + frameIntervalNs; },
              m_timings.pauseLimit);
}

bool OutputPause::apply(obs_output_t* output, bool pause)
{
    // Ample for a call of libobs that does nothing but note a moment.
    constexpr std::uint64_t kCallNs = 5'000'000;
    const auto effectAfterNs = [this](std::uint64_t delayNs) { return m_tap.pauseEffectNs(os_gettime_ns() + delayNs); };
    // Not just before the next frame: the moment would be another one when libobs looks at the clock.
    waitUntil([&] { return effectAfterNs(kCallNs) == effectAfterNs(0); }, m_timings.pauseLimit);
    m_effectNs = effectAfterNs(0);
    // The streams must not get there before they know.
    if (!pause)
        m_tap.pauseSync().schedule(m_effectNs);
    const bool done = obs_output_pause(output, pause);
    if (!done)
        m_tap.pauseSync().cancel();
    return done;
}
