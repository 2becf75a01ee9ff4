// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/window_hotkey.h"
#include "platform/system_failure.h"

#include <QWidget>

#include <windows.h>

namespace platform {

namespace {

constexpr int kIdentifier = 1;
constexpr UINT kVirtualKeyH = 0x48;

} // namespace

struct WindowHotkey::Private
{
    HWND window = nullptr;
    bool isRegistered = false;
};

WindowHotkey::WindowHotkey(QWidget& window, std::function<void()> /*pressed*/) : m_private(std::make_unique<Private>())
{
    m_private->window = reinterpret_cast<HWND>(window.winId());
    m_private->isRegistered =
        RegisterHotKey(m_private->window, kIdentifier, MOD_CONTROL | MOD_SHIFT, kVirtualKeyH) != 0;
    if (!m_private->isRegistered)
        reportSystemFailure("RegisterHotKey", GetLastError());
}

WindowHotkey::~WindowHotkey()
{
    if (m_private->isRegistered && UnregisterHotKey(m_private->window, kIdentifier) == 0)
        reportSystemFailure("UnregisterHotKey", GetLastError());
}

bool WindowHotkey::isMessage(const QByteArray& eventType, const void* message)
{
    return eventType == "windows_generic_MSG" && static_cast<const MSG*>(message)->message == WM_HOTKEY;
}

} // namespace platform
