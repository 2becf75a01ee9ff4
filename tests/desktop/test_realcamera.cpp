// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/sccamerawindow.h"
#include "tests/desktop/desktopuser.h"
#include "tests/support/loglines.h"
#include "tests/support/testprofile.h"
#include "tests/support/testregistry.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <array>

namespace {

const QRect kGeometry(200, 160, 400, 225);

/// The first three colour bars of the test camera are light grey, yellow and cyan, and the last one is blue.
struct Bar
{
    double position;
    bool red;
    bool green;
    bool blue;
};

/// A busy machine takes seconds to start a camera.
constexpr int kPaintTimeoutMs = 30'000;
constexpr std::array<Bar, 4> kBars{
    {{0.07, true, true, true}, {0.21, true, true, false}, {0.36, false, true, true}, {0.93, false, false, true}}};

bool isBar(QRgb seen, const Bar& bar)
{
    constexpr int kDark = 70;
    constexpr int kLight = 140;
    const auto is = [](int value, bool lit) { return lit ? value > kLight : value < kDark; };
    return is(qRed(seen), bar.red) && is(qGreen(seen), bar.green) && is(qBlue(seen), bar.blue);
}

} // namespace

/// The webcam window with Qt Multimedia and a camera that a plug-in of GStreamer lists.
class TestRealCamera : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        desktopuser::pointTo(desktopuser::onScreen({3, 3}));
        plugIn();
    }

    void cleanup()
    {
        m_window.reset();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
    }

    void videoOfTheCameraIsShown()
    {
        const LogLines log;
        show();
        for (const Bar& bar : kBars) {
            const QPoint position = kGeometry.topLeft() + QPoint(qRound(kGeometry.width() * bar.position), 60);
            QTRY_VERIFY2_WITH_TIMEOUT(isBar(desktopuser::colourAt(position), bar),
                                      qPrintable(QColor(desktopuser::colourAt(position)).name()), kPaintTimeoutMs);
        }
        QVERIFY(log.count("[INFO] Setting camera format: 1280x720 @ 30 FPS") >= 1);
        QVERIFY(log.count("[INFO] Active camera format: 1280x720 @ 30 FPS") >= 1);
        QCOMPARE(log.all().filter("[ERROR]"), QStringList());
        QTRY_VERIFY(log.all().contains("[INFO] Camera: Kestrano Test Camera"));
    }

private:
    static QString file() { return qEnvironmentVariable("KESTRANO_TEST_CAMERA"); }

    static void plugIn()
    {
        QFile camera(file());
        QVERIFY(camera.open(QIODevice::WriteOnly));
    }

    void show()
    {
        m_window = std::make_unique<SCCameraWindow>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_window->setGeometry(kGeometry);
    }

    std::unique_ptr<SCCameraWindow> m_window;
};

static int run(int argc, char* argv[])
{
    const TestProfile profile;
    const QTemporaryDir folder;
    qputenv("KESTRANO_TEST_CAMERA", folder.filePath(QStringLiteral("camera")).toLocal8Bit());
    QApplication application(argc, argv);
    TestRealCamera test;
    return QTest::qExec(&test, argc, argv);
}

REGISTER_TEST(run);

#include "test_realcamera.moc"
