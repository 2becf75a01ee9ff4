// SPDX-License-Identifier: GPL-3.0-or-later
// The eyes and the fingers of a test that runs outside Windows: says which windows there are, and does to them what
// other programs do.
//
//   kestrano_test_win32probe answer                          answers questions, see below
//   kestrano_test_win32probe target LEFT TOP WIDTH HEIGHT    shows a window with a button in its middle, and says
//                                                             each mouse button that is pressed on one of them
//   kestrano_test_win32probe hold MODIFIERS KEY              takes a hotkey away from others
//
// All run until they are ended; "READY" says that they work. A question is one line of the standard input, a JSON array
// of strings, and its answer one line of the standard output: a JSON array that is empty when the question failed, else
// has the answer (null where there is nothing to say).
//
//   windows                             all top-level windows, from the front to the back
//   post WINDOW MESSAGE WPARAM LPARAM   posts a message
//   command WINDOW COMMAND              gives a system command; whether the window is minimised when it has been obeyed
//   front WINDOW                        asks it to come to the front, as a taskbar does
//   raise WINDOW                        puts it before the others; it may activate itself
//   crash PROCESS                       makes one of its threads read what is not there
//   input                               when Windows last heard of a key or the pointer, and where the pointer is
//   store KEY NAME VALUE                stores a text in the registry of the user
//   forget KEY                          removes a key and all below it
//   stored KEY                          all values at and below a key, by their names with those of the keys before
//                                       them; null for one that is no text
//
// Handles and numbers are decimal, rectangles in pixels of the desktop, keys have backslashes.

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
#include <iostream>
#include <map>
#include <optional>
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
            {QStringLiteral("position"), rectangle(rect)},
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

/// Nothing when the question failed.
using Answer = std::optional<QJsonValue>;

Answer doneIf(bool done)
{
    return done ? Answer(QJsonValue::Null) : std::nullopt;
}

Answer sayWindows(const QStringList& /*arguments*/)
{
    QJsonArray windows;
    EnumWindows(&keep, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

Answer post(const QStringList& arguments)
{
    return doneIf(PostMessageW(toWindow(arguments.at(0)), arguments.at(1).toUInt(), arguments.at(2).toULongLong(),
                               arguments.at(3).toLongLong()) != 0);
}

Answer command(const QStringList& arguments)
{
    constexpr UINT kTimeoutMs = 10'000;
    HWND const window = toWindow(arguments.at(0));
    DWORD_PTR answer = 0;
    const bool answered =
        SendMessageTimeoutW(window, WM_SYSCOMMAND, arguments.at(1).toUInt(), 0, SMTO_NORMAL, kTimeoutMs, &answer) != 0;
    return answered ? Answer(IsIconic(window) != 0) : std::nullopt;
}

Answer bringToFront(const QStringList& arguments)
{
    return doneIf(SetForegroundWindow(toWindow(arguments.at(0))) != 0);
}

/// Without SWP_NOACTIVATE: the window becomes the active one unless it refuses.
Answer raiseWindow(const QStringList& arguments)
{
    return doneIf(SetWindowPos(toWindow(arguments.at(0)), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE) != 0);
}

/// Starts a thread of the process where nobody has put any code.
Answer crash(const QStringList& arguments)
{
    const HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, FALSE, arguments.at(0).toUInt());
    if (process == nullptr)
        return std::nullopt;
    constexpr quintptr kNowhere = 16;
    const HANDLE thread = CreateRemoteThread(process, nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(kNowhere),
                                             nullptr, 0, nullptr);
    if (thread != nullptr)
        CloseHandle(thread);
    CloseHandle(process);
    return doneIf(thread != nullptr);
}

Answer sayInput(const QStringList& /*arguments*/)
{
    LASTINPUTINFO input{};
    input.cbSize = sizeof(input);
    POINT pointer{};
    if (GetLastInputInfo(&input) == 0 || GetCursorPos(&pointer) == 0)
        return std::nullopt;
    return QJsonObject{{QStringLiteral("moment"), static_cast<qint64>(input.dwTime)},
                       {QStringLiteral("x"), static_cast<int>(pointer.x)},
                       {QStringLiteral("y"), static_cast<int>(pointer.y)}};
}

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

Answer store(const QStringList& arguments)
{
    const QString& value = arguments.at(2);
    const auto bytes = static_cast<DWORD>((value.size() + 1) * static_cast<qsizetype>(sizeof(wchar_t)));
    return doneIf(RegSetKeyValueW(HKEY_CURRENT_USER, wide(arguments.at(0)), wide(arguments.at(1)), REG_SZ, wide(value),
                                  bytes) == ERROR_SUCCESS);
}

Answer forget(const QStringList& arguments)
{
    const LSTATUS status = RegDeleteTreeW(HKEY_CURRENT_USER, wide(arguments.at(0)));
    return doneIf(status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND);
}

/// The longest name of a key or a value, with its end.
constexpr DWORD kNameLength = 16'384;

void keepValues(HKEY key, const QString& prefix, QJsonObject& values)
{
    std::vector<wchar_t> name(kNameLength);
    DWORD length = kNameLength;
    for (DWORD index = 0;
         RegEnumValueW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, length = kNameLength) {
        std::vector<wchar_t> text(kNameLength);
        auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        const bool isText =
            RegGetValueW(key, nullptr, name.data(), RRF_RT_REG_SZ, nullptr, text.data(), &bytes) == ERROR_SUCCESS;
        values.insert(prefix + QString::fromWCharArray(name.data(), static_cast<int>(length)),
                      isText ? QJsonValue(QString::fromWCharArray(text.data())) : QJsonValue());
    }
}

void keepKey(HKEY parent, const QString& path, const QString& prefix, QJsonObject& values)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, wide(path), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return;
    keepValues(key, prefix, values);
    std::vector<wchar_t> name(kNameLength);
    DWORD length = kNameLength;
    for (DWORD index = 0;
         RegEnumKeyExW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, length = kNameLength) {
        const QString below = QString::fromWCharArray(name.data(), static_cast<int>(length));
        keepKey(key, below, prefix + below + QLatin1Char('/'), values);
    }
    RegCloseKey(key);
}

