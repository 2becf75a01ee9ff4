// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QSize>
#include <QStringList>

#include <optional>

struct CaptureScreen;

/// The video sizes that the ratio box offers.
namespace ratiopresets {

/// "16:9" and so on, in the order of the box; not translated.
QStringList names();

/// In physical pixels; nothing for a name that is no preset's.
std::optional<QSize> physicalSize(const QString& name);

/// The area of that size, in logical pixels of the desktop, truncated, whose frame is centred on the screen. It may be
/// larger than the screen.
///
/// @param borderPx the border of the frame, in logical pixels
QRect areaOn(const CaptureScreen& screen, const QSize& physicalSize, int borderPx);

} // namespace ratiopresets
