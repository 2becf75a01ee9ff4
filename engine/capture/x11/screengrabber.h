// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/pixelviews.h"
#include "engine/capture/x11/sharedmemory.h"

#include <QRect>
#include <QRegion>

#include <array>
#include <memory>
#include <vector>

/// The image of a rectangle of the desktop, grabbed from the X server. What lies outside the desktop is black; the
/// pointer is not in it.
class ScreenGrabber
{
public:
    /// @param connection must outlive this object
    explicit ScreenGrabber(X11Connection& connection) : m_connection(connection) {}

    /// Takes another rectangle, in pixels of the desktop. The image is undefined until all of it was grabbed.
    void setArea(const QRect& area);
    const QRect& area() const { return m_area; }

    /// Whether what was there before a grab is needed after it.
    enum class Former
    {
        IsDropped,
        IsKept
    };

    /// Grabs whole rows of the rectangle: those with changes, and few between them.
    ///
    /// @param changed in pixels of the desktop
    /// @return false where the server does not give all of it: grab it again
    bool grab(const QRegion& changed, Former former = Former::IsDropped);

    /// Brings back what a part of the rectangle was before the last grab, as long as that is kept: a grab of nothing
    /// keeps nothing. In pixels of the desktop, as the next one.
    void takeBack(const QRegion& part);
    void blacken(const QRegion& part);

    PixelView image() const;
    /// To be drawn on.
    MutablePixelView pixels();

private:
    /// Rows of the visible part, from its top.
    struct Band
    {
        int top = 0;
        int end = 0;
    };

    void clip();
    void makeMemory();
    void noteFailure();
    bool grabWanted(const QRegion& wanted);
    void dropMemory();
    std::vector<Band> bandsOf(const QRegion& changed) const;
    bool grabBands(const std::vector<Band>& bands);
    bool grabShared(const std::vector<Band>& bands);
    bool grabPlain(const Band& band);
    void copyToImage(const Band& band, const std::uint8_t* rows);
    bool isGrabbedInPlace() const { return m_memory && m_visible.width() == m_area.width(); }
    std::uint8_t* imageData(int number);
    std::uint8_t* imageRow(int row);
    /// Where a part's row is in an image, from its start.
    std::size_t offsetOf(const QRect& part, int y) const;

    X11Connection& m_connection;
    QRect m_area;
    /// What of the area lies on the desktop; the server writes its rows without gaps.
    QRect m_visible;
    /// Of two, which hold what is there and what was there before.
    int m_image = 0;
    /// What the other image lacks of this one, in pixels of the desktop.
    QRegion m_lacking;
    bool m_isFormerKept = false;
    /// Null where the server shares none.
    std::unique_ptr<SharedMemory> m_memory;
    /// False once the server could not share memory, or could not write into it.
    bool m_canShare = true;
    /// Since the server has written into it last.
    int m_memoryFailures = 0;
    /// Hold the images unless the server writes them in place.
    std::array<std::vector<std::uint8_t>, 2> m_copies;
};
