// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/clicktracker.h"

#include <xcb/xinput.h>

using platform::xcb::Owned;

namespace {

constexpr int kLeftButton = 1;
constexpr int kRightButton = 3;

/// The operation code of XInput where it reports raw events in spite of other programs' grabs, which 2.1 was the first
/// to do; 0 where not.
int rawEventsOpcode(xcb_connection_t* connection)
{
    const xcb_query_extension_reply_t* const extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (!extension || extension->present == 0)
        return 0;
    const Owned<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(connection, xcb_input_xi_query_version(connection, 2, 2), nullptr));
    const bool isNew = version && (version->major_version > 2 || version->minor_version >= 1);
    return isNew ? extension->major_opcode : 0;
}

struct ButtonEventMask
{
    xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
    std::uint32_t bits = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE |
                         XCB_INPUT_XI_EVENT_MASK_DEVICE_CHANGED;
};

} // namespace

ClickTracker::ClickTracker(const X11Connection& connection)
    : m_connection(connection), m_opcode(rawEventsOpcode(connection.get()))
{
    const ButtonEventMask mask;
    if (m_opcode != 0)
        connection.check(xcb_input_xi_select_events_checked(connection.get(), connection.root(), 1, &mask.head));
}

void ClickTracker::handle(const xcb_generic_event_t& event, std::int64_t nowNs)
{
    if (event.response_type == XCB_MAPPING_NOTIFY)
        m_arrangement.clear();
    if (m_opcode == 0 || event.response_type != XCB_GE_GENERIC)
        return;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.extension != m_opcode)
        return;
    // Each mouse has an arrangement of its own.
    if (generic.event_type == XCB_INPUT_DEVICE_CHANGED)
        m_arrangement.clear();
    else if (generic.event_type == XCB_INPUT_RAW_BUTTON_PRESS || generic.event_type == XCB_INPUT_RAW_BUTTON_RELEASE)
        handleButton(generic, generic.event_type == XCB_INPUT_RAW_BUTTON_PRESS, nowNs);
}

void ClickTracker::handleButton(const xcb_ge_generic_event_t& event, bool isPress, std::int64_t nowNs)
{
    const int button = logicalButton(reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event).detail);
    if (button == kLeftButton)
        note(m_left, isPress, nowNs);
    else if (button == kRightButton)
        note(m_right, isPress, nowNs);
}

/// Raw events have the number of the device.
int ClickTracker::logicalButton(std::uint32_t physicalButton)
{
    if (m_arrangement.empty()) {
        const Owned<xcb_get_pointer_mapping_reply_t> reply(
            xcb_get_pointer_mapping_reply(m_connection.get(), xcb_get_pointer_mapping(m_connection.get()), nullptr));
        if (reply)
            m_arrangement.assign(xcb_get_pointer_mapping_map(reply.get()),
                                 xcb_get_pointer_mapping_map(reply.get()) +
                                     xcb_get_pointer_mapping_map_length(reply.get()));
    }
    const bool isArranged = physicalButton >= 1 && physicalButton <= m_arrangement.size();
    return static_cast<int>(isArranged ? m_arrangement.at(physicalButton - 1) : physicalButton);
}

platform::PointerState ClickTracker::marked(const platform::PointerState& pointer, std::int64_t nowNs)
{
    note(m_left, pointer.leftDown, nowNs);
    note(m_right, pointer.rightDown, nowNs);
    return {pointer.positionPx, m_left.isIn(nowNs), m_right.isIn(nowNs)};
}

void ClickTracker::note(ClickMark& mark, bool isDown, std::int64_t nowNs)
{
    if (isDown)
        mark.press();
    else
        mark.release(nowNs);
}
