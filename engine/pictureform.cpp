#include "engine/pictureform.h"

video_scale_info enginePictureForm()
{
    video_scale_info form{};
    obs_video_info engine{};
    if (!obs_get_video_info(&engine))
        return form;
    form.format = engine.output_format;
    form.width = engine.output_width;
    form.height = engine.output_height;
    form.range = engine.range;
    form.colorspace = engine.colorspace;
    return form;
}

video_scale_info pictureFormFor(RecordingFormat format)
{
    video_scale_info form = enginePictureForm();
    switch (format) {
    case RecordingFormat::Avi:
    case RecordingFormat::Flv:
        form.range = VIDEO_RANGE_PARTIAL;
        break;
    case RecordingFormat::Gif:
        form.range = VIDEO_RANGE_PARTIAL;
        form.colorspace = VIDEO_CS_601;
        break;
    case RecordingFormat::Mp4:
    case RecordingFormat::Mp3:
    case RecordingFormat::Aac:
    case RecordingFormat::Flac:
        break;
    }
    return form;
}
