// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct video_data;
struct video_output;
struct video_scale_info;

using RawVideoCallback = void (*)(void* param, video_data* frame);

/// The format of a video's own frames. Raw callbacks ask for exactly this, or libobs converts each frame: asked for
/// nothing, libobs 29 assumes limited range.
video_scale_info conversionOf(const video_output* video);

/// Connects a raw callback to a video, which then gets the frames as they are. @param video null means the engine's
void connectRawVideo(video_output* video, RawVideoCallback callback, void* param);
/// The callback does not run any more when it returns.
void disconnectRawVideo(video_output* video, RawVideoCallback callback, void* param);
