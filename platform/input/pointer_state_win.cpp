// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/pointer_state.h"

#include <windows.h>
#include <utility>

namespace platform {

namespace {

bool isDown(int button)
{
    return (static_cast<unsigned short>(GetAsyncKeyState(button)) & 0x8000U) != 0;
}

} // namespace

struct PointerProbe::Connection
{};

PointerProbe::PointerProbe() = default;

PointerProbe::~PointerProbe() = default;

std::optional<PointerState> PointerProbe::look() const
{
    // Physical pixels: the program sees every monitor in its own resolution. Refused while the system shows a desktop
    // of its own, to ask for a password or for consent; the next frame looks again, so nothing is reported.
    POINT position{};
    if (!GetCursorPos(&position))
        return {};
    PointerState state{QPoint(position.x, position.y), isDown(VK_LBUTTON), isDown(VK_RBUTTON)};
    // The keys are those of the device, whatever the user has made of them.
    if (GetSystemMetrics(SM_SWAPBUTTON) != 0)
        std::swap(state.leftDown, state.rightDown);
    return state;
}

} // namespace platform
