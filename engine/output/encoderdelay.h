// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/recordingformat.h"

/// libx264's delay in frames with the preset that libobs' FFmpeg output asks for ("veryfast"), by libx264's own
/// arithmetic.
///
/// @param heightPx   of the recorded video: a low one gets fewer threads
/// @param processors logical ones, of which libx264 makes its threads
int computedEncoderDelay(int heightPx, int processors);

/// What measured delays were above the computed one, at most; tests/engine/encoderprobe.h measures.
inline constexpr int kEncoderDelayMargin = 3;

/// How many frames have to follow a frame before the format's encoder has returned it on this computer; 0 without
/// video.
int encoderDelay(RecordingFormat format, int heightPx);
