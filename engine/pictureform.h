#pragma once

#include "engine/recordingformat.h"

#include <obs.h>

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
