// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

class QByteArray;

/// What a process has used so far, read off /proc. All threads count.
struct ProcessUsage
{
    double cpuSeconds = 0;
    /// The most memory it had in use at one moment, in MiB.
    double peakMiB = 0;
};

/// Zeros when there is no such process.
ProcessUsage usageOf(qint64 processId);

/// Processor seconds of the threads with this name; negative when there is none.
double cpuSecondsOfThreads(qint64 processId, const QByteArray& name);
