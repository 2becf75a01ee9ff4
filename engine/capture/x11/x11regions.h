// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRegion>

#include <xcb/xproto.h>

#include <span>

/// What the X server says in rectangles, as Qt has it. Any thread.
namespace x11regions {

/// With more rectangles than this the box around them is cheaper.
inline constexpr int kMaxRectangles = 64;

inline QRect toRect(const xcb_rectangle_t& rectangle)
{
    return {rectangle.x, rectangle.y, rectangle.width, rectangle.height};
}

/// @param rectangles ordered as QRegion wants them: the server keeps regions so
QRegion toRegion(std::span<const xcb_rectangle_t> rectangles);

xcb_rectangle_t fromRect(const QRect& rectangle);

/// A window with its border: the server's position is that of the border's corner, its size the one inside.
QRect withBorder(const xcb_get_geometry_reply_t& geometry);

} // namespace x11regions
