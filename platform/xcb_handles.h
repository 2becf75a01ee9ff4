#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

/// Owners for what xcb hands out. Linux only.
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

} // namespace platform::xcb
