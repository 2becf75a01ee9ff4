// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/obshandles.h"
#include "engine/output/recordingformat.h"

#include <QByteArray>
#include <QString>

struct FfmpegRequest
{
    /// Without extension.
    QString storePath;
    /// Physical pixels; even.
    int widthPx = 0;
    int heightPx = 0;
    int fps = 0;
    /// The output gets it times 1024, in kbit/s.
    int bitRate = 0;
    /// See writesHybridMp4().
    bool isHybridMp4 = false;
};

/// An odd positive size grows by one.
int evenSize(int sizePx);

/// With these the file plays however its recording ends, up to what was recorded about two seconds before: each packet
/// is written at once, and an MP4 in fragments of a second.
QByteArray muxerOptions(RecordingFormat format, bool isHybridMp4);

QString recordingUrl(const QString& storePath, RecordingFormat format);

/// Of the output "ffmpeg_output". Keys without use for the format are not set.
ObsDataHandle buildFfmpegSettings(RecordingFormat format, const FfmpegRequest& request);

/// For true colours in a recording of this format.
video_scale_info videoConversionFor(RecordingFormat format, const video_output* video);
