// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/console.h"
#include "platform/system_failure.h"

#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <cwchar>
#include <iostream>

namespace platform {

namespace {

/// A stream that cannot be opened stays closed, and what is written to it is lost, as it was without a console.
void sendToConsole(std::FILE* stream)
{
    if (std::freopen("CONOUT$", "w", stream) == nullptr)
        reportFailure(
            QStringLiteral("The console cannot be written to: %1").arg(QString::fromWCharArray(_wcserror(errno))));
}

} // namespace

bool attachToParentConsole()
{
    // Most starts come from the desktop, where there is none: nothing to report.
    if (AttachConsole(ATTACH_PARENT_PROCESS) == 0)
        return false;
    sendToConsole(stdout);
    sendToConsole(stderr);
    std::cout.clear();
    std::cerr.clear();
    return true;
}

} // namespace platform
