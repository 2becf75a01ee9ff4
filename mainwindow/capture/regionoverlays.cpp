// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/regionoverlays.h"

#include "mainwindow/capture/regionselection.h"
#include "overlays/drawwindow.h"

#include <QEvent>

#include <utility>

RegionOverlays::RegionOverlays(QObject* parent)
    : QObject(parent), m_selection(new RegionSelection(this, RegionSelection::Reach::AllScreens))
{
    connect(m_selection, &RegionSelection::selected, this, &RegionOverlays::onSelected);
    connect(m_selection, &RegionSelection::cancelled, this, &RegionOverlays::onCancelled);
}

RegionOverlays::~RegionOverlays() = default;

void RegionOverlays::select()
{
    // The frame is above the selector and would take its presses.
    suspendFrame();
    m_selection->begin();
}

void RegionOverlays::cancelSelection()
{
    m_selection->cancel();
}

bool RegionOverlays::isSelecting() const
{
    return m_selection->isSelecting();
}

void RegionOverlays::suspendFrame()
{
    const bool isSuspended = m_isFrameSuspended || isFrameShown();
    hideFrame();
    m_isFrameSuspended = isSuspended;
}

void RegionOverlays::restoreFrame()
{
    if (std::exchange(m_isFrameSuspended, false))
        showFrame();
}

void RegionOverlays::onSelected(const QRect& area)
{
    m_isFrameSuspended = false;
    emit regionSelected(area);
}

void RegionOverlays::onCancelled()
{
    restoreFrame();
    emit selectionCancelled();
}

bool RegionOverlays::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_frame.get() && event->type() == QEvent::Close)
        emit frameClosed();
    return false;
}

DrawWindow& RegionOverlays::drawWindow()
{
    if (m_frame == nullptr) {
        m_frame = std::make_unique<DrawWindow>();
        m_frame->installEventFilter(this);
        m_frame->setLockRatio(m_lockRatio);
        connect(m_frame.get(), &DrawWindow::windowGeometryChanged, this, &RegionOverlays::frameChanged);
        connect(m_frame.get(), &DrawWindow::concealedChanged, this, &RegionOverlays::frameConcealed);
        connect(m_frame.get(), &DrawWindow::hideDrawWindow, this, &RegionOverlays::frameClosed);
        connect(m_frame.get(), &DrawWindow::followToggled, this, &RegionOverlays::followToggled);
        connect(m_frame.get(), &DrawWindow::startRecording, this, &RegionOverlays::startRecording);
        connect(m_frame.get(), &DrawWindow::stopRecording, this, &RegionOverlays::stopRecording);
    }
    return *m_frame;
}

QRect RegionOverlays::moveFrame(const QRect& area)
{
    DrawWindow& window = drawWindow();
    const int border = window.borderWidth();
    window.positionAt(area.adjusted(-border, -border, border, border));
    return window.geometry().adjusted(border, border, -border, -border);
}

void RegionOverlays::raiseFrame()
{
    DrawWindow& window = drawWindow();
    window.show();
    window.raise();
    window.activateWindow();
}

int RegionOverlays::borderWidth()
{
    return drawWindow().borderWidth();
}

QSize RegionOverlays::smallestArea()
{
    const int border = borderWidth();
    return drawWindow().minimumSize() - QSize(2 * border, 2 * border);
}

void RegionOverlays::showFrame()
{
    drawWindow().show();
}

void RegionOverlays::hideFrame()
{
    m_isFrameSuspended = false;
    if (m_frame != nullptr)
        m_frame->hide();
}

void RegionOverlays::positionToolBar()
{
    if (m_frame != nullptr)
        m_frame->positionToolBar();
}

bool RegionOverlays::isFrameShown() const
{
    return m_frame != nullptr && m_frame->isVisible();
}

QRect RegionOverlays::frameBar() const
{
    return isFrameShown() ? m_frame->toolBarGeometry() : QRect();
}

void RegionOverlays::setRecording(bool recording, bool leavesOutBar)
{
    if (m_frame == nullptr)
        return;
    m_frame->setRecording(recording);
    m_frame->setInsideRecorded(recording, leavesOutBar);
}

void RegionOverlays::setPaused(bool paused)
{
    if (m_frame != nullptr)
        m_frame->setPaused(paused);
}

void RegionOverlays::offerFollowing(bool offered)
{
    if (m_frame != nullptr)
        m_frame->offerFollowing(offered);
}

bool RegionOverlays::followTo(const QPoint& firstPixel)
{
    return m_frame != nullptr && m_frame->followTo(firstPixel);
}

void RegionOverlays::setTimeText(const QString& text)
{
    if (m_frame != nullptr)
        m_frame->setTimeText(text);
}

void RegionOverlays::setLockRatio(bool lock)
{
    m_lockRatio = lock;
    if (m_frame != nullptr)
        m_frame->setLockRatio(lock);
}
