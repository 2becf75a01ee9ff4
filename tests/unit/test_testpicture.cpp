#include "tests/support/testpicture.h"
#include "tests/support/testtone.h"

#include <QTest>

#include <cmath>
#include <numbers>

namespace {

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr int64_t kSomeMoment = 123'456 * kNanosecondsPerSecond + 789;

QList<int> blocksOf(uint32_t number)
{
    const TestPicture picture(QSize(1280, 720));
    QList<int> brightness;
    for (int index = 0; index < picture.blockCount(); ++index)
        brightness.append(TestPicture::isWhite(index, number) ? 250 : 5);
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

} // namespace

/// The judges of recordings, judged.
class TestTestPicture : public QObject
{
    Q_OBJECT

private slots:
    void everyNumberIsReadBackFromItsBlocks()
    {
        for (const uint32_t number : {0U, 1U, 2U, 1000U, 0x555555U, 0x800000U, 0xFFFFFFU})
            QCOMPARE(TestPicture::numberFromBlocks(blocksOf(number)), std::optional<uint32_t>(number));
    }

    void aFrameTornBetweenTwoNumbersShowsOneOfThem()
    {
        for (uint32_t number = 4000; number < 4200; ++number) {
            int changed = 0;
            for (int index = 0; index < TestPicture::kBits + 2; ++index)
                changed += TestPicture::isWhite(index, number) != TestPicture::isWhite(index, number + 1) ? 1 : 0;
            QCOMPARE(changed, 1);
        }
    }

    void grayBlocksAndMissingGuardsAreNoNumber()
    {
        QList<int> blocks = blocksOf(77);
        blocks[5] = 128;
        QVERIFY(!TestPicture::numberFromBlocks(blocks));
        QVERIFY(!TestPicture::numberFromBlocks(QList<int>(TestPicture::kBits + 2, 0)));
        QVERIFY(!TestPicture::numberFromBlocks({}));
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
        const int64_t wrap = (int64_t{1} << TestPicture::kBits) * kNanosecondsPerSecond / 30;
        const uint32_t last = numberAt(wrap - kNanosecondsPerSecond / 60, 30);
        QCOMPARE(last, (1U << TestPicture::kBits) - 1);
        QVERIFY(std::abs(momentOfNumber(last, 30, wrap + kNanosecondsPerSecond) - wrap) < kNanosecondsPerSecond / 10);
    }

    void theStripAndThePatchesLieOnTheScreenApartFromEachOther()
    {
        for (const QSize size : {QSize(640, 480), QSize(1280, 720), QSize(1920, 1080)}) {
            const TestPicture picture(size);
            const QRect screen(QPoint(0, 0), size);
            QVERIFY(screen.contains(picture.strip()));
            QVERIFY(!picture.strip().intersects(picture.sweepArea()));
            for (const TestPicture::Patch& patch : picture.patches())
                QVERIFY(screen.contains(patch.area) && !patch.area.intersects(picture.strip()));
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

    void theAmplitudeOfOneFrequencyIsTold()
    {
        const QList<float> samples = toneFrom(kSomeMoment, 400);
        const double found = testtone::amplitude(samples, 0, samples.size(), 440, testtone::kSamplesPerSecond);
        QVERIFY(std::abs(found - 0.2) < 0.01);
        QVERIFY(testtone::amplitude(samples, 0, samples.size(), 700, testtone::kSamplesPerSecond) < 0.005);
    }
};

QTEST_GUILESS_MAIN(TestTestPicture)
#include "test_testpicture.moc"
