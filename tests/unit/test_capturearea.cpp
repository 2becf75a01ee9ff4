// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/capturearea.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

const QSize kAnySize(1, 1);

constexpr int kSamples = 200;

/// A repeatable spread of rectangles that lie within a screen of the given size.
QRect sampleRect(int sample, const QSize& screen)
{
    const int left = 1 + (sample * 37) % (screen.width() - 2);
    const int top = (sample * 53) % (screen.height() - 1);
    const int width = 1 + (sample * 101) % (screen.width() - left);
    const int height = 1 + (sample * 71) % (screen.height() - top);
    return {left, top, width, height};
}

/// The ratio in hundredths keeps the expectation in whole numbers.
int truncatedProduct(int logicalPx, int ratioHundredths)
{
    return logicalPx * ratioHundredths / 100;
}

} // namespace

class TestCaptureArea : public QObject
{
    Q_OBJECT

private slots:
    void allCornersAreMinusOneAtFirst()
    {
        const CaptureArea area;
        QCOMPARE(area.rect(), QRect(-1, -1, 0, 0));
        QVERIFY(area.isUnset());
    }

    void unsetWhileTheLeftEdgeIsBelowOne()
    {
        CaptureArea area;
        area.setRect({0, 50, 100, 100});
        QVERIFY(area.isUnset());
        area.setRect({1, 0, 100, 100});
        QVERIFY(!area.isUnset());
    }

    void regionInTheFirstColumnIsStoredFromTheSecond()
    {
        const CaptureScreen screen{{0, 0, 1280, 720}, 1.0};
        CaptureArea area;
        area.setRegion({0, 20, 300, 200}, screen, kAnySize);
        QVERIFY(!area.isUnset());
        QCOMPARE(area.rect().left(), 1);
        QCOMPARE(area.rect().right(), 299);
        QCOMPARE(area.rectOn(screen), QRect(1, 20, 299, 200));
    }

    void whatLiesBeyondTheScreenIsNoPartOfARegion()
    {
        const CaptureScreen screen{{0, 0, 1280, 720}, 1.0};
        CaptureArea area;
        area.setRegion({-50, 20, 300, 200}, screen, kAnySize);
        QCOMPARE(area.rect(), QRect(1, 20, 249, 200));
        area.setRegion({1180, 620, 300, 200}, screen, kAnySize);
        QCOMPARE(area.rect(), QRect(1180, 620, 100, 100));
        area.setRegion({336, -180, 608, 1080}, screen, kAnySize);
        QCOMPARE(area.rect(), QRect(336, 0, 608, 720));
        QCOMPARE(area.margins(screen), (CaptureMargins{336, 0, 336, 0, true}));
        const CaptureScreen right{{1280, 100, 1280, 720}, 1.0};
        area.setRegion({1000, 0, 600, 400}, right, kAnySize);
        QCOMPARE(area.rect(), QRect(1280, 100, 320, 300));
    }

    void movedRegionKeepsItsSize()
    {
        const CaptureScreen screen{{0, 0, 1280, 720}, 1.0};
        CaptureArea area;
        area.setRegion({100, 80, 320, 240}, screen, kAnySize);
        area.moveTo({1200, -40});
        QCOMPARE(area.rect(), QRect(1200, -40, 320, 240));
        area.moveTo({-30, 10});
        QCOMPARE(area.rect(), QRect(1, 10, 320, 240));
    }

    void regionElsewhereIsStoredAsItIs()
    {
        const CaptureScreen screen{{0, 0, 1280, 720}, 1.0};
        CaptureArea area;
        for (int sample = 0; sample < kSamples; ++sample) {
            const QRect region = sampleRect(sample, screen.geometry.size());
            area.setRegion(region, screen, kAnySize);
            QCOMPARE(area.rect(), region);
        }
    }

