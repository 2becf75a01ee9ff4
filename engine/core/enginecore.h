// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

struct CapturePlatform;

/// Start-up of libobs, its modules and reset of its video. User-interface thread.
namespace enginecore {

/// Starts libobs with the program's paths and 48 kHz stereo audio.
/// @return false on failure; the critical log says why
bool startUp();

/// False after a failed start: libobs does not check before it uses the video.
bool hasVideo();

/// Whether the graphics have textures of that size; true where they are not OpenGL's or have not begun.
bool mayHold(const QSize& size);

/// I420, Rec. 709, full range.
/// @return 0, or libobs' negative code
int resetVideo(const CapturePlatform& platform, const QSize& source, const QSize& output, int fps);

/// As the platform asks for, after startUp(). Logs modules that failed or are missing, and for each missing type what
/// will not work.
void loadModules(const CapturePlatform& platform);

} // namespace enginecore
