// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include <cstdint>
#include <optional>

/// A sound that shows the time: 440 Hz throughout, and above it a second tone whose frequency steps through a fixed
/// scale with CLOCK_MONOTONIC. A stretch of a recording's sound thus says at which moment of the machine it was heard.
/// `kestrano_test_tone` makes it.
namespace testtone {

inline constexpr int kSamplesPerSecond = 48000;
inline constexpr double kBaseFrequencyHz = 440.0;
/// How long the second tone keeps one frequency, and how many there are; after both multiplied the scale begins again.
inline constexpr int kStepMs = 100;
inline constexpr int kSteps = 32;

/// Frequency of the second tone's step 0..kSteps-1.
double stepFrequencyHz(int step);
/// The step that sounds at a moment of CLOCK_MONOTONIC.
int stepAt(int64_t monotonicNs);

/// Amplitude (0..1) of one frequency in @p count samples from @p first on.
double amplitude(const QList<float>& samples, qsizetype first, qsizetype count, double frequencyHz,
                 int samplesPerSecond);

/// The moment at which sample @p first was heard, by the @p spanMs of sound that follow it; @p nearMonotonicNs
/// is within one and a half seconds of it. Nothing where there is no such tone. Exact to about 10 ms, plus what the
/// sound server delayed.
std::optional<int64_t> momentOfSample(const QList<float>& samples, qsizetype first, int spanMs,
                                      int64_t nearMonotonicNs);

} // namespace testtone
