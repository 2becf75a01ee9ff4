// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/avsync.h"

#include "tests/recording/recordinghelpers.h"
#include "tests/support/testpattern.h"
#include "tests/support/testtone.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kNsPerSecond = 1e9;
/// What is judged around a moment.
constexpr double kSpanSeconds = 0.8;

/// On the clock of the recording, which begins at its start.
double sinceStart(int64_t momentNs, int64_t startedNs)
{
    return static_cast<double>(momentNs - startedNs) / kNsPerSecond;
}

} // namespace

AvSync::AvSync(const MediaFile& file, int64_t startedNs)
    : m_video(*file.video())
    , m_audio(*file.audio())
    , m_startedNs(startedNs)
    , m_numbers(file.numbers(TestPattern(file.video()->size)))
    , m_samples(file.samples(testtone::kSamplesPerSecond))
{}

std::optional<double> AvSync::audioDelayAt(double fileSeconds) const
{
    const auto video = videoOrigin(fileSeconds);
    const auto audio = audioOrigin(fileSeconds);
    if (!video || !audio)
        return std::nullopt;
    return *video - *audio;
}

/// Where the file would begin, by what its frames show. A frame shows what was new up to a frame interval before it was
/// captured.
std::optional<double> AvSync::videoOrigin(double fileSeconds) const
{
    constexpr double kMeanAge = 0.5 / kFramesPerSecond;
    const auto nearNs = m_startedNs + std::llround(fileSeconds * kNsPerSecond);
    QList<double> origins;
    for (qsizetype frame = 0; frame < std::min(m_numbers.size(), m_video.frameSeconds.size()); ++frame) {
        const double at = m_video.frameSeconds.at(frame);
        if (m_numbers.at(frame) && std::abs(at - fileSeconds) <= kSpanSeconds / 2)
            origins << sinceStart(momentOfNumber(*m_numbers.at(frame), kFramesPerSecond, nearNs), m_startedNs) - at +
                           kMeanAge;
    }
    if (origins.isEmpty())
        return std::nullopt;
    const auto middle = origins.begin() + origins.size() / 2;
    std::nth_element(origins.begin(), middle, origins.end());
    return *middle;
}

std::optional<double> AvSync::audioOrigin(double fileSeconds) const
{
    const double from = fileSeconds - kSpanSeconds / 2;
    const auto nearNs = m_startedNs + std::llround(from * kNsPerSecond);
    const auto moment =
        testtone::momentOfSample(m_samples, sampleAt(from), static_cast<int>(kSpanSeconds * 1000), nearNs);
    if (!moment)
        return std::nullopt;
    return sinceStart(*moment, m_startedNs) - from;
}

double AvSync::loudness(double fromSeconds, double toSeconds) const
{
    float loudest = 0.0F;
    for (qsizetype sample = sampleAt(fromSeconds); sample < std::min(sampleAt(toSeconds), m_samples.size()); ++sample)
        loudest = std::max(loudest, std::abs(m_samples.at(sample)));
    return loudest;
}

double AvSync::audioEndsLaterBy() const
{
    return m_audio.startSeconds + m_audio.durationSeconds - m_video.startSeconds - m_video.durationSeconds;
}

/// Frames are decoded one after the other, whatever is between their times.
qsizetype AvSync::sampleAt(double fileSeconds) const
{
    const QList<double>& times = m_audio.frameSeconds;
    const auto next = std::upper_bound(times.cbegin(), times.cend(), fileSeconds);
    if (next == times.cbegin())
        return 0;
    const qsizetype frame = next - times.cbegin() - 1;
    const double into = (fileSeconds - times.at(frame)) * testtone::kSamplesPerSecond;
    return frame * m_samples.size() / times.size() + static_cast<qsizetype>(into);
}
