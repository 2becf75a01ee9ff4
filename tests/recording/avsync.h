// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/mediafile.h"

#include <cstdint>
#include <optional>

/// A recording of the test pattern and the test tone, both of which show the time: whether they go together.
class AvSync
{
public:
    /// @param startedNs when the recording was started, by CLOCK_MONOTONIC
    AvSync(const MediaFile& file, int64_t startedNs);

    /// By how many seconds the audio is later than the video around a second of the file, in which both are there;
    /// nothing where one of them shows no time. What the sound server buffers of the tone counts.
    std::optional<double> audioDelayAt(double fileSeconds) const;

    /// The loudest part of a stretch of the file, from 0 to 1.
    double loudness(double fromSeconds, double toSeconds) const;

    /// By how many seconds the last audio ends after the last frame.
    double audioEndsLaterBy() const;

private:
    std::optional<double> videoOrigin(double fileSeconds) const;
    std::optional<double> audioOrigin(double fileSeconds) const;
    qsizetype sampleAt(double fileSeconds) const;

    MediaStream m_video;
    MediaStream m_audio;
    int64_t m_startedNs;
    QList<std::optional<uint32_t>> m_numbers;
    QList<float> m_samples;
};
