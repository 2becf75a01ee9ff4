// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeyCombination>
#include <QString>

#include <xcb/xcb.h>

#include <functional>
#include <memory>

namespace platform {

class X11Keyboard;

/// Keeps one key from other programs: by QHotkey where the build found it, else by passive grabs on the connection,
/// whose events then tell of presses. User-interface thread.
class X11KeyGrab
{
public:
    /// The connection outlives the object. pressed is called by QHotkey, not of a key that repeats.
    X11KeyGrab(xcb_connection_t* connection, std::function<void()> pressed);
    ~X11KeyGrab();

    /// None is taken before. Empty on success, else why not.
    QString take(const X11Keyboard& keyboard, const QKeyCombination& key);

    void release();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
