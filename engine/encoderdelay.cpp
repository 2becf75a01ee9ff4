#include "engine/encoderdelay.h"

#include <QThread>

namespace {

/// libx264's defaults: a look-ahead of 40 pictures and, on top, up to 16 pictures for the order of B pictures.
constexpr int kX264LookAheadFrames = 40;
constexpr int kX264ReorderFrames = 16;
/// FFmpeg's own encoders take a picture and give it out; two more if one of them ever reorders.
constexpr int kPlainEncoderFrames = 2;

/// libx264 starts three threads for two processors; each holds one picture.
int x264ThreadFrames()
{
    return QThread::idealThreadCount() * 3 / 2 + 1;
}

} // namespace

int encoderDelayBound(RecordingFormat format)
{
    if (!hasVideo(format))
        return 0;
    return format == RecordingFormat::Mp4 ? kX264LookAheadFrames + kX264ReorderFrames + x264ThreadFrames()
                                          : kPlainEncoderFrames;
}
