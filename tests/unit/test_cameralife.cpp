// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/sccamerawindow.h"
#include "tests/support/fakecameras.h"
#include "tests/support/loglines.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QThreadPool>
#include <QTimer>

#include <stdexcept>

namespace {

CameraDevice simpleCamera(const char* name)
{
    return FakeCameras::device(name, {FakeCameras::format(1280, 720, 30)});
}

bool isMainThread()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

constexpr int kNeverMs = 3'600'000;

[[noreturn]] void fail(bool withText)
{
    if (withText)
        throw std::runtime_error("busy");
    throw 1;
}

} // namespace

/// Cameras that come and go, and a window that is shown, hidden, closed and destroyed.
class TestCameraLife : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_cameras = std::make_shared<FakeCameras>();
        m_cameras->plugIn({simpleCamera("A")});
        make();
        drain();
        m_cameras->calls.clear();
    }

    void cleanup()
    {
        m_window.reset();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
        QCOMPARE(m_cameras->openCameras, 0);
    }

    void devicesAreCheckedEveryTwoSeconds()
    {
        m_window = std::make_unique<SCCameraWindow>(m_cameras);
        const auto* const timer = m_window->findChild<QTimer*>();
        QCOMPARE(timer->interval(), 2000);
        QVERIFY(timer->isActive());
        QVERIFY(!timer->isSingleShot());
    }

    void videoIsMadeToPaintAgainAfterAShortWhile()
    {
        const CameraTimings timings;
        QCOMPARE(timings.refreshAfterShowMs, 200);
        QCOMPARE(timings.refreshAfterShowEventMs, 100);
        QCOMPARE(timings.refreshAfterStartMs, 200);
    }

    void unpluggingTheOnlyCameraIsFollowedByTheFallbackAtEveryTick()
    {
        const LogLines log;
        m_cameras->plugIn({});
        checkDevices();
        checkDevices();
        const QStringList once{"[INFO] Found 0 camera devices",
                               "[WARNING] No camera devices detected. Check camera connection and permissions.",
                               "[INFO] Attempting to use fallback camera...", "[INFO] Fallback camera started"};
        QCOMPARE(log.all().filter(QRegularExpression("Found|detected|fallback|Fallback")), once + once);
        const QStringList calls{"destroy", "create ", "session", "activate"};
        QCOMPARE(m_cameras->calls, calls + calls);
        QCOMPARE(label()->text(), QStringLiteral("Using fallback camera"));
        QTRY_VERIFY(label()->isHidden());
    }

    void windowWithoutAnyCameraTriesTheFallbackAtOnce()
    {
        m_window.reset();
        m_cameras->plugIn({});
        const LogLines log;
        make();
        QCOMPARE(log.all(),
                 (QStringList{"[INFO] Found 0 camera devices",
                              "[WARNING] No camera devices detected. Check camera connection and "
                              "permissions.",
                              "[INFO] Attempting to use fallback camera...", "[INFO] Fallback camera started"}));
    }

    void fallbackThatFailsIsLogged_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<bool>("withText");
        for (const char* const call : {"create ", "session", "activate"}) {
            QTest::addRow("%s, with a text", call) << call << true;
            QTest::addRow("%s, without a text", call) << call << false;
        }
    }

    void fallbackThatFailsIsLogged()
    {
        QFETCH(const QString, call);
        QFETCH(const bool, withText);
        m_cameras->plugIn({});
        m_cameras->onCall = [=](const QString& done) {
            if (done == call)
                fail(withText);
        };
        const LogLines log;
        checkDevices();
        QCOMPARE(log.all().last(), withText ? "[ERROR] Failed to initialize fallback camera: busy"
                                            : "[ERROR] Unknown exception when initializing fallback camera");
        QCOMPARE(label()->text(), QStringLiteral("Loading camera..."));
    }

    void cameraThatIsPluggedInTakesOverFromTheFallback()
    {
        m_cameras->plugIn({});
        checkDevices();
        m_cameras->plugIn({simpleCamera("B")});
        const LogLines log;
        checkDevices();
        QCOMPARE(log.all().mid(0, 2),
                 (QStringList{"[INFO] Found 1 camera devices", "[INFO] Selecting camera at index 0: B"}));
        QVERIFY(m_cameras->isActive);
    }

    void listIsAnotherOneWhenAnIdDiffersOrTheOrder_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::newRow("one more") << QStringList{"A", "B"};
        QTest::newRow("another one") << QStringList{"B"};
        QTest::newRow("one more, before it") << QStringList{"B", "A"};
    }

    void listIsAnotherOneWhenAnIdDiffersOrTheOrder()
    {
        QFETCH(const QStringList, names);
        QList<CameraDevice> devices;
        for (const QString& name : names)
            devices << simpleCamera(qPrintable(name));
        m_cameras->plugIn(devices);
        const LogLines log;
        checkDevices();
        QCOMPARE(log.count(QStringLiteral("[INFO] Found %1 camera devices").arg(devices.size())), 1);
        QCOMPARE(log.count("[INFO] Selecting camera at index 0: " + names.first()), 1);
    }

    void unchangedListLeavesARunningCameraAlone()
    {
        const LogLines log;
        checkDevices();
        QCOMPARE(log.all(), QStringList());
        QCOMPARE(m_cameras->calls, QStringList());
    }

    void cameraThatStoppedByItselfIsStartedAgain()
    {
        show();
        m_window->hide();
        m_cameras->calls.clear();
        const LogLines log;
        checkDevices();
        QCOMPARE(log.count("[INFO] Camera started successfully"), 1);
        QCOMPARE(log.count("[INFO] Active camera format: 1280x720 @ 30 FPS"), 1);
        QCOMPARE(m_cameras->calls, (QStringList{"output", "activate"}));
    }

    void cameraThatIsStartedAgainAndFailsNeverEscapesTheWindow()
    {
        show();
        m_window->hide();
        m_cameras->onCall = [](const QString& call) {
            if (call == QLatin1String("activate"))
                fail(true);
        };
        const LogLines log;
        checkDevices();
        QCOMPARE(log.count("[ERROR] Exception when starting camera: busy"), 2);
        QVERIFY(label()->isHidden());
    }

    void cameraThatIsGoneWhenItIsToBeStartedAgainIsLogged()
    {
        show();
        m_window->hide();
        fireTimer();
        m_window->close();
        const LogLines log;
        QCoreApplication::processEvents();
        QCOMPARE(log.count("[WARNING] Cannot start camera: camera is null"), 1);
        QVERIFY(label()->isHidden());
    }

    void cameraWhoseSessionFailedIsStartedWithoutOne()
    {
        m_cameras->onCall = [](const QString& call) {
            if (call == QLatin1String("session"))
                fail(true);
        };
        m_window->onCameraSelected(0);
        m_cameras->calls.clear();
        checkDevices();
        QCOMPARE(m_cameras->calls, QStringList{"activate"});
    }

    void hidingDeactivatesTheCameraAndShowingOpensCamera0Again()
    {
        m_cameras->plugIn({simpleCamera("A"), simpleCamera("B")});
        checkDevices();
        show();
        m_window->onCameraSelected(1);
        {
            const LogLines log;
            m_cameras->calls.clear();
            m_window->hide();
            QCOMPARE(log.all(),
                     (QStringList{"[INFO] Camera window hidden", "[INFO] Stopping camera when window is hidden"}));
            QCOMPARE(m_cameras->calls, QStringList{"deactivate"});
            QCOMPARE(m_cameras->openCameras, 1);
        }
        const LogLines log;
        m_window->show();
        QCOMPARE(log.all().mid(0, 3),
                 (QStringList{"[INFO] Camera window shown", "[INFO] Selecting first available camera after window show",
                              "[INFO] Selecting camera at index 0: A"}));
        QVERIFY(m_cameras->isActive);
        QTRY_VERIFY(log.all().filter("Forced video widget update").size() >= 3);
    }

    void hiddenWindowsCameraComesBackWithTheNextCheck()
    {
        show();
        m_window->hide();
        QVERIFY(!m_cameras->isActive);
        // By the timer itself.
        m_window->findChild<QTimer*>()->start(1);
        QTRY_VERIFY(m_cameras->isActive);
        QVERIFY(m_window->isHidden());
    }

    void hidingSurvivesACameraThatRefusesToStop_data()
    {
        QTest::addColumn<bool>("withText");
        QTest::newRow("with a text") << true;
        QTest::newRow("without a text") << false;
    }

    void hidingSurvivesACameraThatRefusesToStop()
    {
        QFETCH(const bool, withText);
        show();
        m_cameras->onCall = [withText](const QString& call) {
            if (call == QLatin1String("deactivate"))
                fail(withText);
        };
        const LogLines log;
        m_window->hide();
        QCOMPARE(log.all().last(), withText ? "[ERROR] Exception when stopping camera: busy"
                                            : "[ERROR] Unknown exception when stopping camera");
    }

    void hidingAnIdleCameraSaysNoMore()
    {
        show();
        m_window->close();
        m_window->QWidget::show();
        m_window->onCameraSelected(0);
        m_window->close();
        const LogLines log;
        QHideEvent event;
        QCoreApplication::sendEvent(m_window.get(), &event);
        QCOMPARE(log.all(), QStringList{"[INFO] Camera window hidden"});
    }

    void closingReleasesTheCameraAndShowingOpensItAgain()
    {
        show();
        {
            const LogLines log;
            QVERIFY(m_window->close());
            QCOMPARE(log.all(), (QStringList{"[INFO] Camera window closing", "[INFO] Stopping camera",
                                             "[INFO] Camera stopped successfully", "[INFO] Stopping camera",
                                             "[INFO] Camera window hidden"}));
        }
        QCOMPARE(m_cameras->openCameras, 0);
        QVERIFY(m_window->isHidden());
        checkDevices();
        QCOMPARE(m_cameras->openCameras, 0);
        show();
        QVERIFY(m_cameras->isActive);
    }

    void cameraThatIsPluggedInWhileTheWindowIsClosedWaitsUntilItIsShown()
    {
        show();
        m_window->close();
        m_cameras->plugIn({simpleCamera("B")});
        checkDevices();
        QCOMPARE(m_cameras->openCameras, 0);
        m_cameras->plugIn({});
        checkDevices();
        m_cameras->plugIn({simpleCamera("C")});
        checkDevices();
        QCOMPARE(m_cameras->openCameras, 0);
        show();
        QVERIFY(m_cameras->isActive);
    }

    void showingWithoutACameraOpensNone()
    {
        m_window.reset();
        m_cameras->plugIn({});
        make();
        const LogLines log;
        m_window->show();
        QCOMPARE(log.all().mid(0, 1), QStringList{"[INFO] Camera window shown"});
        QCOMPARE(log.all().filter("Selecting"), QStringList());
        QTRY_VERIFY(!log.all().filter("Forced video widget update").isEmpty());
    }

    void showingChecksTheDevicesAfterTheDiagnostics()
    {
        m_window->findChild<QTimer*>()->stop();
        const LogLines log;
        m_window->show();
        m_cameras->plugIn({simpleCamera("B")});
        QTRY_COMPARE(log.count("[INFO] Found 1 camera devices"), 1);
        QTRY_VERIFY(log.all().filter("Forced video widget update").size() >= 3);
    }

    void showingMakesAMissingDeviceTimerAgain()
    {
        delete m_window->findChild<QTimer*>();
        m_window->show();
        QTRY_VERIFY(m_window->findChild<QTimer*>() != nullptr);
        QCOMPARE(m_window->findChild<QTimer*>()->interval(), 5000);
        QVERIFY(m_window->findChild<QTimer*>()->isActive());
        m_cameras->plugIn({});
        const LogLines log;
        fireTimer();
        QCOMPARE(log.count("[INFO] Found 0 camera devices"), 1);
    }

    void labelIsGoneOnceTheCameraRunsHoweverOftenTheWindowIsShown()
    {
        m_window->show();
        QVERIFY(m_cameras->isActive);
        QVERIFY(label()->isHidden());
        m_window->close();
        m_window->show();
        QVERIFY(m_cameras->isActive);
        QVERIFY(label()->isHidden());
    }

    void labelIsGoneWhenTheSecondSearchForAFormatSucceeds()
    {
        // The chosen format fails, and the common one of the first search.
        m_cameras->onCall = [failures = 2](const QString& call) mutable {
            if (call == QLatin1String("activate") && failures-- > 0)
                fail(true);
        };
        label()->show();
        m_window->onCameraSelected(0);
        QVERIFY(m_cameras->isActive);
        QVERIFY(label()->isHidden());
    }

    void labelOfACameraThatTakesItsTimeIsGoneWithTheNextCheck()
    {
        label()->show();
        checkDevices();
        QVERIFY(m_cameras->isActive);
        QVERIFY(label()->isHidden());
    }

    void showingKeepsTheDeviceTimerThatIsThere()
    {
        show();
        QCOMPARE(m_window->findChildren<QTimer*>().size(), 1);
        QCOMPARE(m_window->findChild<QTimer*>()->interval(), kNeverMs);
    }

    void diagnosticsReportOfPlugInsAndCameras()
    {
        const QTemporaryDir plugIns;
        QVERIFY(QDir(plugIns.path()).mkpath(QStringLiteral("with/multimedia/folder")));
        QVERIFY(QDir(plugIns.path()).mkpath(QStringLiteral("without")));
        const QString with = QFileInfo(plugIns.filePath("with")).canonicalFilePath();
        const QString without = QFileInfo(plugIns.filePath("without")).canonicalFilePath();
        const QStringList before = QCoreApplication::libraryPaths();
        QCoreApplication::setLibraryPaths({with, without});
        m_cameras->plugIn(
            {FakeCameras::device("A", {FakeCameras::format(640, 480, 29.97F), FakeCameras::format(320, 240, 15)}),
             FakeCameras::device("B", {})});
        const QStringList lines = diagnostics();
        QCoreApplication::setLibraryPaths(before);
        QCOMPARE(lines,
                 (QStringList{"[INFO] Checking Qt Multimedia plugins...",
                              QStringLiteral("[INFO] Qt version: %1").arg(QT_VERSION_STR), "[INFO] Qt plugin paths:",
                              "[INFO]   - " + with, "[INFO]     * multimedia plugins:", "[INFO]       - folder",
                              "[INFO]   - " + without, "[WARNING]     * No multimedia directory in " + without,
                              "[INFO] QMediaDevices reports video input devices are available", "[INFO] Camera: A",
                              "[INFO]   - ID: A", "[INFO]   - Is default: Yes", "[INFO]   - Supported formats: 2",
                              "[INFO]     * 640x480 @ 29.97 FPS", "[INFO]     * 320x240 @ 15 FPS", "[INFO] Camera: B",
                              "[INFO]   - ID: B", "[INFO]   - Is default: No", "[INFO]   - Supported formats: 0"}));
    }

    void diagnosticsReportThatThereIsNoCamera()
    {
        m_cameras->plugIn({});
        QCOMPARE(diagnostics().last(),
                 QStringLiteral("[WARNING] QMediaDevices reports NO video input devices are available"));
    }

    void diagnosticsRunOnAnotherThread()
    {
        QSemaphore listed;
        m_cameras->onListed = [&] {
            if (!isMainThread())
                listed.release();
        };
        m_window->show();
        QVERIFY(listed.tryAcquire(1, 5000));
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
        m_cameras->onListed = nullptr;
    }

    void windowMayDieWhileTheDiagnosticsRun()
    {
        QSemaphore begun;
        QSemaphore mayGoOn;
        m_cameras->onListed = [&] {
            if (isMainThread())
                return;
            begun.release();
            mayGoOn.acquire();
        };
        m_window->show();
        QVERIFY(begun.tryAcquire(1, 5000));
        const LogLines log;
        m_window.reset();
        mayGoOn.release();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
        QCoreApplication::processEvents();
        QCOMPARE(log.all().first(), QStringLiteral("[INFO] Camera window destructor called"));
        QCOMPARE(log.count("[INFO] Camera: A"), 1);
        m_cameras->onListed = nullptr;
    }

    void windowMayDieWithItsCallsStillQueued()
    {
        m_window->show();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
        m_cameras->plugIn({simpleCamera("B")});
        fireTimer();
        m_window.reset();
        const LogLines log;
        drain();
        QCOMPARE(log.all(), QStringList());
    }

