#include "platform/window_hotkey.h"

#include <QWidget>

#include <windows.h>

namespace platform {

namespace {

constexpr int kIdentifier = 1;
constexpr UINT kVirtualKeyH = 0x48;

} // namespace

struct WindowHotkey::Private
{
    HWND window;
};

WindowHotkey::WindowHotkey(QWidget& window, std::function<void()> /*pressed*/)
    : m_private(std::make_unique<Private>(reinterpret_cast<HWND>(window.winId())))
{
    RegisterHotKey(m_private->window, kIdentifier, MOD_CONTROL | MOD_SHIFT, kVirtualKeyH);
}

WindowHotkey::~WindowHotkey()
{
    UnregisterHotKey(m_private->window, kIdentifier);
}

bool WindowHotkey::isMessage(const QByteArray& eventType, const void* message)
{
    return eventType == "windows_generic_MSG" && static_cast<const MSG*>(message)->message == WM_HOTKEY;
}

} // namespace platform
