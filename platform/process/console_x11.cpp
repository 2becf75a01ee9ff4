// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/console.h"

namespace platform {

bool attachToParentConsole()
{
    // A process started from a terminal already writes to it.
    return false;
}

} // namespace platform
