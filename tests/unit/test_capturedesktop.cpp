// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/capturedesktop.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

constexpr QSize kEven(2, 2);

/// The primary screen, a lower one to the right of it, and one left of the desktop's origin, as Windows has them.
const CaptureScreen kPrimary{{0, 0, 1280, 720}};
const CaptureScreen kRight{{1280, 100, 1024, 600}};
const CaptureScreen kLeft{{-800, 0, 800, 600}};

} // namespace

/// What of a region can be recorded on several screens.
class TestCaptureDesktop : public QObject
{
    Q_OBJECT

private slots:
    void screenOfAnAreaHoldsMostOfIt()
    {
        const CaptureDesktop desktop({kPrimary, kRight, kLeft}, false);
        QCOMPARE(desktop.screenOf({1000, 200, 500, 300}).geometry, kPrimary.geometry);
        QCOMPARE(desktop.screenOf({1100, 200, 500, 300}).geometry, kRight.geometry);
        QCOMPARE(desktop.screenOf({-300, 200, 500, 300}).geometry, kLeft.geometry);
        // On none, and as much on one as on the other.
        QCOMPARE(desktop.screenOf({5000, 5000, 10, 10}).geometry, kRight.geometry);
        QCOMPARE(desktop.screenOf({1300, 720, 300, 200}).geometry, kRight.geometry);
        QCOMPARE(desktop.screenOf({600, 730, 300, 200}).geometry, kPrimary.geometry);
        QCOMPARE(desktop.screenOf({1180, 200, 200, 100}).geometry, kPrimary.geometry);
        QVERIFY(CaptureDesktop({}, false).screenOf({0, 0, 10, 10}).geometry.isEmpty());
    }

    void regionIsCutOffWhereARecordingShowsOneScreen_data()
    {
        QTest::addColumn<QRect>("region");
        QTest::addColumn<QRect>("visible");
        QTest::addColumn<bool>("isCut");
        QTest::newRow("on one") << QRect(1300, 200, 300, 200) << QRect(1300, 200, 300, 200) << false;
        QTest::newRow("mostly left") << QRect(1000, 200, 500, 300) << QRect(1000, 200, 280, 300) << true;
        QTest::newRow("mostly right") << QRect(1100, 200, 500, 300) << QRect(1280, 200, 320, 300) << true;
        QTest::newRow("over the desktop's edge") << QRect(200, 600, 300, 300) << QRect(200, 600, 300, 120) << false;
        QTest::newRow("on none") << QRect(1300, 0, 300, 50) << QRect() << false;
    }

    void regionIsCutOffWhereARecordingShowsOneScreen()
    {
        QFETCH(const QRect, region);
        const CaptureDesktop desktop({kPrimary, kRight}, false);
        QTEST(desktop.visiblePart(region), "visible");
        QTEST(desktop.isCutAt(region), "isCut");
    }

    void regionLiesAcrossScreensWhereARecordingSpansThem_data()
    {
        QTest::addColumn<QRect>("region");
        QTest::addColumn<QRect>("visible");
        QTest::addColumn<QRect>("around");
        const QRect both(0, 0, 2304, 720);
        QTest::newRow("on one") << QRect(1300, 200, 301, 200) << QRect(1300, 200, 301, 200) << kRight.geometry;
        QTest::newRow("on both") << QRect(1000, 200, 500, 300) << QRect(1000, 200, 500, 300) << both;
        QTest::newRow("with a part of neither") << QRect(1000, 0, 500, 300) << QRect(1000, 0, 500, 300) << both;
        QTest::newRow("from a part of neither")
            << QRect(1300, 0, 500, 300) << QRect(1300, 100, 500, 200) << kRight.geometry;
        QTest::newRow("over the far edge") << QRect(1000, 200, 5000, 300) << QRect(1000, 200, 1304, 300) << both;
        // An area of a single screen loses one column.
        QTest::newRow("from the first column") << QRect(0, 200, 2304, 300) << QRect(2, 200, 2302, 300) << both;
    }

    void regionLiesAcrossScreensWhereARecordingSpansThem()
    {
        QFETCH(const QRect, region);
        const CaptureDesktop desktop({kPrimary, kRight}, true);
        QTEST(desktop.visiblePart(region), "visible");
        QTEST(desktop.around(region).geometry, "around");
        QVERIFY(!desktop.isCutAt(region));
    }

    void storedRegionIsSetAndOfEvenSize_data()
    {
        QTest::addColumn<QRect>("region");
        QTest::addColumn<QRect>("stored");
        QTest::newRow("across") << QRect(1001, 201, 501, 301) << QRect(1001, 201, 502, 302);
        QTest::newRow("at the edge between screens") << QRect(1001, 201, 279, 301) << QRect(1000, 201, 280, 302);
        QTest::newRow("all") << QRect(0, 0, 2304, 720) << QRect(2, 0, 2302, 720);
    }

    void storedRegionIsSetAndOfEvenSize()
    {
        QFETCH(const QRect, region);
        const CaptureDesktop desktop({kPrimary, kRight}, true);
        CaptureArea area;
        area.setRegion(desktop.visiblePart(region), desktop.around(region), kEven);
        QVERIFY(!area.isUnset());
        QTEST(area.rect(), "stored");
    }

    /// Only the first column of the primary screen would make it count as unset.
    void regionLeftOfThePrimaryScreenIsStoredAsItIs()
    {
        const CaptureDesktop desktop({kPrimary, kLeft}, false);
        CaptureArea area;
        for (const QRect& region : {QRect(-500, 100, 300, 200), QRect(-800, 100, 300, 200)}) {
            area.setRegion(desktop.visiblePart(region), desktop.around(region), kEven);
            QVERIFY(!area.isUnset());
            QCOMPARE(area.rect(), region);
            QCOMPARE(area.rectOn(kLeft), region);
        }
        area.moveTo({-700, 120});
        QCOMPARE(area.rect(), QRect(-700, 120, 300, 200));
        QVERIFY(!area.isUnset());
        area.setRect(kPrimary.geometry);
        QVERIFY(area.isUnset());
    }

    void marginsReachOverTheEdgesOfTheScreenThatHoldsMost()
    {
        CaptureArea area;
        area.setRect({1000, 200, 500, 300});
        QCOMPARE(area.margins(kPrimary), (CaptureMargins{1000, 200, -220, 220, true}));
        QCOMPARE(area.margins(kRight), (CaptureMargins{-280, 100, 804, 200, true}));
        QCOMPARE(area.physicalSize(kRight), QSize(500, 300));
    }
};

REGISTER_TEST(testrun::core<TestCaptureDesktop>);
#include "test_capturedesktop.moc"
