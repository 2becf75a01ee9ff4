// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/medialength.h"

// For systems without a reader that knows these formats. A file that was cut off is as long as what it holds.

/// To the time of the last frame, which is where FFmpeg's muxer ends as well, within a frame.
MediaLength flvLength(const QString& path, FileWork& work);

/// The sum of its images' times.
MediaLength gifLength(const QString& path, FileWork& work);
