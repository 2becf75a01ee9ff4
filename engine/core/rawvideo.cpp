// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/rawvideo.h"

#include <obs.h>

video_scale_info conversionOf(const video_output* video)
{
    video_scale_info conversion{};
    const video_output_info* const info = video_output_get_info(video);
    if (!info)
        return conversion;
    conversion.format = info->format;
    conversion.width = info->width;
    conversion.height = info->height;
    conversion.range = info->range;
    conversion.colorspace = info->colorspace;
    return conversion;
}

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
