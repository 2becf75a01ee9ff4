// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/framebar.h"
#include "tests/support/testrun.h"

#include <QTest>

/// Where the tool bar of a region frame is.
class TestFrameBar : public QObject
{
    Q_OBJECT

private slots:
    void isWhereItCanBeReached_data()
    {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QRect>("bar");
        QTest::newRow("on top") << QRect(100, 100, 400, 300) << QRect(100, 70, 400, 30);
        QTest::newRow("on top, to the pixel") << QRect(100, 30, 400, 300) << QRect(100, 0, 400, 30);
        QTest::newRow("below") << QRect(100, 29, 400, 300) << QRect(100, 329, 400, 30);
        QTest::newRow("below, to the pixel") << QRect(100, 0, 400, 690) << QRect(100, 690, 400, 30);
        QTest::newRow("inside") << QRect(100, 0, 400, 691) << QRect(240, 4, 256, 30);
        QTest::newRow("inside, wider than the frame") << QRect(500, 0, 200, 720) << QRect(440, 4, 256, 30);
        QTest::newRow("inside what is on the screen") << QRect(-4, -4, 1288, 728) << QRect(1020, 4, 256, 30);
        QTest::newRow("off to the right") << QRect(1280, 300, 1200, 300) << QRect(1280, 270, 1200, 30);
        QTest::newRow("off to the left") << QRect(-100, 100, 400, 300) << QRect(0, 70, 300, 30);
        QTest::newRow("nearly gone to the left") << QRect(-350, 100, 400, 300) << QRect(0, 70, 220, 30);
        QTest::newRow("nearly gone to the right") << QRect(2060, 200, 400, 300) << QRect(1860, 170, 220, 30);
        QTest::newRow("below on two screens") << QRect(1250, 100, 400, 300) << QRect(1250, 400, 400, 30);
        QTest::newRow("nearly gone at the bottom") << QRect(100, 700, 400, 300) << QRect(100, 670, 400, 30);
        QTest::newRow("narrower than its buttons") << QRect(100, 100, 200, 150) << QRect(100, 70, 220, 30);
        QTest::newRow("larger than the screen") << QRect(-320, -180, 1920, 1080) << QRect(1020, 4, 256, 30);
        QTest::newRow("on two screens") << QRect(1200, 200, 400, 300) << QRect(1200, 170, 400, 30);
        QTest::newRow("on two screens, the upper edge on one") << QRect(1000, 60, 400, 300) << QRect(1000, 30, 400, 30);
        QTest::newRow("nowhere") << QRect(3000, 3000, 400, 300) << QRect(3000, 2970, 400, 30);
    }

    void isWhereItCanBeReached()
    {
        QFETCH(const QRect, frame);
        QFETCH(const QRect, bar);
        QCOMPARE(framebar::placed(frame, kBar, m_screens, true), bar);
    }

    void coversNothingThatIsRecordedWithIt()
    {
        QCOMPARE(framebar::placed(QRect(100, 0, 400, 720), kBar, m_screens, false), QRect(100, -30, 400, 30));
        QCOMPARE(framebar::placed(QRect(100, 0, 400, 600), kBar, m_screens, false), QRect(100, 600, 400, 30));
    }

    void isOnTopWithoutAScreen()
    {
        QCOMPARE(framebar::placed(QRect(0, 0, 400, 300), kBar, {}, true), QRect(0, -30, 400, 30));
    }

private:
    static constexpr framebar::Size kBar{30, 220, 256};
    /// The right one begins 100 pixels further down.
    const QList<QRect> m_screens{QRect(0, 0, 1280, 720), QRect(1280, 100, 800, 600)};
};

REGISTER_TEST(testrun::core<TestFrameBar>);
#include "test_framebar.moc"
