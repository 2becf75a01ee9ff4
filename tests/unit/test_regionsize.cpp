// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/exactpixels.h"
#include "mainwindow/capture/capturearea.h"
#include "mainwindow/capture/regionsize.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <cmath>

using regionsize::Limits;

namespace {

constexpr QSize kSteps(4, 2);
const Limits kLimits{{192, 142}, {1920, 1080}, kSteps};

/// What is recorded of the logical size.
QSize recorded(const QSize& logical, const CaptureScreen& screen)
{
    CaptureArea area;
    area.setRegion(regionsize::around(screen.geometry, logical, screen.geometry), screen, kSteps);
    return exactpixels::videoSize(area.physicalSize(screen), kSteps, screen.physicalSize());
}

} // namespace

class TestRegionSize : public QObject
{
    Q_OBJECT

private slots:
    void nearestSizeThatCanBeRecorded_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("nearest");
        QTest::newRow("can be") << QSize(640, 360) << QSize(640, 360);
        QTest::newRow("up") << QSize(643, 361) << QSize(644, 362);
        QTest::newRow("down") << QSize(641, 360) << QSize(640, 360);
        QTest::newRow("smallest") << QSize(193, 142) << QSize(192, 142);
        QTest::newRow("largest") << QSize(1920, 1080) << QSize(1920, 1080);
    }

    void nearestSizeThatCanBeRecorded()
    {
        QFETCH(const QSize, size);
        QTEST(regionsize::nearest(size, kLimits), "nearest");
    }

    void limitsThatAreNoMultiplesAreKept()
    {
        const Limits odd{{193, 143}, {1366, 767}, kSteps};
        QCOMPARE(regionsize::nearest({193, 143}, odd), QSize(196, 144));
        QCOMPARE(regionsize::nearest({1365, 766}, odd), QSize(1364, 766));
        QCOMPARE(regionsize::nearest({1366, 767}, odd), QSize(1366, 767));
    }

    void ratioIsKeptToTheStepOfTheVideo_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::newRow("16:9") << 16.0 / 9.0;
        QTest::newRow("9:16") << 9.0 / 16.0;
        QTest::newRow("4:3") << 4.0 / 3.0;
        QTest::newRow("1:1") << 1.0;
        QTest::newRow("any") << 1.2345;
    }

    void ratioIsKeptToTheStepOfTheVideo()
    {
        QFETCH(const double, ratio);
        for (int width = 1; width < 2500; ++width) {
            const QSize size = regionsize::atRatio({width, 500}, ratio, kLimits);
            QVERIFY(size.width() % kSteps.width() == 0 && size.height() % kSteps.height() == 0);
            QVERIFY(size.expandedTo(kLimits.smallest) == size && size.boundedTo(kLimits.largest) == size);
            // Half a step; where a limit is no multiple, the width misses what belongs to it by as much.
            const double missed = std::abs(size.height() - size.width() / ratio);
            const double most = kSteps.height() / 2.0 + kSteps.width() / 2.0 / ratio;
            QVERIFY2(missed <= most, qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height())));
        }
    }

    void smallestSizeHasTheRatio()
    {
        // 142 * 16 / 9 is 252.4.
        QCOMPARE(regionsize::atRatio({1, 1}, 16.0 / 9.0, kLimits), QSize(252, 142));
        QCOMPARE(regionsize::atRatio({1, 1}, 9.0 / 16.0, kLimits), QSize(192, 342));
    }

    void presetIsFittedToTheScreen_data()
    {
        QTest::addColumn<QSize>("preset");
        QTest::addColumn<QSize>("screen");
        QTest::addColumn<QSize>("video");
        const QSize wide(1920, 1080);
        QTest::newRow("fits") << wide << QSize(2560, 1440) << wide;
        QTest::newRow("is the screen") << wide << QSize(1920, 1080) << wide;
        QTest::newRow("whole smaller screen") << wide << QSize(1280, 720) << QSize(1280, 720);
        // A part of the screen begins in its second column.
        QTest::newRow("as wide as the screen") << wide << QSize(1280, 1024) << QSize(1276, 718);
        QTest::newRow("nearly the screen") << wide << QSize(1366, 768) << QSize(1364, 768);
        QTest::newRow("as high as the screen") << QSize(608, 1080) << QSize(1280, 720) << QSize(404, 718);
        QTest::newRow("square") << QSize(1080, 1080) << QSize(800, 600) << QSize(600, 600);
    }

    void presetIsFittedToTheScreen()
    {
        QFETCH(const QSize, preset);
        QFETCH(const QSize, screen);
        QFETCH(const QSize, video);
        const CaptureScreen whole{QRect(QPoint(), screen), 1.0};
        QCOMPARE(regionsize::fitted(preset, whole, kSteps), video);
        const QSize logical = regionsize::logical(video, whole, kSteps);
        QCOMPARE(recorded(logical, whole), video);
    }

    void presetFitsAScreenThatDoesNotBeginAtTheDesktopsEdge()
    {
        const CaptureScreen second{QRect(1280, 0, 1280, 1024), 1.0};
        QCOMPARE(regionsize::fitted({1920, 1080}, second, kSteps), QSize(1280, 720));
    }

    void logicalSizeHasTheVideo_data()
    {
        QTest::addColumn<double>("ratio");
        for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0})
            QTest::newRow(qPrintable(QString::number(ratio))) << ratio;
    }

    void logicalSizeHasTheVideo()
    {
        QFETCH(const double, ratio);
        const CaptureScreen screen{QRect(0, 0, 1600, 1000), ratio};
        for (int width = 200; width < 1500; width += 4) {
            const QSize video(width, width / 2);
            const QSize seen = recorded(regionsize::logical(video, screen, kSteps), screen);
            const QSize missed = seen - video;
            // A logical pixel more or less would be further away.
            QVERIFY2(std::abs(missed.width()) <= kSteps.width() && std::abs(missed.height()) <= kSteps.height(),
                     qPrintable(QStringLiteral("%1 for %2").arg(seen.width()).arg(width)));
            if (ratio == 1.0 || ratio == 1.5)
                QCOMPARE(seen.width(), video.width());
        }
    }

    void sizedAboutTheMiddleAndKeptOnTheScreen_data()
    {
        QTest::addColumn<QRect>("area");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRect>("sized");
        QTest::newRow("larger") << QRect(400, 300, 320, 240) << QSize(640, 360) << QRect(240, 240, 640, 360);
        QTest::newRow("smaller") << QRect(400, 300, 320, 240) << QSize(200, 150) << QRect(460, 345, 200, 150);
        QTest::newRow("top left") << QRect(10, 10, 320, 240) << QSize(640, 360) << QRect(1, 0, 640, 360);
        QTest::newRow("bottom right") << QRect(950, 470, 320, 240) << QSize(640, 360) << QRect(640, 360, 640, 360);
        QTest::newRow("whole screen") << QRect(400, 300, 320, 240) << QSize(1280, 720) << QRect(0, 0, 1280, 720);
    }

    void sizedAboutTheMiddleAndKeptOnTheScreen()
    {
        QFETCH(const QRect, area);
        QFETCH(const QSize, size);
        QTEST(regionsize::around(area, size, QRect(0, 0, 1280, 720)), "sized");
    }

    void edgesThatHaveNotMovedStay_data()
    {
        QTest::addColumn<QRect>("resized");
        QTest::addColumn<QRect>("settled");
        QTest::newRow("bottom right") << QRect(100, 100, 441, 301) << QRect(100, 100, 440, 300);
        QTest::newRow("top left") << QRect(59, 39, 441, 301) << QRect(60, 40, 440, 300);
        QTest::newRow("right") << QRect(100, 68, 444, 304) << QRect(100, 70, 440, 300);
    }

    void edgesThatHaveNotMovedStay()
    {
        QFETCH(const QRect, resized);
        QTEST(regionsize::atSettledEdges(QRect(100, 100, 400, 240), resized, {440, 300}), "settled");
    }
};

REGISTER_TEST(testrun::core<TestRegionSize>);

#include "test_regionsize.moc"
