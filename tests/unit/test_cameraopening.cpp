// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/sccamerawindow.h"
#include "tests/support/fakecameras.h"
#include "tests/support/loglines.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include <stdexcept>

namespace {

const auto kBusy = QStringLiteral("busy");

CameraFormat format(int width, int height, float maximumFps)
{
    return FakeCameras::format(width, height, maximumFps);
}

CameraDevice simpleCamera(const char* name)
{
    return FakeCameras::device(name, {format(1280, 720, 30)});
}

[[noreturn]] void fail(bool withText)
{
    if (withText)
        throw std::runtime_error(kBusy.toStdString());
    throw 1;
}

} // namespace

/// Which camera is opened, in which format, what is tried when it fails, and what the log says of it.
class TestCameraOpening : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_cameras = std::make_shared<FakeCameras>();
        m_cameras->plugIn({simpleCamera("A"), simpleCamera("B")});
    }

    void cleanup()
    {
        m_window.reset();
        QCOMPARE(m_cameras->openCameras, 0);
    }

    void firstCameraIsOpenedOnceTheWindowIsMade()
    {
        const LogLines log;
        m_window = std::make_unique<SCCameraWindow>(m_cameras);
        QCOMPARE(log.all(), QStringList{"[INFO] Found 2 camera devices"});
        QCOMPARE(m_cameras->calls, QStringList());
        QCoreApplication::processEvents();
        QCOMPARE(log.all().mid(1),
                 (QStringList{"[INFO] Selecting camera at index 0: A", "[INFO] Stopping camera",
                              "[INFO] Setting camera format: 1280x720 @ 30 FPS", "[INFO] Camera started successfully",
                              "[INFO] Active camera format: 1280x720 @ 30 FPS"}));
        QCOMPARE(m_cameras->calls, (QStringList{"create A", "format 1280x720", "session", "output", "activate"}));
        QTRY_VERIFY(log.all().last().startsWith("[INFO] Forced video widget update (size: "));
    }

    void otherCameraIsOpenedAfterTheFirstWasReleased()
    {
        open();
        const LogLines log;
        m_window->onCameraSelected(1);
        QCOMPARE(log.all().mid(0, 3), (QStringList{"[INFO] Selecting camera at index 1: B", "[INFO] Stopping camera",
                                                   "[INFO] Camera stopped successfully"}));
        QCOMPARE(m_cameras->calls, (QStringList{"deactivate", "end session", "destroy", "create B", "format 1280x720",
                                                "session", "output", "activate"}));
    }

    void indexThatIsNotInTheListIsLoggedAndIgnored()
    {
        open();
        const LogLines log;
        m_window->onCameraSelected(2);
        m_window->onCameraSelected(-1);
        QCOMPARE(log.all(), (QStringList{"[WARNING] Invalid camera index: 2 (available cameras: 2)",
                                         "[WARNING] Invalid camera index: -1 (available cameras: 2)"}));
        QCOMPARE(m_cameras->calls, QStringList());
        QVERIFY(m_cameras->isActive);
    }

    void cameraWith1080pAt30And2160pAt10OpensAt1080p()
    {
        m_cameras->plugIn({FakeCameras::device("A", {format(1920, 1080, 30), format(3840, 2160, 10)})});
        const LogLines log;
        open();
        QCOMPARE(log.count("[INFO] Setting camera format: 1920x1080 @ 30 FPS"), 1);
        QCOMPARE(log.count("[INFO] Active camera format: 1920x1080 @ 30 FPS"), 1);
    }

    void cameraBelow15FpsIsWarnedOfAndRunsWithItsDefaultFormat()
    {
        m_cameras->plugIn({FakeCameras::device("A", {format(640, 480, 14.5), format(1280, 720, 10)})});
        m_cameras->ownFormat = format(1280, 720, 10);
        const LogLines log;
        m_window = std::make_unique<SCCameraWindow>(m_cameras);
        QCoreApplication::processEvents();
        QCOMPARE(m_cameras->calls, (QStringList{"create A", "session", "output", "activate"}));
        QCOMPARE(log.count("[WARNING] No suitable camera format found, will try alternative formats"), 1);
        QCOMPARE(log.count("[INFO] Active camera format: 1280x720 @ 10 FPS"), 1);
        QVERIFY(m_cameras->isActive);
    }

    void frameRatesAreWrittenInTheirShortestForm()
    {
        m_cameras->plugIn({FakeCameras::device("A", {format(640, 480, 29.97F)})});
        const LogLines log;
        open();
        QCOMPARE(log.count("[INFO] Setting camera format: 640x480 @ 29.97 FPS"), 1);
    }

    void windowTakesTheRatioOfTheVideo_data()
    {
        QTest::addColumn<QSize>("video");
        QTest::addColumn<QSize>("minimum");
        QTest::addColumn<QSize>("size");
        QTest::newRow("16:9") << QSize(1920, 1080) << QSize(200, 112) << QSize(400, 225);
        QTest::newRow("4:3") << QSize(640, 480) << QSize(200, 150) << QSize(400, 300);
        QTest::newRow("5:4") << QSize(1280, 1024) << QSize(200, 160) << QSize(400, 320);
        QTest::newRow("11:9") << QSize(352, 288) << QSize(200, 163) << QSize(400, 327);
    }

    void windowTakesTheRatioOfTheVideo()
    {
        QFETCH(const QSize, video);
        QFETCH(const QSize, minimum);
        QFETCH(const QSize, size);
        m_cameras->plugIn({FakeCameras::device("A", {format(video.width(), video.height(), 30)})});
        open();
        QCOMPARE(m_window->minimumSize(), minimum);
        QCOMPARE(m_window->size(), size);
    }

    void videoWithoutASizeLeavesTheWindowAlone()
    {
        m_cameras->plugIn({FakeCameras::device("A", {})});
        m_cameras->ownFormat = CameraFormat();
        const LogLines log;
        open();
        m_cameras->ownFormat.reset();
        m_window->onCameraSelected(0);
        QCOMPARE(log.count("[WARNING] Camera format is null or resolution is not valid"), 2);
        QCOMPARE(m_window->size(), QSize(400, 225));
    }

    void cameraThatCannotBePreparedIsLogged_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<bool>("withText");
        for (const char* const call : {"create A", "format 1280x720", "session"}) {
            QTest::addRow("%s, with a text", call) << call << true;
            QTest::addRow("%s, without a text", call) << call << false;
        }
    }

    void cameraThatCannotBePreparedIsLogged()
    {
        QFETCH(const QString, call);
        QFETCH(const bool, withText);
        failAt({call}, withText);
        const LogLines log;
        open();
        QCOMPARE(log.all().last(), withText ? "[ERROR] Exception when initializing camera: busy"
                                            : "[ERROR] Unknown exception when initializing camera");
        QVERIFY(!m_cameras->isActive);
        QVERIFY(label()->isHidden());
    }

    void failureToStartLeadsToTheFirstCommonFormat_data() { addTexts(); }

    void failureToStartLeadsToTheFirstCommonFormat()
    {
        QFETCH(const bool, withText);
        m_cameras->plugIn({FakeCameras::device(
            "A", {format(1280, 720, 30), format(640, 480, 14), format(800, 600, 29.97F), format(1920, 1080, 30)})});
        failFirst("activate", 1, withText);
        const LogLines log;
        open();
        QCOMPARE(log.all().mid(4),
                 (QStringList{withText ? "[ERROR] Exception when starting camera: busy"
                                       : "[ERROR] Unknown exception when starting camera",
                              "[INFO] Trying alternative camera formats...", "[INFO] Available formats for camera A:",
                              "[INFO]   Format 0: 1280x720 @ 5-30 FPS, pixel format: 17",
                              "[INFO]   Format 1: 640x480 @ 5-14 FPS, pixel format: 17",
                              "[INFO]   Format 2: 800x600 @ 5-29.97 FPS, pixel format: 17",
                              "[INFO]   Format 3: 1920x1080 @ 5-30 FPS, pixel format: 17",
                              "[INFO] Trying preferred format: 800x600 @ 29.97 FPS"}));
        QCOMPARE(m_cameras->calls.mid(4), QStringList() << "activate"
                                                        << "format 800x600"
                                                        << "activate");
        QVERIFY(m_cameras->isActive);
        QVERIFY(label()->isHidden());
    }

    void commonFormatThatFailsTooIsTriedTwiceAndLogged()
    {
        failAt({"activate"}, true);
        const LogLines log;
        open();
        QCOMPARE(log.count("[INFO] Trying preferred format: 1280x720 @ 30 FPS"), 2);
        QCOMPARE(log.count("[WARNING] Failed to start camera with selected format, trying alternatives"), 1);
        QCOMPARE(log.all().last(), QStringLiteral("[ERROR] Exception when initializing camera: busy"));
        QVERIFY(label()->isHidden());
    }

    void commonFormatThatComesRightTheSecondTimeRuns()
    {
        failFirst("activate", 2, true);
        open();
        QVERIFY(m_cameras->isActive);
    }

    void otherFormatsAreTriedFromTheSmallestOn()
    {
        plugInUncommonCamera();
        failFirst("activate", 2, true);
        const LogLines log;
        open();
        QCOMPARE(log.all().mid(10),
                 (QStringList{"[INFO] Trying format: 100x80 @ 30 FPS", "[WARNING] Failed to use format: 100x80",
                              "[INFO] Trying format: 120x90 @ 10 FPS"}));
        QVERIFY(m_cameras->isActive);
    }

    void formatThatCannotBeSetIsPassedOver()
    {
        plugInUncommonCamera();
        failFirst("activate", 1, true);
        const auto busy = m_cameras->onCall;
        m_cameras->onCall = [busy](const QString& call) {
            busy(call);
            if (call == QLatin1String("format 100x80"))
                fail(false);
        };
        const LogLines log;
        open();
        QCOMPARE(log.count("[WARNING] Failed to use format: 100x80"), 1);
        QCOMPARE(log.all().last(), QStringLiteral("[INFO] Trying format: 120x90 @ 10 FPS"));
        QVERIFY(m_cameras->isActive);
    }

    void whenAllFormatsFailTheCameraIsStartedAsItIs()
    {
        plugInUncommonCamera();
        failFirst("activate", 4, true);
        const LogLines log;
        open();
        QCOMPARE(log.count("[WARNING] Failed to use format: 1000x800"), 1);
        QCOMPARE(log.all().last(), QStringLiteral("[WARNING] All camera formats failed, trying with default format"));
        QVERIFY(m_cameras->isActive);
    }

    void failureOfTheDefaultFormatIsTheLastOne_data() { addTexts(); }

    void failureOfTheDefaultFormatIsTheLastOne()
    {
        QFETCH(const bool, withText);
        plugInUncommonCamera();
        failAt({"activate"}, withText);
        const LogLines log;
        open();
        QCOMPARE(log.all().last(), withText ? "[ERROR] Failed to start camera with default format: busy"
                                            : "[ERROR] Unknown exception when starting camera with default format");
        QVERIFY(!m_cameras->isActive);
        QVERIFY(label()->isHidden());
    }

    void cameraWithoutFormatsHasNoOthersToTry()
    {
        m_cameras->plugIn({FakeCameras::device("A", {})});
        failAt({"activate"}, true);
        const LogLines log;
        open();
        QCOMPARE(log.all().mid(4), (QStringList{"[ERROR] Exception when starting camera: busy",
                                                "[INFO] Trying alternative camera formats...",
                                                "[WARNING] No video formats available for this camera"}));
    }

    void windowThatIsClosedWhileItsCameraFailsHasNoOthersToTry()
    {
        m_cameras->onCall = [this](const QString& call) {
            if (call != QLatin1String("activate"))
                return;
            m_window->close();
            fail(true);
        };
        const LogLines log;
        open();
        QCOMPARE(log.all().mid(log.all().size() - 2),
                 (QStringList{"[INFO] Trying alternative camera formats...",
                              "[WARNING] Cannot try alternative formats: camera is null"}));
    }

    void cameraThatRefusesToStopIsLoggedAndReleased_data() { addTexts(); }

    void cameraThatRefusesToStopIsLoggedAndReleased()
    {
        QFETCH(const bool, withText);
        open();
        failAt({"deactivate"}, withText);
        const LogLines log;
        m_window->onCameraSelected(1);
        QCOMPARE(log.all().at(2), withText ? "[ERROR] Exception when stopping camera: busy"
                                           : "[ERROR] Unknown exception when stopping camera");
        QCOMPARE(m_cameras->calls.mid(0, 4), (QStringList{"deactivate", "end session", "destroy", "create B"}));
        QVERIFY(m_cameras->isActive);
    }

    void cameraThatDoesNotRunIsAlreadyStopped()
    {
        plugInUncommonCamera();
        failAt({"activate"}, true);
        open();
        m_cameras->calls.clear();
        const LogLines log;
        m_window->onCameraSelected(0);
        QCOMPARE(log.all().mid(1, 2), (QStringList{"[INFO] Stopping camera", "[INFO] Camera already stopped"}));
        QCOMPARE(m_cameras->calls.mid(0, 2), (QStringList{"end session", "destroy"}));
    }

