#include "platform/compositing.h"

#include <QByteArray>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace platform {

namespace {

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

struct FreeReply
{
    void operator()(void* reply) const { std::free(reply); }
};

xcb_atom_t atomNamed(xcb_connection_t* connection, const QByteArray& name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const std::unique_ptr<xcb_intern_atom_reply_t, FreeReply> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace

bool isCompositing()
{
    int screen = 0;
    const std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, &screen));
    // No X server: what draws the windows instead mixes them itself.
    if (xcb_connection_has_error(connection.get()) != 0)
        return true;
    // A compositor makes itself known by owning this selection.
    const xcb_atom_t selection = atomNamed(connection.get(), "_NET_WM_CM_S" + QByteArray::number(screen));
    const std::unique_ptr<xcb_get_selection_owner_reply_t, FreeReply> owner(
        xcb_get_selection_owner_reply(connection.get(), xcb_get_selection_owner(connection.get(), selection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace platform
