// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey_backend.h"
#include "platform/input/sole_qhotkey.h"
#include "platform/system_failure.h"

#include <QAbstractEventDispatcher>

#include <windows.h>

namespace platform {

namespace {

/// QHotkey has its messages sent to the thread, and filters them in Qt's event loop. Loops that Windows runs by itself,
/// while a window is dragged or a system dialog is open, drop what is for no window: it goes to the filter before.
LRESULT CALLBACK onMessage(int code, WPARAM removal, LPARAM details)
{
    // The message carries the address as a number.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    auto* const message = reinterpret_cast<MSG*>(details);
    if (code == HC_ACTION && removal == PM_REMOVE && message->message == WM_HOTKEY && message->hwnd == nullptr) {
        qintptr result = 0;
        QAbstractEventDispatcher::instance()->filterNativeEvent("windows_generic_MSG", message, &result);
        // Qt's own loop would filter it once more.
        message->message = WM_NULL;
    }
    return CallNextHookEx(nullptr, code, removal, details);
}

/// The calling thread's messages go through onMessage() for as long as the object lives.
class MessageHook
{
public:
    MessageHook() : m_hook(SetWindowsHookExW(WH_GETMESSAGE, &onMessage, nullptr, GetCurrentThreadId()))
    {
        if (m_hook == nullptr)
            reportSystemFailure("SetWindowsHookEx", GetLastError());
    }
    ~MessageHook()
    {
        if (m_hook != nullptr)
            UnhookWindowsHookEx(m_hook);
    }
    MessageHook(const MessageHook&) = delete;
    MessageHook& operator=(const MessageHook&) = delete;

private:
    HHOOK m_hook;
};

class QHotkeyBackend : public GlobalHotkey::Backend
{
public:
    explicit QHotkeyBackend(GlobalHotkey& owner)
    {
        static const MessageHook hook;
        QObject::connect(&m_hotkey.hotkey(), &QHotkey::activated, &owner, &GlobalHotkey::activated,
                         Qt::QueuedConnection);
    }

    QString take(const QKeyCombination& key) override { return m_hotkey.take(key); }

    void release() override { m_hotkey.release(); }

private:
    SoleQHotkey m_hotkey;
};

} // namespace

std::unique_ptr<GlobalHotkey::Backend> GlobalHotkey::Backend::create(GlobalHotkey& owner)
{
    return std::make_unique<QHotkeyBackend>(owner);
}

} // namespace platform
