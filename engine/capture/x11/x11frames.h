// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/framesource.h"
#include "engine/capture/x11/clicktracker.h"
#include "engine/capture/x11/cursortracker.h"
#include "engine/capture/x11/damagetracker.h"
#include "engine/capture/x11/desktopimage.h"
#include "engine/capture/x11/staleparts.h"

#include <QByteArray>

#include <memory>
#include <vector>

/// Frames of a rectangle of an X11 desktop, without the program's own windows that are excluded
/// (platform/windowing/frame_exclusion.h). Only what has changed is grabbed and converted. When the X server closes
/// the connection, the video is frozen until another one is open; the log says so.
class X11Frames : public FrameSource
{
public:
    /// Takes WindowsBelow::kPaintNs where an excluded window is over the area.
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

    /// What belongs to one connection to the X server.
    struct Session
    {
        Session(std::unique_ptr<X11Connection> opened, const QRect& area);
        /// @return null where there is an obstacle
        static std::unique_ptr<Session> open(const QByteArray& display, const QRect& area, QString& obstacle);

        const std::unique_ptr<X11Connection> connection;
        DamageTracker damage;
        DesktopImage desktop;
        CursorTracker cursor;
        ClickTracker clicks;
        /// Of the desktop that was grabbed last.
        int desktopNumber;
    };

    X11Frames(std::unique_ptr<Session> session, const QByteArray& display);
    const QRect& area() const { return m_session->desktop.area(); }
    bool reopen(std::uint64_t nowNs);
    void readEvents(std::uint64_t nowNs);
    QRegion takeChanges();
    void followPointer(std::uint64_t nowNs);
    DrawnPointer pointerToDraw(std::uint64_t nowNs);
    QRect partOf(const platform::PointerState& pointer) const;
    void writePointer(const I420View& frame);

    const QByteArray m_display;
    std::unique_ptr<Session> m_session;
    /// A lost connection is not opened again before that moment.
    std::uint64_t m_reopenNs = 0;
    /// Since it was lost.
    int m_failedAttempts = 0;
    StaleParts m_stale;
    FramePointer m_pointer;
    DrawnPointer m_drawnPointer;
    /// Holds the part of the screen that the pointer is drawn over.
    std::vector<std::uint8_t> m_patch;
};
