// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/regionselection.h"

#include "app/sclogger.h"
#include "overlays/areaselector.h"
#include "widgets/desktopscreens.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

#include <algorithm>

RegionSelection::RegionSelection(QObject* parent, Reach reach) : QObject(parent), m_reach(reach)
{
    makeSelector();
    // Queued, because several may change together.
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &RegionSelection::followScreens, Qt::QueuedConnection);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &RegionSelection::followScreens, Qt::QueuedConnection);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &RegionSelection::followScreens,
            Qt::QueuedConnection);
}

RegionSelection::~RegionSelection()
{
    // The receivers are being destroyed as well.
    blockSignals(true);
    cancel();
}

void RegionSelection::makeSelector()
{
    auto selector = std::make_unique<AreaSelector>();
    selector->installEventFilter(this);
    connect(selector.get(), &AreaSelector::areaSelected, this,
            [this, made = selector.get()](const QRect& area) { onAreaSelected(*made, area); });
    m_selectors.push_back(std::move(selector));
}

void RegionSelection::begin()
{
    if (m_selecting)
        return;
    QGuiApplication::setOverrideCursor(Qt::CrossCursor);
    showSelectors();
}

void RegionSelection::showSelectors()
{
    m_selecting = true;
    coverScreens();
    for (const auto& selector : m_selectors) {
        selector->show();
        selector->raise();
    }
    selectorAtPointer().activateWindow();
}

AreaSelector& RegionSelection::selectorAtPointer() const
{
    const auto found = std::ranges::find_if(
        m_selectors, [](const auto& selector) { return selector->geometry().contains(QCursor::pos()); });
    return found == m_selectors.end() ? *m_selectors.front() : **found;
}

/// Each selector marks corners on its own screen then.
void RegionSelection::moveKeyboardToPointer()
{
    const bool isUnderWay =
        std::ranges::any_of(m_selectors, [](const auto& selector) { return selector->isSelecting(); });
    if (m_selecting && !isUnderWay && !desktopscreens::areContiguous())
        selectorAtPointer().activateWindow();
}

/// Without those that mirror another one.
QList<QScreen*> RegionSelection::screens() const
{
    QList<QScreen*> different;
    for (QScreen* const screen : desktopscreens::all()) {
        const bool isMirror = std::ranges::any_of(
            different, [screen](const QScreen* other) { return other->geometry().contains(screen->geometry()); });
        if (!isMirror && (different.isEmpty() || m_reach == Reach::AllScreens))
            different.append(screen);
    }
    return different;
}

/// The screens may have changed since the selectors were made.
void RegionSelection::coverScreens()
{
    const QList<QScreen*> covered = screens();
    const auto count = std::max<std::size_t>(1, static_cast<std::size_t>(covered.size()));
    while (m_selectors.size() < count)
        makeSelector();
    m_selectors.resize(count);
    for (qsizetype index = 0; index < covered.size(); ++index) {
        AreaSelector& selector = *m_selectors[static_cast<std::size_t>(index)];
        selector.setScreen(covered.at(index));
        selector.setGeometry(covered.at(index)->geometry());
        connect(covered.at(index), &QScreen::geometryChanged, this, &RegionSelection::followScreens,
                static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::UniqueConnection));
    }
    for (const auto& selector : m_selectors) {
        QList<AreaSelector*> neighbours;
        for (const auto& other : m_selectors) {
            if (other != selector && desktopscreens::areContiguous())
                neighbours.append(other.get());
        }
        selector->setNeighbours(neighbours);
    }
}

/// With other selectors: a drag that was under way has to begin again.
void RegionSelection::followScreens()
{
    if (!m_selecting || areScreensCovered())
        return;
    m_selecting = false;
    releaseSelectors();
    showSelectors();
}

bool RegionSelection::areScreensCovered() const
{
    const QList<QScreen*> covered = screens();
    return std::ranges::equal(covered, m_selectors, [](const QScreen* screen, const auto& selector) {
        return screen->geometry() == selector->geometry();
    });
}

void RegionSelection::cancel()
{
    if (!m_selecting)
        return;
    QGuiApplication::restoreOverrideCursor();
    hideSelectors();
}

void RegionSelection::hideSelectors()
{
    for (const auto& selector : m_selectors)
        selector->hide();
}

void RegionSelection::onAreaSelected(const AreaSelector& selector, const QRect& area)
{
    // Released after the selection was cancelled.
    if (!m_selecting)
        return;
    SCLogger::debug(QStringLiteral("Selected Area - x=%1, y=%2, width=%3, height=%4")
                        .arg(area.x())
                        .arg(area.y())
                        .arg(area.width())
                        .arg(area.height()));
    m_selecting = false;
    const QRect onDesktop = area.translated(selector.geometry().topLeft());
    emit selected(desktopscreens::areContiguous() ? onDesktop : onDesktop & selector.geometry());
    // The selector has restored its own cursor.
    const QCursor* const cursor = QGuiApplication::overrideCursor();
    if (cursor != nullptr && cursor->shape() == Qt::CrossCursor)
        QGuiApplication::restoreOverrideCursor();
    releaseSelectors();
}

void RegionSelection::releaseSelectors()
{
    hideSelectors();
    for (auto& selector : m_selectors) {
        selector->disconnect(this);
        selector->setNeighbours({});
        // One of them is still delivering the event that brought the selection.
        selector.release()->deleteLater();
    }
    m_selectors.clear();
}

bool RegionSelection::eventFilter(QObject* /*watched*/, QEvent* event)
{
    if (event->type() == QEvent::Hide && m_selecting && !event->spontaneous()) {
        m_selecting = false;
        hideSelectors();
        emit cancelled();
    }
    if (event->type() == QEvent::Enter)
        moveKeyboardToPointer();
    // Closed by the window manager, it leaves as with Escape.
    if (event->type() == QEvent::Close)
        cancel();
    return false;
}
