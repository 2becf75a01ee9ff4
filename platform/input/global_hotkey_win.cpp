// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey_backend.h"
#include "platform/system_failure.h"

#include <windows.h>

#include <map>

namespace platform {

namespace {

/// Identifiers below this belong to applications; every hotkey of the process gets its own.
int nextIdentifier()
{
    static int last = 0;
    constexpr int kHighest = 0xBFFF;
    last = last % kHighest + 1;
    return last;
}

UINT modifiersOf(const QKeyCombination& key)
{
    UINT modifiers = MOD_NOREPEAT;
    if (key.keyboardModifiers().testFlag(Qt::ShiftModifier))
        modifiers |= MOD_SHIFT;
    if (key.keyboardModifiers().testFlag(Qt::ControlModifier))
        modifiers |= MOD_CONTROL;
    if (key.keyboardModifiers().testFlag(Qt::AltModifier))
        modifiers |= MOD_ALT;
    if (key.keyboardModifiers().testFlag(Qt::MetaModifier))
        modifiers |= MOD_WIN;
    return modifiers;
}

UINT namedVirtualKey(Qt::Key key)
{
    static const std::map<Qt::Key, UINT> kKeys{
        {Qt::Key_Escape, VK_ESCAPE}, {Qt::Key_Tab, VK_TAB},       {Qt::Key_Backspace, VK_BACK},
        {Qt::Key_Return, VK_RETURN}, {Qt::Key_Enter, VK_RETURN},  {Qt::Key_Insert, VK_INSERT},
        {Qt::Key_Delete, VK_DELETE}, {Qt::Key_Pause, VK_PAUSE},   {Qt::Key_Print, VK_SNAPSHOT},
        {Qt::Key_Home, VK_HOME},     {Qt::Key_End, VK_END},       {Qt::Key_Left, VK_LEFT},
        {Qt::Key_Up, VK_UP},         {Qt::Key_Right, VK_RIGHT},   {Qt::Key_Down, VK_DOWN},
        {Qt::Key_PageUp, VK_PRIOR},  {Qt::Key_PageDown, VK_NEXT}, {Qt::Key_ScrollLock, VK_SCROLL},
        {Qt::Key_Space, VK_SPACE}};
    const auto found = kKeys.find(key);
    return found == kKeys.end() ? 0 : found->second;
}

/// 0 for a key that the keyboard does not have.
UINT virtualKeyOf(Qt::Key key)
{
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return static_cast<UINT>(VK_F1 + (key - Qt::Key_F1));
    if (const UINT named = namedVirtualKey(key); named != 0)
        return named;
    const SHORT scanned = key > 0 && key < 0x10000 ? VkKeyScanW(static_cast<WCHAR>(key)) : SHORT{-1};
    return scanned == -1 ? 0 : static_cast<UINT>(scanned & 0xFF);
}

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// A registration with the system, whose message goes to a window of its own that is never shown: one sent to the
/// thread would be lost in the loops that Windows runs by itself, while a window is dragged or a system dialog is open.
class WindowsBackend : public GlobalHotkey::Backend
{
public:
    explicit WindowsBackend(GlobalHotkey& owner) : m_owner(owner), m_identifier(nextIdentifier())
    {
        static const WindowClass windowClass = registerWindowClass();
        m_windowError = windowClass.error;
        if (m_windowError != ERROR_SUCCESS)
            return;
        m_window = CreateWindowExW(0, MAKEINTATOM(windowClass.atom), nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                   GetModuleHandleW(nullptr), this);
        if (m_window == nullptr)
            m_windowError = GetLastError();
    }

    ~WindowsBackend() override
    {
        unregister();
        if (m_window != nullptr && DestroyWindow(m_window) == 0)
            reportSystemFailure("DestroyWindow", GetLastError());
    }

    QString take(const QKeyCombination& key) override
    {
        const UINT virtualKey = virtualKeyOf(key.key());
        if (virtualKey == 0)
            return QStringLiteral("the keyboard has no such key");
        // Without a window of its own the message would go to the thread, where nobody reads it.
        if (m_window == nullptr)
            return systemErrorText(m_windowError);
        m_registered = RegisterHotKey(m_window, m_identifier, modifiersOf(key), virtualKey) != 0;
        if (m_registered)
            return {};
        const DWORD error = GetLastError();
        return error == ERROR_HOTKEY_ALREADY_REGISTERED ? QStringLiteral("another program holds it")
                                                        : systemErrorText(error);
    }

    void release() override { unregister(); }

    void onHotkey(int identifier)
    {
        if (m_registered && identifier == m_identifier)
            QMetaObject::invokeMethod(&m_owner, &GlobalHotkey::activated, Qt::QueuedConnection);
    }

private:
    struct WindowClass
    {
        ATOM atom = 0;
        DWORD error = ERROR_SUCCESS;
    };

    static WindowClass registerWindowClass()
    {
        WNDCLASSEXW description{};
        description.cbSize = sizeof(description);
        description.lpfnWndProc = &windowProcedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = L"KestranoGlobalHotkey";
        const ATOM atom = RegisterClassExW(&description);
        return {atom, atom != 0 ? DWORD{ERROR_SUCCESS} : GetLastError()};
    }

    void unregister()
    {
        if (m_registered && UnregisterHotKey(m_window, m_identifier) == 0)
            reportSystemFailure("UnregisterHotKey", GetLastError());
        m_registered = false;
    }

    GlobalHotkey& m_owner;
    int m_identifier;
    HWND m_window = nullptr;
    DWORD m_windowError = 0;
    bool m_registered = false;
};

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE) {
        // The message carries the address as a number.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        const auto* const creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetLastError(ERROR_SUCCESS);
        // The value before is 0 as well. Without its owner the window would hear of no key.
        if (SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams)) == 0 &&
            GetLastError() != ERROR_SUCCESS)
            return FALSE;
    }
    if (message != WM_HOTKEY)
        return DefWindowProcW(window, message, wParam, lParam);
    if (auto* const backend = reinterpret_cast<WindowsBackend*>(GetWindowLongPtrW(window, GWLP_USERDATA)))
        backend->onHotkey(static_cast<int>(wParam));
    return 0;
}

} // namespace

std::unique_ptr<GlobalHotkey::Backend> GlobalHotkey::Backend::create(GlobalHotkey& owner)
{
    return std::make_unique<WindowsBackend>(owner);
}

} // namespace platform
