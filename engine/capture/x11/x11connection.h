// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/xcb_handles.h"

#include <QRect>
#include <QString>

/// A connection of the capture's own to an X server, with the extensions that it uses. Every request is checked by its
/// own reply: no error reaches the handlers that other libraries have installed.
///
/// One thread at a time.
class X11Connection
{
public:
    /// @param display as in the variable DISPLAY; null means that variable
    explicit X11Connection(const char* display = nullptr);

    /// Why nothing can be grabbed; empty where frames can be. Nothing else may be called where it is not.
    const QString& obstacle() const { return m_obstacle; }

    xcb_connection_t* get() const { return m_connection.get(); }
    /// From 0 on.
    int screenNumber() const { return m_screenNumber; }
    xcb_visualid_t rootVisual() const { return m_screen->root_visual; }
    xcb_window_t root() const { return m_screen->root; }
    /// The desktop in physical pixels, as large as the last events or updateDesktop() say.
    QRect desktop() const { return m_desktop; }
    /// Counts the events of another desktop: it has another size, or its screens were plugged, unplugged, moved or
    /// turned.
    int desktopNumber() const { return m_desktopNumber; }
    /// Asks the server for the size of the desktop.
    void updateDesktop();

    /// Whether the server shares memory with its clients, and whether it takes file descriptors for that.
    bool hasSharedMemory() const { return m_hasSharedMemory; }
    bool takesDescriptors() const { return m_takesDescriptors; }
    bool hasXFixes() const { return m_hasXFixes; }
    bool hasDamage() const { return m_hasDamage; }
    bool hasShape() const { return m_hasShape; }
    /// Whether the server keeps images of windows and draws them over each other.
    bool hasComposite() const { return m_hasComposite; }

    /// Whether the server has ended or has closed the connection, as far as is known by now. It stays so.
    bool isLost() const { return xcb_connection_has_error(get()) != 0; }

    /// Whether a request succeeded; waits for the server.
    bool check(xcb_void_cookie_t cookie) const;

    /// The next event of the server that has arrived, or null. Those that other clients have sent are left out.
    platform::xcb::Owned<xcb_generic_event_t> nextEvent();

private:
    QString findObstacle() const;
    void queryExtensions();
    void queryComposite();
    bool isPresent(xcb_extension_t& extension) const;

    platform::xcb::Connection m_connection;
    int m_screenNumber = 0;
    const xcb_screen_t* m_screen = nullptr;
    QString m_obstacle;
    QRect m_desktop;
    int m_desktopNumber = 0;
    bool m_hasSharedMemory = false;
    bool m_takesDescriptors = false;
    bool m_hasXFixes = false;
    bool m_hasDamage = false;
    bool m_hasShape = false;
    bool m_hasComposite = false;
};
