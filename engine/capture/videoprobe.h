// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct video_output;

/// Whether this libobs gives an output the frames of a video that is not its own. Tries it with an output that takes
/// raw frames: waits for the first one, up to a second. Needs a started engine. User-interface thread.
bool deliversFramesOf(video_output* video);
