// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/windowregion.h"

#include "mainwindow/capture/capturearea.h"
#include "mainwindow/capture/capturecontroller.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/recording/recordingpath.h"
#include "widgets/shownname.h"

#include <QLineEdit>

#include <utility>

WindowRegion::WindowRegion(QLineEdit& fileName, CaptureController& capture, RegionOverlays& region, QObject* parent,
                           int pollMs)
    : QObject(parent), m_fileName(fileName), m_capture(capture), m_region(region)
{
    m_poll.setInterval(pollMs);
    connect(&m_poll, &QTimer::timeout, this, &WindowRegion::follow);
    connect(&m_capture, &CaptureController::areaChosen, this, &WindowRegion::forget);
    connect(&m_region, &RegionOverlays::followToggled, this, &WindowRegion::onFollowToggled);
    connect(&m_region, &RegionOverlays::frameChanged, this, &WindowRegion::onFrameChanged);
}

void WindowRegion::choose(const QRect& area, const PickedWindow& window)
{
    if (!m_capture.chooseArea(area))
        return;
    m_window = window;
    propose(window.title);
    anchor();
    m_region.offerFollowing(true);
}

void WindowRegion::forget()
{
    m_poll.stop();
    m_region.offerFollowing(false);
    m_window = {};
    if (m_fileName.text() == std::exchange(m_proposedName, QString()))
        m_fileName.clear();
}

void WindowRegion::propose(const QString& title)
{
    // A name that the user has typed stays.
    if (!m_fileName.text().isEmpty())
        return;
    m_proposedName = cleanedRecordingName(shownName(title));
    m_fileName.setText(m_proposedName);
}

void WindowRegion::onFollowToggled(bool on)
{
    if (!on) {
        m_poll.stop();
        return;
    }
    m_poll.start();
    follow();
}

/// The user has dragged the region to another part of the window, or beside it.
void WindowRegion::onFrameChanged(bool isMoving, const QPoint& firstPixel)
{
    if (!isMoving && firstPixel != m_followed.topLeft())
        anchor();
}

void WindowRegion::anchor()
{
    m_followed = m_capture.area();
    const std::optional<QPoint> window = m_window.position ? m_window.position() : std::nullopt;
    if (window)
        m_offset = m_followed.topLeft() - *window;
}

void WindowRegion::follow()
{
    const std::optional<QPoint> window = m_window.position ? m_window.position() : std::nullopt;
    if (!window)
        return;
    if (m_capture.area().size() != m_followed.size())
        anchor();
    const QRect target = placeFor(*window);
    if (target == m_followed)
        return;
    // Before the frame reports it.
    const QRect before = std::exchange(m_followed, target);
    if (!m_region.followTo(target.topLeft()))
        m_followed = before;
}

/// Not in the desktop's first column, which a region cannot have.
QRect WindowRegion::placeFor(const QPoint& window) const
{
    const QRect kept = m_capture.keptOnScreen(QRect(window + m_offset, m_followed.size()));
    const QRect shifted = kept.translated(CaptureArea::kFirstColumn, 0);
    return kept.left() == 0 && m_capture.keptOnScreen(shifted) == shifted ? shifted : kept;
}
