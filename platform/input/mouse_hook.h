#pragma once

#include <QPoint>

#include <functional>
#include <memory>

namespace platform {

/// Hears the mouse wherever it is on the desktop, whichever program's window is below it. It only listens: every click
/// goes on to that window. User-interface thread.
class MouseHook
{
public:
    enum class Event
    {
        Move,
        LeftPress,
        RightPress
    };

    /// position is in physical pixels of the desktop. Must return soon: on Windows the whole desktop's pointer waits
    /// for it, and the system drops hooks that take too long.
    using Handler = std::function<void(Event event, const QPoint& position)>;

    MouseHook();
    /// Lets go of the mouse.
    ~MouseHook();
    MouseHook(const MouseHook&) = delete;
    MouseHook& operator=(const MouseHook&) = delete;

    /// At most one hook of a program is installed at a time.
    ///
    /// @return 0 on success, else the system's error number: GetLastError() on Windows, the connection's error on X11.
    ///         Where the toolkit draws without X on Linux there is no mouse to hear, and that is no error.
    unsigned long install(Handler handler);

    void remove();

    /// Whether anybody minds the events at present; false at first. X11 sends them only then, for each would wake the
    /// program. A hook on Windows hears everything, and the handler sorts out what it does not mind; but the system may
    /// have dropped it, so it is put on anew.
    void setWanted(bool wanted);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