    void regionGrowsToStepsOfTheVideo_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QSize>("steps");
        QTest::addColumn<QRect>("region");
        QTest::addColumn<QRect>("stored");
        const QSize even(2, 2);
        const QSize fours(4, 2);
        QTest::newRow("odd") << 1.0 << even << QRect(10, 20, 361, 201) << QRect(10, 20, 362, 202);
        QTest::newRow("to fours") << 1.0 << fours << QRect(10, 20, 361, 201) << QRect(10, 20, 364, 202);
        QTest::newRow("at the far edges") << 1.0 << fours << QRect(919, 519, 361, 201) << QRect(916, 518, 364, 202);
        QTest::newRow("as wide as the screen") << 1.0 << even << QRect(1, 0, 1279, 720) << QRect(1, 0, 1279, 720);
        QTest::newRow("fraction of a pixel") << 1.25 << even << QRect(10, 20, 289, 200) << QRect(10, 20, 289, 200);
        QTest::newRow("two pixels") << 2.0 << even << QRect(10, 20, 361, 201) << QRect(10, 20, 361, 201);
        QTest::newRow("two pixels to fours") << 2.0 << fours << QRect(10, 20, 361, 201) << QRect(10, 20, 362, 201);
    }

    void regionGrowsToStepsOfTheVideo()
    {
        QFETCH(const double, ratio);
        QFETCH(const QSize, steps);
        QFETCH(const QRect, region);
        QFETCH(const QRect, stored);
        CaptureArea area;
        area.setRegion(region, {{0, 0, 1280, 720}, ratio}, steps);
        QCOMPARE(area.rect(), stored);
    }

    void regionThatHoldsTheWholeScreenIsTheWholeScreen()
    {
        const CaptureScreen screen{{0, 0, 1280, 720}, 1.0};
        CaptureArea area;
        for (const QRect& region : {screen.geometry, QRect(-320, -180, 1920, 1080)}) {
            area.setRegion(region, screen, kAnySize);
            QVERIFY(area.isUnset());
            QCOMPARE(area.margins(screen), CaptureMargins());
            QCOMPARE(area.physicalSize(screen), QSize(1280, 720));
        }
        const CaptureScreen right{{640, 0, 640, 720}, 1.0};
        area.setRegion(right.geometry, right, kAnySize);
        QVERIFY(!area.isUnset());
        QCOMPARE(area.margins(right), CaptureMargins());
    }

    void cornersOfAFrameAreItsFirstAndLastPixel()
    {
        const CaptureScreen screen{{0, 0, 1280, 720}, 1.0};
        CaptureArea area;
        area.setRegion(QRect(QPoint(100, 50), QPoint(399, 249)), screen, kAnySize);
        QCOMPARE(area.rect().size(), QSize(300, 200));
        QCOMPARE(area.rect().bottomRight(), QPoint(399, 249));
        QCOMPARE(area.margins(screen), (CaptureMargins{100, 50, 880, 470, true}));
    }

    void anUnsetAreaIsThePrimaryScreen()
    {
        const CaptureScreen screen{{0, 0, 1280, 720}, 1.0};
        CaptureArea area;
        QCOMPARE(area.rectOn(screen), screen.geometry);
        area.setRect({10, 20, 300, 200});
        QCOMPARE(area.rectOn(screen), QRect(10, 20, 300, 200));
    }

    void wholePrimaryScreenHasNoMarginsAndNoCropFlag_data()
    {
        QTest::addColumn<QRect>("geometry");
        QTest::addColumn<double>("ratio");
        for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 2.25, 3.0}) {
            QTest::addRow("at the origin, %g", ratio) << QRect(0, 0, 1280, 720) << ratio;
            QTest::addRow("right of another screen, %g", ratio) << QRect(1920, 0, 1366, 768) << ratio;
            QTest::addRow("below another screen, %g", ratio) << QRect(0, 1080, 1707, 961) << ratio;
            QTest::addRow("left of the origin, %g", ratio) << QRect(-800, -600, 801, 601) << ratio;
        }
    }

    void wholePrimaryScreenHasNoMarginsAndNoCropFlag()
    {
        QFETCH(QRect, geometry);
        QFETCH(double, ratio);
        const CaptureScreen screen{geometry, ratio};
        CaptureArea area;
        area.setRect(geometry);
        QCOMPARE(area.margins(screen), CaptureMargins());
        QCOMPARE(area.physicalSize(screen), screen.physicalSize());
    }

    void marginsAndSizeAreTruncatedProducts_data()
    {
        QTest::addColumn<int>("ratioHundredths");
        QTest::addColumn<QPoint>("origin");
        for (const int hundredths : {100, 115, 120, 125, 133, 150, 175, 200, 225, 250, 300}) {
            QTest::addRow("%d %% at the origin", hundredths) << hundredths << QPoint(0, 0);
            QTest::addRow("%d %% beside another screen", hundredths) << hundredths << QPoint(1920, 120);
        }
    }

    void marginsAndSizeAreTruncatedProducts()
    {
        QFETCH(int, ratioHundredths);
        QFETCH(QPoint, origin);
        const QSize size(1366, 768);
        const CaptureScreen screen{QRect(origin, size), ratioHundredths / 100.0};
        for (int sample = 0; sample < kSamples; ++sample) {
            const QRect local = sampleRect(sample, size);
            CaptureArea area;
            area.setRect(local.translated(origin));
            const CaptureMargins expected{
                truncatedProduct(local.x(), ratioHundredths), truncatedProduct(local.y(), ratioHundredths),
                truncatedProduct(size.width() - local.x() - local.width(), ratioHundredths),
                truncatedProduct(size.height() - local.y() - local.height(), ratioHundredths), true};
            QCOMPARE(area.margins(screen), expected);
            QCOMPARE(area.physicalSize(screen), QSize(truncatedProduct(local.width(), ratioHundredths),
                                                      truncatedProduct(local.height(), ratioHundredths)));
        }
    }

    void anUnsetAreaIsRecordedAsTheWholeScreen()
    {
        const CaptureScreen screen{{1920, 0, 1366, 768}, 1.5};
        QCOMPARE(CaptureArea().margins(screen), CaptureMargins());
        QCOMPARE(CaptureArea().physicalSize(screen), QSize(2049, 1152));
    }

    void marginsAreCountedFromTheScreensTruePixels()
    {
        // 800 by 600 pixels at 1.5, of which Qt makes 533 by 400.
        const CaptureScreen rounded{{0, 0, 533, 400}, 1.5};
        const CaptureScreen screen = withPixels(rounded, {800, 600});
        CaptureArea area;
        area.setRect({100, 90, 240, 156});
        QCOMPARE(area.margins(screen), (CaptureMargins{150, 135, 290, 231, true}));
        QCOMPARE(area.physicalSize(screen), QSize(360, 234));
        area.setRect({100, 90, 433, 310});
        QCOMPARE(area.margins(screen), (CaptureMargins{150, 135, 0, 0, true}));
        area.setRect(screen.geometry);
        QCOMPARE(area.margins(screen), CaptureMargins());
        // 1026 pixels at 2.5, rounded down to 410 and up to 411.
        area.setRect({10, 20, 400, 100});
        QCOMPARE(area.margins(withPixels({{0, 0, 410, 400}, 2.5}, {1026, 1000})).right, 1);
        area.setRect({10, 20, 401, 100});
        QCOMPARE(area.margins(withPixels({{0, 0, 411, 400}, 2.5}, {1026, 1000})).right, 0);
    }

    void pixelsOfAnotherScreenAreNotTaken()
    {
        const CaptureScreen screen{{0, 0, 533, 400}, 1.5};
        QCOMPARE(withPixels(screen, {800, 600}).pixels, QSize(800, 600));
        for (const QSize& other : {QSize(), QSize(0, 0), QSize(1280, 720), QSize(800, 720), QSize(533, 400)})
            QVERIFY(withPixels(screen, other).pixels.isEmpty());
    }

    void oneEdgeMovedSetsTheCropFlag()
    {
        const CaptureScreen screen{{0, 0, 1280, 720}, 1.0};
        CaptureArea area;
        area.setRect({1, 0, 1279, 720});
        QCOMPARE(area.margins(screen), (CaptureMargins{1, 0, 0, 0, true}));
        area.setRect({1, 0, 1279, 719});
        QCOMPARE(area.margins(screen), (CaptureMargins{1, 0, 0, 1, true}));
    }

    void physicalLengthsAreCutOff_data()
    {
        QTest::addColumn<int>("logical");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<int>("physical");
        QTest::newRow("half a pixel is cut") << 911 << 1.5 << 1366;
        QTest::newRow("a quarter is cut") << 1093 << 1.25 << 1366;
        QTest::newRow("rounding of the ratio is no loss") << 100 << 1.15 << 115;
        QTest::newRow("rounding of the ratio is no gain") << 99 << 1.15 << 113;
        QTest::newRow("towards zero below zero") << -3 << 1.5 << -4;
        QTest::newRow("nothing") << 0 << 1.75 << 0;
    }

    void physicalLengthsAreCutOff()
    {
        QFETCH(int, logical);
        QFETCH(double, ratio);
        QTEST(toPhysicalPx(logical, ratio), "physical");
    }

    void centreUsesIntegerHalves()
    {
        QCOMPARE(captureCentre({0, 0, 1280, 720}), QPoint(640, 360));
        QCOMPARE(captureCentre({11, 21, 301, 203}), QPoint(161, 122));
        QCOMPARE(captureCentre({1920, 0, 1366, 768}), QPoint(2603, 384));
    }
};

REGISTER_TEST(testrun::core<TestCaptureArea>);
#include "test_capturearea.moc"
