// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/windowfit.h"

#include "mainwindow/pagescroll.h"
#include "mainwindow/sidetab.h"
#include "widgets/framegeometry.h"

#include <QEvent>
#include <QGuiApplication>
#include <QResizeEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QStackedWidget>
#include <QWindow>

#include <utility>

#include <algorithm>

namespace {

QRect availableOnScreenOf(const QWidget& window)
{
    const QScreen* const screen = window.screen();
    return screen != nullptr ? screen->availableGeometry() : QRect();
}

} // namespace

WindowFit::WindowFit(const Parts& parts, std::function<QRect()> available)
    : QObject(&parts.window)
    , m_parts(parts)
    , m_tabs(parts.sideBar.findChildren<SideTab*>())
    , m_available(std::move(available))
    , m_wanted(parts.window.size())
{
    m_parts.window.installEventFilter(this);
    m_parts.pages.installEventFilter(this);
    m_parts.options.widget()->installEventFilter(this);
    for (const QScreen* const screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &WindowFit::watch);
    // Once Qt has moved the window to another one.
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WindowFit::onScreenChanged, Qt::QueuedConnection);
}

void WindowFit::watch(const QScreen* screen)
{
    connect(screen, &QScreen::availableGeometryChanged, this, &WindowFit::onScreenChanged);
}

QRect WindowFit::available() const
{
    return m_available ? m_available() : availableOnScreenOf(m_parts.window);
}

QSize WindowFit::neededSize() const
{
    const QWidget& first = *m_parts.pages.widget(0);
    const QSize options = m_parts.options.neededSize();
    QSize page = first.minimumSizeHint();
    page = {std::max(page.width(), options.width()),
            page.height() - m_parts.options.minimumSizeHint().height() + options.height()};
    for (int index = 1; index < m_parts.pages.count(); ++index)
        page = page.expandedTo(m_parts.pages.widget(index)->minimumSizeHint());
    QSize side = m_parts.sideBar.minimumSizeHint();
    const bool isFolded = !m_tabs.isEmpty() && m_tabs.constFirst()->isFolded();
    if (isFolded) {
        const auto* const widest = *std::ranges::max_element(m_tabs, {}, &SideTab::unfoldedWidth);
        side.rwidth() += widest->unfoldedWidth() - SideTab::kFoldedWidthPx;
    }
    return {side.width() + page.width(), m_parts.titleBar.minimumHeight() + std::max(side.height(), page.height())};
}

void WindowFit::fit()
{
    m_isFitPending = false;
    const QScopedValueRollback<bool> fitting(m_isFitting, true);
    const QSize needed = neededSize();
    m_wanted = m_wanted.expandedTo(needed);
    m_parts.window.setMinimumSize(needed.boundedTo(available().size()));
    resizeWindow();
    fold();
}

/// What has changed may not have been laid out yet.
void WindowFit::fitLater()
{
    if (!std::exchange(m_isFitPending, true))
        QMetaObject::invokeMethod(this, &WindowFit::fit, Qt::QueuedConnection);
}

bool WindowFit::isFree() const
{
    return (m_parts.window.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) == 0;
}

void WindowFit::resizeWindow()
{
    const QSize size = m_wanted.boundedTo(available().size());
    if (isFree() && size != m_parts.window.size())
        m_parts.window.resize(size);
}

void WindowFit::fold()
{
    const bool folded = m_parts.window.width() < neededSize().width();
    for (SideTab* const tab : m_tabs)
        tab->setFolded(folded);
}

void WindowFit::onScreenChanged()
{
    fit();
    const QRect geometry = m_parts.window.geometry();
    const QRect room = available();
    if (isFree() && m_parts.window.isVisible() && !room.contains(geometry))
        m_parts.window.move(framegeometry::moved(geometry, {}, room, 0));
}

void WindowFit::onResized(const QSize& size)
{
    // By the user; what the screen has taken is given back.
    if (!m_isFitting && isFree() && m_parts.window.isVisible() && size != m_wanted.boundedTo(available().size()))
        m_wanted = size;
    fold();
}

bool WindowFit::eventFilter(QObject* watched, QEvent* event)
{
    const bool isWindow = watched == &m_parts.window;
    if (isWindow && event->type() == QEvent::Resize)
        onResized(static_cast<const QResizeEvent*>(event)->size());
    else if (isWindow && event->type() == QEvent::Show)
        fit();
    else if (event->type() == QEvent::LayoutRequest)
        fitLater();
    if (isWindow && event->type() == QEvent::Show && !std::exchange(m_isScreenWatched, true))
        connect(m_parts.window.windowHandle(), &QWindow::screenChanged, this, &WindowFit::fitLater);
    return false;
}
