// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/formatjudge.h"

#include "tests/recording/recordinghelpers.h"
#include "tests/support/shownclock.h"
#include "tests/support/testpattern.h"
#include "tests/support/testtone.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

#include <cmath>

using formatjudge::Allowance;
using formatjudge::Expected;

namespace {

constexpr double kNsPerSecond = 1e9;
constexpr int kToneSpanMs = 300;

double secondsBetween(int64_t fromNs, int64_t toNs)
{
    return static_cast<double>(toNs - fromNs) / kNsPerSecond;
}

/// Milliseconds of silence before the first sound.
int leadingSilenceMs(const QList<float>& samples)
{
    constexpr qsizetype kSamplesPerMs = testtone::kSamplesPerSecond / 1000;
    constexpr float kAudible = 0.02F;
    for (qsizetype index = 0; index < samples.size(); ++index)
        if (std::abs(samples.at(index)) > kAudible)
            return static_cast<int>(index / kSamplesPerMs);
    return static_cast<int>(samples.size() / kSamplesPerMs);
}

void checkName(const Expected& expected, const Take& take)
{
    const QRegularExpression pattern(QStringLiteral("^Recording_\\d{4}_\\d{2}_\\d{2}_\\d{2}-\\d{2}-\\d{2}\\.%1$")
                                         .arg(QLatin1String(expected.extension)));
    QVERIFY2(pattern.match(QFileInfo(take.path).fileName()).hasMatch(), qPrintable(take.path));
}

void checkStreams(const Expected& expected, const MediaFile& file, const QSize& screenPx)
{
    const MediaStream* const video = file.video();
    const bool screen = *expected.videoCodec != '\0';
    QCOMPARE(video != nullptr, screen || expected.hasMarkerVideo);
    if (video && screen) {
        QCOMPARE(video->codec, QLatin1String(expected.videoCodec));
        QCOMPARE(video->codecId, expected.videoId);
        QCOMPARE(video->size, screenPx);
    } else if (video) {
        QCOMPARE(video->codec, QLatin1String("png"));
        QCOMPARE(video->codecId, 61);
        QCOMPARE(video->size, QSize(2, 2));
    }
    const MediaStream* const audio = file.audio();
    QCOMPARE(audio != nullptr, *expected.audioCodec != '\0');
    if (audio) {
        QCOMPARE(audio->codec, QLatin1String(expected.audioCodec));
        QCOMPARE(audio->codecId, expected.audioId);
        QCOMPARE(audio->sampleRate, 48000);
        QCOMPARE(audio->channels, 2);
    }
}

void checkRate(const MediaFile& file)
{
    // The ends are left out: the MPEG-4 encoder's second frame comes one late, and what an encoder keeps at the end
    // leaves holes between the last frames it gave out.
    constexpr qsizetype kHead = 2;
    constexpr qsizetype kTail = kFramesPerSecond / 2;
    const QList<double>& times = file.video()->frameSeconds;
    QVERIFY(times.size() > 2 * (kHead + kTail));
    const qsizetype last = times.size() - kTail;
    const double rate = static_cast<double>(last - kHead) / (times.at(last) - times.at(kHead));
    QVERIFY2(std::abs(rate - kFramesPerSecond) < 0.3, qPrintable(QString::number(rate)));
}

void checkMoments(const MediaFile& file, const Take& take, const Allowance& allowance)
{
    const QList<std::optional<uint32_t>> numbers = file.numbers(TestPattern(file.video()->size));
    const NumbersHeld held = countNumbers(numbers);
    QVERIFY(held.first.has_value());
    // A block that is torn may also be taken for the other colour, and the number for an earlier one.
    const int torn = held.unreadable + held.backwards;
    QVERIFY2(torn <= allowance.tornFrames * static_cast<double>(numbers.size()),
             qPrintable(QStringLiteral("%1 of %2 frames show no number, %3 an earlier one")
                            .arg(held.unreadable)
                            .arg(numbers.size())
                            .arg(held.backwards)));
    const auto clock = readShownClock(numbers, file.video()->frameSeconds, kFramesPerSecond, take.startedNs);
    QVERIFY(clock.has_value());
    // A frame from before the start may stand at first.
    QVERIFY2(clock->astray <= numbers.size() / 4, qPrintable(QString::number(clock->astray)));
    const double begins = secondsBetween(take.startedNs, clock->firstNs);
    const double reaches = secondsBetween(take.stopRequestedNs, clock->lastNs) + 1.0 / kFramesPerSecond;
    qInfo("frame from %+.3f s after the start to %+.3f s after the stop request, drift %+.3f s, %d torn", begins,
          reaches, clock->driftSeconds, torn);
    QVERIFY2(begins <= allowance.latestStart, qPrintable(QString::number(begins)));
    QVERIFY2(reaches >= 0.0 && reaches <= allowance.latestEnd, qPrintable(QString::number(reaches)));
    // The file's clock runs with the screen's.
    QVERIFY2(std::abs(clock->driftSeconds) < allowance.clockDrift, qPrintable(QString::number(clock->driftSeconds)));
}

void checkColours(const Expected& expected, const MediaFile& file)
{
    const QImage image = file.frameAt(file.durationSeconds() / 2);
    QCOMPARE(image.size(), file.video()->size);
    const QList<TestPattern::Patch> patches = TestPattern(image.size()).patches();
    for (const TestPattern::Patch& patch : patches) {
        // GIF's palette has three bits of red and green and two of blue: only its corners are exact.
        const bool coarse = qstrcmp(expected.name, "GIF") == 0 && patch.colour.red() % 255 != 0;
        const int tolerance = coarse ? 48 : 12;
        const QColor found = meanColour(image, patch.area.center(), 4);
        QVERIFY2(colourDistance(found, patch.colour) <= tolerance,
                 qPrintable(patch.colour.name() + QLatin1String(" came out as ") + found.name()));
    }
}

void checkSound(const MediaFile& file, const Take& take, const Allowance& allowance)
{
    constexpr qsizetype kSpan = qsizetype{testtone::kSamplesPerSecond} / 1000 * kToneSpanMs;
    const QList<float> samples = file.samples(testtone::kSamplesPerSecond);
    QVERIFY(samples.size() > 3 * kSpan);
    const qsizetype middle = samples.size() / 2;
    const double tone = testtone::amplitude(samples, middle, kSpan, 440.0, testtone::kSamplesPerSecond);
    const double beside = testtone::amplitude(samples, middle, kSpan, 700.0, testtone::kSamplesPerSecond);
    QVERIFY2(tone > 0.05 && tone > 20 * beside, qPrintable(QStringLiteral("%1, beside %2").arg(tone).arg(beside)));

    const int silenceMs = leadingSilenceMs(samples);
    const qsizetype heardFrom = qsizetype{silenceMs} * testtone::kSamplesPerSecond / 1000;
    const auto first = testtone::momentOfSample(samples, heardFrom, kToneSpanMs, take.startedNs);
    QVERIFY(first.has_value());
    // The scale repeats itself after some seconds: the end is looked for where it ought to be.
    const qsizetype lastSpan = samples.size() - kSpan;
    const double held = static_cast<double>(lastSpan - heardFrom) / testtone::kSamplesPerSecond;
    const int64_t expectedLast = *first + static_cast<int64_t>(held * kNsPerSecond);
    const auto last = testtone::momentOfSample(samples, lastSpan, kToneSpanMs, expectedLast);
    QVERIFY(last.has_value());
    const double begins = secondsBetween(take.startedNs, *first) + allowance.soundServer;
    const double reaches = secondsBetween(take.stopRequestedNs, *last) + kToneSpanMs / 1000.0 + allowance.soundServer;
    qInfo("sound from %+.3f s after the start to %+.3f s after the stop request", begins, reaches);
    QVERIFY2(begins <= allowance.latestStart + allowance.soundServer, qPrintable(QString::number(begins)));
    QVERIFY2(reaches >= 0.0, qPrintable(QString::number(reaches)));
    // Nothing was left out in between.
    const double heard = secondsBetween(*first, *last);
    QVERIFY2(std::abs(heard - held) < 0.1, qPrintable(QStringLiteral("%1 s heard, %2 s held").arg(heard).arg(held)));
}

} // namespace

void formatjudge::check(const Expected& expected, const MediaFile& file, const Take& take, const QSize& screen,
                        const Allowance& allowance)
{
    QVERIFY2(file.isReadable(), qPrintable(file.error()));
    checkName(expected, take);
    checkStreams(expected, file, screen);
    if (QTest::currentTestFailed())
        return;
    if (*expected.videoCodec) {
        checkRate(file);
        checkMoments(file, take, allowance);
        checkColours(expected, file);
    }
    if (*expected.audioCodec)
        checkSound(file, take, allowance);
}
