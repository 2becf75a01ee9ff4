// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/damagetracker.h"

#include "engine/capture/x11/x11regions.h"

using platform::xcb::Owned;

DamageTracker::DamageTracker(const X11Connection& connection) : m_connection(connection)
{
    if (!connection.hasDamage())
        return;
    m_notifyEvent = xcb_get_extension_data(connection.get(), &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY;
    const auto damage = xcb_generate_id(connection.get());
    const auto region = xcb_generate_id(connection.get());
    const bool hasDamage = connection.check(
        xcb_damage_create_checked(connection.get(), damage, connection.root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY));
    const bool hasRegion = connection.check(xcb_xfixes_create_region_checked(connection.get(), region, 0, nullptr));
    if (hasDamage && hasRegion) {
        m_damage = damage;
        m_region = region;
    }
}

void DamageTracker::handle(const xcb_generic_event_t& event)
{
    if (m_damage != XCB_NONE && event.response_type == m_notifyEvent)
        m_isReported = true;
}

QRegion DamageTracker::take()
{
    const bool everything = m_isFirst || m_damage == XCB_NONE;
    m_isFirst = false;
    QRegion changed;
    if (m_isReported)
        changed = subtractDamage();
    m_isReported = false;
    return everything ? QRegion(m_connection.desktop()) : changed;
}

QRegion DamageTracker::subtractDamage() const
{
    xcb_damage_subtract(m_connection.get(), m_damage, XCB_NONE, m_region);
    const Owned<xcb_xfixes_fetch_region_reply_t> reply(xcb_xfixes_fetch_region_reply(
        m_connection.get(), xcb_xfixes_fetch_region(m_connection.get(), m_region), nullptr));
    if (!reply)
        return m_connection.desktop();
    const int count = xcb_xfixes_fetch_region_rectangles_length(reply.get());
    if (count > x11regions::kMaxRectangles)
        return x11regions::toRect(reply->extents);
    return x11regions::toRegion({xcb_xfixes_fetch_region_rectangles(reply.get()), static_cast<std::size_t>(count)});
}
