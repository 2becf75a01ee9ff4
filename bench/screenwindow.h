// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/xcb_handles.h"

#include <QRect>
#include <QRgb>

class QImage;

/// A window over the whole screen, below all others. The X server does the drawing: it costs this process next to
/// nothing. All in physical pixels.
class ScreenWindow
{
public:
    ScreenWindow();

    /// Whether there is no display, or none any more.
    bool isBroken() const;
    QRect rect() const;
    void show();

    /// Hands an image of the window's size over to the server.
    xcb_pixmap_t upload(const QImage& image);
    void copy(xcb_pixmap_t image, const QRect& part);
    void fill(const QRect& area, QRgb colour);
    void flush();
    /// Whether some of the window has to be drawn again, asked since the last call.
    bool takeExposure();

private:
    platform::xcb::Connection m_connection;
    const xcb_screen_t* m_screen = nullptr;
    xcb_window_t m_window = 0;
    xcb_gcontext_t m_gc = 0;
};
