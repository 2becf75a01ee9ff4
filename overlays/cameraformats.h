// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/camerasystem.h"

namespace cameraformats {

/// Frames per second.
inline constexpr float kLeastFps = 15.0F;

/// The most pixels at kLeastFps or more; the first of equals.
std::optional<CameraFormat> best(const QList<CameraFormat>& formats);

/// The first format of a common size (640 x 480, ...) at kLeastFps or more.
std::optional<CameraFormat> common(const QList<CameraFormat>& formats);

/// By pixel count; equals keep their order.
QList<CameraFormat> smallestFirst(QList<CameraFormat> formats);

} // namespace cameraformats
