// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/x11_key_grab.h"

#include <QHotkey>

#include <utility>

namespace platform {

struct X11KeyGrab::Private
{
    QHotkey hotkey{};
};

/// QHotkey has the grab on Qt's connection.
X11KeyGrab::X11KeyGrab(xcb_connection_t* /*connection*/, std::function<void()> pressed)
    : m_private(std::make_unique<Private>())
{
    QObject::connect(&m_private->hotkey, &QHotkey::activated, &m_private->hotkey, std::move(pressed));
}

X11KeyGrab::~X11KeyGrab() = default;

QString X11KeyGrab::take(const X11Keyboard& /*keyboard*/, const QKeyCombination& key)
{
    m_private->hotkey.setShortcut(QKeySequence(key), true);
    // Asked, for setShortcut() also reports success when there was nothing to register.
    return m_private->hotkey.isRegistered() ? QString() : QStringLiteral("another program holds it");
}

void X11KeyGrab::release()
{
    m_private->hotkey.resetShortcut();
}

} // namespace platform
