// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/recording/recordinghelpers.h"

#include <QRect>

#include <optional>

/// A user who records regions with the running program. Rectangles are in physical pixels of the display, unless a name
/// says otherwise.
namespace regionuser {

/// Width of the frame's border and height of the bar on top of it, at scale 1.
inline constexpr int kBorderPx = 4;
inline constexpr int kBarPx = 30;

/// Lets the program say nothing about the pointer in the video, and draw its windows at a scale; before its start.
void prepare(ProgramUnderTest& program, double scale = 1.0);

/// Chooses the region tile and drags the area, whose corners are whole logical pixels. What the program then says it
/// records, in logical pixels; nothing when it says nothing.
std::optional<QRect> chooseRegion(ProgramUnderTest& program, const QRect& logicalArea, double scale = 1.0);

/// A position on the bar above the frame of a region that is not one of its buttons; both in logical pixels.
QPoint bareBar(const QRect& region);

/// The pen button on that bar.
QPoint penButton(const QRect& region);

} // namespace regionuser
