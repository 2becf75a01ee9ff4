// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/frameless_window.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

#include <optional>

namespace platform {

namespace {

/// How far into the window its edges can be gripped, in logical pixels: one step of the grid.
constexpr int kGripWidth = 4;

Qt::CursorShape cursorFor(Qt::Edges edges)
{
    if (edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge))
        return Qt::SizeFDiagCursor;
    if (edges == (Qt::RightEdge | Qt::TopEdge) || edges == (Qt::LeftEdge | Qt::BottomEdge))
        return Qt::SizeBDiagCursor;
    return edges.testAnyFlags(Qt::LeftEdge | Qt::RightEdge) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

} // namespace

/// Watches the title bar for presses and the native window for the pointer at its edges, before any widget sees it.
class FramelessWindow::Agent : public QObject
{
public:
    explicit Agent(QWidget& window);
    ~Agent() override { showEdgeCursor({}); }

    void setTitleBar(QWidget* titleBar);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watchNativeWindow();
    bool onTitleBar(const QEvent& event);
    void moveByHand(const QMouseEvent& event);
    bool onNativeWindow(const QEvent& event);
    Qt::Edges edgesAt(const QPoint& position) const;
    void showEdgeCursor(Qt::Edges edges);

    QWidget& m_window;
    QWidget* m_titleBar = nullptr;
    /// From the window's top-left corner to the pointer, while the window is moved by hand.
    std::optional<QPoint> m_grip;
    bool m_edgeCursorShown = false;
};

FramelessWindow::Agent::Agent(QWidget& window) : m_window(window)
{
    window.setWindowFlags(window.windowFlags() | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint |
                          Qt::WindowMinimizeButtonHint);
    window.installEventFilter(this);
}

void FramelessWindow::Agent::setTitleBar(QWidget* titleBar)
{
    m_titleBar = titleBar;
    titleBar->installEventFilter(this);
}

bool FramelessWindow::Agent::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_titleBar)
        return onTitleBar(*event);
    if (watched == m_window.windowHandle())
        return onNativeWindow(*event);
    if (watched == &m_window && event->type() == QEvent::Show)
        watchNativeWindow();
    return false;
}

void FramelessWindow::Agent::watchNativeWindow()
{
    QWindow* const native = m_window.windowHandle();
    native->removeEventFilter(this);
    native->installEventFilter(this);
}

bool FramelessWindow::Agent::onTitleBar(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::MouseButtonPress: {
        const auto& press = static_cast<const QMouseEvent&>(event);
        if (press.button() != Qt::LeftButton)
            return false;
        if (!m_window.windowHandle()->startSystemMove())
            m_grip = press.globalPosition().toPoint() - m_window.frameGeometry().topLeft();
        return true;
    }
    case QEvent::MouseMove:
        moveByHand(static_cast<const QMouseEvent&>(event));
        return m_grip.has_value();
    case QEvent::MouseButtonRelease:
        m_grip.reset();
        return false;
    default:
        return false;
    }
}

void FramelessWindow::Agent::moveByHand(const QMouseEvent& event)
{
    if (m_grip && event.buttons().testFlag(Qt::LeftButton))
        m_window.move(event.globalPosition().toPoint() - *m_grip);
}

bool FramelessWindow::Agent::onNativeWindow(const QEvent& event)
{
    if (event.type() == QEvent::Leave) {
        showEdgeCursor({});
        return false;
    }
    if (event.type() != QEvent::MouseMove && event.type() != QEvent::MouseButtonPress)
        return false;
    const auto& mouse = static_cast<const QMouseEvent&>(event);
    const Qt::Edges edges = edgesAt(mouse.position().toPoint());
    if (mouse.buttons() == Qt::NoButton)
        showEdgeCursor(edges);
    if (event.type() != QEvent::MouseButtonPress || mouse.button() != Qt::LeftButton || !edges)
        return false;
    return m_window.windowHandle()->startSystemResize(edges);
}

Qt::Edges FramelessWindow::Agent::edgesAt(const QPoint& position) const
{
    Qt::Edges edges;
    if (m_window.isMaximized() || m_window.isFullScreen())
        return edges;
    if (m_window.minimumWidth() < m_window.maximumWidth()) {
        edges.setFlag(Qt::LeftEdge, position.x() < kGripWidth);
        edges.setFlag(Qt::RightEdge, position.x() >= m_window.width() - kGripWidth);
    }
    if (m_window.minimumHeight() < m_window.maximumHeight()) {
        edges.setFlag(Qt::TopEdge, position.y() < kGripWidth);
        edges.setFlag(Qt::BottomEdge, position.y() >= m_window.height() - kGripWidth);
    }
    return edges;
}

void FramelessWindow::Agent::showEdgeCursor(Qt::Edges edges)
{
    // An override: the widget under the pointer has a cursor of its own.
    if (m_edgeCursorShown)
        QGuiApplication::restoreOverrideCursor();
    m_edgeCursorShown = static_cast<bool>(edges);
    if (m_edgeCursorShown)
        QGuiApplication::setOverrideCursor(cursorFor(edges));
}

FramelessWindow::FramelessWindow(QWidget* window) : QObject(window), m_agent(std::make_unique<Agent>(*window)) {}

FramelessWindow::~FramelessWindow() = default;

void FramelessWindow::setTitleBar(QWidget* titleBar)
{
    m_agent->setTitleBar(titleBar);
}

void FramelessWindow::setSystemButton(SystemButton, QWidget*)
{
    // Buttons take their own clicks here; no system frame has to know of them.
}

void FramelessWindow::setHitTestVisible(QWidget*)
{
    // A child that handles the pointer itself never lets the press through to the title bar.
}

} // namespace platform
