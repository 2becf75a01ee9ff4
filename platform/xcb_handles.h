// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <type_traits>

/// Owners for what xcb allocates, and its recurring requests. Linux only.
namespace platform::xcb {

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

struct Free
{
    void operator()(void* allocated) const { std::free(allocated); }
};

using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

template <typename T>
using Owned = std::unique_ptr<T, Free>;

/// Waits for the answer to a request; null when it failed.
template <auto Reply, typename Cookie>
auto answer(xcb_connection_t* connection, Cookie cookie)
{
    auto* const reply = Reply(connection, cookie, nullptr);
    return Owned<std::remove_pointer_t<decltype(reply)>>(reply);
}

/// XCB_ATOM_NONE where the server does not answer.
inline xcb_atom_t atomNamed(xcb_connection_t* connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = answer<xcb_intern_atom_reply>(connection, cookie);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// By the number that xcb_connect() gives; the last one where there are fewer.
inline const xcb_screen_t& screenNumbered(xcb_connection_t* connection, int number)
{
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (number-- > 0 && screen.rem > 1)
        xcb_screen_next(&screen);
    return *screen.data;
}

} // namespace platform::xcb
