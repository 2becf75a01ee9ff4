#pragma once

#include <QRect>
#include <QSize>
#include <QStringList>

#include <optional>

struct CaptureScreen;

/// The picture sizes that the ratio box offers.
namespace ratiopresets {

/// The presets' names, "16:9" and so on, in the order of the box. They are not translated.
QStringList names();

/// The picture's size in physical pixels; nothing for a name that is no preset's.
std::optional<QSize> physicalSize(const QString& name);

/// The area in the middle of screen that gives a picture of that size, in logical pixels of the desktop, truncated. It
/// is larger than the screen where the picture is.
///
/// @param borderPx the border of the frame around it, which is what is centred, in logical pixels
QRect areaOn(const CaptureScreen& screen, const QSize& physicalSize, int borderPx);

} // namespace ratiopresets
