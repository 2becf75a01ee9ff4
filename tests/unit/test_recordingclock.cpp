#include "mainwindow/recordingclock.h"
#include "tests/support/testrun.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

class TestRecordingClock : public QObject
{
    Q_OBJECT

private slots:
    void ticksOnceASecondWhileItRuns()
    {
        RecordingClock clock(nullptr);
        const QSignalSpy ticks(&clock, &RecordingClock::tick);
        clock.setRunning(true);
        QTest::qWait(2500);
        QCOMPARE(ticks.size(), 2);
        clock.setRunning(false);
        QTest::qWait(1200);
        QCOMPARE(ticks.size(), 2);
    }

    void pauseKeepsThePartOfASecondThatHasPassed()
    {
        RecordingClock clock(nullptr);
        QSignalSpy ticks(&clock, &RecordingClock::tick);
        clock.setRunning(true);
        QTest::qWait(600);
        clock.setPaused(true);
        QTest::qWait(1500);
        QCOMPARE(ticks.size(), 0);
        QElapsedTimer resumed;
        resumed.start();
        clock.setPaused(false);
        QVERIFY(ticks.wait(1000));
        // 400 ms were left of the second.
        QVERIFY2(resumed.elapsed() < 700, qPrintable(QString::number(resumed.elapsed())));
        resumed.restart();
        QVERIFY(ticks.wait(2000));
        // The next one is whole again.
        QVERIFY2(resumed.elapsed() > 700, qPrintable(QString::number(resumed.elapsed())));
    }

    void clockThatDoesNotRunCannotBePaused()
    {
        RecordingClock clock(nullptr);
        const QSignalSpy ticks(&clock, &RecordingClock::tick);
        clock.setPaused(true);
        clock.setPaused(false);
        QTest::qWait(1200);
        QCOMPARE(ticks.size(), 0);
    }

    void newStartForgetsAPause()
    {
        RecordingClock clock(nullptr);
        QSignalSpy ticks(&clock, &RecordingClock::tick);
        clock.setRunning(true);
        clock.setPaused(true);
        clock.setRunning(true);
        QVERIFY(ticks.wait(2000));
    }
};

REGISTER_TEST(testrun::core<TestRecordingClock>);

#include "test_recordingclock.moc"
