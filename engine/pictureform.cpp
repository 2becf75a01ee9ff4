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
    if (format != RecordingFormat::Mp4)
        form.range = VIDEO_RANGE_PARTIAL;
    if (format == RecordingFormat::Gif)
        form.colorspace = VIDEO_CS_601;
    return form;
}
