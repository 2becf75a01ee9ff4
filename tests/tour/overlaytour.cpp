// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/floatingnotice.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "overlays/pickingdesktop.h"
#include "overlays/sccamerawindow.h"
#include "overlays/windowhighlighter.h"
#include "screenshot/scscreenshot.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/support/fakecameras.h"
#include "tests/tour/guide.h"

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QPushButton>

#include <memory>

namespace tour {

namespace {

/// A desktop with one window on it, whose mouse is in the tour's hand.
class OneWindowDesktop : public PickingDesktop
{
public:
    OneWindowDesktop(const QRect& window, platform::MouseHook::Handler& mouse) : m_window(window), m_mouse(mouse) {}

    unsigned long installMouseHook(platform::MouseHook::Handler handler) override
    {
        m_mouse = std::move(handler);
        return 0;
    }
    void removeMouseHook() override {}
    void setInputWanted(bool /*wanted*/) override {}
    void registerCancelKey(std::function<void()> /*pressed*/) override {}
    void registerHotkey(QWidget& /*window*/, std::function<void()> /*pressed*/) override {}
    void unregisterHotkey() override {}
    platform::NativeWindow windowAt(const QPoint& /*position*/) const override { return 1; }
    std::vector<platform::NativeWindow> windows() const override { return {1}; }
    void activate(platform::NativeWindow /*window*/) override {}
    bool isPickable(platform::NativeWindow /*window*/) const override { return true; }
    bool exists(platform::NativeWindow /*window*/) const override { return true; }
    std::optional<QRect> rectOf(platform::NativeWindow /*window*/) const override { return m_window; }
    bool isMouseButtonDown() const override { return false; }

private:
    QRect m_window;
    platform::MouseHook::Handler& m_mouse;
};

/// The window of a tool bar, which is none of its frame's children.
QWidget* windowOf(const char* button)
{
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        const auto* const found = widget->findChild<QPushButton*>(QLatin1String(button));
        if (found != nullptr && widget->isVisible())
            return widget;
    }
    return nullptr;
}

void drawOn(QWidget& window)
{
    QTest::mousePress(&window, Qt::LeftButton, {}, {60, 60});
    for (const QPoint& position : {QPoint(120, 200), QPoint(200, 80), QPoint(300, 210), QPoint(400, 70)})
        QTest::mouseMove(&window, position);
    QTest::mouseRelease(&window, Qt::LeftButton, {}, {400, 70});
}

void selector(const Look& look)
{
    AreaSelector selector;
    selector.show();
    waitFor(selector);
    QTest::mousePress(&selector, Qt::LeftButton, {}, {120, 90});
    QTest::mouseMove(&selector, {480, 320});
    waitFor(selector);
    look({"selector", QRect(60, 40, 520, 340), {&selector}});
    QTest::mouseRelease(&selector, Qt::LeftButton, {}, {480, 320});
}

void frame(const Look& look)
{
    DrawWindow frame;
    frame.setGeometry(100, 100, 480, 280);
    frame.show();
    waitFor(frame);
    const QRect area = frame.geometry().adjusted(0, -40, 0, 0);
    QWidget* const bar = windowOf("drawToggleButton");
    look({"frame", area, {&frame, bar}});
    child<QPushButton>(*bar, "drawToggleButton").click();
    drawOn(frame);
    frame.setRecording(true);
    frame.setTimeText(QStringLiteral("00:01:23"));
    waitFor(frame);
    look({"frame-drawn-on", area, {&frame, bar}});
    frame.hide();
}

void toolBar(const Look& look)
{
    SCFullscreenToolbar bar;
    bar.move(200, 60);
    bar.setRecording(true);
    bar.setTimeText(QStringLiteral("00:01:23"));
    bar.show();
    stop(look, "bar", bar);
    bar.setPaused(true);
    stop(look, "bar-paused", bar);
    bar.setPaused(false);
    bar.setAudioOnly(true);
    bar.setPausable(false);
    stop(look, "bar-sound-only", bar);
    FloatingNotice notice{Durations()};
    notice.add({QCoreApplication::translate("FilePage", "No program can open %1.").arg(QStringLiteral("demo.mp4"))});
    notice.placeBeside(bar.geometry(), {});
    waitFor(notice);
    look({"bar-notice", bar.frameGeometry() | notice.frameGeometry(), {&notice}});
}

void pickedWindow(const Look& look)
{
    QWidget window;
    window.setGeometry(120, 100, 400, 240);
    window.show();
    waitFor(window);
    const double ratio = window.devicePixelRatioF();
    const QRect physical(window.geometry().topLeft() * ratio, window.size() * ratio);
    platform::MouseHook::Handler mouse;
    WindowHighlighter highlighter(std::make_unique<OneWindowDesktop>(physical, mouse));
    highlighter.show();
    mouse(platform::MouseHook::Event::Move, physical.center());
    waitFor(highlighter);
    look({"highlighter", window.frameGeometry(), {&highlighter}});
    // As its owner does.
    QObject::connect(&highlighter, &WindowHighlighter::windowClicked, &highlighter, &QWidget::hide);
    bool isOver = false;
    whenShown(&QApplication::activePopupWidget, [&](QWidget& menu) {
        look({"highlighter-menu", window.frameGeometry() | menu.geometry(), {&menu}});
        whenShown(&QApplication::activeModalWidget, [&](QWidget& box) {
            lookAtBox(look, "highlighter-box", box);
            isOver = true;
        });
        static_cast<QMenu&>(menu).setActiveAction(menu.actions().constFirst());
        QTest::keyClick(&menu, Qt::Key_Return);
    });
    mouse(platform::MouseHook::Event::RightPress, physical.center());
    constexpr int kLongestMs = 60000;
    if (!QTest::qWaitFor([&isOver] { return isOver; }, kLongestMs))
        qFatal("A right click shows no menu or its first entry no box");
}

void webcam(const Look& look)
{
    const auto cameras = std::make_shared<FakeCameras>();
    cameras->plugIn({FakeCameras::device("camera", {FakeCameras::format(1280, 720, 30)})});
    SCCameraWindow window(cameras);
    window.show();
    stop(look, "webcam", window);
    window.close();
}

void countdown(const Look& look)
{
    SCCountdownWidget countdown(nullptr);
    countdown.move(200, 80);
    countdown.start(3);
    stop(look, "countdown", countdown);
    countdown.cancel();
}

} // namespace

void overlays(const Look& look)
{
    selector(look);
    frame(look);
    toolBar(look);
    pickedWindow(look);
    webcam(look);
    countdown(look);
}

void screenshotFrame(const Look& look)
{
    SCScreenshot screenshot;
    SCScreenshotWindow frame(&screenshot);
    frame.setGeometry(100, 100, 480, 280);
    frame.show();
    waitFor(frame);
    QWidget* const bar = windowOf("saveButton");
    const QRect area = frame.geometry() | bar->geometry();
    look({"screenshot-frame", area, {&frame, bar}});
    frame.drawOnScreenshot();
    drawOn(frame);
    waitFor(frame);
    look({"screenshot-frame-drawn-on", area, {&frame, bar}});
    frame.hide();
}

} // namespace tour
