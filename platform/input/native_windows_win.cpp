// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/native_windows.h"
#include "platform/system_failure.h"

#include <windows.h>

namespace platform {

namespace {

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

} // namespace platform
