// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/screenvisual.h"
#include "tests/support/testrun.h"

#include <QTest>

Q_DECLARE_METATYPE(ScreenVisual)

/// Which screens can be captured without a conversion of their pixels.
class TestScreenVisual : public QObject
{
    Q_OBJECT

private slots:
    void isSupportedOrSaysWhyNot_data()
    {
        QTest::addColumn<ScreenVisual>("visual");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const ScreenVisual& visual, const char* reason) {
            QTest::newRow(name) << visual << QString::fromLatin1(reason);
        };
        row("24 bits", {24, 32, true, 0xFF0000, 0xFF00, 0xFF}, "");
        row("32 bits", {32, 32, true, 0xFF0000, 0xFF00, 0xFF}, "");
        row("16 bits", {16, 16, true, 0xF800, 0x7E0, 0x1F}, "the screen has a colour depth of 16 bits, not 24 or 32");
        row("15 bits", {15, 16, true, 0x7C00, 0x3E0, 0x1F}, "the screen has a colour depth of 15 bits, not 24 or 32");
        row("30 bits", {30, 32, true, 0x3FF00000, 0xFFC00, 0x3FF},
            "the screen has a colour depth of 30 bits, not 24 or 32");
        row("palette", {8, 8, true, 0, 0, 0}, "the screen has a colour depth of 8 bits, not 24 or 32");
        row("three bytes", {24, 24, true, 0xFF0000, 0xFF00, 0xFF},
            "the X server stores 24 bits for each pixel, not 32");
        row("big-endian", {24, 32, false, 0xFF0000, 0xFF00, 0xFF},
            "the X server stores pixels with the highest byte first");
        row("red and blue swapped", {24, 32, true, 0xFF, 0xFF00, 0xFF0000},
            "the screen's colours are at 0xff, 0xff00 and 0xff0000, not at 0xff0000, 0xff00 and 0xff");
        row("red in the highest byte", {24, 32, true, 0xFF000000, 0xFF0000, 0xFF00},
            "the screen's colours are at 0xff000000, 0xff0000 and 0xff00, not at 0xff0000, 0xff00 and 0xff");
    }

    void isSupportedOrSaysWhyNot()
    {
        QFETCH(const ScreenVisual, visual);
        QFETCH(const QString, reason);
        QCOMPARE(unsupportedVisual(visual), reason);
    }
};

REGISTER_TEST(testrun::core<TestScreenVisual>);
#include "test_screenvisual_x11.moc"
