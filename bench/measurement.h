// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>
#include <QString>

/// One recording of the test pattern, measured.
struct Measurement
{
    QString recorder;
    /// Numbers a second that the test pattern showed.
    int rate = 0;
    /// Why there is nothing to read below; empty when there is.
    QString failure;
    /// Share of the numbers shown from the file's first to its last that the file holds.
    double heldPercent = 0;
    /// Frames that were late: rendered too late, respectively repeated.
    double laggedPercent = 0;
    /// Frames that the encoder had no time for.
    double skippedPercent = 0;
    /// Processor time of the recorder for one second of recording, once it runs.
    double cpuSeconds = 0;
    double peakMiB = 0;
    /// From the stop request to the closed file.
    double stopMs = 0;
    /// From the start of the process to the window on the screen, respectively to the engine ready; negative where
    /// there is no such thing.
    double windowMs = -1;
    double engineMs = -1;
};

/// What is measured.
struct Job
{
    int rate = 30;
    int seconds = 10;
    QSize screen;
    /// Where the files go.
    QString folder;
};

/// What a process costs that records nothing.
struct IdleMeasurement
{
    QString process;
    /// Why there is nothing to read below; empty when there is.
    QString failure;
    /// Processor time, of one core, in per cent of the time that passed.
    double corePercent = 0;
};
