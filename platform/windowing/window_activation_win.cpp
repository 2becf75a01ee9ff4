// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system_failure.h"
#include "platform/windowing/window_activation.h"

#include <windows.h>

namespace platform {

namespace {

HWND toWindow(quint64 handle)
{
    return reinterpret_cast<HWND>(static_cast<quintptr>(handle));
}

bool placeBehind(HWND window, HWND other)
{
    if (SetWindowPos(window, other, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE) != 0)
        return true;
    // Among others for the window of a program that runs with more rights.
    reportSystemFailure("SetWindowPos", GetLastError());
    return false;
}

} // namespace

bool isWindow(quint64 handle)
{
    return IsWindow(toWindow(handle)) != 0;
}

bool isMinimized(quint64 handle)
{
    return IsIconic(toWindow(handle)) != 0;
}

bool restoreWindow(quint64 handle)
{
    if (!isWindow(handle))
        return false;
    // The result says whether the window was visible before, not whether this worked.
    ShowWindow(toWindow(handle), SW_RESTORE);
    return true;
}

bool raiseWindow(quint64 handle)
{
    return placeBehind(toWindow(handle), HWND_TOPMOST) && placeBehind(toWindow(handle), HWND_NOTOPMOST);
}

quint64 activeWindow()
{
    return reinterpret_cast<quintptr>(GetForegroundWindow());
}

bool activateWindow(quint64 handle)
{
    // A refusal is nothing out of the ordinary, and sets no error.
    return SetForegroundWindow(toWindow(handle)) != 0;
}

bool demandAttention(quint64 handle, int count)
{
    if (!isWindow(handle))
        return false;
    FLASHWINFO flash{};
    flash.cbSize = sizeof(flash);
    flash.hwnd = toWindow(handle);
    flash.dwFlags = FLASHW_ALL | FLASHW_TIMERNOFG;
    flash.uCount = static_cast<UINT>(count);
    flash.dwTimeout = 0; // the cursor's blink rate
    // The result says how the caption looked before, not whether flashing began.
    FlashWindowEx(&flash);
    return true;
}

} // namespace platform
