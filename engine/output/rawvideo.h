// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct video_data;
struct video_output;

using RawVideoCallback = void (*)(void* param, video_data* frame);

/// Connects a raw callback to a video, which then gets the frames as they are. @param video null means the engine's
void connectRawVideo(video_output* video, RawVideoCallback callback, void* param);
/// The callback does not run any more when it returns.
void disconnectRawVideo(video_output* video, RawVideoCallback callback, void* param);
