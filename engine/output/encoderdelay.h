// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/recordingformat.h"

/// libx264's delay in frames with "veryfast", the preset of libobs' FFmpeg output, by libx264's own arithmetic.
/// @param heightPx a low video gets fewer threads
/// @param processors logical ones
int computedEncoderDelay(int heightPx, int processors);

/// The most that measured delays (tests/engine/encoderprobe.h) were above the computed one.
inline constexpr int kEncoderDelayMargin = 3;

/// Frames that have to follow a frame before the encoder on this computer returns it; 0 without video.
int encoderDelay(RecordingFormat format, int heightPx);
