// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

class QByteArray;

/// What a process has used so far, read off /proc. All threads count.
struct ProcessUsage
{
    double cpuSeconds = 0;
    /// The memory that it has in use, in MiB, and the most that it had at one moment.
    double memoryMiB = 0;
    double peakMiB = 0;
    int threads = 0;
    /// Open files, sockets and the like.
    int descriptors = 0;
    /// Mapped parts of memory that can be shared: segments of System V, /dev/shm, and files without a name.
    int sharedParts = 0;
};

/// Zeros when there is no such process.
ProcessUsage usageOf(qint64 processId);

/// Processor seconds of the threads with this name; negative when there is none.
double cpuSecondsOfThreads(qint64 processId, const QByteArray& name);
