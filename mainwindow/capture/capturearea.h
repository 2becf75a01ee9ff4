// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QSize>

class QScreen;

struct CaptureScreen
{
    /// Logical pixels. The origin is not (0, 0) where another screen lies to the left or above.
    QRect geometry;
    double devicePixelRatio = 1.0;
    /// The true size in physical pixels, empty if unknown. The logical size is rounded: 800 physical pixels are 533
    /// logical ones at 1.5, and those are 799.5 physical ones.
    QSize pixels = {};

    QSize physicalSize() const;

    /// The true size, or what the logical one says.
    QSize wholePixels() const { return pixels.isEmpty() ? physicalSize() : pixels; }

    /// A screen has the same origin in both kinds of pixels.
    QRect physicalGeometry() const { return {geometry.topLeft(), physicalSize()}; }
};

CaptureScreen captureScreen(const QScreen& screen);

/// Empty in a session without a screen.
CaptureScreen primaryScreen();

/// Sets the true size, unless it differs by more than rounding.
CaptureScreen withPixels(const CaptureScreen& screen, const QSize& pixels);

/// What is cropped from a screen, in physical pixels; negative where an area reaches over its edges.
struct CaptureMargins
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    /// False for the whole screen.
    bool cropped = false;

    bool operator==(const CaptureMargins&) const = default;
};

/// The recorded rectangle in logical pixels of the desktop; sizes and margins in physical pixels are truncated.
class CaptureArea
{
public:
    /// The first that an area can have.
    static constexpr int kFirstColumn = 1;

    /// The first that a region can have on a screen without being all of it.
    static int firstColumnOf(const QRect& screen);

    /// A left edge below 1 counts as unset, which means a whole screen. Only a region begins left of the primary
    /// screen.
    bool isUnset() const { return m_rect.left() < m_firstColumn; }

    void setRect(const QRect& rect);

    /// Sets the part of a framed region that is on the screen. One that begins in the primary screen's first column
    /// loses that column, or it would count as unset, unless it is the whole screen. Where a logical pixel is one or
    /// more whole physical ones it grows until width and height are multiples of the steps: at the screen's far edge to
    /// the near side.
    /// @param screen may be several, see CaptureDesktop::around()
    /// @param steps in physical pixels
    void setRegion(const QRect& region, const CaptureScreen& screen, const QSize& steps);

    /// Follows the frame during a recording: also beyond the screen's edges, but not into the desktop's first column.
    void moveTo(const QPoint& topLeft);

    /// Takes the size of a video, which has begun on a screen of another scale: as few logical pixels as hold it.
    void fitVideo(const QSize& videoPx, double devicePixelRatio);

    QRect rect() const { return m_rect; }

    /// The whole screen while the area is unset.
    QRect rectOn(const CaptureScreen& screen) const;

    QSize physicalSize(const CaptureScreen& screen) const;

    /// Right and bottom are counted from the screen's true size, if known.
    CaptureMargins margins(const CaptureScreen& screen) const;

private:
    QRect m_rect{-1, -1, 0, 0};
    int m_firstColumn = kFirstColumn;
};

/// Halves are truncated.
QPoint captureCentre(const QRect& rect);

/// Truncated, but a product that misses a whole number only by the rounding of the ratio counts as that number: 100 at
/// 1.15 is 115.
int toPhysicalPx(int logicalPx, double devicePixelRatio);

int toLogicalPx(int physicalPx, double devicePixelRatio);
