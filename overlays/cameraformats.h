// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/camerasystem.h"

/// Which of a camera's formats the webcam window takes.
namespace cameraformats {

/// The least maximum frame rate, in frames per second.
inline constexpr float kLeastFps = 15.0F;

/// The most pixels among those that reach kLeastFps; the first of equals.
std::optional<CameraFormat> best(const QList<CameraFormat>& formats);

/// The first format of a common size, from 640 x 480 on, that reaches kLeastFps.
std::optional<CameraFormat> common(const QList<CameraFormat>& formats);

/// All formats by pixel count; equals keep their order.
QList<CameraFormat> smallestFirst(QList<CameraFormat> formats);

} // namespace cameraformats
