// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/display_choice.h"

namespace platform {

DisplayChoice::DisplayChoice() = default;

DisplayChoice::~DisplayChoice() = default;

bool isWaylandSession()
{
    return false;
}

} // namespace platform