private:
    void open()
    {
        m_window = std::make_unique<SCCameraWindow>(m_cameras);
        QCoreApplication::processEvents();
        if (!m_cameras->onCall)
            m_cameras->calls.clear();
    }

    QLabel* label() const { return m_window->findChild<QLabel*>(); }

    static void addTexts()
    {
        QTest::addColumn<bool>("withText");
        QTest::newRow("with a text") << true;
        QTest::newRow("without a text") << false;
    }

    /// None of its sizes is a common one.
    void plugInUncommonCamera()
    {
        m_cameras->plugIn(
            {FakeCameras::device("A", {format(1000, 800, 30), format(100, 80, 30), format(120, 90, 10)})});
    }

    void failAt(const QStringList& calls, bool withText)
    {
        m_cameras->calls.clear();
        m_cameras->onCall = [calls, withText](const QString& call) {
            if (calls.contains(call))
                fail(withText);
        };
    }

    void failFirst(const char* failing, int times, bool withText)
    {
        m_cameras->onCall = [failing, left = times, withText](const QString& call) mutable {
            if (call == QLatin1String(failing) && left-- > 0)
                fail(withText);
        };
    }

    std::shared_ptr<FakeCameras> m_cameras;
    std::unique_ptr<SCCameraWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestCameraOpening>);

#include "test_cameraopening.moc"
