#pragma once

#include "engine/recordingformat.h"

/// How many pictures have to follow a picture before the format's encoder has surely given that one out, whatever the
/// computer: the longest look-ahead the encoder has with its default settings, plus its threads. 0 without a picture.
int encoderDelayBound(RecordingFormat format);
