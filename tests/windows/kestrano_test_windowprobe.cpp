// The eyes and the fingers of a test that runs outside Windows: says which windows there are, and does to them what
// other programs do.
//
//   kestrano_test_windowprobe windows                             all top-level windows, one line of JSON
//   kestrano_test_windowprobe post WINDOW MESSAGE WPARAM LPARAM   posts a message
//   kestrano_test_windowprobe command WINDOW COMMAND              gives a system command, and says whether the window
//                                                                 is minimised when it has been obeyed
//   kestrano_test_windowprobe front WINDOW                        asks it to come to the front, as a taskbar does
//   kestrano_test_windowprobe place WINDOW                        puts it before the others; it may activate itself
//   kestrano_test_windowprobe crash PROCESS                       makes one of its threads read what is not there
//   kestrano_test_windowprobe target LEFT TOP WIDTH HEIGHT        shows a window with a button in its middle, and says
//                                                                 each mouse button that is pressed on one of them
//   kestrano_test_windowprobe hold MODIFIERS KEY                  takes a hotkey away from others
//   kestrano_test_windowprobe hooks                               says each mouse button that comes to its own hook
//
// Handles and numbers are decimal, rectangles in pixels of the desktop. The last three run until they are ended;
// "READY" says that they work.

#include <QByteArray>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <windows.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

HWND toWindow(const QString& handle)
{
    return reinterpret_cast<HWND>(static_cast<quintptr>(handle.toULongLong()));
}

/// Handles are small numbers; JSON's are exact up to 2^53.
QJsonValue number(HWND window)
{
    return static_cast<qint64>(reinterpret_cast<quintptr>(window));
}

QJsonObject rectangle(const RECT& rect)
{
    return {{QStringLiteral("left"), static_cast<int>(rect.left)},
            {QStringLiteral("top"), static_cast<int>(rect.top)},
            {QStringLiteral("width"), static_cast<int>(rect.right - rect.left)},
            {QStringLiteral("height"), static_cast<int>(rect.bottom - rect.top)}};
}

QString titleOf(HWND window)
{
    std::vector<wchar_t> text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1);
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    return QString::fromWCharArray(text.data(), length);
}

QString programOf(DWORD processId)
{
    const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
    if (process == nullptr)
        return {};
    std::array<wchar_t, 1024> path{};
    auto length = static_cast<DWORD>(path.size());
    const bool known = QueryFullProcessImageNameW(process, 0, path.data(), &length) != 0;
    CloseHandle(process);
    return known ? QFileInfo(QString::fromWCharArray(path.data(), static_cast<int>(length))).fileName() : QString();
}

/// The alpha that was set for the whole window; null where none was.
QJsonValue layerOf(HWND window)
{
    COLORREF key = 0;
    BYTE alpha = 0;
    DWORD flags = 0;
    if (GetLayeredWindowAttributes(window, &key, &alpha, &flags) == 0)
        return QJsonValue::Null;
    return QJsonObject{{QStringLiteral("key"), static_cast<qint64>(key)},
                       {QStringLiteral("alpha"), alpha},
                       {QStringLiteral("flags"), static_cast<qint64>(flags)}};
}

QJsonObject describe(HWND window)
{
    DWORD processId = 0;
    GetWindowThreadProcessId(window, &processId);
    RECT rect{};
    GetWindowRect(window, &rect);
    const LONG_PTR extended = GetWindowLongPtrW(window, GWL_EXSTYLE);
    return {{QStringLiteral("handle"), number(window)},
            {QStringLiteral("process"), static_cast<qint64>(processId)},
            {QStringLiteral("program"), programOf(processId)},
            {QStringLiteral("title"), titleOf(window)},
            {QStringLiteral("place"), rectangle(rect)},
            {QStringLiteral("visible"), IsWindowVisible(window) != 0},
            {QStringLiteral("minimised"), IsIconic(window) != 0},
            {QStringLiteral("foreground"), GetForegroundWindow() == window},
            {QStringLiteral("topmost"), (extended & WS_EX_TOPMOST) != 0},
            {QStringLiteral("transparent"), (extended & WS_EX_TRANSPARENT) != 0},
            {QStringLiteral("layer"), layerOf(window)}};
}

BOOL CALLBACK keep(HWND window, LPARAM list)
{
    reinterpret_cast<QJsonArray*>(list)->append(describe(window));
    return TRUE;
}

/// From the front to the back.
int sayWindows(const QStringList& /*arguments*/)
{
    QJsonArray windows;
    EnumWindows(&keep, reinterpret_cast<LPARAM>(&windows));
    std::puts(QJsonDocument(windows).toJson(QJsonDocument::Compact).constData());
    return EXIT_SUCCESS;
}

