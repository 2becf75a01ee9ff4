// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/x11_raw_events.h"

#include "platform/xcb_handles.h"

#include <utility>
#include <xcb/xinput.h>

namespace platform::rawevents {

namespace {

constexpr std::uint8_t kEventTypeMask = 0x7f;
/// Raw events come in spite of other programs' grabs since 2.1.
constexpr std::uint16_t kMajor = 2;
constexpr std::uint16_t kMinor = 2;

} // namespace

std::optional<std::uint8_t> opcode(xcb_connection_t* connection)
{
    const xcb_query_extension_reply_t* const extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension == nullptr || extension->present == 0)
        return std::nullopt;
    const auto version = xcb::answer<xcb_input_xi_query_version_reply>(
        connection, xcb_input_xi_query_version(connection, kMajor, kMinor));
    if (!version || std::pair(version->major_version, version->minor_version) < std::pair(kMajor, kMinor))
        return std::nullopt;
    return extension->major_opcode;
}

void select(xcb_connection_t* connection, xcb_window_t root, std::uint32_t bits)
{
    struct
    {
        xcb_input_event_mask_t head;
        std::uint32_t bits;
    } mask{};
    mask.head.deviceid = XCB_INPUT_DEVICE_ALL_MASTER;
    mask.head.mask_len = 1;
    mask.bits = bits;
    xcb_input_xi_select_events(connection, root, 1, &mask.head);
    xcb_flush(connection);
}

std::uint16_t typeOf(const xcb_generic_event_t& event, std::uint8_t opcode)
{
    if ((event.response_type & kEventTypeMask) != XCB_GE_GENERIC)
        return 0;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    return generic.extension == opcode ? generic.event_type : std::uint16_t{0};
}

} // namespace platform::rawevents
