// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// When the frames of a video are due. Moments are nanoseconds on libobs' clock. One thread at a time.
class FramePace
{
public:
    struct Frame
    {
        /// The latest moment that has come.
        std::uint64_t timestampNs = 0;
        /// Moments before it that have passed without a frame.
        int missed = 0;
    };

    /// @param beginNs when the first frame is due
    FramePace(std::uint64_t intervalNs, std::uint64_t beginNs) : m_intervalNs(intervalNs), m_dueNs(beginNs) {}

    /// When the next frame is due.
    std::uint64_t dueNs() const { return m_dueNs; }

    /// Takes the frame that is due, with those that should have been taken since.
    Frame take(std::uint64_t nowNs);

private:
    const std::uint64_t m_intervalNs;
    std::uint64_t m_dueNs;
};
