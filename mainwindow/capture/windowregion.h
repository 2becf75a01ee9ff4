// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/pickedwindow.h"

#include <QObject>
#include <QRect>
#include <QTimer>

class CaptureController;
class QLineEdit;
class RegionOverlays;

/// The region over a window of another program: proposes the window's title as file name and, where the user wants it,
/// follows the window. The size stays, and the region stays on the screens, and where it is while the window is
/// minimised or hidden. A window that is gone is not followed any more. Logical pixels of the desktop. User-interface
/// thread.
class WindowRegion : public QObject
{
    Q_OBJECT

public:
    /// A frame of the video.
    static constexpr int kPollMs = 33;

    /// All of them outlive it. @param fileName the recording's, without extension
    WindowRegion(QLineEdit& fileName, CaptureController& capture, RegionOverlays& region, QObject* parent,
                 int pollMs = kPollMs);

    /// Ignored unless idle.
    void choose(const QRect& area, const PickedWindow& window);

private:
    void forget();
    void propose(const QString& title);
    void onFollowToggled(bool on);
    void onFrameChanged(bool isMoving, const QPoint& firstPixel);
    void anchor();
    std::optional<QPoint> position() const;
    void follow();
    void endWithoutWindow();
    QPoint positionFor(const QPoint& window) const;

    QLineEdit& m_fileName;
    CaptureController& m_capture;
    RegionOverlays& m_region;
    PickedWindow m_window;
    /// As it was proposed; the user may have changed it.
    QString m_proposedName;
    /// From the window's corner to the area's.
    QPoint m_offset;
    QSize m_size;
    /// Where the area is to be, and where the frame has reported it.
    QPoint m_wanted;
    QPoint m_followed;
    QTimer m_poll;
};
