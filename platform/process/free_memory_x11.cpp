// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/free_memory.h"

#include <malloc.h>

namespace platform {

void returnFreeMemory()
{
    malloc_trim(0);
}

} // namespace platform
