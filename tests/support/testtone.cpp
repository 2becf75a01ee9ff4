// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testtone.h"

#include <cmath>
#include <numbers>

namespace testtone {

namespace {

constexpr int64_t kNanosecondsPerStep = int64_t{kStepMs} * 1'000'000;
constexpr int kWindowMs = 40;
constexpr int kHopMs = 10;
constexpr double kQuietest = 0.005;

/// The step that sounds in a window, or -1 where none does.
int stepOfWindow(const QList<float>& samples, qsizetype first, qsizetype count)
{
    int loudest = -1;
    double loudestAmplitude = kQuietest;
    for (int step = 0; step < kSteps; ++step) {
        const double found = amplitude(samples, first, count, stepFrequencyHz(step), kSamplesPerSecond);
        if (found > loudestAmplitude) {
            loudest = step;
            loudestAmplitude = found;
        }
    }
    return loudest;
}

} // namespace

double stepFrequencyHz(int step)
{
    // 125 Hz apart: a window of 40 ms distinguishes them.
    constexpr double kLowestHz = 1000.0;
    constexpr double kApartHz = 125.0;
    return kLowestHz + kApartHz * step;
}

int stepAt(int64_t monotonicNs)
{
    return static_cast<int>(monotonicNs / kNanosecondsPerStep % kSteps);
}

double amplitude(const QList<float>& samples, qsizetype first, qsizetype count, double frequencyHz,
                 int samplesPerSecond)
{
    if (first < 0 || count <= 0 || first + count > samples.size())
        return 0.0;
    // Goertzel's recurrence under a Hann window; the window's mean of a half is taken out again at the end.
    const double omega = 2.0 * std::numbers::pi * frequencyHz / samplesPerSecond;
    const double coefficient = 2.0 * std::cos(omega);
    double previous = 0.0;
    double beforePrevious = 0.0;
    for (qsizetype index = 0; index < count; ++index) {
        const double phase = 2.0 * std::numbers::pi * static_cast<double>(index) / static_cast<double>(count);
        const double window = 0.5 - 0.5 * std::cos(phase);
        const double current = window * samples.at(first + index) + coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = current;
    }
    const double power =
        previous * previous + beforePrevious * beforePrevious - coefficient * previous * beforePrevious;
    return 2.0 * std::sqrt(std::max(0.0, power)) / (0.5 * static_cast<double>(count));
}

std::optional<int64_t> momentOfSample(const QList<float>& samples, qsizetype first, int spanMs, int64_t nearMonotonicNs)
{
    constexpr qsizetype kSamplesPerMs = kSamplesPerSecond / 1000;
    constexpr int64_t kRing = kNanosecondsPerStep * kSteps;
    double sumMs = 0.0;
    int count = 0;
    for (int atMs = 0; atMs + kWindowMs <= spanMs; atMs += kHopMs) {
        const int step = stepOfWindow(samples, first + atMs * kSamplesPerMs, kWindowMs * kSamplesPerMs);
        if (step < 0)
            continue;
        // The middle of the step sounds, on average, in the middle of the window.
        const int64_t middle = step * kNanosecondsPerStep + kNanosecondsPerStep / 2;
        const int64_t start = middle - int64_t{atMs + kWindowMs / 2} * 1'000'000;
        int64_t difference = (start - nearMonotonicNs) % kRing;
        if (difference > kRing / 2)
            difference -= kRing;
        else if (difference < -kRing / 2)
            difference += kRing;
        sumMs += static_cast<double>(difference) / 1e6;
        ++count;
    }
    if (count == 0)
        return std::nullopt;
    return nearMonotonicNs + static_cast<int64_t>(sumMs / count * 1e6);
}

} // namespace testtone
