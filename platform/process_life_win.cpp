#include "platform/process_life.h"
#include "platform/system_failure.h"

#include <windows.h>

namespace platform {

bool isProcessGone(qint64 processId)
{
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(processId));
    if (process == nullptr) {
        const DWORD error = GetLastError();
        // One of another user is there, but none of our business.
        if (error != ERROR_INVALID_PARAMETER && error != ERROR_ACCESS_DENIED)
            reportSystemFailure("OpenProcess", error);
        return processId > 0 && error == ERROR_INVALID_PARAMETER;
    }
    // It stays there for as long as somebody holds a handle to it.
    const DWORD state = WaitForSingleObject(process, 0);
    if (state == WAIT_FAILED)
        reportSystemFailure("WaitForSingleObject", GetLastError());
    CloseHandle(process);
    return state == WAIT_OBJECT_0;
}

} // namespace platform
