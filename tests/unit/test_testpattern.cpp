// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/shownclock.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"
#include "tests/support/testtone.h"

#include <QTest>

#include <cmath>
#include <numbers>

namespace {

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr int64_t kSomeMoment = 123'456 * kNanosecondsPerSecond + 789;

QList<int> blocksOf(uint32_t number)
{
    const TestPattern pattern(QSize(1280, 720));
    QList<int> brightness;
    for (int index = 0; index < pattern.blockCount(); ++index)
        brightness.append(TestPattern::isWhite(index, number) ? 250 : 5);
    return brightness;
}

/// What kestrano_test_tone would play from a moment on.
QList<float> toneFrom(int64_t monotonicNs, int milliseconds)
{
    QList<float> samples;
    double base = 0.0;
    double step = 0.0;
    for (int index = 0; index < testtone::kSamplesPerSecond / 1000 * milliseconds; ++index) {
        const int64_t moment = monotonicNs + int64_t{index} * kNanosecondsPerSecond / testtone::kSamplesPerSecond;
        base += 2 * std::numbers::pi * testtone::kBaseFrequencyHz / testtone::kSamplesPerSecond;
        step +=
            2 * std::numbers::pi * testtone::stepFrequencyHz(testtone::stepAt(moment)) / testtone::kSamplesPerSecond;
        samples.append(static_cast<float>(0.2 * (std::sin(base) + std::sin(step))));
    }
    return samples;
}

/// The frames of a recording, as its file has them.
struct Shown
{
    QList<std::optional<uint32_t>> numbers;
    QList<double> seconds;
};

/// A recording that begins at a moment, 30 frames a second, each with the number of its moment.
Shown shownFrom(int64_t monotonicNs, int frames)
{
    constexpr int kRate = 30;
    Shown shown;
    for (int index = 0; index < frames; ++index) {
        shown.numbers.append(numberAt(monotonicNs + index * kNanosecondsPerSecond / kRate, kRate));
        shown.seconds.append(static_cast<double>(index) / kRate);
    }
    return shown;
}

} // namespace

/// The judges of recordings, judged.
class TestTestPattern : public QObject
{
    Q_OBJECT

private slots:
    void everyNumberIsReadBackFromItsBlocks()
    {
        for (const uint32_t number : {0U, 1U, 2U, 1000U, 0x555555U, 0x800000U, 0xFFFFFFU})
            QCOMPARE(TestPattern::numberFromBlocks(blocksOf(number)), std::optional<uint32_t>(number));
    }

    void aFrameTornBetweenTwoNumbersShowsOneOfThem()
    {
        for (uint32_t number = 4000; number < 4200; ++number) {
            int changed = 0;
            for (int index = 0; index < TestPattern::kBits + 2; ++index)
                changed += TestPattern::isWhite(index, number) != TestPattern::isWhite(index, number + 1) ? 1 : 0;
            QCOMPARE(changed, 1);
        }
    }

    void grayBlocksAndMissingGuardsAreNoNumber()
    {
        QList<int> blocks = blocksOf(77);
        blocks[5] = 128;
        QVERIFY(!TestPattern::numberFromBlocks(blocks));
        QVERIFY(!TestPattern::numberFromBlocks(QList<int>(TestPattern::kBits + 2, 0)));
        QVERIFY(!TestPattern::numberFromBlocks({}));
    }

    void theMomentOfANumberIsTheFirstAtWhichItShows()
    {
        for (const int rate : {15, 30}) {
            const uint32_t number = numberAt(kSomeMoment, rate);
            const int64_t began = momentOfNumber(number, rate, kSomeMoment);
            QVERIFY(began <= kSomeMoment && kSomeMoment - began < kNanosecondsPerSecond / rate + 1);
            QCOMPARE(numberAt(began, rate), number);
            QCOMPARE(numberAt(began - 1, rate), number - 1);
        }
    }

    void theMomentOfANumberIsFoundAcrossTheWrap()
    {
        const int64_t wrap = (int64_t{1} << TestPattern::kBits) * kNanosecondsPerSecond / 30;
        const uint32_t last = numberAt(wrap - kNanosecondsPerSecond / 60, 30);
        QCOMPARE(last, (1U << TestPattern::kBits) - 1);
        QVERIFY(std::abs(momentOfNumber(last, 30, wrap + kNanosecondsPerSecond) - wrap) < kNanosecondsPerSecond / 10);
    }

