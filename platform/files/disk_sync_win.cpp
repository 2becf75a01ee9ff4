// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/disk_sync.h"
#include "platform/system_failure.h"

#include <cstdlib>
#include <io.h>

namespace platform {

bool syncToDisk(int fileDescriptor)
{
    if (_commit(fileDescriptor) == 0)
        return true;
    reportSystemFailure("FlushFileBuffers", _doserrno);
    return false;
}

} // namespace platform
