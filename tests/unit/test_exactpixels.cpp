// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/exactpixels.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

const QSize kScreen(1366, 768);
const QSize kSteps(4, 2);

} // namespace

class TestExactPixels : public QObject
{
    Q_OBJECT

private slots:
    void videoSizeIsOfWholeSteps_data()
    {
        QTest::addColumn<QSize>("region");
        QTest::addColumn<QSize>("screen");
        QTest::addColumn<QSize>("video");
        QTest::newRow("fits") << QSize(360, 300) << kScreen << QSize(360, 300);
        QTest::newRow("one column") << QSize(363, 301) << kScreen << QSize(364, 302);
        QTest::newRow("two columns") << QSize(362, 299) << kScreen << QSize(360, 300);
        QTest::newRow("whole screen") << kScreen << kScreen << QSize(1364, 768);
        QTest::newRow("larger than the screen") << QSize(1367, 1081) << kScreen << QSize(1368, 1082);
        QTest::newRow("odd screen") << QSize(1367, 801) << QSize(1367, 801) << QSize(1364, 800);
        QTest::newRow("nothing") << QSize(0, 0) << kScreen << QSize(0, 0);
    }

    void videoSizeIsOfWholeSteps()
    {
        QFETCH(const QSize, region);
        QFETCH(const QSize, screen);
        QFETCH(const QSize, video);
        QCOMPARE(exactpixels::videoSize(region, kSteps, screen), video);
    }

    void sizeGrowsToWholeSteps_data()
    {
        QTest::addColumn<QSize>("region");
        QTest::addColumn<QSize>("grown");
        QTest::newRow("fits") << QSize(360, 300) << QSize(360, 300);
        QTest::newRow("three columns") << QSize(361, 301) << QSize(364, 302);
        QTest::newRow("two columns") << QSize(362, 299) << QSize(364, 300);
        QTest::newRow("no more screen") << QSize(1365, 767) << QSize(1364, 768);
        QTest::newRow("whole screen") << kScreen << QSize(1364, 768);
    }

    void sizeGrowsToWholeSteps()
    {
        QFETCH(const QSize, region);
        QFETCH(const QSize, grown);
        QCOMPARE(exactpixels::grownSize(region, kSteps, kScreen), grown);
    }

    void cropLeavesTheVideosSize_data()
    {
        QTest::addColumn<QSize>("video");
        QTest::addColumn<QMargins>("asked");
        QTest::addColumn<QMargins>("crop");
        QTest::newRow("exact already") << QSize(360, 300) << QMargins(10, 20, 996, 448) << QMargins(10, 20, 996, 448);
        QTest::newRow("grows") << QSize(364, 302) << QMargins(10, 20, 995, 447) << QMargins(10, 20, 992, 446);
        QTest::newRow("shrinks") << QSize(360, 300) << QMargins(10, 20, 993, 446) << QMargins(10, 20, 996, 448);
        QTest::newRow("at the far edge") << QSize(364, 302) << QMargins(1005, 467, 0, 0) << QMargins(1002, 466, 0, 0);
        QTest::newRow("near the far edge") << QSize(364, 302) << QMargins(1003, 467, 2, 0) << QMargins(1002, 466, 0, 0);
        QTest::newRow("whole screen") << QSize(1364, 768) << QMargins() << QMargins(0, 0, 2, 0);
        QTest::newRow("larger than the screen") << QSize(1368, 770) << QMargins() << QMargins();
        QTest::newRow("over the far edge")
            << QSize(364, 302) << QMargins(1205, 20, -200, 447) << QMargins(1205, 20, -203, 446);
        QTest::newRow("over the near edge")
            << QSize(364, 302) << QMargins(-50, 20, 1055, 447) << QMargins(-50, 20, 1052, 446);
        QTest::newRow("rounded margins") << QSize(256, 302) << QMargins(2, 20, 1104, 447) << QMargins(2, 20, 1108, 446);
        QTest::newRow("scaled") << QSize(640, 360) << QMargins(10, 20, 30, 40) << QMargins(10, 20, 30, 40);
    }

    void cropLeavesTheVideosSize()
    {
        QFETCH(const QSize, video);
        QFETCH(const QMargins, asked);
        QFETCH(const QMargins, crop);
        QCOMPARE(exactpixels::cropTo(video, asked, kScreen), crop);
    }
};

REGISTER_TEST(testrun::core<TestExactPixels>);

#include "test_exactpixels.moc"