int post(const QStringList& arguments)
{
    const bool done = PostMessageW(toWindow(arguments.at(0)), arguments.at(1).toUInt(), arguments.at(2).toULongLong(),
                                   arguments.at(3).toLongLong()) != 0;
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}

int command(const QStringList& arguments)
{
    constexpr UINT kTimeoutMs = 10'000;
    HWND const window = toWindow(arguments.at(0));
    DWORD_PTR answer = 0;
    const bool answered =
        SendMessageTimeoutW(window, WM_SYSCOMMAND, arguments.at(1).toUInt(), 0, SMTO_NORMAL, kTimeoutMs, &answer) != 0;
    std::puts(IsIconic(window) != 0 ? "minimised" : "shown");
    return answered ? EXIT_SUCCESS : EXIT_FAILURE;
}

int bringToFront(const QStringList& arguments)
{
    return SetForegroundWindow(toWindow(arguments.at(0))) != 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// Without SWP_NOACTIVATE: the window becomes the active one unless it refuses.
int placeInFront(const QStringList& arguments)
{
    return SetWindowPos(toWindow(arguments.at(0)), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE) != 0 ? EXIT_SUCCESS
                                                                                                       : EXIT_FAILURE;
}

/// Starts a thread of the process where nobody has put any code.
int crash(const QStringList& arguments)
{
    const HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, FALSE, arguments.at(0).toUInt());
    if (process == nullptr)
        return EXIT_FAILURE;
    constexpr quintptr kNowhere = 16;
    const HANDLE thread = CreateRemoteThread(process, nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(kNowhere),
                                             nullptr, 0, nullptr);
    if (thread != nullptr)
        CloseHandle(thread);
    CloseHandle(process);
    return thread != nullptr ? EXIT_SUCCESS : EXIT_FAILURE;
}

void say(const char* text)
{
    std::puts(text);
    std::fflush(stdout);
}

int obeyMessages()
{
    say("READY");
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return EXIT_SUCCESS;
}

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN)
        say(GetParent(window) == nullptr ? "window pressed" : "button pressed");
    return DefWindowProcW(window, message, wParam, lParam);
}

int showTarget(const QStringList& arguments)
{
    WNDCLASSEXW description{};
    description.cbSize = sizeof(description);
    description.lpfnWndProc = &onMessage;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    description.lpszClassName = L"KestranoTestTarget";
    RegisterClassExW(&description);
    const auto at = [&arguments](int index) { return arguments.at(index).toInt(); };
    HWND const window = CreateWindowExW(0, description.lpszClassName, L"Target", WS_POPUP | WS_VISIBLE, at(0), at(1),
                                        at(2), at(3), nullptr, nullptr, description.hInstance, nullptr);
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
    description.lpszClassName = L"KestranoTestButton";
    RegisterClassExW(&description);
    CreateWindowExW(0, description.lpszClassName, L"Button", WS_CHILD | WS_VISIBLE, at(2) / 4, at(3) / 4, at(2) / 2,
                    at(3) / 2, window, nullptr, description.hInstance, nullptr);
    return window != nullptr ? obeyMessages() : EXIT_FAILURE;
}

int holdHotkey(const QStringList& arguments)
{
    const bool held = RegisterHotKey(nullptr, 1, arguments.at(0).toUInt(), arguments.at(1).toUInt()) != 0;
    return held ? obeyMessages() : EXIT_FAILURE;
}

LRESULT CALLBACK onMouse(int code, WPARAM message, LPARAM details)
{
    if (code >= 0 && (message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN))
        say("pressed");
    return CallNextHookEx(nullptr, code, message, details);
}

int listen(const QStringList& /*arguments*/)
{
    const HHOOK hook = SetWindowsHookExW(WH_MOUSE_LL, &onMouse, GetModuleHandleW(nullptr), 0);
    return hook != nullptr ? obeyMessages() : EXIT_FAILURE;
}

struct Command
{
    int arguments;
    std::function<int(const QStringList&)> run;
};

const std::map<std::string, Command>& commands()
{
    static const std::map<std::string, Command> table{
        {"windows", {0, sayWindows}}, {"post", {4, post}},          {"command", {2, command}},
        {"front", {1, bringToFront}}, {"place", {1, placeInFront}}, {"crash", {1, crash}},
        {"target", {4, showTarget}},  {"hold", {2, holdHotkey}},    {"hooks", {0, listen}}};
    return table;
}

} // namespace

int main(int argc, char* argv[])
{
    QStringList arguments;
    for (int index = 2; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    const auto command = argc > 1 ? commands().find(argv[1]) : commands().end();
    if (command == commands().end() || arguments.size() != command->second.arguments) {
        std::fputs("kestrano_test_windowprobe: no such command, or not its arguments\n", stderr);
        return 2;
    }
    return command->second.run(arguments);
}
