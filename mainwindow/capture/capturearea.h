// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QSize>

/// The primary screen as the capture area sees it.
struct CaptureScreen
{
    /// In logical pixels of the desktop; the origin is not (0, 0) where another screen lies to the left or above.
    QRect geometry;
    /// Physical pixels per logical pixel, possibly fractional.
    double devicePixelRatio = 1.0;
    /// The true size in physical pixels where it is known, else empty. The logical size is rounded: 800 physical pixels
    /// are 533 logical ones at 1.5, and those are 799.5 physical ones.
    QSize pixels = {};

    /// The logical size in physical pixels, truncated.
    QSize physicalSize() const;

    /// In physical pixels, at the position that the screen has in both kinds of pixels.
    QRect physicalGeometry() const { return {geometry.topLeft(), physicalSize()}; }
};

/// The primary screen as it is now; empty in a session without one.
CaptureScreen primaryScreen();

/// The screen with its true size, unless pixels is further from the logical size than rounding brings it.
CaptureScreen withPixels(const CaptureScreen& screen, const QSize& pixels);

/// What is cropped from the whole primary screen, in physical pixels, truncated.
struct CaptureMargins
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    /// False when the area is exactly the whole screen.
    bool cropped = false;

    bool operator==(const CaptureMargins&) const = default;
};

/// Which part of the desktop is recorded: a rectangle in logical pixels of the desktop, and what the engine has to know
/// of it in physical pixels.
class CaptureArea
{
public:
    /// True until an area is chosen. A left edge below 1 counts as unset, and so does the whole of a screen that begins
    /// at the desktop's origin: unset means the whole primary screen.
    bool isUnset() const { return m_rect.left() < 1; }

    void setRect(const QRect& rect) { m_rect = rect; }

    /// Stores what the screen has of a region that the user has framed. A region that begins in the desktop's first
    /// column loses that column, or it would count as unset, unless it is the whole screen.
    void setRegion(const QRect& region, const CaptureScreen& screen);

    /// Moves the region, whose size stays, as its frame is moved while it is recorded: also beyond the screen's edges,
    /// but not into the desktop's first column.
    void moveTo(const QPoint& topLeft);

    QRect rect() const { return m_rect; }

    /// The area, or the whole screen while it is unset.
    QRect rectOn(const CaptureScreen& screen) const;

    /// The size of the area in physical pixels, truncated.
    QSize physicalSize(const CaptureScreen& screen) const;

    /// What the area leaves out of screen; right and bottom are counted from the screen's true size where it is known.
    CaptureMargins margins(const CaptureScreen& screen) const;

private:
    QRect m_rect{-1, -1, 0, 0};
};

/// The middle of rect, halves truncated.
QPoint captureCentre(const QRect& rect);

/// A logical length in physical pixels, truncated. A product that misses a whole number only by the rounding of the
/// ratio counts as that number: 100 at 1.15 is 115.
int toPhysicalPx(int logicalPx, double devicePixelRatio);

/// A physical length in logical pixels, truncated in the same sense.
int toLogicalPx(int physicalPx, double devicePixelRatio);
