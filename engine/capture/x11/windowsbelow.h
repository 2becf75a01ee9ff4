// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/pixelviews.h"
#include "engine/capture/x11/excludedareas.h"
#include "engine/capture/x11/x11connection.h"

#include <QRegion>
#include <QSize>

#include <xcb/render.h>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

/// What the screen would show without the excluded windows: the desktop's background and all other windows, drawn over
/// each other from the images that the X server keeps of them, as long as it is asked for that. A window's image is
/// whole whatever lies over it. What compositing managers add (shadows, whole windows that they make translucent) is
/// missing. One thread at a time.
class WindowsBelow
{
public:
    /// What was covered when the server began has to be painted again by the window's program.
    static constexpr std::uint64_t kPaintNs = 200'000'000;
    /// The images are kept for so long after the last use: making them costs more.
    static constexpr std::uint64_t kKeepNs = 5'000'000'000;

    /// @param connection must outlive this object
    explicit WindowsBelow(const X11Connection& connection);

    /// Lets the server keep images of the windows from now on. Nothing where it cannot.
    void require(std::uint64_t nowNs);
    /// Ends that where it was not required for a while.
    void rest(std::uint64_t nowNs);
    /// Whether it does by now.
    bool isRequired() const { return m_sinceNs.has_value(); }
    /// Whether the images are there and complete.
    bool isReady(std::uint64_t nowNs) const { return m_sinceNs && nowNs - *m_sinceNs >= kPaintNs; }

    /// Draws parts of the desktop. Pixels of which the server has no image stay.
    /// @param parts in pixels of the desktop; all of it has to be on the image
    /// @param onto an image of a part of the desktop that begins at the origin
    /// @param unseen loses the pixels that were drawn, in pixels of the desktop
    /// @return where something is different now, in pixels of the desktop
    QRegion draw(const QRegion& parts, const ExcludedAreas& excluded, const MutablePixelView& onto,
                 const QPoint& origin, QRegion& unseen);

private:
    struct Window
    {
        xcb_window_t id = XCB_WINDOW_NONE;
        /// With its border.
        QRect area;
        int borderPx = 0;
        xcb_visualid_t visual = 0;
    };

    struct Desktop
    {
        /// Without the excluded ones; the lowest first.
        std::vector<Window> windows;
        xcb_pixmap_t background = XCB_NONE;
        /// Whether a compositing manager mixes translucent windows with those below them.
        bool isMixed = false;
    };

    struct Format
    {
        xcb_render_pictformat_t id = XCB_NONE;
        int depth = 0;
    };

    void queryFormats();
    Desktop queryDesktop(const QRect& bounds, const ExcludedAreas& excluded) const;
    std::vector<Window> windowsAmong(const std::vector<xcb_window_t>& ids, const QRect& bounds) const;
    void prepareCanvas(const QSize& size);
    void drawBackground(xcb_pixmap_t background, const QRect& bounds);
    void drawWindow(const Window& window, const QRegion& excluded, bool isMixed, const QPoint& origin);
    xcb_render_pictformat_t formatOf(xcb_visualid_t visual, bool isMixed) const;

    const X11Connection& m_connection;
    xcb_atom_t m_backgroundAtom = XCB_ATOM_NONE;
    xcb_atom_t m_compositorAtom = XCB_ATOM_NONE;
    std::map<xcb_visualid_t, Format> m_formats;
    /// Blue, green, red and alpha; the same with the last byte unused.
    xcb_render_pictformat_t m_translucent = XCB_NONE;
    xcb_render_pictformat_t m_opaque = XCB_NONE;

    /// What is drawn on: transparent where the server has nothing.
    QSize m_canvasSize;
    xcb_pixmap_t m_canvasPixmap = XCB_NONE;
    xcb_render_picture_t m_canvas = XCB_NONE;
    /// For what is made for a moment: names are not used up.
    xcb_pixmap_t m_pixmap = XCB_NONE;
    xcb_render_picture_t m_picture = XCB_NONE;
    std::uint32_t m_clip = XCB_NONE;
    std::uint32_t m_cut = XCB_NONE;

    /// Since when the server keeps the images.
    std::optional<std::uint64_t> m_sinceNs;
    std::uint64_t m_requiredNs = 0;
};
