// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/rawvideo.h"

#include "engine/output/ffmpegsettings.h"

#include <obs.h>

void connectRawVideo(video_output* video, RawVideoCallback callback, void* param)
{
    const video_scale_info conversion = conversionOf(video ? video : obs_get_video());
    // libobs renders and reads back frames of its own video only as long as it counts as active.
    if (video)
        video_output_connect(video, &conversion, callback, param);
    else
        obs_add_raw_video_callback(&conversion, callback, param);
}

void disconnectRawVideo(video_output* video, RawVideoCallback callback, void* param)
{
    if (video)
        video_output_disconnect(video, callback, param);
    else
        obs_remove_raw_video_callback(callback, param);
}
