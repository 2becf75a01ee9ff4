#include "platform/window_alpha.h"

#include <QWidget>

#include <windows.h>

namespace platform {

namespace {

/// The window colour #28282E. It is not used for keying (that takes another flag), but stands in the call.
constexpr COLORREF kColourKey = 0x2E2828;

} // namespace

bool setWindowAlpha(QWidget& window, int alpha)
{
    const auto handle = reinterpret_cast<HWND>(window.winId());
    return SetLayeredWindowAttributes(handle, kColourKey, static_cast<BYTE>(alpha), LWA_ALPHA) != 0;
}

} // namespace platform
