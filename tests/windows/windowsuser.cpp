#include "tests/windows/windowsuser.h"

#include "tests/recording/recordinghelpers.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

namespace windowsuser {

namespace {

constexpr int kPollMs = 100;
constexpr int kKeyMs = 80;
/// Wine hears of the pointer later than of the button.
constexpr int kPointerMs = 500;
/// A window that is there is not yet ready for the pointer.
constexpr int kReadyMs = 500;

bool isOfProgram(const WindowsWindow& window)
{
    return window.isVisible && window.program == QLatin1String("kestrano.exe");
}

} // namespace

std::optional<WindowsWindow> startInFront(WindowsProgram& program)
{
    if (!program.startAndWaitUntilReady())
        return std::nullopt;
    const auto window = WindowsProgram::mainWindowAsWindowsKnowsIt(false, kTimeoutMs);
    if (!window || !WineDesktop::probe({QStringLiteral("front"), QString::number(window->handle)}))
        return std::nullopt;
    return awaitReady(window->title);
}

void press(const QStringList& keys)
{
    for (const QString& key : keys) {
        ProgramUnderTest::pressKey(key);
        QTest::qWait(kKeyMs);
    }
}

bool click(const WindowsWindow& window, const QPoint& place)
{
    const bool pointed = pointTo(window.place.topLeft() + place);
    QTest::qWait(kPointerMs);
    return xdotool({"click", "1"}) && pointed;
}

bool closeBySystem(const WindowsWindow& window)
{
    constexpr int kSystemCommand = 0x0112;
    constexpr int kClose = 0xF060;
    return WineDesktop::probe({QStringLiteral("post"), QString::number(window.handle), QString::number(kSystemCommand),
                               QString::number(kClose), QStringLiteral("0")});
}

std::optional<WindowsWindow> awaitWindow(const std::function<bool(const WindowsWindow&)>& isIt)
{
    QElapsedTimer waited;
    waited.start();
    do {
        const QList<WindowsWindow> windows = WineDesktop::windows();
        const auto found = std::find_if(windows.begin(), windows.end(), [&isIt](const WindowsWindow& window) {
            return window.isVisible && isIt(window);
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
        if (window && window->isForeground) {
            QTest::qWait(kReadyMs);
            return window;
        }
        QTest::qWait(kPollMs);
    } while (!waited.hasExpired(timeoutMs));
    return std::nullopt;
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

} // namespace windowsuser
