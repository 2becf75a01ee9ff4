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

void WindowRegion::onFrameChanged(bool isMoving, const QPoint& firstPixel)
{
    if (firstPixel == m_wanted)
        m_followed = firstPixel;
    else if (!isMoving)
        // The user has dragged the region to another part of the window, or beside it.
        anchor();
}

void WindowRegion::anchor()
{
    const QRect area = m_capture.area();
    m_wanted = m_followed = area.topLeft();
    m_size = area.size();
    if (const std::optional<QPoint> window = position())
        m_offset = m_followed - *window;
}

std::optional<QPoint> WindowRegion::position() const
{
    return m_window.position ? m_window.position() : std::nullopt;
}

/// A frame that has not moved yet, or is in the user's hand, is asked again.
void WindowRegion::follow()
{
    const std::optional<QPoint> window = position();
    if (!window) {
        endWithoutWindow();
        return;
    }
    if (m_capture.area().size() != m_size)
        anchor();
    const QPoint wanted = positionFor(*window);
    if (wanted == m_followed)
        return;
    // Before the frame reports it.
    m_wanted = wanted;
    m_region.followTo(wanted);
}

/// One that is minimised or hidden comes back.
void WindowRegion::endWithoutWindow()
{
    if (m_window.exists && m_window.exists())
        return;
    m_poll.stop();
    m_region.offerFollowing(false);
}

/// Not in the desktop's first column, which a region cannot have.
QPoint WindowRegion::positionFor(const QPoint& window) const
{
    const QRect kept = m_capture.keptOnScreen(QRect(window + m_offset, m_size));
    const QRect shifted = kept.translated(CaptureArea::kFirstColumn, 0);
    return kept.left() == 0 && m_capture.keptOnScreen(shifted) == shifted ? shifted.topLeft() : kept.topLeft();
}
