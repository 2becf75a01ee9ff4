// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/mouse_hook.h"
#include "platform/system_failure.h"

#include <windows.h>
#include <utility>

namespace platform {

struct MouseHook::Private
{
    static LRESULT CALLBACK onMouse(int code, WPARAM message, LPARAM details);

    /// Hooks the mouse; whether that succeeded. The reason of a failure is the calling thread's last error.
    bool putOn();

    /// The system hands its callback nothing by which it could find its hook.
    static Private* s_installed;

    HHOOK hook = nullptr;
    Handler handler;
};

MouseHook::Private* MouseHook::Private::s_installed = nullptr;

LRESULT CALLBACK MouseHook::Private::onMouse(int code, WPARAM message, LPARAM details)
{
    if (code >= 0 && s_installed != nullptr) {
        const POINT point = reinterpret_cast<const MSLLHOOKSTRUCT*>(details)->pt;
        const QPoint position(point.x, point.y);
        if (message == WM_MOUSEMOVE)
            s_installed->handler(Event::Move, position);
        else if (message == WM_LBUTTONDOWN)
            s_installed->handler(Event::LeftPress, position);
        else if (message == WM_RBUTTONDOWN)
            s_installed->handler(Event::RightPress, position);
    }
    return CallNextHookEx(nullptr, code, message, details);
}

bool MouseHook::Private::putOn()
{
    const HHOOK fresh = SetWindowsHookExW(WH_MOUSE_LL, &onMouse, GetModuleHandleW(nullptr), 0);
    if (fresh == nullptr)
        return false;
    // The one before may be gone already.
    if (hook != nullptr)
        UnhookWindowsHookEx(hook);
    hook = fresh;
    s_installed = this;
    return true;
}

MouseHook::MouseHook() : m_private(std::make_unique<Private>()) {}

MouseHook::~MouseHook()
{
    remove();
}

unsigned long MouseHook::install(Handler handler)
{
    m_private->handler = std::move(handler);
    if (m_private->putOn())
        return 0;
    // Not 0 in any case, which would say that the hook is there.
    const DWORD error = GetLastError();
    reportSystemFailure("SetWindowsHookEx", error);
    return error != ERROR_SUCCESS ? error : ERROR_HOOK_NOT_INSTALLED;
}

void MouseHook::remove()
{
    if (m_private->hook == nullptr)
        return;
    // The system takes off by itself a hook that was too slow for it, and says so only here.
    if (UnhookWindowsHookEx(m_private->hook) == 0)
        reportSystemFailure("UnhookWindowsHookEx", GetLastError());
    m_private->hook = nullptr;
    Private::s_installed = nullptr;
}

void MouseHook::setWanted(bool wanted)
{
    // The system takes off, without a word, a hook whose thread was busy for too long, as the user interface's is while
    // the engine starts and while a recording ends.
    if (wanted && m_private->hook != nullptr && !m_private->putOn())
        reportSystemFailure("SetWindowsHookEx", GetLastError());
}

} // namespace platform
