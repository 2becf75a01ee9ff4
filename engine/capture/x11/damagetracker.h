// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/x11/x11connection.h"

#include <QRegion>

#include <xcb/damage.h>

/// Follows which parts of the desktop change. The pointer is no part of it.
class DamageTracker
{
public:
    /// @param connection must outlive this object
    explicit DamageTracker(const X11Connection& connection);

    /// Takes note of an event of the connection.
    void handle(const xcb_generic_event_t& event);

    /// What has changed since the last call, in pixels of the desktop. The first time it is the whole desktop, as it is
    /// each time where the server reports no damage.
    QRegion take();

private:
    QRegion subtractDamage() const;

    const X11Connection& m_connection;
    xcb_damage_damage_t m_damage = XCB_NONE;
    xcb_xfixes_region_t m_region = XCB_NONE;
    int m_notifyEvent = 0;
    /// The server reports once, and again when the damage was taken.
    bool m_isReported = false;
    bool m_isFirst = true;
};
