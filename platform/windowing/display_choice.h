// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace platform {

/// While it lives, an application object that is made is a client of the X server, also in a Wayland session, where Qt
/// would choose Wayland: capture, hotkeys and the positions of overlays are X11's. A QT_QPA_PLATFORM that is set stays,
/// and without a DISPLAY nothing is chosen. Nothing on Windows. Main thread.
class DisplayChoice
{
public:
    DisplayChoice();
    /// Programs that are started later do not inherit the choice.
    ~DisplayChoice();
    DisplayChoice(const DisplayChoice&) = delete;
    DisplayChoice& operator=(const DisplayChoice&) = delete;

private:
    bool m_chosen = false;
};

/// Whether the X server is a part of a Wayland desktop: it has only those windows whose programs are its clients.
bool isWaylandSession();

} // namespace platform
