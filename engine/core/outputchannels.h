// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <obs.h>

#include <array>
#include <cstdint>

inline constexpr uint32_t kVideoChannel = 0;
inline constexpr uint32_t kDesktopChannel = 1;
inline constexpr uint32_t kMicrophoneChannel = 2;

/// libobs' output channels. libobs outlives the program's objects, and on X11 a capture source holds shared memory that
/// outlasts the process: the destructor takes the program's own sources off and waits until libobs has destroyed them.
/// Declare it before every handle of a source.
class OutputChannels
{
public:
    OutputChannels() = default;
    ~OutputChannels();
    OutputChannels(const OutputChannels&) = delete;
    OutputChannels& operator=(const OutputChannels&) = delete;

    /// The last source made for a channel.
    void noteMade(uint32_t channel, const obs_source_t* source) { m_made.at(channel) = source; }

    static void clear();

private:
    /// Only compared: may be destroyed.
    std::array<const obs_source_t*, 3> m_made{};
};
