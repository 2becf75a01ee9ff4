// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/settings.h"
#include "engine/obswrapper.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/webcamswitch.h"
#include "overlays/sccamerawindow.h"
#include "overlays/scswitchwidget.h"
#include "tests/support/fakecameras.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QSettings>
#include <QTest>
#include <QThreadPool>
#include <QTimer>

namespace {

SCCameraWindow* cameraWindow()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* const window : windows) {
        if (auto* const camera = qobject_cast<SCCameraWindow*>(window))
            return camera;
    }
    return nullptr;
}

} // namespace

/// The webcam's switch, by itself and in the main window.
class TestWebcamSwitch : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        const auto settings = openSettings();
        settings->clear();
        settings->setValue(settingskeys::kFirstRun, false);
        settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("None"));
        settings->setValue(settingskeys::kScreenshotHotkey, QStringLiteral("None"));
        m_cameras = std::make_shared<FakeCameras>();
        m_cameras->plugIn({FakeCameras::device("A", {FakeCameras::format(1280, 720, 30)})});
        m_window = std::make_unique<QWidget>();
        m_control = new SCSwitchWidget(m_window.get());
    }

    void cleanup()
    {
        m_window.reset();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
        QVERIFY(cameraWindow() == nullptr);
        QCOMPARE(m_cameras->openCameras, 0);
    }

    void switchWithoutACameraIsWarnedOfAndGoesOff()
    {
        m_cameras->plugIn({});
        make();
        const messagebox::Recorder boxes;
        m_control->setChecked(true);
        QCOMPARE(boxes.calls().size(), std::size_t(1));
        const messagebox::Call& box = boxes.calls().front();
        QCOMPARE(box.kind, messagebox::Kind::Warning);
        QCOMPARE(box.title, QStringLiteral("Warning"));
        QCOMPARE(box.text, QStringLiteral("No camera device found!"));
        QCOMPARE(box.parent.data(), m_window.get());
        QVERIFY(!m_control->isChecked());
        QVERIFY(cameraWindow() == nullptr);
    }

    void windowDoesNotExistBeforeTheSwitchIsOn()
    {
        make();
        QVERIFY(cameraWindow() == nullptr);
        QCOMPARE(m_cameras->calls, QStringList());
    }

    void switchShowsTheCameraWindow()
    {
        make();
        const messagebox::Recorder boxes;
        m_control->setChecked(true);
        QVERIFY(cameraWindow()->isVisible());
        QVERIFY(cameraWindow()->parentWidget() == nullptr);
        QCoreApplication::processEvents();
        QVERIFY(m_cameras->isActive);
        QCOMPARE(boxes.calls().size(), std::size_t(0));
    }

    void cameraDoesNotComeBackWhileTheSwitchIsOff()
    {
        make();
        m_control->setChecked(true);
        QCoreApplication::processEvents();
        m_control->setChecked(false);
        QVERIFY(cameraWindow()->isHidden());
        QCOMPARE(m_cameras->openCameras, 0);
        lookForCameras();
        QCOMPARE(m_cameras->openCameras, 0);
    }

    void switchShowsTheSameCameraWindowAgain()
    {
        make();
        m_control->setChecked(true);
        const SCCameraWindow* const first = cameraWindow();
        m_control->setChecked(false);
        m_control->setChecked(true);
        QCOMPARE(cameraWindow(), first);
        QVERIFY(first->isVisible());
        QVERIFY(m_cameras->isActive);
    }

    void windowThatIsClosedSwitchesOff()
    {
        make();
        m_control->setChecked(true);
        QCoreApplication::processEvents();
        QVERIFY(cameraWindow()->close());
        QVERIFY(!m_control->isChecked());
        QVERIFY(cameraWindow()->isHidden());
        QCOMPARE(m_cameras->openCameras, 0);
    }

    void cameraThatIsUnpluggedLeavesTheSwitchOn()
    {
        make();
        m_control->setChecked(true);
        QCoreApplication::processEvents();
        m_cameras->plugIn({});
        lookForCameras();
        QVERIFY(m_control->isChecked());
        QVERIFY(cameraWindow()->isVisible());
    }

    void webcamIsOffAfterEachStartWhateverIsStored()
    {
        openSettings()->setValue(settingskeys::kWebcamSwitch, true);
        SCMainWindow window(std::make_unique<ObsWrapper>(), m_cameras);
        QVERIFY(!window.findChild<SCSwitchWidget*>(QStringLiteral("webcamSwitch"))->isChecked());
        QVERIFY(cameraWindow() == nullptr);
        QVERIFY(openSettings()->value(settingskeys::kWebcamSwitch).toBool());
    }

    void webcamSwitchedOnIsNotStored()
    {
        SCMainWindow window(std::make_unique<ObsWrapper>(), m_cameras);
        window.findChild<SCSwitchWidget*>(QStringLiteral("webcamSwitch"))->setChecked(true);
        QVERIFY(cameraWindow()->isVisible());
        QVERIFY(!openSettings()->value(settingskeys::kWebcamSwitch).toBool());
    }

    void cameraWindowStaysWhileTheMainWindowIsMinimised()
    {
        SCMainWindow window(std::make_unique<ObsWrapper>(), m_cameras);
        window.show();
        window.findChild<SCSwitchWidget*>(QStringLiteral("webcamSwitch"))->setChecked(true);
        window.showMinimized();
        QCoreApplication::processEvents();
        QVERIFY(cameraWindow()->isVisible());
        QVERIFY(m_cameras->isActive);
    }

    void closingTheMainWindowClosesTheCameraWindow()
    {
        SCMainWindow window(std::make_unique<ObsWrapper>(), m_cameras);
        window.show();
        auto* const control = window.findChild<SCSwitchWidget*>(QStringLiteral("webcamSwitch"));
        control->setChecked(true);
        QCoreApplication::processEvents();
        QVERIFY(window.close());
        QVERIFY(cameraWindow()->isHidden());
        QVERIFY(!control->isChecked());
        QCOMPARE(m_cameras->openCameras, 0);
    }

private:
    /// What the window's timer does in its time, with all that follows from it.
    static void lookForCameras()
    {
        QVERIFY(QMetaObject::invokeMethod(cameraWindow()->findChild<QTimer*>(), "timeout"));
        QCoreApplication::processEvents();
    }

    void make() { new WebcamSwitch(*m_control, m_cameras, m_window.get()); }

    std::shared_ptr<FakeCameras> m_cameras;
    std::unique_ptr<QWidget> m_window;
    SCSwitchWidget* m_control = nullptr;
};

REGISTER_TEST(testrun::gui<TestWebcamSwitch>);

#include "test_webcamswitch.moc"
