// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/desktopuser.h"

#include "tests/desktop/userinput.h"
#include "tests/support/x11clients.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QStyleHints>
#include <QTest>
#include <QWidget>

#include <algorithm>

using userinput::xdotool;

namespace desktopuser {

namespace {

/// What a window manager and Qt need to take notice of one thing before the next.
constexpr int kPauseMs = 30;
constexpr int kDragSteps = 4;
const auto kAddMonitor = QStringLiteral("--setmonitor");

/// From the top left corner of the primary screen, in physical pixels.
QPoint inImage(const QPoint& position)
{
    const QPoint origin = QGuiApplication::primaryScreen()->geometry().topLeft();
    return (QPointF(position - origin) * scale()).toPoint();
}

bool xrandr(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("xrandr"), arguments) == 0;
}

QSize displaySize()
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), {QStringLiteral("getdisplaygeometry")});
    tool.waitForFinished();
    const QList<QByteArray> numbers = tool.readAll().simplified().split(' ');
    return {numbers.value(0).toInt(), numbers.value(1).toInt()};
}

/// The size before the display was split: the tool looks at one screen.
const QSize& wholeSize()
{
    static const QSize size = displaySize();
    return size;
}

/// A monitor's area as the tool takes it; any size in millimetres will do.
QString area(int left, int width, int height)
{
    return QStringLiteral("%1/400x%2/300+%3+0").arg(width).arg(height).arg(left);
}

} // namespace

double scale()
{
    return QGuiApplication::primaryScreen()->devicePixelRatio();
}

QPoint onScreen(const QPoint& position)
{
    return QGuiApplication::primaryScreen()->geometry().topLeft() + position;
}

void pointTo(const QPoint& position)
{
    const QScreen* const there = QGuiApplication::screenAt(position);
    const QScreen& screen = there != nullptr ? *there : *QGuiApplication::primaryScreen();
    // A screen's corner has the same position in logical and in physical pixels.
    const QPoint corner = screen.geometry().topLeft();
    userinput::pointTo(corner + (QPointF(position - corner) * screen.devicePixelRatio()).toPoint());
}

void click(const QPoint& position, const char* button)
{
    pointTo(position);
    QTest::qWait(kPauseMs);
    xdotool({QStringLiteral("click"), QLatin1String(button)});
    QTest::qWait(kPauseMs);
}

void click(const QWidget& widget)
{
    click(centreOf(widget));
}

void drag(const QPoint& from, const QPoint& to)
{
    pointTo(from);
    QTest::qWait(kPauseMs);
    xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
    QTest::qWait(kPauseMs);
    for (int step = 1; step <= kDragSteps; ++step) {
        pointTo(from + (to - from) * step / kDragSteps);
        QTest::qWait(kPauseMs / 2);
    }
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
    QTest::qWait(kPauseMs);
}

void press(const QString& key)
{
    xdotool({QStringLiteral("key"), key});
    QTest::qWait(kPauseMs);
}

bool tabTo(const QWidget& widget)
{
    constexpr int kMostSteps = 40;
    constexpr int kStepMs = 10;
    for (int step = 0; step < kMostSteps && !widget.hasFocus(); ++step) {
        xdotool({QStringLiteral("key"), QStringLiteral("Tab")});
        QTest::qWait(kStepMs);
    }
    return widget.hasFocus();
}

QPoint originInImage(const QWidget& window)
{
    const QList<x11clients::Window> clients = x11clients::windowsOf(QCoreApplication::applicationPid());
    const auto client = std::find_if(clients.begin(), clients.end(), [&window](const x11clients::Window& candidate) {
        return candidate.id == window.winId();
    });
    if (client != clients.end())
        return client->geometry.topLeft() - QGuiApplication::primaryScreen()->geometry().topLeft();
    return inImage(window.mapToGlobal(QPoint()));
}

QPoint centreOf(const QWidget& widget)
{
    const QWidget& window = *widget.window();
    const QPoint missedByQt = originInImage(window) - inImage(window.mapToGlobal(QPoint()));
    return widget.mapToGlobal(widget.rect().center()) + (QPointF(missedByQt) / scale()).toPoint();
}

QImage screenshot()
{
    return screenshot(*QGuiApplication::primaryScreen());
}

QImage screenshot(QScreen& screen)
{
    return screen.grabWindow().toImage();
}

void waitUntilStill()
{
    constexpr int kLooks = 4;
    constexpr int kPeriodMs = 20;
    // A caret that blinks is still for half a second only, less than five looks take on a busy machine.
    QGuiApplication::styleHints()->setCursorFlashTime(0);
    QImage last = screenshot();
    int same = 0;
    const bool isStill = QTest::qWaitFor([&last, &same] {
        QTest::qWait(kPeriodMs);
        const QImage seen = screenshot();
        same = seen == last ? same + 1 : 0;
        last = seen;
        return same >= kLooks;
    });
    QVERIFY(isStill);
}

QRgb colourAt(const QPoint& position)
{
    return screenshot().pixel(inImage(position)) | 0xff000000;
}

int brightestOf(const QWidget& widget)
{
    constexpr int kReach = 6;
    const QImage image = screenshot();
    const QPoint centre = inImage(centreOf(widget));
    int found = 0;
    for (int y = -kReach; y <= kReach; ++y) {
        for (int x = -kReach; x <= kReach; ++x)
            found = std::max(found, qGray(image.pixel(centre + QPoint(x, y))));
    }
    return found;
}

bool splitDisplayWhereAsked()
{
    if (!qEnvironmentVariableIsSet("KESTRANO_TEST_TWO_SCREENS"))
        return true;
    const QSize& size = wholeSize();
    const int left = size.width() / 4;
    return xrandr({kAddMonitor, QStringLiteral("*Right"), area(left, size.width() - left, size.height()),
                   QStringLiteral("screen")}) &&
           plugSecondScreen();
}

bool plugSecondScreen()
{
    const QSize& size = wholeSize();
    return xrandr(
        {kAddMonitor, QStringLiteral("Left"), area(0, size.width() / 4, size.height()), QStringLiteral("none")});
}

bool unplugSecondScreen()
{
    return xrandr({QStringLiteral("--delmonitor"), QStringLiteral("Left")});
}

} // namespace desktopuser
