// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/enginetimings.h"

#include <obs.h>

#include <cstdint>

class StreamTap;

/// Pauses and resumes an output. User-interface thread, which waits for a pause that has not taken effect yet.
class OutputPause
{
public:
    /// Both must outlive this object.
    OutputPause(StreamTap& tap, const EngineTimings& timings) : m_tap(tap), m_timings(timings) {}

    void reset() { m_effectNs = 0; }

    /// @return false, and nothing changed, when the output cannot
    bool set(obs_output_t* output, bool pause);

    /// When the last pause or resume takes effect, on libobs' clock; 0 before.
    std::uint64_t effectNs() const { return m_effectNs; }

private:
    bool apply(obs_output_t* output, bool pause);
    void waitUntilBegun() const;

    StreamTap& m_tap;
    const EngineTimings& m_timings;
    std::uint64_t m_effectNs = 0;
};
