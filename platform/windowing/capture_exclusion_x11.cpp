// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/capture_exclusion.h"

namespace platform {

bool setExcludedFromCapture(QWidget&, bool)
{
    return false;
}

} // namespace platform
