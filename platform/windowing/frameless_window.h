// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class QWidget;

namespace platform {

/// Replaces the system's frame of a top-level window, whose child this is: a widget is its title bar, and its edges
/// resize it where its size can change. Uses QWindowKit where the build found it. User-interface thread.
class FramelessWindow : public QObject
{
    Q_OBJECT

public:
    enum class SystemButton
    {
        Minimise,
        Close
    };

    /// Call before the window is shown.
    explicit FramelessWindow(QWidget* window);
    ~FramelessWindow() override;

    /// Its children move the window as well, except system buttons and what is hit-test visible.
    void setTitleBar(QWidget* titleBar);

    /// The widget of the title bar for a button of the system's frame.
    void setSystemButton(SystemButton role, QWidget* button);

    void setHitTestVisible(QWidget* widget);

private:
    class Agent;

    std::unique_ptr<Agent> m_agent;
};

} // namespace platform
