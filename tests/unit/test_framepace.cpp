// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/framepace.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

constexpr std::uint64_t kInterval = 100;
constexpr std::uint64_t kBegin = 5000;

} // namespace

class TestFramePace : public QObject
{
    Q_OBJECT

private slots:
    void framesInTimeComeOnceEach()
    {
        FramePace pace(kInterval, kBegin);
        for (std::uint64_t i = 0; i < 5; ++i) {
            QCOMPARE(pace.dueNs(), kBegin + i * kInterval);
            // A little late is in time: the next one is due when it always was.
            const FramePace::Frame frame = pace.take(pace.dueNs() + 20 * i);
            QCOMPARE(frame.timestampNs, kBegin + i * kInterval);
            QCOMPARE(frame.count, 1);
        }
        QCOMPARE(pace.frames(), 5U);
        QCOMPARE(pace.repeatedFrames(), 0U);
    }

    void lateFrameStandsForTheIntervalsThatHavePassed()
    {
        FramePace pace(kInterval, kBegin);
        pace.take(kBegin);
        const FramePace::Frame late = pace.take(kBegin + 399);
        QCOMPARE(late.timestampNs, kBegin + 100);
        QCOMPARE(late.count, 3);
        QCOMPARE(pace.dueNs(), kBegin + 400);
        const FramePace::Frame next = pace.take(kBegin + 400);
        QCOMPARE(next.timestampNs, kBegin + 400);
        QCOMPARE(next.count, 1);
        QCOMPARE(pace.frames(), 5U);
        QCOMPARE(pace.repeatedFrames(), 2U);
    }

    void frameBeforeItsTimeIsOne()
    {
        FramePace pace(kInterval, kBegin);
        QCOMPARE(pace.take(kBegin - 50).count, 1);
        QCOMPARE(pace.dueNs(), kBegin + 100);
    }
};

REGISTER_TEST(testrun::core<TestFramePace>);

#include "test_framepace.moc"
