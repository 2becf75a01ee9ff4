// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/sole_qhotkey.h"
#include "platform/input/x11_key_grab.h"

#include <utility>

namespace platform {

struct X11KeyGrab::Private
{
    SoleQHotkey hotkey{};
};

/// QHotkey has the grab on Qt's connection.
X11KeyGrab::X11KeyGrab(xcb_connection_t* /*connection*/, std::function<void()> pressed)
    : m_private(std::make_unique<Private>())
{
    const QHotkey& hotkey = m_private->hotkey.hotkey();
    QObject::connect(&hotkey, &QHotkey::activated, &hotkey, std::move(pressed));
}

X11KeyGrab::~X11KeyGrab() = default;

QString X11KeyGrab::take(const X11Keyboard& /*keyboard*/, const QKeyCombination& key)
{
    return m_private->hotkey.take(key);
}

void X11KeyGrab::release()
{
    m_private->hotkey.release();
}

} // namespace platform
