// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/windowhighlighter.h"

#include "app/sclogger.h"
#include "platform/input/window_hotkey.h"
#include "platform/windowing/overlay_window.h"
#include "widgets/messagebox.h"
#include "widgets/stylesheet.h"
#include "widgets/windowmask.h"

#include <QApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMetaMethod>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <utility>

#include <algorithm>
#include <cmath>

namespace {

enum class PickingKey
{
    None,
    Next,
    Previous,
    Pick
};

PickingKey meaningOf(const QKeyEvent& key)
{
    switch (key.key()) {
    case Qt::Key_Tab:
    case Qt::Key_Right:
    case Qt::Key_Down:
        return PickingKey::Next;
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Up:
        return PickingKey::Previous;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return PickingKey::Pick;
    default:
        return PickingKey::None;
    }
}

/// Where keys mean something else: a menu, a dialog, a field for text.
bool keepsItsKeys(const QWidget& widget)
{
    return QApplication::activePopupWidget() != nullptr || QApplication::activeModalWidget() != nullptr ||
           widget.testAttribute(Qt::WA_InputMethodEnabled);
}

constexpr int kUpdateIntervalMs = 100;
constexpr int kButtonPollMs = 20;
constexpr int kOutlinePx = 2;
constexpr QColor kTint(255, 0, 0, 30);
/// The outline and the soft edge within it.
constexpr int kRingPx = 3;

int rounded(double value)
{
    return static_cast<int>(std::lround(value));
}

/// A screen's top-left corner is the same in logical and physical pixels.
QRect physicalGeometry(const QScreen& screen)
{
    const QSizeF size = QSizeF(screen.geometry().size()) * screen.devicePixelRatio();
    return {screen.geometry().topLeft(), QSize(rounded(size.width()), rounded(size.height()))};
}

const QScreen* screenHolding(const QPoint& physical)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    const auto found = std::ranges::find_if(
        screens, [&physical](const QScreen* screen) { return physicalGeometry(*screen).contains(physical); });
    return found != screens.end() ? *found : QGuiApplication::primaryScreen();
}

} // namespace

WindowHighlighter* WindowHighlighter::s_instance = nullptr;

WindowHighlighter::WindowHighlighter(QWidget* parent) : WindowHighlighter(PickingDesktop::ofTheSystem(), parent) {}

WindowHighlighter::WindowHighlighter(std::unique_ptr<PickingDesktop> desktop, QWidget* parent)
    : QWidget(parent), m_desktop(std::move(desktop)), m_updateTimer(new QTimer(this))
{
    if (s_instance != nullptr)
        qFatal("WindowHighlighter already instantiated");
    s_instance = this;
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowTransparentForInput);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_NoMousePropagation);
    installHook();
    m_updateTimer->setInterval(kUpdateIntervalMs);
    connect(m_updateTimer, &QTimer::timeout, this, &WindowHighlighter::onTimer);
    m_desktop->registerHotkey(*this, [this] { setVisible(!isVisible()); });
    m_desktop->registerCancelKey([this] { cancel(); });
    platform::prepareAsOverlay(*this);
}

WindowHighlighter::~WindowHighlighter()
{
    m_updateTimer->stop();
    hide();
    m_desktop->removeMouseHook();
    m_updateTimer->stop();
    m_desktop->unregisterHotkey();
    s_instance = nullptr;
}

void WindowHighlighter::installHook()
{
    const unsigned long error = m_desktop->installMouseHook(
        [this](platform::MouseHook::Event event, const QPoint& position) { onMouse(event, position); });
    if (error == 0)
        return;
    messagebox::critical(nullptr, tr("Error"), tr("Failed to install mouse hook (Error: %1)").arg(error));
    // Posted, because quit() has no effect before the event loop runs.
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

void WindowHighlighter::setVisible(bool visible)
{
    if (visible && !isVisible()) {
        m_hoveredWindow = 0;
        cutOut();
    }
    if (visible)
        m_updateTimer->start();
    else
        m_updateTimer->stop();
    // Shown by the hotkey alone it picks nothing.
    takeKeys(visible && isSignalConnected(QMetaMethod::fromSignal(&WindowHighlighter::windowClicked)));
    m_desktop->setInputWanted(visible);
    QWidget::setVisible(visible);
}

void WindowHighlighter::takeKeys(bool taken)
{
    if (taken)
        qApp->installEventFilter(this);
    else
        qApp->removeEventFilter(this);
}

void WindowHighlighter::onMouse(platform::MouseHook::Event event, const QPoint& position)
{
    if (!isVisible())
        return;
    if (event != platform::MouseHook::Event::Move) {
        onClick(event, position);
        return;
    }
    const platform::NativeWindow window = m_desktop->windowAt(position);
    if (window == m_hoveredWindow)
        return;
    if (window != 0 && !m_desktop->isPickable(window)) {
        // The menu is about the window before it.
        if (QApplication::activePopupWidget() == nullptr)
            hoverNothing();
        return;
    }
    hover(window);
}

bool WindowHighlighter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType() || keepsItsKeys(static_cast<QWidget&>(*watched)))
        return false;
    return onKey(static_cast<const QKeyEvent&>(*event));
}

/// @return whether it was meant for this
bool WindowHighlighter::onKey(const QKeyEvent& key)
{
    const PickingKey meaning = meaningOf(key);
    const bool isForHere = meaning != PickingKey::None && (meaning != PickingKey::Pick || m_hoveredWindow != 0);
    if (!isForHere)
        return false;
    if (meaning != PickingKey::Pick)
        highlightNext(meaning == PickingKey::Next);
    else if (!key.isAutoRepeat())
        pickHighlighted();
    return true;
}

