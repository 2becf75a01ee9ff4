// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingclock.h"
#include "tests/support/testrun.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

/// A second of the clock. What a loaded machine adds to it changes nothing: timers that are overdue together go off in
/// the order in which they were due.
constexpr int kTickMs = 300;
/// A third of it.
constexpr int kPartMs = 100;
constexpr int kTimeoutMs = 10'000;

} // namespace

class TestRecordingClock : public QObject
{
    Q_OBJECT

private slots:
    void ticksOnceASecondUnlessAskedForLess()
    {
        RecordingClock clock(nullptr);
        QSignalSpy ticks(&clock, &RecordingClock::tick);
        QElapsedTimer elapsed;
        elapsed.start();
        clock.setRunning(true);
        QVERIFY(ticks.wait(kTimeoutMs));
        // A timer of that length may be a twentieth early.
        QVERIFY2(elapsed.elapsed() >= 950, qPrintable(QString::number(elapsed.elapsed())));
    }

    void ticksAgainAndAgainUntilItIsStopped()
    {
        RecordingClock clock(nullptr, kPartMs);
        const QSignalSpy ticks(&clock, &RecordingClock::tick);
        clock.setRunning(true);
        QTRY_VERIFY_WITH_TIMEOUT(ticks.size() >= 3, kTimeoutMs);
        clock.setRunning(false);
        const qsizetype ticked = ticks.size();
        QTest::qWait(2 * kPartMs);
        QCOMPARE(ticks.size(), ticked);
    }

    void pauseKeepsThePartOfASecondThatHasPassed()
    {
        RecordingClock clock(nullptr, kTickMs);
        const QSignalSpy ticks(&clock, &RecordingClock::tick);
        clock.setRunning(true);
        // Two parts of the second pass before the pause, and one is left.
        bool isPaused = false;
        QTimer::singleShot(2 * kPartMs, Qt::PreciseTimer, &clock, [&] {
            clock.setPaused(true);
            isPaused = true;
        });
        QTRY_VERIFY_WITH_TIMEOUT(isPaused, kTimeoutMs);
        QCOMPARE(ticks.size(), 0);
        QTest::qWait(kTickMs);
        QCOMPARE(ticks.size(), 0);

        clock.setPaused(false);
        qsizetype ticksWithinTwoParts = -1;
        QTimer::singleShot(2 * kPartMs, Qt::PreciseTimer, &clock, [&] { ticksWithinTwoParts = ticks.size(); });
        QTRY_VERIFY_WITH_TIMEOUT(ticksWithinTwoParts >= 0, kTimeoutMs);
        QCOMPARE(ticksWithinTwoParts, 1);
    }

    void secondAfterACutOneIsWhole()
    {
        RecordingClock clock(nullptr, kTickMs);
        const QSignalSpy ticks(&clock, &RecordingClock::tick);
        qsizetype ticksWithinTwoParts = -1;
        const auto look = [&] { ticksWithinTwoParts = ticks.size(); };
        connect(&clock, &RecordingClock::tick, this, [&] {
            if (ticks.size() == 1)
                QTimer::singleShot(2 * kPartMs, Qt::PreciseTimer, &clock, look);
        });
        clock.setRunning(true);
        QTimer::singleShot(2 * kPartMs, Qt::PreciseTimer, &clock, [&] {
            clock.setPaused(true);
            clock.setPaused(false);
        });
        QTRY_VERIFY_WITH_TIMEOUT(ticksWithinTwoParts >= 0, kTimeoutMs);
        QCOMPARE(ticksWithinTwoParts, 1);
        QTRY_VERIFY_WITH_TIMEOUT(ticks.size() >= 2, kTimeoutMs);
    }

    void clockThatDoesNotRunCannotBePaused()
    {
        RecordingClock clock(nullptr, kPartMs);
        const QSignalSpy ticks(&clock, &RecordingClock::tick);
        clock.setPaused(true);
        clock.setPaused(false);
        QTest::qWait(2 * kPartMs);
        QCOMPARE(ticks.size(), 0);
    }

    void newStartForgetsAPause()
    {
        RecordingClock clock(nullptr, kPartMs);
        QSignalSpy ticks(&clock, &RecordingClock::tick);
        clock.setRunning(true);
        clock.setPaused(true);
        clock.setRunning(true);
        QVERIFY(ticks.wait(kTimeoutMs));
    }
};

REGISTER_TEST(testrun::core<TestRecordingClock>);

#include "test_recordingclock.moc"
