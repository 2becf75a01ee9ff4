// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>

/// Raw events of the X input extension: what the devices send, whoever has grabbed them.
namespace platform::rawevents {

/// The extension's opcode. None where the server lacks it, or is so old that grabs of others hold back raw events.
std::optional<std::uint8_t> opcode(xcb_connection_t* connection);

/// The connection gets what bits of XCB_INPUT_XI_EVENT_MASK_* say, of all master devices, until it selects again.
void select(xcb_connection_t* connection, xcb_window_t root, std::uint32_t bits);

/// XCB_INPUT_RAW_...; 0 for what is no event of the extension.
std::uint16_t typeOf(const xcb_generic_event_t& event, std::uint8_t opcode);

} // namespace platform::rawevents