void WindowHighlighter::highlightNext(bool forwards)
{
    std::vector<platform::NativeWindow> windows = m_desktop->windows();
    std::erase_if(windows, [this](platform::NativeWindow window) { return !m_desktop->isPickable(window); });
    if (windows.empty())
        return;
    if (!forwards)
        std::ranges::reverse(windows);
    const auto current = std::ranges::find(windows, m_hoveredWindow);
    const bool isLast = current == windows.end() || std::next(current) == windows.end();
    hover(isLast ? windows.front() : *std::next(current));
}

/// A covered window would be recorded with what covers it.
void WindowHighlighter::pickHighlighted()
{
    const std::optional<QRect> rect = m_desktop->rectOf(m_hoveredWindow);
    if (!rect)
        return;
    m_desktop->activate(m_hoveredWindow);
    emit windowClicked(*rect);
}

void WindowHighlighter::hover(platform::NativeWindow window)
{
    m_hoveredWindow = window;
    reposition();
    cutOut();
    update();
}

/// Goes on, in contrast to a window that is gone.
void WindowHighlighter::hoverNothing()
{
    m_hoveredWindow = 0;
    cutOut();
    update();
}

void WindowHighlighter::cancel()
{
    if (!isVisible())
        return;
    setVisible(false);
    emit cancelled();
}

void WindowHighlighter::onClick(platform::MouseHook::Event event, const QPoint& position)
{
    if (m_hoveredWindow == 0)
        return;
    const std::optional<QRect> rect = m_desktop->rectOf(m_hoveredWindow);
    if (!rect)
        return;
    emit windowClicked(*rect);
    // Not within the hook: the desktop would wait for the menu, and the system removes slow hooks.
    if (event == platform::MouseHook::Event::RightPress)
        QMetaObject::invokeMethod(
            this, [this, position] { openMenu(position); }, Qt::QueuedConnection);
}

void WindowHighlighter::onTimer()
{
    if (isVisible() && m_hoveredWindow != 0)
        reposition();
}

void WindowHighlighter::reposition()
{
    if (m_hoveredWindow == 0 || !m_desktop->exists(m_hoveredWindow)) {
        setVisible(false);
        return;
    }
    const std::optional<QRect> rect = m_desktop->rectOf(m_hoveredWindow);
    if (!rect)
        return;
    const QRect logical = logicalRectOnItsScreen(*rect);
    const bool isResized = logical.size() != size();
    setGeometry(logical);
    if (isResized)
        cutOut();
    if (!isVisible())
        setVisible(true);
}

/// Without a compositor transparent pixels would be black.
void WindowHighlighter::cutOut()
{
    if (platform::isCompositing())
        clearMask();
    else if (m_hoveredWindow == 0)
        setMask(maskOfNothing());
    else
        setMask(QRegion(rect()) - rect().adjusted(kRingPx, kRingPx, -kRingPx, -kRingPx));
}

void WindowHighlighter::openMenu(const QPoint& position)
{
    // The window below has the mouse until the release, and the menu could not grab it.
    if (m_desktop->isMouseButtonDown()) {
        QTimer::singleShot(kButtonPollMs, this, [this, position] { openMenu(position); });
        return;
    }
    const QPointer<WindowHighlighter> self(this);
    QMenu menu;
    applyStyleSheet(menu, QStringLiteral(":/res/style/context-menu.qss"));
    // Neither does what its text says.
    const QAction* const informing = menu.addAction(tr("Capture Window"));
    const QAction* const logging = menu.addAction(tr("Close Highlighter"));
    const QAction* const chosen = menu.exec(logicalRectOnItsScreen(QRect(position, QSize(1, 1))).topLeft());
    if (self == nullptr || chosen == nullptr)
        return;
    if (chosen == informing)
        showWindowInformation();
    else if (chosen == logging && m_hoveredWindow != 0)
        SCLogger::debug(QStringLiteral("Capture window functionality not implemented yet"));
}

void WindowHighlighter::showWindowInformation()
{
    if (m_hoveredWindow == 0 || !m_desktop->exists(m_hoveredWindow))
        return;
    const std::optional<QRect> rect = m_desktop->rectOf(m_hoveredWindow);
    if (!rect)
        return;
    messagebox::information(this, tr("Window Info"),
                            tr("Window Position: (%1, %2)\nSize: %3 x %4")
                                .arg(rect->left())
                                .arg(rect->top())
                                .arg(rect->width())
                                .arg(rect->height()));
}

QRect WindowHighlighter::logicalRect(const QRect& physical, const QPoint& screenOrigin, double devicePixelRatio)
{
    const auto logical = [devicePixelRatio](int distance) { return rounded(distance / devicePixelRatio); };
    const QPoint inside = physical.topLeft() - screenOrigin;
    return {screenOrigin + QPoint(logical(inside.x()), logical(inside.y())),
            QSize(logical(physical.width()), logical(physical.height()))};
}

QRect WindowHighlighter::logicalRectOnItsScreen(const QRect& physical)
{
    const QScreen* const screen = screenHolding(physical.topLeft());
    return logicalRect(physical, screen->geometry().topLeft(), screen->devicePixelRatio());
}

void WindowHighlighter::paintEvent(QPaintEvent* /*event*/)
{
    if (m_hoveredWindow == 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::red, kOutlinePx, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.setBrush(kTint);
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

bool WindowHighlighter::nativeEvent(const QByteArray& eventType, void* message, qintptr* result)
{
    if (!platform::WindowHotkey::isMessage(eventType, message))
        return false;
    setVisible(!isVisible());
    *result = 0;
    return true;
}
