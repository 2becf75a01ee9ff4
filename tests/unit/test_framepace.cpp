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
            QCOMPARE(frame.missed, 0);
        }
    }

    void lateFrameHasTheLatestMomentThatHasCome()
    {
        FramePace pace(kInterval, kBegin);
        pace.take(kBegin);
        const FramePace::Frame late = pace.take(kBegin + 399);
        QCOMPARE(late.timestampNs, kBegin + 300);
        QCOMPARE(late.missed, 2);
        QCOMPARE(pace.dueNs(), kBegin + 400);
        const FramePace::Frame next = pace.take(kBegin + 400);
        QCOMPARE(next.timestampNs, kBegin + 400);
        QCOMPARE(next.missed, 0);
    }

    void frameBeforeItsTimeHasMissedNothing()
    {
        FramePace pace(kInterval, kBegin);
        const FramePace::Frame early = pace.take(kBegin - 50);
        QCOMPARE(early.timestampNs, kBegin);
        QCOMPARE(early.missed, 0);
        QCOMPARE(pace.dueNs(), kBegin + 100);
    }
};

REGISTER_TEST(testrun::core<TestFramePace>);

#include "test_framepace.moc"
