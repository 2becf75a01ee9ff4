// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/heldkeyboard.h"

#include "platform/xcb_handles.h"

#include <QTest>

namespace heldkeyboard {

namespace {

using platform::xcb::Connection;

constexpr int kOpenTimeoutMs = 30'000;

/// Reads its script from its input, and goes on when that ends. A menu that is not on the screen yet holds nothing.
const QByteArray kScript = "menu .menu -tearoff 0\n"
                           ".menu add command -label First\n"
                           ".menu add command -label Second\n"
                           "tkwait visibility .\n"
                           "tk_popup .menu 20 20\n"
                           "while {[grab status .menu] ne {global}} {after 20; update; catch {tk_popup .menu 20 20}}\n"
                           "puts held\n"
                           "flush stdout\n"
                           "vwait forever\n";

bool grabKeyboard(xcb_connection_t* connection)
{
    const xcb_window_t root = platform::xcb::screenNumbered(connection, 0).root;
    const auto reply = platform::xcb::answer<xcb_grab_keyboard_reply>(
        connection, xcb_grab_keyboard(connection, 0, root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

} // namespace

bool isHeld()
{
    const Connection connection(xcb_connect(nullptr, nullptr));
    return xcb_connection_has_error(connection.get()) == 0 && !grabKeyboard(connection.get());
}

struct Holder::Private
{
    Connection connection{xcb_connect(nullptr, nullptr)};
    bool isHolding = false;
};

Holder::Holder() : m_private(std::make_unique<Private>())
{
    xcb_connection_t* const connection = m_private->connection.get();
    m_private->isHolding = xcb_connection_has_error(connection) == 0 && grabKeyboard(connection);
}

/// The grab goes with its connection.
Holder::~Holder() = default;

bool Holder::isHolding() const
{
    return m_private->isHolding;
}

struct KeyHolder::Private
{
    Connection connection{xcb_connect(nullptr, nullptr)};
    bool isHolding = false;
};

KeyHolder::KeyHolder(int keycode) : m_private(std::make_unique<Private>())
{
    xcb_connection_t* const connection = m_private->connection.get();
    if (xcb_connection_has_error(connection) != 0)
        return;
    const xcb_window_t root = platform::xcb::screenNumbered(connection, 0).root;
    const xcb_void_cookie_t cookie =
        xcb_grab_key_checked(connection, 0, root, XCB_MOD_MASK_ANY, static_cast<xcb_keycode_t>(keycode),
                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const platform::xcb::Owned<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
    m_private->isHolding = error == nullptr;
}

KeyHolder::~KeyHolder() = default;

bool KeyHolder::isHolding() const
{
    return m_private->isHolding;
}

bool TkMenu::open()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral("wish"), QStringList());
    m_process.write(kScript);
    // Not by isHeld(), whose own grab may be the one that Tk meets.
    return QTest::qWaitFor([this] { return m_process.canReadLine(); }, kOpenTimeoutMs) && isHeld();
}

TkMenu::~TkMenu()
{
    m_process.kill();
    m_process.waitForFinished();
}

} // namespace heldkeyboard
