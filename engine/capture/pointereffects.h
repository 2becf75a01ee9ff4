// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/obshandles.h"

#include <QPoint>

#include <array>
#include <optional>

/// Red, green, blue and alpha, each from 0 to 1, alpha not multiplied in.
using EffectColor = std::array<float, 4>;

/// Reads four fractions that commas part, blanks allowed, as in "0.0, 1.0, 0.5, 0.3". Fractions beyond 0 and 1 count as
/// those. Nothing for any other text.
std::optional<EffectColor> parseEffectColor(const char* text);

/// The circles around the pointer; one without a colour is not drawn.
struct PointerEffectChoice
{
    std::optional<EffectColor> highlight;
    std::optional<EffectColor> leftClick;
    std::optional<EffectColor> rightClick;

    /// From a capture source's settings: "show_fixed_circle" with "fixed_circle_color", "show_left_click" with
    /// "left_click_color", "show_right_click" with "right_click_color". A circle whose colour cannot be read is left
    /// out.
    static PointerEffectChoice from(obs_data_t* settings);

    bool isEmpty() const { return !highlight && !leftClick && !rightClick; }
};

/// The filter that draws a circle at the pointer, and others while a button is down, into the frames of a monitor
/// capture.
///
/// It draws over the frame instead of into a copy: it costs the circles alone. Switched off, it is disabled. It belongs
/// below every other filter, because it draws in the pixels of the whole monitor.
namespace pointereffects {

/// Radii in logical pixels.
inline constexpr float kHighlightRadius = 20.0F;
inline constexpr float kClickRadius = 12.0F;

/// Makes the filter and puts it on a capture source that has no filters yet. It follows the source's settings from then
/// on: those of PointerEffectChoice take effect with the source's next update. Registers the filter's type when needed.
/// User-interface thread.
///
/// @return false when libobs does not make it
bool addTo(obs_source_t* capture);

/// Says where on the desktop the captured monitor begins, in physical pixels, and how many physical pixels a logical
/// one has. Nothing is drawn while there is no origin: the pointer's position in the frame is then not known.
void setMonitor(obs_source_t* capture, const std::optional<QPoint>& originPx, double pixelRatio);

} // namespace pointereffects
