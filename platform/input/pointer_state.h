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

/// Looks at the pointer of the whole desktop, whoever's window it is over. A look takes some tens of microseconds.
///
/// One thread may look at a time, whichever it is. On X11 it has a connection to the display of its own.
class PointerProbe
{
public:
    PointerProbe();
    ~PointerProbe();
    PointerProbe(const PointerProbe&) = delete;
    PointerProbe& operator=(const PointerProbe&) = delete;

    /// Nothing where the system does not say: there is no display, the pointer is on another one, or a desktop is shown
    /// that belongs to the system. The caller then shows no pointer.
    std::optional<PointerState> look() const;

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace platform
