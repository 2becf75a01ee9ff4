// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/x11connection.h"

#include "engine/capture/x11/screenvisual.h"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/render.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>

#include <sys/socket.h>

using platform::xcb::Owned;

namespace {

/// Whether the connection runs over a socket of this computer. One that is forwarded from another computer does not.
bool isLocalSocket(xcb_connection_t* connection)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    const int socket = xcb_get_file_descriptor(connection);
    return getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) == 0 && address.ss_family == AF_UNIX;
}

bool isSentByClient(const xcb_generic_event_t& event)
{
    constexpr int kSentMark = 0x80;
    return (event.response_type & kSentMark) != 0;
}

int bitsPerPixel(const xcb_setup_t* setup, int depth)
{
    for (auto format = xcb_setup_pixmap_formats_iterator(setup); format.rem > 0; xcb_format_next(&format)) {
        if (format.data->depth == depth)
            return format.data->bits_per_pixel;
    }
    return 0;
}

const xcb_visualtype_t* findVisual(const xcb_screen_t* screen, xcb_visualid_t id)
{
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0; xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0; xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id == id)
                return visual.data;
        }
    }
    return nullptr;
}

} // namespace

X11Connection::X11Connection(const char* display)
{
    m_connection.reset(xcb_connect(display, &m_screenNumber));
    if (isLost()) {
        m_obstacle = QStringLiteral("there is no X server");
        return;
    }
    m_screen = &platform::xcb::screenNumbered(m_connection.get(), m_screenNumber);
    m_obstacle = findObstacle();
    if (!m_obstacle.isEmpty())
        return;
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(get(), root(), XCB_CW_EVENT_MASK, &events);
    updateDesktop();
    queryExtensions();
}

QString X11Connection::findObstacle() const
{
    if (!isLocalSocket(get()))
        return QStringLiteral("the X server is on another computer");
    const xcb_setup_t* const setup = xcb_get_setup(get());
    const xcb_visualtype_t* const visual = findVisual(m_screen, m_screen->root_visual);
    if (!visual)
        return QStringLiteral("the screen has no visual");
    return unsupportedVisual({m_screen->root_depth, bitsPerPixel(setup, m_screen->root_depth),
                              setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST, visual->red_mask,
                              visual->green_mask, visual->blue_mask});
}

bool X11Connection::isPresent(xcb_extension_t& extension) const
{
    const xcb_query_extension_reply_t* const reply = xcb_get_extension_data(get(), &extension);
    return reply && reply->present != 0;
}

void X11Connection::queryExtensions()
{
    if (isPresent(xcb_shm_id)) {
        const Owned<xcb_shm_query_version_reply_t> shm(
            xcb_shm_query_version_reply(get(), xcb_shm_query_version(get()), nullptr));
        m_hasSharedMemory = shm != nullptr;
        m_takesDescriptors = shm && (shm->major_version > 1 || shm->minor_version >= 2);
    }
    // The server refuses the requests of a client that has not named its version.
    if (isPresent(xcb_xfixes_id)) {
        const Owned<xcb_xfixes_query_version_reply_t> fixes(xcb_xfixes_query_version_reply(
            get(), xcb_xfixes_query_version(get(), XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION), nullptr));
        m_hasXFixes = fixes && fixes->major_version >= 2;
    }
    // Damage is handed over in regions of XFixes.
    if (m_hasXFixes && isPresent(xcb_damage_id)) {
        const Owned<xcb_damage_query_version_reply_t> damage(xcb_damage_query_version_reply(
            get(), xcb_damage_query_version(get(), XCB_DAMAGE_MAJOR_VERSION, XCB_DAMAGE_MINOR_VERSION), nullptr));
        m_hasDamage = damage != nullptr;
    }
    m_hasShape = isPresent(xcb_shape_id);
    // Windows are drawn within their shapes, which are regions of XFixes.
    if (m_hasXFixes && isPresent(xcb_composite_id) && isPresent(xcb_render_id))
        queryComposite();
}

void X11Connection::queryComposite()
{
    const auto compositeCookie =
        xcb_composite_query_version(get(), XCB_COMPOSITE_MAJOR_VERSION, XCB_COMPOSITE_MINOR_VERSION);
    const auto renderCookie = xcb_render_query_version(get(), XCB_RENDER_MAJOR_VERSION, XCB_RENDER_MINOR_VERSION);
    const Owned<xcb_composite_query_version_reply_t> composite(
        xcb_composite_query_version_reply(get(), compositeCookie, nullptr));
    const Owned<xcb_render_query_version_reply_t> render(xcb_render_query_version_reply(get(), renderCookie, nullptr));
    // The first that gives the images of windows.
    m_hasComposite = render && composite && (composite->major_version > 0 || composite->minor_version >= 2);
}

void X11Connection::updateDesktop()
{
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(get(), xcb_get_geometry(get(), root()), nullptr));
    if (geometry)
        m_desktop = QRect(0, 0, geometry->width, geometry->height);
}

bool X11Connection::check(xcb_void_cookie_t cookie) const
{
    const Owned<xcb_generic_error_t> error(xcb_request_check(get(), cookie));
    return !error && !isLost();
}

Owned<xcb_generic_event_t> X11Connection::nextEvent()
{
    Owned<xcb_generic_event_t> event;
    do
        event.reset(xcb_poll_for_event(get()));
    while (event && isSentByClient(*event));
    if (event && event->response_type == XCB_CONFIGURE_NOTIFY) {
        const auto* const configured = reinterpret_cast<const xcb_configure_notify_event_t*>(event.get());
        if (configured->window == root()) {
            m_desktop = QRect(0, 0, configured->width, configured->height);
            ++m_desktopNumber;
        }
    }
    return event;
}
