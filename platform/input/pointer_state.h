// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>

#include <memory>
#include <optional>

namespace platform {

struct PointerState
{
    QPoint positionPx;
    /// The left button selects, also for a left-handed user.
    bool leftDown = false;
    bool rightDown = false;
};

/// Looks at the desktop's pointer, in some tens of microseconds. Any thread, one at a time.
class PointerProbe
{
public:
    PointerProbe();
    ~PointerProbe();

    /// Nothing without a display, with the pointer on another one, or on a secure desktop.
    std::optional<PointerState> look() const;

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace platform
