// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/pointermarks.h"

#include "engine/capture/pointercircles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

/// The pixels that have a part in the circle.
QRect boundsOf(const PointerCircle& circle)
{
    const auto distance = static_cast<qreal>(circle.outerPx());
    const QPoint first(static_cast<int>(std::floor(circle.centrePx.x() - distance)),
                       static_cast<int>(std::floor(circle.centrePx.y() - distance)));
    const QPoint last(static_cast<int>(std::floor(circle.centrePx.x() + distance)),
                      static_cast<int>(std::floor(circle.centrePx.y() + distance)));
    return {first, last};
}

/// What the weight of a colour is a fraction of.
constexpr int kWhole = 1 << 16;

std::uint8_t mixed(int below, int over, int weight)
{
    return static_cast<std::uint8_t>((below * (kWhole - weight) + over * weight + kWhole / 2) / kWhole);
}

class CircleBrush
{
public:
    explicit CircleBrush(const PointerCircle& circle) : m_circle(circle) {}

    /// @param row a row of the image
    void drawRow(std::uint8_t* row, int y, int left, int right) const
    {
        const float down = static_cast<float>(y) + 0.5F - static_cast<float>(m_circle.centrePx.y());
        for (int x = left; x <= right; ++x) {
            const float across = static_cast<float>(x) + 0.5F - static_cast<float>(m_circle.centrePx.x());
            const int weight = weightAt(std::sqrt(across * across + down * down));
            std::uint8_t* const pixel = row + 4 * static_cast<std::ptrdiff_t>(x);
            pixel[0] = mixed(pixel[0], m_circle.rgba[2], weight);
            pixel[1] = mixed(pixel[1], m_circle.rgba[1], weight);
            pixel[2] = mixed(pixel[2], m_circle.rgba[0], weight);
        }
    }

private:
    int weightAt(float distancePx) const
    {
        const float coverage = std::clamp((m_circle.outerPx() - distancePx) / PointerCircle::kSoftEdgePx, 0.0F, 1.0F);
        return static_cast<int>(coverage * static_cast<float>(m_circle.rgba[3]) / 255.0F * kWhole);
    }

    const PointerCircle& m_circle;
};

QRect drawCircle(const MutablePixelView& onto, const PointerCircle& circle)
{
    const QRect drawn = boundsOf(circle) & QRect(0, 0, onto.widthPx, onto.heightPx);
    const CircleBrush brush(circle);
    for (int y = drawn.top(); y <= drawn.bottom(); ++y)
        brush.drawRow(onto.data + static_cast<std::ptrdiff_t>(y) * onto.strideBytes, y, drawn.left(), drawn.right());
    return drawn;
}

} // namespace

QRect drawPointerCircles(const MutablePixelView& onto, const std::vector<PointerCircle>& circles)
{
    QRect drawn;
    for (const PointerCircle& circle : circles)
        drawn |= drawCircle(onto, circle);
    return drawn;
}
