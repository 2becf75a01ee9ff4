#include "platform/process_life.h"

#include <cerrno>
#include <csignal>

namespace platform {

bool isProcessGone(qint64 processId)
{
    return processId > 0 && kill(static_cast<pid_t>(processId), 0) != 0 && errno == ESRCH;
}

} // namespace platform
