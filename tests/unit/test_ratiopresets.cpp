// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/capturearea.h"
#include "mainwindow/capture/ratiopresets.h"
#include "tests/support/testrun.h"

#include <QTest>

class TestRatioPresets : public QObject
{
    Q_OBJECT

private slots:
    void presetsAndTheirSizes()
    {
        QCOMPARE(ratiopresets::names(), (QStringList{"16:9", "9:16", "4:3", "1:1"}));
        QCOMPARE(ratiopresets::physicalSize("16:9"), QSize(1920, 1080));
        QCOMPARE(ratiopresets::physicalSize("9:16"), QSize(608, 1080));
        QCOMPARE(ratiopresets::physicalSize("4:3"), QSize(1440, 1080));
        QCOMPARE(ratiopresets::physicalSize("1:1"), QSize(1080, 1080));
    }

    void otherTextsAreNoPreset()
    {
        for (const QString& text :
             {QString(), QStringLiteral("Custom"), QStringLiteral("16 : 9"), QStringLiteral("2:1")})
            QVERIFY(!ratiopresets::physicalSize(text));
    }

    void sixteenToNineAtRatioOneAndAHalfIs1280By720LogicalPixels()
    {
        const CaptureScreen screen{{0, 0, 1706, 1066}, 1.5};
        const QRect area = ratiopresets::areaOn(screen, {1920, 1080}, 4);
        QCOMPARE(area.size(), QSize(1280, 720));
        CaptureArea stored;
        stored.setRegion(area, screen, QSize(4, 2));
        QCOMPARE(stored.physicalSize(screen), QSize(1920, 1080));
    }

    void areaIsInTheMiddleOfThePrimaryScreen_data()
    {
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QSize>("preset");
        QTest::addColumn<QRect>("area");
        // (1920 - 1088) / 2 + 4, (1200 - 1088) / 2 + 4
        QTest::newRow("at the origin") << QRect(0, 0, 1920, 1200) << 1.0 << QSize(1080, 1080)
                                       << QRect(420, 60, 1080, 1080);
        QTest::newRow("to the right") << QRect(1280, 100, 1920, 1200) << 1.0 << QSize(1080, 1080)
                                      << QRect(1700, 160, 1080, 1080);
        // 608 / 1.25 = 486.4
        QTest::newRow("truncated") << QRect(0, 0, 1536, 960) << 1.25 << QSize(608, 1080) << QRect(525, 48, 486, 864);
        QTest::newRow("larger than the screen")
            << QRect(0, 0, 1280, 720) << 1.0 << QSize(1920, 1080) << QRect(-320, -180, 1920, 1080);
    }

    void areaIsInTheMiddleOfThePrimaryScreen()
    {
        QFETCH(const QRect, screen);
        QFETCH(const double, ratio);
        QFETCH(const QSize, preset);
        QFETCH(const QRect, area);
        QCOMPARE(ratiopresets::areaOn({screen, ratio}, preset, 4), area);
    }
};

REGISTER_TEST(testrun::core<TestRatioPresets>);

#include "test_ratiopresets.moc"
