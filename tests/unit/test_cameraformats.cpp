// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/cameraformats.h"
#include "tests/support/fakecameras.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

CameraFormat format(int width, int height, float maximumFps)
{
    return FakeCameras::format(width, height, maximumFps);
}

} // namespace

class TestCameraFormats : public QObject
{
    Q_OBJECT

private slots:
    void bestHasTheMostPixelsOfThoseThatReach15Fps()
    {
        QCOMPARE(cameraformats::best({format(1920, 1080, 30), format(3840, 2160, 10)})->resolution, QSize(1920, 1080));
        QCOMPARE(cameraformats::best({format(640, 480, 30), format(1280, 720, 15)})->resolution, QSize(1280, 720));
        QVERIFY(!cameraformats::best({format(640, 480, 14.99F), format(1280, 720, 10)}));
        QVERIFY(!cameraformats::best({}));
    }

    void firstListedOfEqualPixelCountsIsBest()
    {
        QCOMPARE(cameraformats::best({format(320, 240, 30), format(800, 600, 15), format(600, 800, 60)}),
                 format(800, 600, 15));
    }

    void pixelsOfHugeFormatsAreCounted()
    {
        QCOMPARE(cameraformats::best({format(640, 480, 30), format(65536, 65536, 30)})->resolution,
                 QSize(65536, 65536));
    }

    void commonSizesHaveAnOrderOfTheirOwn()
    {
        QList<CameraFormat> formats{format(176, 144, 30),  format(352, 288, 30), format(320, 240, 30),
                                    format(1280, 720, 30), format(800, 600, 30), format(640, 480, 30)};
        const QList<QSize> order{{640, 480}, {800, 600}, {1280, 720}, {320, 240}, {352, 288}, {176, 144}};
        for (const QSize& size : order) {
            QCOMPARE(cameraformats::common(formats)->resolution, size);
            formats.removeIf([&](const CameraFormat& known) { return known.resolution == size; });
        }
        QVERIFY(!cameraformats::common(formats));
    }

    void firstListedOfACommonSizeThatReaches15FpsIsTaken()
    {
        QCOMPARE(cameraformats::common({format(640, 480, 14), format(640, 480, 20), format(640, 480, 60)}),
                 format(640, 480, 20));
        QVERIFY(!cameraformats::common({format(640, 480, 14), format(1920, 1080, 30)}));
    }

    void smallestComesFirstAndEqualsKeepTheirOrder()
    {
        const QList<CameraFormat> formats{format(1920, 1080, 30), format(300, 200, 5), format(200, 300, 10)};
        QCOMPARE(cameraformats::smallestFirst(formats),
                 (QList<CameraFormat>{format(300, 200, 5), format(200, 300, 10), format(1920, 1080, 30)}));
    }
};

REGISTER_TEST(testrun::core<TestCameraFormats>);

#include "test_cameraformats.moc"
