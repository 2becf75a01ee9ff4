// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/free_memory.h"

namespace platform {

void returnFreeMemory() {}

} // namespace platform
