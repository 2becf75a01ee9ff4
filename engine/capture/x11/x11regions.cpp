// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/x11regions.h"

#include <QList>

QRegion x11regions::toRegion(std::span<const xcb_rectangle_t> rectangles)
{
    QList<QRect> list;
    for (const xcb_rectangle_t& rectangle : rectangles)
        list.append(toRect(rectangle));
    QRegion region;
    region.setRects(list.constData(), static_cast<int>(list.size()));
    return region;
}

xcb_rectangle_t x11regions::fromRect(const QRect& rectangle)
{
    return {static_cast<std::int16_t>(rectangle.x()), static_cast<std::int16_t>(rectangle.y()),
            static_cast<std::uint16_t>(rectangle.width()), static_cast<std::uint16_t>(rectangle.height())};
}

QRect x11regions::withBorder(const xcb_get_geometry_reply_t& geometry)
{
    const int bothSides = 2 * geometry.border_width;
    return {geometry.x, geometry.y, geometry.width + bothSides, geometry.height + bothSides};
}
