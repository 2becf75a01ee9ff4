// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/obshandles.h"
#include "engine/output/recordingformat.h"

#include <QString>

/// What one recording asks of the file output.
struct FfmpegRequest
{
    /// Target file without extension.
    QString storePath;
    /// Video size in physical pixels; even.
    int widthPx = 0;
    int heightPx = 0;
    int fps = 0;
    /// Of the video; the output gets it times 1024.
    int bitRate = 0;
};

/// An odd positive size grows by one, every other number stays.
int evenSize(int sizePx);

/// The format's name in capitals, for example "MP4".
QString recordingFormatName(RecordingFormat format);

/// Where a recording of this format goes: the store path, a dot and the format's extension.
QString recordingUrl(const QString& storePath, RecordingFormat format);

/// The settings of the output "ffmpeg_output". A key that the format has no use for is not set; a format without video
/// takes only the path of the request.
ObsDataHandle buildFfmpegSettings(RecordingFormat format, const FfmpegRequest& request);

/// The format, range and matrix of the engine's video. Who listens to it asks for exactly this, or libobs converts each
/// frame: asked for nothing, libobs 29 takes the range for limited.
video_scale_info engineVideoConversion();

/// What the file output has to be given for true colours in a recording of this format.
///
/// MP4 says in the file which range and matrix it holds. AVI and FLV do not: players take the range for limited. The
/// output makes GIF's colours as if from limited BT.601.
video_scale_info videoConversionFor(RecordingFormat format);
