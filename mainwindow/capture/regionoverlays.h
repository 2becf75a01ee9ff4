// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPoint>
#include <QRect>

#include <memory>

class DrawWindow;
class RegionSelection;

/// What lies over the desktop while a region is chosen and recorded: the selector and the region's frame. Logical
/// pixels of the desktop. User-interface thread.
class RegionOverlays : public QObject
{
    Q_OBJECT

public:
    explicit RegionOverlays(QObject* parent);
    ~RegionOverlays() override;

    /// Lets the user drag out a region of the primary screen; regionSelected() or selectionCancelled() follows. The
    /// frame is suspended meanwhile.
    void select();
    void cancelSelection();
    bool isSelecting() const;

    /// Shows the frame around the area and takes it to the front.
    ///
    /// @return what is inside the frame: the area, or more where the frame cannot be as small
    QRect frame(const QRect& area);

    /// Moves the frame around the area.
    void place(const QRect& area);

    int borderWidth();

    void showFrame();
    void hideFrame();
    bool isFrameShown() const;

    /// Hides a frame that is shown until restoreFrame(), unless hideFrame() comes between.
    void suspendFrame();
    void restoreFrame();

    void setRecording(bool recording);
    void setTimeText(const QString& text);
    /// Keeps the frame's ratio of width to height while it is resized.
    void setLockRatio(bool lock);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void regionSelected(QRect area);
    void selectionCancelled();
    // The frame's own signals, see DrawWindow.
    void frameChanged(bool isMoving, QPoint firstPixel, QPoint lastPixel);
    void frameConcealed(bool concealed);
    /// By its button, or by the system.
    void frameClosed();
    void startRecording();
    void stopRecording();

private:
    void onSelected(const QRect& area);
    void onCancelled();
    DrawWindow& drawWindow();

    RegionSelection* m_selection;
    std::unique_ptr<DrawWindow> m_frame;
    bool m_lockRatio = false;
    bool m_isFrameSuspended = false;
};
