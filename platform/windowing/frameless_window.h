// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class QWidget;

namespace platform {

/// Takes the system's frame off a top-level window and makes a widget of it the title bar; a window that can change its
/// size is resized by its edges. Belongs to the window. User-interface thread.
///
/// Uses QWindowKit where the build found it, which keeps snapping, shadow and system menu on Windows.
class FramelessWindow : public QObject
{
    Q_OBJECT

public:
    enum class SystemButton
    {
        Minimise,
        Close
    };

    /// Call before the window is shown; it becomes this object's parent.
    explicit FramelessWindow(QWidget* window);
    ~FramelessWindow() override;

    /// Moves the window by this widget, children included that are neither a system button nor hit-test visible.
    void setTitleBar(QWidget* titleBar);

    /// Says which widget of the title bar stands in for a button of the system's frame.
    void setSystemButton(SystemButton role, QWidget* button);

    /// Lets a widget of the title bar take the pointer itself.
    void setHitTestVisible(QWidget* widget);

private:
    class Agent;

    std::unique_ptr<Agent> m_agent;
};

} // namespace platform
