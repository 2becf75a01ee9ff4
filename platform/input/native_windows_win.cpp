// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/native_windows.h"
#include "platform/system_failure.h"

#include <windows.h>

#include <array>

namespace platform {

namespace {

constexpr std::size_t kLongestTitle = 1024;

HWND handleOf(NativeWindow window)
{
    return reinterpret_cast<HWND>(window);
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
