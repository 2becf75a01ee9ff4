// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>

#include <functional>
#include <memory>

namespace platform {

/// Listens to the mouse on the whole desktop. Clicks also go to the window below. User-interface thread.
class MouseHook
{
public:
    enum class Event
    {
        Move,
        LeftPress,
        RightPress
    };

    /// position is in physical pixels of the desktop. Must return soon: on Windows every pointer event waits for it.
    using Handler = std::function<void(Event event, const QPoint& position)>;

    MouseHook();
    ~MouseHook();

    /// At most one hook of a program is installed at a time.
    /// @return 0 on success, or where Qt draws without X on Linux and nothing is heard; else the system's error number.
    unsigned long install(Handler handler);

    void remove();

    /// Whether events are wanted at present; false at first. X11 sends them only then; on Windows they come all the
    /// same, and the hook, which the system may have dropped, is installed again.
    void setWanted(bool wanted);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
