// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPoint>
#include <QRect>

#include <memory>

class DrawWindow;
class RegionSelection;

/// The selector and the frame of the recorded region. Logical pixels of the desktop. User-interface thread.
class RegionOverlays : public QObject
{
    Q_OBJECT

public:
    explicit RegionOverlays(QObject* parent);
    ~RegionOverlays() override;

    /// Lets the user drag out a region; regionSelected() or selectionCancelled() follows. Suspends the frame.
    void select();
    void cancelSelection();
    bool isSelecting() const;

    /// Around the area, also while the frame is not shown.
    /// @return what is inside: the area, or more where the frame cannot be as small
    QRect moveFrame(const QRect& area);

    /// Shows the frame, in front, and activates it.
    void raiseFrame();

    int borderWidth();

    /// What the frame is around at its smallest.
    QSize smallestArea();

    void showFrame();
    void hideFrame();
    /// Where it can be reached on the present screens.
    void positionToolBar();
    bool isFrameShown() const;
    /// Of a frame that is shown, else empty.
    QRect frameBar() const;

    /// Hides a frame that is shown until restoreFrame(), which a hideFrame() in between cancels.
    void suspendFrame();
    void restoreFrame();

    /// @param leavesOutBar as in DrawWindow
    void setRecording(bool recording, bool leavesOutBar);
    void setPaused(bool paused);
    void setTimeText(const QString& text);
    void setLockRatio(bool lock);

    /// As in DrawWindow.
    void offerFollowing(bool offered);
    bool followTo(const QPoint& firstPixel);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void regionSelected(QRect area);
    void selectionCancelled();
    /// As in DrawWindow.
    void frameChanged(bool isMoving, QPoint firstPixel, QPoint lastPixel);
    void frameConcealed(bool concealed);
    /// By its button, or by the system.
    void frameClosed();
    void startRecording();
    void stopRecording();
    void followToggled(bool on);

private:
    void onSelected(const QRect& area);
    void onCancelled();
    DrawWindow& drawWindow();

    RegionSelection* m_selection;
    std::unique_ptr<DrawWindow> m_frame;
    bool m_lockRatio = false;
    bool m_isFrameSuspended = false;
};
