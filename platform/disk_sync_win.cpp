#include "platform/disk_sync.h"

#include <io.h>

namespace platform {

bool syncToDisk(int fileDescriptor)
{
    return _commit(fileDescriptor) == 0;
}

} // namespace platform
