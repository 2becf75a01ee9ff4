// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/toolbarplacement.h"
#include "tests/support/testrun.h"

#include <QTest>

class TestToolbarPlacement : public QObject
{
    Q_OBJECT

private slots:
    void standsAtTheTopCentreOfThePrimaryScreenWhereverThatLies()
    {
        QCOMPARE(toolbarTopCentre(QRect(0, 0, 1920, 1080), kBar), QPoint(820, 0));
        QCOMPARE(toolbarTopCentre(QRect(640, 200, 1280, 720), kBar), QPoint(1140, 200));
        QCOMPARE(toolbarTopCentre(QRect(-1281, -40, 1281, 720), kBar), QPoint(-781, -40));
    }

    void standsWhereItIsNotRecorded_data()
    {
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QRect>("recorded");
        QTest::addColumn<bool>("canBeExcluded");
        QTest::addColumn<QPoint>("topLeft");
        QTest::addColumn<bool>("topEdgeOnly");
        const QRect screen(0, 0, 1280, 720);
        const QPoint topCentre(500, 0);
        QTest::newRow("audio only") << screen << QRect() << false << topCentre << false;
        QTest::newRow("the system keeps it out of captures") << screen << screen << true << topCentre << false;
        QTest::newRow("out of captures, beside the frame's bar")
            << screen << QRect(300, 40, 210, 300) << true << QPoint(514, 0) << false;
        QTest::newRow("out of captures, below the frame's bar")
            << screen << QRect(100, 40, 1000, 300) << true << QPoint(500, 36) << false;
        QTest::newRow("the whole screen") << screen << screen << false << topCentre << true;
        QTest::newRow("region far below") << screen << QRect(300, 300, 600, 300) << false << topCentre << false;
        // 40 of the bar, 30 of the frame's bar, 4 of its border.
        QTest::newRow("region just low enough") << screen << QRect(300, 74, 600, 300) << false << topCentre << false;
        QTest::newRow("region one pixel too high")
            << screen << QRect(400, 73, 300, 500) << false << QPoint(704, 0) << false;
        QTest::newRow("nearer to the left") << screen << QRect(560, 10, 300, 500) << false << QPoint(276, 0) << false;
        QTest::newRow("nearer to the right") << screen << QRect(420, 10, 290, 500) << false << QPoint(714, 0) << false;
        QTest::newRow("nearer below") << screen << QRect(100, 10, 1000, 100) << false << QPoint(500, 114) << false;
        QTest::newRow("no room at the left, room at the right")
            << screen << QRect(20, 0, 900, 700) << false << QPoint(924, 0) << false;
        QTest::newRow("no room at the right, room at the left")
            << screen << QRect(284, 0, 990, 700) << false << QPoint(0, 0) << false;
        QTest::newRow("room below only, to the last pixel")
            << screen << QRect(0, 0, 1280, 676) << false << QPoint(500, 680) << false;
        QTest::newRow("a pixel short below") << screen << QRect(0, 0, 1280, 677) << false << topCentre << true;
        QTest::newRow("a pixel short at both sides") << screen << QRect(283, 0, 714, 720) << false << topCentre << true;
        QTest::newRow("exactly at the right") << screen << QRect(283, 0, 713, 720) << false << QPoint(1000, 0) << false;
        QTest::newRow("not over another screen at the left")
            << QRect(640, 0, 640, 720) << QRect(700, 0, 500, 720) << false << QPoint(820, 0) << true;
        QTest::newRow("primary screen to the right of another")
            << QRect(640, 100, 1280, 720) << QRect(940, 110, 1000, 500) << false << QPoint(656, 100) << false;
    }

    void standsWhereItIsNotRecorded()
    {
        QFETCH(const QRect, screen);
        QFETCH(const QRect, recorded);
        QFETCH(const bool, canBeExcluded);
        QFETCH(const QPoint, topLeft);
        QFETCH(const bool, topEdgeOnly);
        const bool isWhole = recorded.isEmpty() || recorded == screen;
        const ToolbarPlacement placement =
            placeToolbar(screen, kBar, canBeExcluded ? QRect() : recorded, isWhole ? QRect() : barOnTopOf(recorded));
        QCOMPARE(placement.topLeft, topLeft);
        QCOMPARE(placement.topEdgeOnly, topEdgeOnly);
    }

    void barThatIsNotOnTopOfTheFrameIsLeftFreeToo()
    {
        const QRect screen(0, 0, 1280, 720);
        const QRect below(96, 114, 1008, 30);
        QCOMPARE(placeToolbar(screen, kBar, QRect(100, 10, 1000, 100), below).topLeft, QPoint(500, 144));
        // No room beside it: it is covered rather than kept from the screen.
        const ToolbarPlacement over = placeToolbar(QRect(0, 0, 1280, 60), kBar, {}, QRect(0, 0, 1280, 30));
        QCOMPARE(over.topLeft, QPoint(500, 0));
        QVERIFY(!over.topEdgeOnly);
    }

    void neitherTheRecordedAreaNorItsFrameIsEverTouched()
    {
        const QRect screen(640, 0, 1280, 720);
        int elsewhere = 0;
        for (int x = 640; x < 1900; x += 37) {
            for (int y = 0; y < 700; y += 31) {
                for (const QSize& size : {QSize(20, 20), QSize(333, 217), QSize(900, 400), QSize(1200, 90)}) {
                    const QRect recorded = QRect(QPoint(x, y), size).intersected(screen);
                    const ToolbarPlacement placement = placeToolbar(screen, kBar, recorded, barOnTopOf(recorded));
                    const QRect bar(placement.topLeft, kBar);
                    QVERIFY(screen.contains(bar));
                    const bool isClear = !bar.intersects(recorded.adjusted(-4, -34, 4, 4));
                    QCOMPARE(isClear, !placement.topEdgeOnly);
                    elsewhere += placement.topLeft != toolbarTopCentre(screen, kBar);
                }
            }
        }
        QVERIFY(elsewhere > 100);
    }

private:
    /// With the border, 4 px.
    static QRect barOnTopOf(const QRect& recorded)
    {
        return {recorded.x() - 4, recorded.y() - 34, recorded.width() + 8, 30};
    }

    static constexpr QSize kBar{280, 40};
};

REGISTER_TEST(testrun::core<TestToolbarPlacement>);
#include "test_toolbarplacement.moc"
