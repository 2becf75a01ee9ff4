// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/pointercircles.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

std::optional<EffectColor> colorIn(obs_data_t* settings, const char* switchKey, const char* colorKey)
{
    return obs_data_get_bool(settings, switchKey) ? parseEffectColor(obs_data_get_string(settings, colorKey))
                                                  : std::nullopt;
}

std::array<std::uint8_t, 4> inBytes(const EffectColor& color)
{
    std::array<std::uint8_t, 4> bytes{};
    std::transform(color.begin(), color.end(), bytes.begin(),
                   [](float fraction) { return static_cast<std::uint8_t>(std::lround(fraction * 255.0F)); });
    return bytes;
}

} // namespace

std::optional<EffectColor> parseEffectColor(const char* text)
{
    const QStringList fractions = QString::fromUtf8(text).split(QLatin1Char(','));
    EffectColor color{};
    if (fractions.size() != static_cast<qsizetype>(color.size()))
        return {};
    for (std::size_t i = 0; i < color.size(); ++i) {
        bool isNumber = false;
        const float fraction = fractions.at(static_cast<qsizetype>(i)).trimmed().toFloat(&isNumber);
        if (!isNumber || !std::isfinite(fraction))
            return {};
        color.at(i) = std::clamp(fraction, 0.0F, 1.0F);
    }
    return color;
}

PointerEffectChoice PointerEffectChoice::from(obs_data_t* settings)
{
    return {colorIn(settings, "show_fixed_circle", "fixed_circle_color"),
            colorIn(settings, "show_left_click", "left_click_color"),
            colorIn(settings, "show_right_click", "right_click_color")};
}

std::vector<PointerCircle> PointerEffectChoice::circlesAround(const platform::PointerState& pointer,
                                                              float pixelRatio) const
{
    std::vector<PointerCircle> circles;
    // Around the middle of the pixel that the pointer points at.
    const QPointF centre = QPointF(pointer.positionPx) + QPointF(0.5, 0.5);
    const auto add = [&](float radius, const std::optional<EffectColor>& color) {
        if (color)
            circles.push_back({centre, radius * pixelRatio, inBytes(*color)});
    };
    add(kHighlightRadius, highlight);
    if (pointer.leftDown)
        add(kClickRadius, leftClick);
    if (pointer.rightDown)
        add(kClickRadius, rightClick);
    return circles;
}
