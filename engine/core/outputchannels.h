// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <obs.h>

#include <array>
#include <cstdint>

inline constexpr uint32_t kVideoChannel = 0;
inline constexpr uint32_t kDesktopChannel = 1;
inline constexpr uint32_t kMicrophoneChannel = 2;

/// libobs' output channels, as far as this program uses them.
///
/// libobs outlives the program's objects, and so would what is on its channels: on X11 a capture source holds shared
/// memory that outlasts the process. The destructor therefore takes off the program's own sources and waits until
/// libobs, on a thread of its own, has destroyed them; declare it before every handle of a source. What somebody else
/// has put on a channel stays.
class OutputChannels
{
public:
    OutputChannels() = default;
    ~OutputChannels();
    OutputChannels(const OutputChannels&) = delete;
    OutputChannels& operator=(const OutputChannels&) = delete;

    /// Notes the last source that the program made for a channel.
    void noteMade(uint32_t channel, const obs_source_t* source) { m_made.at(channel) = source; }

    static void clear();

private:
    /// Only to compare with: it may have gone since.
    std::array<const obs_source_t*, 3> m_made{};
};
