// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/win32/win32user.h"

#include "tests/recording/recordinghelpers.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

namespace win32user {

namespace {

constexpr int kPollMs = 50;

bool isOfProgram(const WindowsWindow& window)
{
    return window.isVisible && window.program == QLatin1String("kestrano.exe");
}

} // namespace

std::optional<WindowsWindow> startInFront(Win32Program& program)
{
    if (!program.startAndWaitUntilReady())
        return std::nullopt;
    const auto window = Win32Program::mainWindowAsWindowsKnowsIt(false, kTimeoutMs);
    if (!window || !bringToFront(*window))
        return std::nullopt;
    return awaitReady(window->title);
}

bool bringToFront(const WindowsWindow& window)
{
    return WineDesktop::request({QStringLiteral("front"), QString::number(window.handle)});
}

void press(const QStringList& keys)
{
    xdotool(QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("40")} + keys);
}

bool click(const WindowsWindow& window, const QPoint& position)
{
    return WineDesktop::pointTo(window.position.topLeft() + position) && xdotool({"click", "1"});
}

bool drag(const QPoint& from, const QPoint& to)
{
    bool done = WineDesktop::pointTo(from) && xdotool({"mousedown", "1"});
    for (const QPoint& position : {(from + to) / 2, to})
        done = WineDesktop::pointTo(position) && done;
    return xdotool({"mouseup", "1"}) && done;
}

bool closeBySystem(const WindowsWindow& window)
{
    constexpr int kSystemCommand = 0x0112;
    constexpr int kClose = 0xF060;
    return WineDesktop::request({QStringLiteral("post"), QString::number(window.handle),
                                 QString::number(kSystemCommand), QString::number(kClose), QStringLiteral("0")});
}

std::optional<WindowsWindow> awaitWindow(const std::function<bool(const WindowsWindow&)>& isIt)
{
    QElapsedTimer waited;
    waited.start();
    do {
        const QList<WindowsWindow> windows = WineDesktop::windows();
        const auto found = std::find_if(windows.begin(), windows.end(), [&isIt](const WindowsWindow& window) {
            return window.isVisible && isIt(window) && WineDesktop::isShown(window.position);
        });
        if (found != windows.end())
            return *found;
        QTest::qWait(kPollMs);
    } while (!waited.hasExpired(kTimeoutMs));
    return std::nullopt;
}

std::optional<WindowsWindow> awaitReady(const QString& title, int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    do {
        auto window = WineDesktop::visibleWindow(title, timeoutMs);
        if (window && window->isForeground && WineDesktop::isShown(window->position))
            return window;
        QTest::qWait(kPollMs);
    } while (!waited.hasExpired(timeoutMs));
    return std::nullopt;
}

std::optional<WindowsWindow> awaitScreenshotBar()
{
    constexpr int kHeight = 30;
    const auto bar = awaitWindow(
        [](const WindowsWindow& window) { return isOfProgram(window) && window.position.height() == kHeight; });
    return bar && awaitReady(QStringLiteral("Screenshot")) ? bar : std::nullopt;
}

bool isInFront(int64_t handle)
{
    const QList<WindowsWindow> windows = WineDesktop::windows();
    return std::any_of(windows.begin(), windows.end(), [handle](const WindowsWindow& window) {
        return window.handle == handle && window.isForeground;
    });
}

bool awaitFront(int64_t handle)
{
    return QTest::qWaitFor([handle] { return isInFront(handle); }, kTimeoutMs);
}

bool awaitGone(const QString& title)
{
    QElapsedTimer waited;
    waited.start();
    while (WineDesktop::visibleWindow(title, 0))
        if (waited.hasExpired(kTimeoutMs))
            return false;
    return true;
}

qsizetype visibleWindows()
{
    const QList<WindowsWindow> windows = WineDesktop::windows();
    return std::count_if(windows.begin(), windows.end(),
                         [](const WindowsWindow& window) { return isOfProgram(window) && !window.isMinimised; });
}

} // namespace win32user