private:
    QLabel* label() const { return m_window->findChild<QLabel*>(); }

    /// Whatever the window puts off it does with the next events. Its devices are checked by the program's timer, which
    /// does not come to that within a test.
    void make()
    {
        CameraTimings timings;
        timings.deviceCheckMs = kNeverMs;
        timings.refreshAfterShowMs = 0;
        timings.refreshAfterShowEventMs = 0;
        timings.refreshAfterStartMs = 0;
        m_window = std::make_unique<SCCameraWindow>(m_cameras, nullptr, timings);
    }

    /// All that is under way on this thread is done: what is queued, and what that queues and puts off.
    static void drain()
    {
        constexpr int kGenerations = 4;
        for (int generation = 0; generation < kGenerations; ++generation) {
            bool isOver = false;
            QTimer::singleShot(0, [&isOver] { isOver = true; });
            QVERIFY(QTest::qWaitFor([&isOver] { return isOver; }));
        }
    }

    /// Shown, with all that follows from it done.
    void show()
    {
        m_window->show();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
        drain();
    }

    void fireTimer() { QVERIFY(QMetaObject::invokeMethod(m_window->findChild<QTimer*>(), "timeout")); }

    void checkDevices()
    {
        fireTimer();
        QCoreApplication::processEvents();
    }

    /// What the diagnostics write while the window is shown.
    QStringList diagnostics()
    {
        m_window->findChild<QTimer*>()->stop();
        const LogLines log;
        m_window->show();
        // The window's own thread writes nothing before it comes back to its events.
        QThreadPool::globalInstance()->waitForDone();
        const QStringList all = log.all();
        return all.mid(all.indexOf(QStringLiteral("[INFO] Checking Qt Multimedia plugins...")));
    }

    std::shared_ptr<FakeCameras> m_cameras;
    std::unique_ptr<SCCameraWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestCameraLife>);

#include "test_cameralife.moc"
