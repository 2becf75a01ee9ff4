// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system_failure.h"
#include "platform/windowing/overlay_window.h"

#include <QGuiApplication>
#include <QWidget>

#include <windows.h>
#include <utility>

namespace platform {

namespace {

/// The window colour #28282E. It is not used for keying (that takes another flag), but passed in the call.
constexpr COLORREF kColourKey = 0x2E2828;

/// Qt keeps a window layered for as long as it is not wholly opaque.
constexpr double kAlmostOpaque = 254.0 / 255.0;

bool isDrawnByTheSystem()
{
    return QGuiApplication::platformName() == QLatin1String("windows");
}

} // namespace

void prepareAsOverlay(QWidget&) {}

void giveKeyboard(QWidget& window)
{
    // Qt refuses to activate a window that takes no keyboard by a click. A refusal of the system sets no error.
    if (isDrawnByTheSystem())
        SetForegroundWindow(reinterpret_cast<HWND>(window.winId()));
    else
        window.activateWindow();
}

bool isCompositing()
{
    return true;
}

bool prepareForAlpha(QWidget& window)
{
    if (!isDrawnByTheSystem()) {
        window.winId();
        return true;
    }
    // A frameless window with see-through pixels is drawn with UpdateLayeredWindow, which fails from the first
    // SetLayeredWindowAttributes on. What the native window is made with stays with it.
    const bool isSeeThrough = window.testAttribute(Qt::WA_TranslucentBackground);
    window.setAttribute(Qt::WA_TranslucentBackground, false);
    window.setWindowOpacity(kAlmostOpaque);
    window.winId();
    window.setAttribute(Qt::WA_TranslucentBackground, isSeeThrough);
    return false;
}

bool setWindowAlpha(QWidget& window, int alpha)
{
    if (!isDrawnByTheSystem())
        return false;
    const auto handle = reinterpret_cast<HWND>(window.winId());
    if (SetLayeredWindowAttributes(handle, kColourKey, static_cast<BYTE>(alpha), LWA_ALPHA) != 0)
        return true;
    const DWORD error = GetLastError();
    // Once: a fade would say it at every step.
    static bool isReported = false;
    if (!std::exchange(isReported, true))
        reportSystemFailure("SetLayeredWindowAttributes", error);
    return false;
}

} // namespace platform
