// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bench/measurement.h"

#include <QString>

/// What a frame costs on its way from the screen to the file, in milliseconds; the middle of some frames.
struct FrameStages
{
    /// Why there is nothing to read below; empty when there is.
    QString failure;
    /// Until the X server has said what changed, and has delivered it.
    double grabMs = -1;
    double convertMs = -1;
    /// The pointer and its highlight, drawn into the frame and converted.
    double blendMs = -1;
    /// To a video output with a callback that does nothing.
    double handOverMs = -1;
    /// Processor time of the encoder, of all its threads.
    double encodeMs = -1;
};

/// Takes frames of what the screen shows, at the rate of a recording.
FrameStages measureFrameStages(const Job& job);
