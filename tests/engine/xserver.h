// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/xcb_handles.h"

#include <QByteArray>
#include <QProcess>
#include <QRect>
#include <QRegion>
#include <QStringList>

#include <array>
#include <cstdint>
#include <vector>

/// An X server that a test starts with options of its own, beside the desktop that the test runs on.
class XServer
{
public:
    ~XServer();

    /// @param options beyond those for its number
    /// @return false when it does not start
    bool start(const QStringList& options);
    /// As in the variable DISPLAY.
    const QByteArray& display() const { return m_display; }

private:
    QProcess m_process;
    QByteArray m_display;
};

/// A window of plain colours that lies over the others, without a frame. Each call returns when the server has done it.
class PaintedWindow
{
public:
    /// @param display null means the desktop that the test runs on
    explicit PaintedWindow(const QRect& geometry, std::uint32_t color, const char* display = nullptr);

    /// @param area in pixels of the window
    void paint(const QRect& area, std::uint32_t color);
    void moveTo(const QPoint& position);
    void hide();
    void show();
    void raise();
    /// Cuts the window to a region of it.
    void setShape(const QRegion& region);
    xcb_window_t id() const { return m_window; }

    /// Gives the window a pointer that is one block of red, from 0 to 65535.
    void setBlockPointer(int sizePx, const QPoint& hotSpot, std::uint16_t red);
    /// Gives the window a pointer that is such a block of one red after the other, for that long each, over and over.
    void setAnimatedPointer(int sizePx, const std::vector<std::uint16_t>& reds, int intervalMs);
    /// @param position in pixels of the window
    void movePointer(const QPoint& position);
    /// Arranges the first buttons of the server's pointer, as a left-handed user does.
    void arrangeButtons(const std::array<std::uint8_t, 3>& buttons);
    /// Lets the server close all other connections, as xkill does.
    void disconnectOthers();

private:
    xcb_connection_t* connection() const { return m_connection.get(); }
    xcb_cursor_t createBlock(int sizePx, const QPoint& hotSpot, std::uint16_t red);
    void setPointer(xcb_cursor_t cursor);
    void sync();

    platform::xcb::Connection m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    xcb_gcontext_t m_context = XCB_NONE;
};
