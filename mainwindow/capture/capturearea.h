#pragma once

#include <QRect>
#include <QSize>

/// The primary screen as the capture area sees it.
struct CaptureScreen
{
    /// In logical pixels of the desktop; the origin is not (0, 0) where another screen lies to the left or above.
    QRect geometry;
    /// Physical pixels per logical pixel, possibly fractional (1.25, 1.5, ...).
    double devicePixelRatio = 1.0;
    /// The true size in physical pixels where somebody knows it, else empty. The logical size is rounded: 800 pixels
    /// are 533 logical ones at 1.5, and those are 799.5 pixels again.
    QSize pixels = {};

    /// The logical size in physical pixels, truncated.
    QSize physicalSize() const;

    /// The screen in physical pixels: its place on the desktop is the same in both kinds of pixels.
    QRect physicalGeometry() const { return {geometry.topLeft(), physicalSize()}; }
};

/// The screen with its true size, unless what is given is further from the logical size than rounding brings it.
CaptureScreen withPixels(const CaptureScreen& screen, const QSize& pixels);

/// What is cut off the picture of the whole primary screen, in physical pixels, truncated.
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

/// How the area was chosen; the values are the capture-mode numbers of the main window.
enum class CaptureMode : int
{
    FullScreen = 0,
    Region = 1,
    Window = 2
};

/// Which part of the desktop is recorded: a rectangle in logical desktop pixels, and what the engine has to know of it
/// in physical pixels.
///
/// The stored right and bottom lie one past the last pixel, so that right - left is the width and a rectangle that is
/// the whole screen has margins of 0. What is stored is given as a position and a size. AreaSelector::areaSelected()
/// reports just that, counted from the primary screen's corner; DrawWindow::windowGeometryChanged() reports the first
/// and the last pixel inside the frame, which are the corners of a QRect.
class CaptureArea
{
public:
    int left() const { return m_left; }
    int top() const { return m_top; }
    int right() const { return m_right; }
    int bottom() const { return m_bottom; }

    /// True until an area is chosen. A left edge below 1 counts as unset, and so does the whole of a screen that begins
    /// at the desktop's origin: unset means the whole primary screen.
    bool isUnset() const { return m_left < 1; }

    /// Stores the pixels of rect, taken as a position and a size.
    void setRect(const QRect& rect);

    /// Stores a region that the user has framed on screen.
    ///
    /// What lies beyond the screen's edges is not part of it. One that begins in the desktop's first column is stored
    /// with a left edge of 1, a column narrower than its frame, so that it is never taken for unset and the whole
    /// screen recorded in its place. One that leaves nothing of the screen out is the whole screen.
    void setRegion(const QRect& region, const CaptureScreen& screen);

    /// Moves the stored region, whose size stays as it is, for a frame that is moved while it is recorded. It may lie
    /// beyond the screen's edges then, except for the desktop's first column.
    void moveTo(const QPoint& topLeft);

    /// The stored pixels as a position and a size. All -1 corners while nothing was ever stored.
    QRect rect() const;

    /// The stored area, or the whole screen while it is unset.
    QRect rectOn(const CaptureScreen& screen) const;

    CaptureMode mode() const { return m_mode; }
    void setMode(CaptureMode mode) { m_mode = mode; }

    /// Width and height of the area on screen in physical pixels, each truncated: the size of the picture.
    QSize physicalSize(const CaptureScreen& screen) const;

    /// What the area leaves out of screen; right and bottom are counted from the screen's true size where it is known.
    CaptureMargins margins(const CaptureScreen& screen) const;

private:
    int m_left = -1;
    int m_top = -1;
    int m_right = -1;
    int m_bottom = -1;
    CaptureMode m_mode = CaptureMode::FullScreen;
};

/// The middle of rect as a countdown over it needs it: left + width / 2, top + height / 2, halves cut off.
QPoint captureCentre(const QRect& rect);

/// A logical length in physical pixels, truncated. A product that misses a whole number only by the rounding of the
/// ratio counts as that number: 100 at 1.15 is 115.
int toPhysicalPx(int logicalPx, double devicePixelRatio);

/// A physical length in logical pixels, truncated in the same sense.
int toLogicalPx(int physicalPx, double devicePixelRatio);
