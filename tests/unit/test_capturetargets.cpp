// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/capturetargets.h"
#include "tests/support/testrun.h"

#include <QRect>
#include <QTest>

class TestCaptureTargets : public QObject
{
    Q_OBJECT

private slots:
    void findsTheScreen_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QString>("expected");

        const QStringList x11{"Screen DP-1 (2560x1440 @ 1920,0)", "Screen HDMI-1 (1920x1080 @ 0,0)",
                              "Screen DP-2 (1920x1080 @ 4480,360)"};
        const QStringList windows{"DELL U2720Q: 3840x2160 @ 0,0 (Primary Monitor)", "LG: 1920x1080 @ -1920,-120",
                                  "LG: 1920x1080 @ 3840,0"};
        QTest::newRow("primary screen is not the first entry and not at the origin")
            << x11 << QRect(1920, 0, 2560, 1440) << x11.at(0);
        QTest::newRow("order of the list is not the order of the positions")
            << x11 << QRect(0, 0, 1920, 1080) << x11.at(1);
        QTest::newRow("two screens of the same size") << x11 << QRect(4480, 360, 1920, 1080) << x11.at(2);
        QTest::newRow("name with a primary mark") << windows << QRect(0, 0, 3840, 2160) << windows.at(0);
        QTest::newRow("negative position") << windows << QRect(-1920, -120, 1920, 1080) << windows.at(1);
        QTest::newRow("two screens of the same name") << windows << QRect(3840, 0, 1920, 1080) << windows.at(2);
        QTest::newRow("size rounded by a fractional scale") << windows << QRect(0, 0, 3839, 2159) << windows.at(0);
        QTest::newRow("screen's own name holds a size")
            << QStringList{"Screen 1920x1080 @ 0,0 (1280x720 @ 1920,0)", "Screen B (1920x1080 @ 0,0)"}
            << QRect(0, 0, 1920, 1080) << "Screen B (1920x1080 @ 0,0)";
        QTest::newRow("mirrored screens give the first")
            << QStringList{"Screen A (1280x720 @ 0,0)", "Screen B (1280x720 @ 0,0)"} << QRect(0, 0, 1280, 720)
            << "Screen A (1280x720 @ 0,0)";
        QTest::newRow("exact geometry goes before the same position")
            << QStringList{"Screen A (1024x768 @ 0,0)", "Screen B (1280x720 @ 0,0)"} << QRect(0, 0, 1280, 720)
            << "Screen B (1280x720 @ 0,0)";
        QTest::newRow("a single entry without geometry")
            << QStringList{"Display 1"} << QRect(0, 0, 1280, 720) << "Display 1";
        QTest::newRow("a single entry that lies elsewhere")
            << QStringList{"Screen A (1280x720 @ 64,0)"} << QRect(0, 0, 1280, 720) << "Screen A (1280x720 @ 64,0)";
        QTest::newRow("several entries and none fits") << x11 << QRect(9999, 0, 640, 480) << QString();
        QTest::newRow("several entries without geometry at the origin")
            << QStringList{"Display 1", "Display 2"} << QRect(0, 0, 1280, 720) << QString();
        QTest::newRow("no entry") << QStringList() << QRect(0, 0, 1280, 720) << QString();
    }

    void findsTheScreen()
    {
        QFETCH(const QStringList, names);
        QFETCH(const QRect, screen);
        QTEST(captureTargetForScreen(names, screen), "expected");
    }
};

REGISTER_TEST(testrun::core<TestCaptureTargets>);
#include "test_capturetargets.moc"
