#include "platform/console.h"

#include <windows.h>

#include <cstdio>
#include <iostream>

namespace platform {

bool attachToParentConsole()
{
    if (AttachConsole(ATTACH_PARENT_PROCESS) == 0)
        return false;
    std::freopen("CONOUT$", "w", stdout);
    std::freopen("CONOUT$", "w", stderr);
    std::cout.clear();
    std::cerr.clear();
    return true;
}

} // namespace platform
