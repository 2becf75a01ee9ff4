#include "platform/compositing.h"
#include "platform/xcb_handles.h"

#include <QByteArray>

namespace platform {

namespace {

/// What it takes to ask. It is kept: the question comes with each step of an animation.
struct Inquiry
{
    xcb::Connection connection;
    /// A compositor makes itself known by owning it.
    xcb_atom_t selection = XCB_ATOM_NONE;
};

xcb_atom_t atomNamed(xcb_connection_t* connection, const QByteArray& name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const xcb::Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

Inquiry newInquiry()
{
    int screen = 0;
    Inquiry inquiry{xcb::Connection(xcb_connect(nullptr, &screen))};
    if (xcb_connection_has_error(inquiry.connection.get()) == 0)
        inquiry.selection = atomNamed(inquiry.connection.get(), "_NET_WM_CM_S" + QByteArray::number(screen));
    return inquiry;
}

} // namespace

bool isCompositing()
{
    static Inquiry inquiry = newInquiry();
    if (xcb_connection_has_error(inquiry.connection.get()) != 0)
        inquiry = newInquiry();
    xcb_connection_t* const connection = inquiry.connection.get();
    // No X server: what draws the windows instead mixes them itself.
    if (xcb_connection_has_error(connection) != 0)
        return true;
    const xcb::Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, inquiry.selection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace platform
