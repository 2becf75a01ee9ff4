// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "mainwindow/hotkeys.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "overlays/drawwindow.h"
#include "overlays/sccamerawindow.h"
#include "tests/desktop/desktopuser.h"
#include "tests/support/fakecameras.h"
#include "tests/support/windowtest.h"

#include <QKeyEvent>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <memory>

using desktopuser::press;

namespace {

const auto kWindowKey = QStringLiteral("ctrl+shift+F9");

/// A window of the desktop that has the keyboard, as another program's would.
class Listener : public QWidget
{
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys << event->key(); }
};

QPushButton& button(const QWidget& window, const char* name)
{
    return *window.findChild<QPushButton*>(QLatin1String(name));
}

QWidget& toolBar()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("buttonBackground"))
            return *window;
    }
    qFatal("There is no tool bar");
}

} // namespace

/// The windows over the desktop, worked without a pointer.
class TestKeyboard : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        openSettings()->setValue(settingskeys::kRecordingHotkey, QStringLiteral("F9"));
        m_hotkeys = std::make_unique<Hotkeys>(nullptr, m_activity, m_notices);
        m_hotkeys->apply(*openSettings());
        QCOMPARE(m_hotkeys->recordingKey(), QStringLiteral("F9"));
        m_listener = std::make_unique<Listener>();
        m_listener->setGeometry(700, 300, 300, 200);
        m_listener->show();
        QVERIFY(QTest::qWaitForWindowActive(m_listener.get()));
    }

    void cleanup()
    {
        m_hotkeys.reset();
        m_listener.reset();
    }

    void windowKeyLeadsThroughTheWindowsAndBack()
    {
        SCFullscreenToolbar bar;
        bar.move(300, 0);
        SCCameraWindow camera(cameras());
        camera.show();
        // It asks for the keyboard, which it gets in the server's own time.
        QTRY_VERIFY(camera.hasKeyboard());
        bar.show();
        m_listener->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_listener.get()));
        press(kWindowKey);
        QTRY_VERIFY(bar.hasKeyboard());
        press(kWindowKey);
        QTRY_VERIFY(camera.hasKeyboard());
        press(kWindowKey);
        QTRY_VERIFY(m_listener->isActiveWindow());
        press(QStringLiteral("a"));
        QTRY_VERIFY(m_listener->keys.contains(Qt::Key_A));
        QVERIFY(!m_listener->keys.contains(Qt::Key_F9));
        camera.close();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
    }

    void windowKeyIsOtherProgramsWhereThereIsNoWindow()
    {
        press(kWindowKey);
        QTRY_VERIFY(m_listener->keys.contains(Qt::Key_F9));
        DrawWindow frame;
        frame.setGeometry(200, 200, 400, 300);
        frame.show();
        m_listener->keys.clear();
        giveKeyboardTo(frame);
        QVERIFY(!m_listener->keys.contains(Qt::Key_F9));
        frame.hide();
        m_listener->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_listener.get()));
        press(kWindowKey);
        QTRY_VERIFY(m_listener->keys.contains(Qt::Key_F9));
    }

    void floatingBarIsWorkedByKeys()
    {
        SCFullscreenToolbar bar;
        bar.move(300, 0);
        bar.setRecording(true);
        bar.show();
        const QSignalSpy paused(&bar, &SCFullscreenToolbar::pauseToggled);
        const QSignalSpy toggled(&bar, &SCFullscreenToolbar::recordingToggled);
        giveKeyboardTo(bar);
        QVERIFY(desktopuser::tabTo(button(bar, "pauseButton")));
        press(QStringLiteral("space"));
        QTRY_COMPARE(paused, (QList<QVariantList>{{true}}));
        QVERIFY(desktopuser::tabTo(button(bar, "autoHideButton")));
        press(QStringLiteral("space"));
        QTRY_VERIFY(!button(bar, "autoHideButton").isChecked());
        QVERIFY(bar.isVisible());
        QVERIFY(desktopuser::tabTo(button(bar, "recordButton")));
        press(QStringLiteral("space"));
        QTRY_COMPARE(toggled, (QList<QVariantList>{{false}}));
    }

    void clickOnTheBarLeavesTheKeyboardWhereItIs()
    {
        SCFullscreenToolbar bar;
        bar.move(300, 0);
        bar.show();
        giveKeyboardTo(bar);
        press(kWindowKey);
        QTRY_VERIFY(m_listener->isActiveWindow());
        const QSignalSpy paused(&bar, &SCFullscreenToolbar::pauseToggled);
        desktopuser::click(button(bar, "pauseButton"));
        QTRY_COMPARE(paused.size(), 1);
        press(QStringLiteral("a"));
        QTRY_VERIFY(m_listener->keys.contains(Qt::Key_A));
        QVERIFY(!bar.hasKeyboard());
    }

    void regionFrameIsWorkedByKeys()
    {
        DrawWindow frame;
        const QRect start(200, 200, 400, 300);
        frame.setGeometry(start);
        frame.show();
        frame.offerFollowing(true);
        const QSignalSpy started(&frame, &DrawWindow::startRecording);
        const QSignalSpy followed(&frame, &DrawWindow::followToggled);
        const QSignalSpy closed(&frame, &DrawWindow::hideDrawWindow);
        giveKeyboardTo(frame);
        press(QStringLiteral("Right"));
        press(QStringLiteral("ctrl+Down"));
        QTRY_COMPARE(frame.geometry(), QRect(210, 200, 400, 310));
        for (const char* name : {"drawToggleButton", "followButton", "startButton", "closeButton"}) {
            QVERIFY(desktopuser::tabTo(button(toolBar(), name)));
            press(QStringLiteral("space"));
        }
        QTRY_COMPARE(closed.size(), 1);
        QCOMPARE(followed, (QList<QVariantList>{{true}}));
        QCOMPARE(started.size(), 1);
        QVERIFY(!frame.isVisible());
        // It does not take the keyboard with it.
        QTRY_VERIFY(m_listener->isActiveWindow());
    }

    void webcamWindowIsMovedByKeys()
    {
        SCCameraWindow camera(cameras());
        camera.show();
        QTRY_VERIFY(camera.hasKeyboard());
        const QRect start = camera.geometry();
        press(QStringLiteral("Left"));
        press(QStringLiteral("shift+Up"));
        QTRY_COMPARE(camera.geometry(), start.translated(-10, -1));
        camera.close();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
    }

private:
    /// The only one.
    static void giveKeyboardTo(const KeyboardWindow& window)
    {
        // The key is taken once the window is shown.
        QCoreApplication::processEvents();
        press(kWindowKey);
        QTRY_VERIFY(window.hasKeyboard());
    }

    static std::shared_ptr<FakeCameras> cameras()
    {
        auto cameras = std::make_shared<FakeCameras>();
        cameras->plugIn({FakeCameras::device("camera", {FakeCameras::format(1280, 720, 30)})});
        return cameras;
    }

    const Activity m_activity{{[] { return RecordingState::Idle; }, [] { return false; }, [] { return false; },
                               [] { return false; }, [] { return false; }, [] { return false; }, [] { return true; }}};
    Notices m_notices;
    std::unique_ptr<Hotkeys> m_hotkeys;
    std::unique_ptr<Listener> m_listener;
};

REGISTER_TEST(windowtest::run<TestKeyboard>);

#include "test_keyboard.moc"
