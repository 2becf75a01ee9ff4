// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/streamgate.h"

struct video_data;
struct video_output;

/// Blocks a video while it lives: no output is in a callback of it. Any thread but the video's own.
class VideoBlock
{
public:
    /// Waits up to a second for a frame; a video that has none by then is in no callback, as far as can be known.
    /// @param video null means the engine's; nothing that waits may be connected to it
    explicit VideoBlock(video_output* video);
    ~VideoBlock();
    VideoBlock(const VideoBlock&) = delete;
    VideoBlock& operator=(const VideoBlock&) = delete;

private:
    static void onFrame(void* block, video_data* frame);

    video_output* const m_video;
    StreamGate m_gate;
};
