#include "platform/capture_exclusion.h"

#include <QWidget>

#include <windows.h>

namespace platform {

namespace {

/// WDA_EXCLUDEFROMCAPTURE, known since Windows 10 2004 and missing from older headers.
constexpr DWORD kExcludeFromCapture = 0x11;
constexpr DWORD kCaptureAsUsual = 0;

} // namespace

bool setExcludedFromCapture(QWidget& window, bool excluded)
{
    const auto handle = reinterpret_cast<HWND>(window.winId());
    return SetWindowDisplayAffinity(handle, excluded ? kExcludeFromCapture : kCaptureAsUsual) != 0;
}

} // namespace platform