    void theClockOfARecordingIsReadThroughTornNumbers()
    {
        const Shown shown = shownFrom(kSomeMoment, 90);
        Shown torn = shown;
        torn.numbers[0] = *torn.numbers.at(0) - 500;
        torn.numbers[10] = std::nullopt;
        torn.numbers[44] = *torn.numbers.at(44) + 500;
        torn.numbers[89] = *torn.numbers.at(89) + 4000;
        const auto clock = readShownClock(torn.numbers, torn.seconds, 30, kSomeMoment);
        QVERIFY(clock.has_value());
        QCOMPARE(clock->astray, 3);
        QCOMPARE(clock->firstNs, momentOfNumber(*shown.numbers.at(1), 30, kSomeMoment));
        QCOMPARE(clock->lastNs, momentOfNumber(*shown.numbers.at(88), 30, kSomeMoment));
        QVERIFY(std::abs(clock->driftSeconds) < 0.04);
    }

    void aFrameThatRepeatsAtFirstDoesNotBendTheClock()
    {
        Shown shown = shownFrom(kSomeMoment, 90);
        for (qsizetype index = 1; index < 15; ++index)
            shown.numbers[index] = shown.numbers.at(0);
        const auto clock = readShownClock(shown.numbers, shown.seconds, 30, kSomeMoment);
        QVERIFY(clock.has_value());
        QCOMPARE(clock->astray, 0);
        QVERIFY(std::abs(clock->driftSeconds) < 0.04);
    }

    void aClockThatRunsTenPercentTooFastIsFound()
    {
        Shown shown = shownFrom(kSomeMoment, 90);
        for (double& second : shown.seconds)
            second *= 0.9;
        const auto clock = readShownClock(shown.numbers, shown.seconds, 30, kSomeMoment);
        QVERIFY(clock.has_value());
        QVERIFY(clock->driftSeconds > 0.1 && clock->driftSeconds < 0.2);
    }

    void aRecordingWithoutNumbersHasNoClock()
    {
        QVERIFY(
            !readShownClock(QList<std::optional<uint32_t>>(90), shownFrom(kSomeMoment, 90).seconds, 30, kSomeMoment));
        const Shown few = shownFrom(kSomeMoment, 3);
        QVERIFY(!readShownClock(few.numbers, few.seconds, 30, kSomeMoment));
    }

    void theStripAndThePatchesLieOnTheScreenApartFromEachOther()
    {
        for (const QSize size : {QSize(640, 480), QSize(1280, 720), QSize(1920, 1080)}) {
            const TestPattern pattern(size);
            const QRect screen(QPoint(0, 0), size);
            QVERIFY(screen.contains(pattern.strip()));
            QVERIFY(!pattern.strip().intersects(pattern.sweepArea()));
            for (const TestPattern::Patch& patch : pattern.patches())
                QVERIFY(screen.contains(patch.area) && !patch.area.intersects(pattern.strip()));
        }
    }

    void aStretchOfTheToneSaysWhenItWasHeard()
    {
        for (const int64_t offsetMs : {-1200, -130, 0, 40, 900}) {
            const QList<float> samples = toneFrom(kSomeMoment, 400);
            const auto heard = testtone::momentOfSample(samples, 0, 400, kSomeMoment + offsetMs * 1'000'000);
            QVERIFY(heard.has_value());
            QVERIFY(std::abs(*heard - kSomeMoment) < 15'000'000);
        }
    }

    void silenceSaysNoMoment() { QVERIFY(!testtone::momentOfSample(QList<float>(48000, 0.0F), 0, 400, kSomeMoment)); }

    void theAmplitudeOfOneFrequencyIsMeasured()
    {
        const QList<float> samples = toneFrom(kSomeMoment, 400);
        const double found = testtone::amplitude(samples, 0, samples.size(), 440, testtone::kSamplesPerSecond);
        QVERIFY(std::abs(found - 0.2) < 0.01);
        QVERIFY(testtone::amplitude(samples, 0, samples.size(), 700, testtone::kSamplesPerSecond) < 0.005);
    }
};

REGISTER_TEST(testrun::core<TestTestPattern>);
#include "test_testpattern.moc"
