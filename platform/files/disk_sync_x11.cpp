// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/disk_sync.h"
#include "platform/system_failure.h"

#include <cerrno>
#include <unistd.h>

namespace platform {

bool syncToDisk(int fileDescriptor)
{
    // EINVAL: not a file system that could.
    if (fsync(fileDescriptor) == 0 || errno == EINVAL)
        return true;
    reportSystemFailure("fsync", static_cast<unsigned long>(errno));
    return false;
}

} // namespace platform
