// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

/// Owners for what xcb hands out, and two questions that everybody has. Linux only.
namespace platform::xcb {

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

/// Events, errors and replies are freed alike.
struct Free
{
    void operator()(void* allocated) const { std::free(allocated); }
};

using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

template <typename T>
using Owned = std::unique_ptr<T, Free>;

/// XCB_ATOM_NONE where the server does not answer.
inline xcb_atom_t atomNamed(xcb_connection_t* connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// The screen of that number, as xcb_connect() gives it; the last one where there are fewer. The connection is open.
inline const xcb_screen_t& screenNumbered(xcb_connection_t* connection, int number)
{
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (number-- > 0 && screen.rem > 1)
        xcb_screen_next(&screen);
    return *screen.data;
}

} // namespace platform::xcb
