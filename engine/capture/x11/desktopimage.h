// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/pixelviews.h"
#include "engine/capture/x11/excludedareas.h"
#include "engine/capture/x11/screengrabber.h"
#include "engine/capture/x11/windowsbelow.h"

#include <QRegion>

#include <cstdint>

/// The image of a rectangle of the desktop without the program's own windows (platform/windowing/excluded_windows.h).
/// Where one is, the image shows what is below it, as far as the server has that, or else what was there before it
/// came. Areas are in pixels of the desktop. One thread at a time.
class DesktopImage
{
public:
    /// Updates between two looks at what is below a window, as long as nothing changes there.
    static constexpr int kQuietInterval = 4;

    /// @param connection must outlive this object
    DesktopImage(X11Connection& connection, const QRect& area);

    /// The image is undefined until the next update.
    void setArea(const QRect& area);
    const QRect& area() const { return m_grabber.area(); }
    /// Another desktop: nothing of what was there before is shown any more.
    void forget();
    /// Before the first update.
    /// @return whether an excluded window is over the area, where the image is black until the server has whole images
    ///         of what is below (WindowsBelow::kPaintNs)
    bool prepare(std::uint64_t nowNs);

    /// @param changed on the screen
    /// @return where the image may be different now
    QRegion update(const QRegion& changed, std::uint64_t nowNs);

    PixelView image() const { return m_grabber.image(); }

private:
    QRegion grab(const QRegion& damaged, std::uint64_t nowNs);
    void hideAgain();
    QRegion hiddenNow() const;
    QRegion refreshHidden(std::uint64_t nowNs);
    bool isRefreshDue();

    const X11Connection& m_connection;
    ScreenGrabber m_grabber;
    ExcludedAreas m_excluded;
    WindowsBelow m_below;
    /// Where the image does not show the screen.
    QRegion m_hidden;
    /// Where nothing was seen yet but an excluded window. It is black.
    QRegion m_unseen;
    /// What could not be grabbed.
    QRegion m_missed;
    /// Updates since what is below was another one.
    int m_quietUpdates = 0;
};
