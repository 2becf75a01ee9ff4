// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/diskdrain.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"

#include <QTest>

class TestDiskDrain : public QObject
{
    Q_OBJECT

private slots:
    void isOverWhenNothingWasWrittenForAWhile()
    {
        DiskDrain drain;
        QVERIFY(!drain.isOver(7, at(0)));
        QVERIFY(!drain.isOver(7, at(119)));
        QVERIFY(drain.isOver(7, at(120)));
        QVERIFY(drain.isOver(7, at(130)));
    }

    void lastPacketPutsItOff()
    {
        DiskDrain drain;
        QVERIFY(!drain.isOver(7, at(0)));
        QVERIFY(!drain.isOver(8, at(40)));
        QVERIFY(!drain.isOver(8, at(159)));
        QVERIFY(drain.isOver(8, at(160)));
    }

    void backlogIsGivenLonger()
    {
        DiskDrain drain;
        QVERIFY(!drain.isOver(7, at(0)));
        QVERIFY(!drain.isOver(8, at(50)));
        QVERIFY(!drain.isOver(8, at(549)));
        QVERIFY(drain.isOver(8, at(550)));
    }

    void diskThatIsNeverIdleIsGivenFiveSecondsAndLogged()
    {
        const MessageCapture log;
        DiskDrain drain;
        for (int ms = 0; ms < 5000; ms += 100)
            QVERIFY(!drain.isOver(static_cast<std::uint64_t>(ms), at(ms)));
        QVERIFY(log.texts(QtWarningMsg).isEmpty());
        QVERIFY(drain.isOver(5000, at(5000)));
        QVERIFY(!log.texts(QtWarningMsg).filter(QStringLiteral("The disk is slow")).isEmpty());
    }

    void resetBeginsAgain()
    {
        DiskDrain drain;
        QVERIFY(!drain.isOver(7, at(0)));
        QVERIFY(!drain.isOver(8, at(50)));
        drain.reset();
        QVERIFY(!drain.isOver(8, at(400)));
        QVERIFY(drain.isOver(8, at(520)));
    }

private:
    static std::uint64_t at(int ms) { return 1'000'000'000 + static_cast<std::uint64_t>(ms) * 1'000'000; }
};

REGISTER_TEST(testrun::core<TestDiskDrain>);
#include "test_diskdrain.moc"
