// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/regionselection.h"

#include "app/sclogger.h"
#include "overlays/areaselector.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>

RegionSelection::RegionSelection(QObject* parent) : QObject(parent)
{
    makeSelector();
}

RegionSelection::~RegionSelection()
{
    // The receivers are being destroyed as well.
    blockSignals(true);
    cancel();
}

void RegionSelection::makeSelector()
{
    m_selector = std::make_unique<AreaSelector>();
    m_selector->installEventFilter(this);
    connect(m_selector.get(), &AreaSelector::areaSelected, this, &RegionSelection::onAreaSelected);
}

void RegionSelection::begin()
{
    if (m_selecting)
        return;
    if (m_selector == nullptr)
        makeSelector();
    m_selecting = true;
    QGuiApplication::setOverrideCursor(Qt::CrossCursor);
    // The screen may have changed since the selector was made.
    if (const QScreen* const screen = QGuiApplication::primaryScreen())
        m_selector->setGeometry(screen->geometry());
    m_selector->show();
    m_selector->raise();
    m_selector->activateWindow();
}

void RegionSelection::cancel()
{
    if (!m_selecting)
        return;
    QGuiApplication::restoreOverrideCursor();
    m_selector->hide();
}

void RegionSelection::onAreaSelected(const QRect& area)
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
    emit selected(area.translated(m_selector->geometry().topLeft()));
    // The selector has restored its own cursor.
    const QCursor* const cursor = QGuiApplication::overrideCursor();
    if (cursor != nullptr && cursor->shape() == Qt::CrossCursor)
        QGuiApplication::restoreOverrideCursor();
    m_selector->hide();
    m_selector->disconnect(this);
    // It is still delivering the event that brought the selection.
    m_selector.release()->deleteLater();
}

bool RegionSelection::eventFilter(QObject* /*watched*/, QEvent* event)
{
    if (event->type() == QEvent::Hide && m_selecting && !event->spontaneous()) {
        m_selecting = false;
        emit cancelled();
    }
    // Closed by the window manager, it leaves as with Escape.
    if (event->type() == QEvent::Close)
        cancel();
    return false;
}
