// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Says when the frames of a video are due, and how often a late one has to be repeated. Moments are nanoseconds on
/// libobs' clock. Belongs to one thread.
class FramePace
{
public:
    struct Frame
    {
        /// The moment that it was due at.
        std::uint64_t timestampNs = 0;
        /// The frame intervals that it stands for: 1, or more when it comes late.
        int count = 1;
    };

    /// @param beginNs when the first frame is due
    FramePace(std::uint64_t intervalNs, std::uint64_t beginNs) : m_intervalNs(intervalNs), m_dueNs(beginNs) {}

    /// When the next frame is due.
    std::uint64_t dueNs() const { return m_dueNs; }

    /// Takes the frame that is due, with those that should have been taken since.
    Frame take(std::uint64_t nowNs);

    std::uint64_t frames() const { return m_frames; }
    /// How many of them repeat one that came late.
    std::uint64_t repeatedFrames() const { return m_repeatedFrames; }

private:
    const std::uint64_t m_intervalNs;
    std::uint64_t m_dueNs;
    std::uint64_t m_frames = 0;
    std::uint64_t m_repeatedFrames = 0;
};
