// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bench/workload.h"

#include <QSize>
#include <QString>

/// One recording of a workload, measured. Figures are negative where there is no such thing.
struct Measurement
{
    /// Why there is nothing to read below; empty when there is.
    QString failure;
    /// Share of the numbers shown from the file's first to its last that the file holds; of an unchanged screen, of the
    /// frames that its length has room for.
    double heldPercent = -1;
    /// Frames that were late: rendered too late, respectively repeated.
    double laggedPercent = -1;
    /// Frames that the encoder had no time for.
    double skippedPercent = -1;
    /// Processor time of the recorder for one second of recording, once it runs.
    double cpuSeconds = -1;
    /// The same of the thread that makes the frames, in per cent of a core.
    double frameThreadPercent = -1;
    double peakMiB = -1;
    /// From the stop request to the closed file.
    double stopMs = -1;
    /// From the start of the process to the window on the screen, respectively to the engine ready.
    double windowMs = -1;
    double engineMs = -1;
};

/// What is measured.
struct Job
{
    Workload workload;
    QSize screen;
    int seconds = 10;
    /// Where the files go.
    QString folder;

    /// What is recorded, in pixels of the screen.
    QRect area() const { return workload.area(screen); }
};

/// What a process costs that records nothing.
struct IdleMeasurement
{
    /// Why there is nothing to read below; empty when there is.
    QString failure;
    /// Processor time, of one core, in per cent of the time that passed.
    double corePercent = -1;
};
