// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

namespace platform {

/// Ends the process in order when the X server goes: with a line in the log, each DisplayLossAction, and exit status 1.
/// Qt and Xlib would call exit() at once, and libobs would crash. Nothing on Windows. Main thread, once, when the
/// application object has been made.
void endInOrderOnDisplayLoss();

/// What is done when the display is lost, in the order in which these objects were made. Main thread, which processes
/// no event any more; windows must not be touched. Whatever is not done within ten seconds is left undone.
class DisplayLossAction
{
public:
    explicit DisplayLossAction(std::function<void()> action);
    ~DisplayLossAction();
    DisplayLossAction(const DisplayLossAction&) = delete;
    DisplayLossAction& operator=(const DisplayLossAction&) = delete;

    void run() const { m_action(); }

private:
    std::function<void()> m_action;
};

} // namespace platform
