// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QSize>
#include <QStringList>

#include <optional>

struct CaptureScreen;

namespace ratiopresets {

/// In the order of the ratio box; not translated.
QStringList names();

/// Physical pixels; nothing for an unknown name.
std::optional<QSize> physicalSize(const QString& name);

/// The area of that size, in logical pixels, truncated, whose frame is centred on the screen. It may be larger than the
/// screen. @param borderPx logical
QRect areaOn(const CaptureScreen& screen, const QSize& physicalSize, int borderPx);

} // namespace ratiopresets
