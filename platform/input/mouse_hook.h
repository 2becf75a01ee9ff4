// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>

#include <functional>
#include <memory>

namespace platform {

/// Listens to the mouse wherever it is on the desktop. Every click also goes to the window below. User-interface
/// thread.
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
    /// for it.
    using Handler = std::function<void(Event event, const QPoint& position)>;

    MouseHook();
    ~MouseHook();
    MouseHook(const MouseHook&) = delete;
    MouseHook& operator=(const MouseHook&) = delete;

    /// At most one hook of a program is installed at a time.
    ///
    /// @return 0 on success, else the system's error number. Where Qt draws without X on Linux nothing is heard, and
    /// that is
    ///         no error.
    unsigned long install(Handler handler);

    void remove();

    /// Whether events are wanted at present; false at first. X11 sends them only then. On Windows they come all the
    /// same, but the system may have dropped the hook, so it is installed again.
    void setWanted(bool wanted);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