Answer sayStored(const QStringList& arguments)
{
    QJsonObject values;
    keepKey(HKEY_CURRENT_USER, arguments.at(0), {}, values);
    return values;
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

struct Question
{
    int arguments;
    std::function<Answer(const QStringList&)> answer;
};

const std::map<QString, Question>& questions()
{
    static const std::map<QString, Question> table{
        {QStringLiteral("windows"), {0, sayWindows}}, {QStringLiteral("post"), {4, post}},
        {QStringLiteral("command"), {2, command}},    {QStringLiteral("front"), {1, bringToFront}},
        {QStringLiteral("raise"), {1, raiseWindow}},  {QStringLiteral("crash"), {1, crash}},
        {QStringLiteral("input"), {0, sayInput}},     {QStringLiteral("store"), {3, store}},
        {QStringLiteral("forget"), {1, forget}},      {QStringLiteral("stored"), {1, sayStored}}};
    return table;
}

Answer answerTo(const QByteArray& line)
{
    const QStringList words = QJsonDocument::fromJson(line).toVariant().toStringList();
    const auto question = words.isEmpty() ? questions().end() : questions().find(words.constFirst());
    if (question == questions().end() || words.size() - 1 != question->second.arguments)
        return std::nullopt;
    return question->second.answer(words.mid(1));
}

int answerQuestions(const QStringList& /*arguments*/)
{
    say("READY");
    std::string line;
    while (std::getline(std::cin, line)) {
        const Answer answer = answerTo(QByteArray::fromStdString(line));
        const QJsonArray words = answer ? QJsonArray{*answer} : QJsonArray{};
        say(QJsonDocument(words).toJson(QJsonDocument::Compact).constData());
    }
    return EXIT_SUCCESS;
}

struct Command
{
    int arguments;
    std::function<int(const QStringList&)> run;
};

const std::map<std::string, Command>& commands()
{
    static const std::map<std::string, Command> table{
        {"answer", {0, answerQuestions}}, {"target", {4, showTarget}}, {"hold", {2, holdHotkey}}};
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
        std::fputs("kestrano_test_win32probe: no such command, or not its arguments\n", stderr);
        return 2;
    }
    return command->second.run(arguments);
}
