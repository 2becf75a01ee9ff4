// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/window_hold.h"

#include <QWidget>

#include <windows.h>

namespace {

/// The low four bits of a system command belong to the system.
constexpr WPARAM kCommandMask = 0xFFF0;

} // namespace

void platform::setHeld(QWidget& /*window*/, bool /*held*/) {}

std::optional<qintptr> platform::answerWhileHeld(const QByteArray& eventType, void* message)
{
    if (eventType != "windows_generic_MSG")
        return std::nullopt;
    const MSG* const received = static_cast<const MSG*>(message);
    if (received->message == WM_SYSCOMMAND) {
        const WPARAM command = received->wParam & kCommandMask;
        return command == SC_RESTORE || command == SC_MAXIMIZE ? std::optional<qintptr>(0) : std::nullopt;
    }
    if (received->message == WM_WINDOWPOSCHANGING) {
        // The message carries the address as a number.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        reinterpret_cast<WINDOWPOS*>(received->lParam)->flags |= SWP_NOACTIVATE;
        return 0;
    }
    return std::nullopt;
}
