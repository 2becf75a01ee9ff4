// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/framesource.h"
#include "engine/capture/x11/clicktracker.h"
#include "engine/capture/x11/cursortracker.h"
#include "engine/capture/x11/damagetracker.h"
#include "engine/capture/x11/screengrabber.h"
#include "engine/capture/x11/staleparts.h"

#include <vector>

/// Frames of a rectangle of an X11 desktop. Only what has changed is grabbed and converted.
class X11Frames : public FrameSource
{
public:
    /// @param area in pixels of the desktop, of an even size; what lies outside the desktop is black
    /// @param obstacle says in words why there are none
    /// @return null where there is an obstacle
    static std::unique_ptr<FrameSource> open(const QRect& area, QString& obstacle, const char* display = nullptr);

    void setOrigin(const QPoint& origin) override;
    void setPointer(const FramePointer& pointer) override;
    void update(std::uint64_t nowNs) override;
    void write(const I420View& frame) override;

private:
    /// What decides about the pixels that the pointer and its circles cover.
    struct DrawnPointer
    {
        /// Of the frame, with even edges; empty where nothing is drawn.
        QRect part;
        /// In pixels of the frame.
        QPoint position;
        bool leftIsMarked = false;
        bool rightIsMarked = false;
        int imageNumber = 0;

        bool operator==(const DrawnPointer&) const = default;
    };

    X11Frames(std::unique_ptr<X11Connection> connection, const QRect& area);
    void readEvents(std::uint64_t nowNs);
    QRegion takeChanges();
    void followPointer(std::uint64_t nowNs);
    DrawnPointer pointerToDraw(std::uint64_t nowNs);
    QRect partOf(const platform::PointerState& pointer) const;
    void writePointer(const I420View& frame);

    const std::unique_ptr<X11Connection> m_connection;
    DamageTracker m_damage;
    ScreenGrabber m_grabber;
    CursorTracker m_cursor;
    ClickTracker m_clicks;
    StaleParts m_stale;
    FramePointer m_pointer;
    DrawnPointer m_drawnPointer;
    /// The size of the desktop that was grabbed last.
    QRect m_desktop;
    /// What could not be grabbed, in pixels of the desktop.
    QRegion m_missed;
    /// Holds the part of the screen that the pointer is drawn over.
    std::vector<std::uint8_t> m_patch;
};
