// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/x11/cursorblend.h"
#include "engine/capture/x11/x11connection.h"
#include "platform/input/pointer_state.h"

#include <cstdint>
#include <optional>

/// Follows the pointer: where it is, what is held down on it, and what it looks like.
class CursorTracker
{
public:
    /// @param connection must outlive this object
    explicit CursorTracker(const X11Connection& connection);

    /// Takes note of an event of the connection.
    void handle(const xcb_generic_event_t& event);

    /// Asks the server where the pointer is. When it returns, all events that the server had sent before have arrived.
    void updatePointer();
    /// Asks for the image when the events have notified of another one.
    void updateImage();

    /// The position is that of the hot spot. Nothing while the pointer is on another screen.
    const std::optional<platform::PointerState>& pointer() const { return m_pointer; }
    /// Without pixels where the server does not show it.
    const CursorImage& image() const { return m_image; }
    /// Counts the images.
    int imageNumber() const { return m_imageNumber; }

private:
    const X11Connection& m_connection;
    int m_notifyEvent = 0;
    bool m_isImageOld = false;
    /// The server's number for the pointer that it has shown last.
    std::optional<std::uint32_t> m_serial;
    std::optional<platform::PointerState> m_pointer;
    CursorImage m_image;
    int m_imageNumber = 0;
};
