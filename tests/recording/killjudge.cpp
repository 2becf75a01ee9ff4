// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/killjudge.h"

#include "tests/recording/recordinghelpers.h"
#include "tests/support/testpattern.h"
#include "tests/support/testtone.h"

#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <optional>

namespace {

constexpr double kNsPerSecond = 1e9;
constexpr double kMaxLossSeconds = 2.0;

/// When the last frame of the test pattern was shown.
std::optional<int64_t> lastShown(const MediaFile& file, const QSize& screen, int64_t nearNs)
{
    const auto numbers = file.numbers(TestPattern(screen));
    const auto last =
        std::find_if(numbers.rbegin(), numbers.rend(), [](const auto& number) { return number.has_value(); });
    return last != numbers.rend() ? std::optional(momentOfNumber(**last, kFramesPerSecond, nearNs)) : std::nullopt;
}

/// When the last of the test tone was heard.
std::optional<int64_t> lastHeard(const MediaFile& file, int64_t nearNs)
{
    constexpr int kSpanMs = 60;
    constexpr qsizetype kSpan = qsizetype{testtone::kSamplesPerSecond} * kSpanMs / 1000;
    const QList<float> samples = file.samples(testtone::kSamplesPerSecond);
    if (samples.size() < kSpan)
        return std::nullopt;
    return testtone::momentOfSample(samples, samples.size() - kSpan, kSpanMs, nearNs);
}

double secondsFrom(std::optional<int64_t> moment, int64_t untilNs)
{
    return moment ? static_cast<double>(untilNs - *moment) / kNsPerSecond : 1e9;
}

} // namespace

void killjudge::check(const formatjudge::Expected& expected, const QString& path, const QSize& screen, int64_t endedNs)
{
    const MediaFile file(path);
    const auto nearNs = endedNs - static_cast<int64_t>(kNsPerSecond);
    const double unseen = *expected.videoCodec ? secondsFrom(lastShown(file, screen, nearNs), endedNs) : 0;
    const double unheard = *expected.audioCodec ? secondsFrom(lastHeard(file, nearNs), endedNs) : 0;
    qInfo("%s: %lld bytes, %.2f s of video and %.2f s of audio are lost", expected.name,
          static_cast<long long>(QFileInfo(path).size()), unseen, unheard);
    QVERIFY2(unseen < kMaxLossSeconds, qPrintable(file.error()));
    QVERIFY2(unheard < kMaxLossSeconds, qPrintable(file.error()));
}
