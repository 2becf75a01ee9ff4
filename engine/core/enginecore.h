// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

struct CapturePlatform;

/// Start-up of libobs and reset of its video. User-interface thread.
namespace enginecore {

/// Starts libobs with the program's module and data paths, and its audio with 48 kHz and stereo.
///
/// @return false when that fails; the critical log says why
bool startUp();

/// Whether libobs has a video output. One whose start failed has none, and does not ask before it uses it.
bool hasVideo();

/// Gives libobs' video another size: I420, Rec. 709, full range.
///
/// @return libobs' result: 0, or a negative code
int resetVideo(const CapturePlatform& platform, const QSize& source, const QSize& output, int fps);

} // namespace enginecore
