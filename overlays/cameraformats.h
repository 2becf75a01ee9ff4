#pragma once

#include "overlays/camerasystem.h"

/// Which of a camera's formats the webcam window takes.
namespace cameraformats {

/// What a picture needs to look alive, in frames per second.
inline constexpr float kLeastFps = 15.0F;

/// The one with the most pixels among those that reach kLeastFps, the first listed of equals.
std::optional<CameraFormat> best(const QList<CameraFormat>& formats);

/// When the best one fails: the first listed format that reaches kLeastFps in the first of some common sizes, from 640
/// x 480 on, that has one.
std::optional<CameraFormat> common(const QList<CameraFormat>& formats);

/// All of them, the fewest pixels first, equals in their order.
QList<CameraFormat> smallestFirst(QList<CameraFormat> formats);

} // namespace cameraformats
