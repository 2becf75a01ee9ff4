// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/pixelviews.h"

#include <QRect>

#include <vector>

struct PointerCircle;

/// Draws the circles around the pointer over an image, as far as they are inside, as the filter of the captured frame
/// draws them (pointereffects.h). Any thread.
///
/// @return where the image may have changed; empty when nothing was drawn
QRect drawPointerCircles(const MutablePixelView& onto, const std::vector<PointerCircle>& circles);
