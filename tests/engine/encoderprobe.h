// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/ffmpegsettings.h"

#include <obs.h>

#include <optional>

/// Lets an output encode MP4's video into nothing, and counts the frames that go in before the first one comes out. The
/// frames come from a video output of the probe's own, so the engine's video is not active. Needs a running engine with
/// its modules; takes some seconds.
///
/// @param video form of the frames: size, colours, frames per second
/// @return how many frames have to follow a frame; nothing when the output could not be run, or where libobs (31.1)
///         hands an output no video but its own
std::optional<int> measuredEncoderDelay(const FfmpegRequest& request, const video_output_info& video);
