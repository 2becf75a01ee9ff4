// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_use.h"
#include "platform/files/write_lease_x11.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

std::optional<bool> platform::isOpenForWriting(int file)
{
    // The system refuses a lease for reading while somebody may write. Who opens the file for writing during the lease
    // has a signal sent here: not the usual one, which would end the process.
    fcntl(file, F_SETSIG, SIGURG);
    const bool isLeased = fcntl(file, F_SETLEASE, F_RDLCK) == 0;
    const bool isWritten = !isLeased && errno == EAGAIN;
    if (isLeased)
        fcntl(file, F_SETLEASE, F_UNLCK);
    return isLeased || isWritten ? std::optional(isWritten) : std::nullopt;
}

std::optional<bool> platform::isOpenForWriting(const QString& path)
{
    const int file = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0)
        return std::nullopt;
    const auto isWritten = isOpenForWriting(file);
    close(file);
    return isWritten;
}
