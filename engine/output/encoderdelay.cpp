// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/encoderdelay.h"

#include <QThread>

#include <algorithm>

/// As x264_validate_parameters() and x264_encoder_open() have it: the look-ahead, one frame in each thread and, with
/// several of them, as many frames again as decide about the next one. There are three threads to two processors, two
/// rows of blocks to each.
int computedEncoderDelay(int heightPx, int processors)
{
    constexpr int kLookAhead = 10;
    constexpr int kBFrames = 3;
    // Frames leave in the order of decoding: in a pyramid of B-frames, one comes up to two frames later than it is
    // shown.
    constexpr int kReorder = 2;
    constexpr int kBlockPx = 16;
    constexpr int kMaxThreads = 128;
    const int rows = (heightPx + kBlockPx - 1) / kBlockPx;
    const int threads = std::clamp(std::min(processors * 3 / 2, rows / 2), 1, kMaxThreads);
    const int decision = threads > 1 ? kBFrames + 1 : 0;
    return kLookAhead + decision + threads + kReorder;
}

int encoderDelay(RecordingFormat format, int heightPx)
{
    // FFmpeg's own encoders return each frame at once; two more if one of them ever reorders.
    constexpr int kFfmpegEncoderFrames = 2;
    if (!hasVideo(format))
        return 0;
    if (traitsOf(format).video.encoderId != codecid::kH264)
        return kFfmpegEncoderFrames;
    return computedEncoderDelay(heightPx, QThread::idealThreadCount()) + kEncoderDelayMargin;
}
