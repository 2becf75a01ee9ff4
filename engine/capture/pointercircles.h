// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/obshandles.h"
#include "platform/input/pointer_state.h"

#include <QPointF>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

/// Red, green, blue and alpha, each from 0 to 1, alpha not multiplied in.
using EffectColor = std::array<float, 4>;

/// Reads four fractions that commas part, blanks allowed, as in "0.0, 1.0, 0.5, 0.3". Fractions beyond 0 and 1 count as
/// those. Nothing for any other text.
std::optional<EffectColor> parseEffectColor(const char* text);

/// A circle of one colour that is drawn over a frame. Colours are mixed as they are stored.
struct PointerCircle
{
    /// The width over which the edge fades out, half of it inside of the radius, in physical pixels.
    static constexpr float kSoftEdgePx = 1.0F;

    float innerPx() const { return radiusPx - kSoftEdgePx / 2; }
    float outerPx() const { return radiusPx + kSoftEdgePx / 2; }

    /// In physical pixels of the frame; a pixel's middle lies half a pixel from its corner.
    QPointF centrePx;
    float radiusPx = 0.0F;
    /// Red, green, blue and alpha, alpha not multiplied in.
    std::array<std::uint8_t, 4> rgba{};
};

/// The circles around the pointer; one without a colour is not drawn.
struct PointerEffectChoice
{
    /// Radii in logical pixels.
    static constexpr float kHighlightRadius = 20.0F;
    static constexpr float kClickRadius = 12.0F;

    std::optional<EffectColor> highlight;
    std::optional<EffectColor> leftClick;
    std::optional<EffectColor> rightClick;

    /// From a capture source's settings: "show_fixed_circle" with "fixed_circle_color", "show_left_click" with
    /// "left_click_color", "show_right_click" with "right_click_color". A circle whose colour cannot be read is left
    /// out.
    static PointerEffectChoice from(obs_data_t* settings);

    bool isEmpty() const { return !highlight && !leftClick && !rightClick; }

    /// What is drawn over a frame that the pointer is in, in this order; over the pointer itself too.
    ///
    /// @param pointer its position in physical pixels of the frame
    /// @param pixelRatio physical pixels for each logical one
    std::vector<PointerCircle> circlesAround(const platform::PointerState& pointer, float pixelRatio) const;
};
