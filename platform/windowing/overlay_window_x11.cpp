// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/overlay_window.h"
#include "platform/xcb_handles.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include <string>

namespace platform {

namespace {

/// What it takes to ask. It is kept: the question comes with each step of an animation.
struct Inquiry
{
    xcb::Connection connection;
    /// A compositor makes itself known by owning it.
    xcb_atom_t selection = XCB_ATOM_NONE;
};

Inquiry newInquiry()
{
    int screen = 0;
    Inquiry inquiry{xcb::Connection(xcb_connect(nullptr, &screen))};
    if (xcb_connection_has_error(inquiry.connection.get()) == 0)
        inquiry.selection = xcb::atomNamed(inquiry.connection.get(), "_NET_WM_CM_S" + std::to_string(screen));
    return inquiry;
}

} // namespace

void prepareAsOverlay(QWidget& window)
{
    // On the native window alone: the widget's own flags stay what its class says they are.
    window.winId();
    window.windowHandle()->setFlag(Qt::BypassWindowManagerHint);
}

void giveKeyboard(QWidget& window)
{
    // Nobody but the program itself gives it to such a window, and Qt only where the flag is not set.
    window.windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, false);
    window.activateWindow();
}

bool isCompositing()
{
    static Inquiry inquiry = newInquiry();
    if (xcb_connection_has_error(inquiry.connection.get()) != 0)
        inquiry = newInquiry();
    xcb_connection_t* const connection = inquiry.connection.get();
    // No X server: what draws the windows instead mixes them itself.
    if (xcb_connection_has_error(connection) != 0)
        return true;
    const auto owner =
        xcb::answer<xcb_get_selection_owner_reply>(connection, xcb_get_selection_owner(connection, inquiry.selection));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

bool prepareForAlpha(QWidget& window)
{
    window.winId();
    return true;
}

bool setWindowAlpha(QWidget& window, int alpha)
{
    constexpr double kOpaque = 255.0;
    // Qt's other ways of drawing on Linux have no such thing, and complain.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return false;
    // Sets _NET_WM_WINDOW_OPACITY, which compositors follow.
    window.windowHandle()->setOpacity(alpha / kOpaque);
    return isCompositing();
}

} // namespace platform
