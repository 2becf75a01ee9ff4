// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>

#include <memory>
#include <optional>

namespace platform {

/// Where the pointer is and what is held down on it.
struct PointerState
{
    /// Physical pixels of the whole desktop.
    QPoint positionPx;
    /// The buttons as the user has arranged them: the left one is the one that selects, also for a left-handed user.
    bool leftDown = false;
    bool rightDown = false;
};

/// Looks at the desktop's pointer, in some tens of microseconds. Any thread, one at a time; on X11 by its own
/// connection.
class PointerProbe
{
public:
    PointerProbe();
    ~PointerProbe();
    PointerProbe(const PointerProbe&) = delete;
    PointerProbe& operator=(const PointerProbe&) = delete;

    /// Nothing where the system does not say: no display, the pointer is on another one, or a secure desktop is shown.
    std::optional<PointerState> look() const;

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace platform
