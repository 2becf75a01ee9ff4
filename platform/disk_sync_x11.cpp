#include "platform/disk_sync.h"

#include <cerrno>
#include <unistd.h>

namespace platform {

bool syncToDisk(int fileDescriptor)
{
    // EINVAL: not a file system that could.
    return fsync(fileDescriptor) == 0 || errno == EINVAL;
}

} // namespace platform
