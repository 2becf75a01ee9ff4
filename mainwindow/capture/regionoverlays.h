#pragma once

#include <QObject>
#include <QPoint>
#include <QRect>

#include <memory>

class DrawWindow;
class RegionSelection;

/// What lies over the desktop while a region is chosen and recorded: the selector with which it is dragged out and the
/// frame around it. Logical pixels of the desktop throughout. User-interface thread.
class RegionOverlays : public QObject
{
    Q_OBJECT

public:
    explicit RegionOverlays(QObject* parent);
    ~RegionOverlays() override;

    /// Lets the user drag out a region of the primary screen; regionSelected() or selectionCancelled() follows. A frame
    /// that is shown makes room meanwhile, and comes back when the selection is given up.
    void select();

    /// Gives a selection up as the user does with Escape.
    void cancelSelection();
    bool isSelecting() const;

    /// Shows the frame around the area and takes it to the front.
    ///
    /// @return what the frame holds then: the area, or more where the frame cannot be as small
    QRect frame(const QRect& area);

    /// Puts the frame around the area as it is, shown or not, in front or not.
    void place(const QRect& area);

    /// The border around the framed area.
    int borderWidth();

    void showFrame();
    void hideFrame();

    /// Hides a frame that is shown until bringFrameBack(), unless hideFrame() comes between.
    void setFrameAside();
    void bringFrameBack();

    bool isFrameShown() const;

    /// The frame's mirror of the recording.
    void setRecording(bool recording);
    void setTimeText(const QString& text);
    /// Keeps the frame's ratio of width to height while it is resized.
    void setLockRatio(bool lock);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The user has dragged out a region.
    void regionSelected(QRect area);
    /// The user has given the selection up.
    void selectionCancelled();
    /// The first and the last pixel inside the frame; isMoving while it is being moved by its tool bar.
    void frameChanged(bool isMoving, QPoint firstPixel, QPoint lastPixel);
    /// While it is recorded the frame is not to be seen when it moves; nothing else should be where it may go.
    void frameConcealed(bool concealed);
    /// The frame was closed by the user.
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
    /// The frame is to come back.
    bool m_frameSetAside = false;
};
