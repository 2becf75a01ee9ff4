#pragma once

#include "engine/core/obshandles.h"
#include "engine/output/recordingformat.h"

#include <QString>

/// What one recording asks of the file output.
struct FfmpegRequest
{
    /// Target file without extension.
    QString storePath;
    /// Picture size in physical pixels; even.
    int widthPx = 0;
    int heightPx = 0;
    int fps = 0;
    /// Picture bit rate; the output gets it times 1024.
    int bitRate = 0;
};

/// The smallest even size that holds a picture of this size: an odd positive number grows by one, every other number
/// stays.
int evenSize(int sizePx);

/// The format's name in capitals, for example "MP4".
QString recordingFormatName(RecordingFormat format);

/// Where a recording of this format goes: the store path, a dot and the format's extension.
QString recordingUrl(const QString& storePath, RecordingFormat format);

/// The settings that the output "ffmpeg_output" gets for a recording of this format. A key that a format has no use for
/// is not set. Of the request, a format without picture takes only the path.
ObsDataHandle buildFfmpegSettings(RecordingFormat format, const FfmpegRequest& request);

/// The form in which the running engine makes its picture. Whoever listens to the picture asks for exactly this, or
/// libobs converts each picture for him: asked for nothing, libobs 29 takes the range for limited and converts a
/// picture of full range.
video_scale_info enginePictureForm();

/// The form in which the file output must get its picture so that a recording of this format shows true colours.
///
/// MP4 says in the file which range and colours it holds. AVI and FLV do not: players take the range for limited. The
/// output turns the picture into GIF's colours as if it were limited BT.601, whatever it is. A format of sound only has
/// no use for the picture and takes it as it is, which costs nothing.
video_scale_info pictureFormFor(RecordingFormat format);
