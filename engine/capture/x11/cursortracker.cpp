// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/cursortracker.h"

#include <utility>
#include <xcb/xfixes.h>

using platform::xcb::Owned;

CursorTracker::CursorTracker(const X11Connection& connection)
    : m_connection(connection), m_isImageOld(connection.hasXFixes())
{
    if (!connection.hasXFixes())
        return;
    m_notifyEvent = xcb_get_extension_data(connection.get(), &xcb_xfixes_id)->first_event + XCB_XFIXES_CURSOR_NOTIFY;
    xcb_xfixes_select_cursor_input(connection.get(), connection.root(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
}

void CursorTracker::handle(const xcb_generic_event_t& event)
{
    if (m_notifyEvent == 0 || event.response_type != m_notifyEvent)
        return;
    m_isImageOld = true;
    m_serial = reinterpret_cast<const xcb_xfixes_cursor_notify_event_t&>(event).cursor_serial;
}

void CursorTracker::updatePointer()
{
    const Owned<xcb_query_pointer_reply_t> reply(xcb_query_pointer_reply(
        m_connection.get(), xcb_query_pointer(m_connection.get(), m_connection.root()), nullptr));
    m_pointer.reset();
    // The server counts the buttons after the user's arrangement of them.
    if (reply && reply->same_screen != 0)
        m_pointer = {QPoint(reply->root_x, reply->root_y), (reply->mask & XCB_BUTTON_MASK_1) != 0,
                     (reply->mask & XCB_BUTTON_MASK_3) != 0};
}

void CursorTracker::updateImage()
{
    if (!std::exchange(m_isImageOld, false))
        return;
    const Owned<xcb_xfixes_get_cursor_image_reply_t> reply(xcb_xfixes_get_cursor_image_reply(
        m_connection.get(), xcb_xfixes_get_cursor_image(m_connection.get()), nullptr));
    if (!reply)
        return;
    // Until the first image of an animated pointer is over the server has an empty pixel for it. The image before
    // stays.
    if (m_serial && reply->cursor_serial != *m_serial && reply->width == 1 && reply->height == 1)
        return;
    const std::uint32_t* const pixels = xcb_xfixes_get_cursor_image_cursor_image(reply.get());
    m_image.widthPx = reply->width;
    m_image.heightPx = reply->height;
    m_image.hotSpot = QPoint(reply->xhot, reply->yhot);
    m_image.argbPremultiplied.assign(pixels, pixels + xcb_xfixes_get_cursor_image_cursor_image_length(reply.get()));
    ++m_imageNumber;
}
