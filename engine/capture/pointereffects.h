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

/// The filter that draws a circle at the pointer, and others while a button is down, into the picture of a monitor
/// capture. On the screen itself there is nothing to be seen of them.
///
/// It draws over the picture instead of into a copy of it: what it costs is the circles alone. Switched off, it is
/// disabled. Its place is below every other filter, for it draws in the pixels of the whole monitor.
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
/// one has. Nothing is drawn while there is no origin: the pointer's place in the picture is then not known. Does
/// nothing without the filter on the capture source.
void setMonitor(obs_source_t* capture, const std::optional<QPoint>& originPx, double pixelRatio);

} // namespace pointereffects
