// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/frameless_window.h"

#include <QWKWidgets/widgetwindowagent.h>
#include <QWidget>

namespace platform {

class FramelessWindow::Agent : public QWK::WidgetWindowAgent
{
public:
    using QWK::WidgetWindowAgent::WidgetWindowAgent;
};

FramelessWindow::FramelessWindow(QWidget* window) : QObject(window), m_agent(std::make_unique<Agent>())
{
    m_agent->setup(window);
}

FramelessWindow::~FramelessWindow() = default;

void FramelessWindow::setTitleBar(QWidget* titleBar)
{
    m_agent->setTitleBar(titleBar);
}

void FramelessWindow::setSystemButton(SystemButton role, QWidget* button)
{
    const bool minimises = role == SystemButton::Minimise;
    m_agent->setSystemButton(minimises ? QWK::WindowAgentBase::Minimize : QWK::WindowAgentBase::Close, button);
}

void FramelessWindow::setHitTestVisible(QWidget* widget)
{
    m_agent->setHitTestVisible(widget, true);
}

} // namespace platform
