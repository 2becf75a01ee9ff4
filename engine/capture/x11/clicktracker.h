// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/x11/clickmark.h"
#include "engine/capture/x11/x11connection.h"
#include "platform/input/pointer_state.h"

#include <cstdint>
#include <vector>

/// Says which clicks are marked in a frame, those between two frames as well where the server reports them.
class ClickTracker
{
public:
    /// @param connection must outlive this object
    explicit ClickTracker(const X11Connection& connection);

    /// Takes note of an event of the connection.
    void handle(const xcb_generic_event_t& event, std::int64_t nowNs);

    /// To be asked for each frame.
    ///
    /// @return the pointer with the buttons down whose clicks are marked
    platform::PointerState marked(const platform::PointerState& pointer, std::int64_t nowNs);

private:
    static void note(ClickMark& mark, bool isDown, std::int64_t nowNs);
    void handleButton(const xcb_ge_generic_event_t& event, bool isPress, std::int64_t nowNs);
    int logicalButton(std::uint32_t physicalButton);

    const X11Connection& m_connection;
    /// Of XInput; 0 where the server has none.
    int m_opcode = 0;
    /// The logical button of each physical one, from 1 on; empty until it is asked for.
    std::vector<std::uint8_t> m_arrangement;
    ClickMark m_left;
    ClickMark m_right;
};
