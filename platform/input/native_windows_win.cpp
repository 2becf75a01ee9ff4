// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/native_windows.h"
#include "platform/system_failure.h"

#include <windows.h>

#include <array>
#include <dwmapi.h>

namespace platform {

namespace {

constexpr std::size_t kLongestTitle = 1024;

HWND handleOf(NativeWindow window)
{
    return reinterpret_cast<HWND>(window);
}

/// Windows of suspended programs and of other desktops count as visible.
bool isCloaked(HWND window)
{
    DWORD cloaked = 0;
    const HRESULT result = DwmGetWindowAttribute(window, DWMWA_CLOAKED, &cloaked, sizeof(cloaked));
    return SUCCEEDED(result) && cloaked != 0;
}

/// Helpers of programs have no title, or are no windows of the taskbar.
bool isForUsers(HWND window)
{
    const bool isTool = (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOOLWINDOW) != 0;
    return !isTool && IsWindowVisible(window) != 0 && IsIconic(window) == 0 && GetWindowTextLengthW(window) > 0 &&
           !isCloaked(window) && window != GetShellWindow();
}

BOOL CALLBACK collect(HWND window, LPARAM windows)
{
    if (isForUsers(window))
        reinterpret_cast<std::vector<NativeWindow>*>(windows)->push_back(reinterpret_cast<NativeWindow>(window));
    return TRUE;
}

} // namespace

struct NativeWindows::Private
{};

NativeWindows::NativeWindows() = default;
NativeWindows::~NativeWindows() = default;

NativeWindow NativeWindows::at(const QPoint& position) const
{
    return reinterpret_cast<NativeWindow>(WindowFromPoint({position.x(), position.y()}));
}

std::vector<NativeWindow> NativeWindows::shown() const
{
    std::vector<NativeWindow> windows;
    EnumWindows(&collect, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

bool NativeWindows::exists(NativeWindow window) const
{
    return IsWindow(handleOf(window)) != 0;
}

bool NativeWindows::isOwn(NativeWindow window) const
{
    DWORD process = 0;
    GetWindowThreadProcessId(handleOf(window), &process);
    return process == GetCurrentProcessId();
}

std::optional<QRect> NativeWindows::rectOf(NativeWindow window) const
{
    RECT rect{};
    if (GetWindowRect(handleOf(window), &rect) == 0) {
        const DWORD error = GetLastError();
        // Windows may go at any time.
        if (error != ERROR_INVALID_WINDOW_HANDLE)
            reportSystemFailure("GetWindowRect", error);
        return std::nullopt;
    }
    return QRect(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
}

NativeWindow NativeWindows::topLevelOf(NativeWindow window) const
{
    const HWND root = GetAncestor(handleOf(window), GA_ROOT);
    const bool isDesktop = root == GetDesktopWindow() || root == GetShellWindow();
    return isDesktop ? 0 : reinterpret_cast<NativeWindow>(root);
}

QString NativeWindows::titleOf(NativeWindow window) const
{
    std::array<wchar_t, kLongestTitle> title{};
    const int length = GetWindowTextW(handleOf(window), title.data(), static_cast<int>(title.size()));
    return QString::fromWCharArray(title.data(), length);
}

bool NativeWindows::isShown(NativeWindow window) const
{
    return IsWindowVisible(handleOf(window)) != 0 && IsIconic(handleOf(window)) == 0;
}

} // namespace platform
