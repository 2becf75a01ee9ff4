// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/mediafile.h"
#include "tests/support/stillimage.h"
#include "tests/support/testrun.h"

#include <QTest>

/// Ratio presets in files that the program recorded, on a screen that they fit on.
class TestPreset : public QObject
{
    Q_OBJECT

private slots:
    void aRatioPresetGivesAFileOfItsSizeFromTheMiddleOfTheScreen()
    {
        constexpr QSize kNineToSixteen(608, 1080);
        constexpr int kTakeMs = 2000;
        constexpr int kListMs = 200;
        const QSize screen = StillImage::displaySize();
        const QImage grid = gridImage(screen);
        const StillImage still(grid);
        ProgramUnderTest program;
        regionuser::prepare(program);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY(goBackFromRecordButton(program, kStepsToRatio));
        // In the opened list, where the presets on the way are not chosen.
        for (const char* key : {"space", "Down", "Down", "Return"}) {
            ProgramUnderTest::pressKey(QLatin1String(key));
            QTest::qWait(kListMs);
        }
        QVERIFY(visibleWindow(QStringLiteral("Drawing Window")).has_value());
        const Take take = record(program, QStringLiteral("mp4"), kTakeMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

        const MediaFile file(take.path);
        QVERIFY2(file.isReadable() && file.video(), qPrintable(file.error()));
        QCOMPARE(file.video()->size, kNineToSixteen);
        const QRect middle(
            QPoint((screen.width() - kNineToSixteen.width()) / 2, (screen.height() - kNineToSixteen.height()) / 2),
            kNineToSixteen);
        const QString difference = differenceFromGrid(file.frameAt(file.durationSeconds() * 0.8), middle, grid);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
};

REGISTER_TEST(testrun::core<TestPreset>);
#include "test_preset.moc"
