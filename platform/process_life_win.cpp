#include "platform/process_life.h"

#include <windows.h>

namespace platform {

bool isProcessGone(qint64 processId)
{
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(processId));
    if (process == nullptr)
        return processId > 0 && GetLastError() == ERROR_INVALID_PARAMETER;
    // It stays there for as long as somebody holds a handle to it.
    const bool ended = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
    CloseHandle(process);
    return ended;
}

} // namespace platform
