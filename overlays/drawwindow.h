// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/hidewhiledragging.h"
#include "overlays/strokehotkeys.h"
#include "platform/windowing/capture_exclusion.h"
#include "widgets/overlayframe.h"

#include <functional>

class BlinkingLabel;

/// The region frame: a blue border with a tool bar on top, from which red lines are drawn inside, and the recording is
/// started and stopped.
class DrawWindow : public OverlayFrame
{
    Q_OBJECT
    Q_PROPERTY(bool lockRatio READ lockRatio WRITE setLockRatio)
    Q_PROPERTY(int borderWidth READ borderWidth WRITE setBorderWidth)

public:
    explicit DrawWindow(QWidget* parent = nullptr,
                        std::function<bool(QWidget&, bool)> setExcluded = &platform::setExcludedFromCapture);
    ~DrawWindow() override;

    /// Whether resizing keeps the aspect ratio, that of the window when it was locked or given its size: rounding, and
    /// who enlarges a reported area, do not change it.
    bool lockRatio() const { return m_lockRatio; }

    /// The border is inside the window.
    int borderWidth() const { return m_borderWidth; }
    void setBorderWidth(int widthPx);

    /// Emits nothing.
    void setRecording(bool recording);
    bool isRecording() const { return m_recording; }

    /// During a recording the size is fixed, and border and tool bar are hidden while dragging.
    /// @param leavesOutBar whether the tool bar is in none of its frames, wherever it is, nor are its tool tips
    void setInsideRecorded(bool recorded, bool leavesOutBar = false);

    /// For other screens than before; the frame does it when it is moved.
    void positionToolBar() override;
    QRect toolBarGeometry() const { return toolBar().geometry(); }

    /// Until the keyboard goes elsewhere, arrow keys move the frame also while the inside is recorded. A frame that has
    /// it from before leaves them then: they may be meant for what is recorded.
    void takeKeyboard() override;

    void setTimeText(const QString& text);
    void setPaused(bool paused);

    /// Whether the tool bar has a switch for following a window, off at first.
    void offerFollowing(bool offered);

    /// Moves the area inside the border, as a drag does.
    /// @return false while the user drags the frame, or draws
    bool followTo(const QPoint& firstPixel);

public slots:
    void setLockRatio(bool lock);

signals:
    /// A drag of the tool bar moves the area inside the border (isMoving), or a drag has ended: QRect(topLeft,
    /// bottomRight), global.
    void windowGeometryChanged(bool isMoving, QPoint topLeft, QPoint bottomRight);

    void startRecording();
    /// By the recording or the close button.
    void stopRecording();
    void hideDrawWindow();
    void followToggled(bool on);

    /// Hidden while dragging, or visible again; other windows of the program near it should follow.
    void concealedChanged(bool concealed);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

    void retranslate() override;
    void dragByToolBar(const QPoint& topLeft) override;
    void endToolBarDrag() override;
    void drawingChanged() override;
    framegeometry::HitArea handleAt(const QPoint& position) const override;
    bool takesArrowKeys() const override { return !m_insideRecorded || m_isKeyboardTaken; }
    void beginDrag() override;
    void drag(framegeometry::HitArea area, const QRect& start, const QPoint& delta) override;
    void endDrag(framegeometry::HitArea area, const QPoint& position) override;
    bool isBorderVisible() const override { return !m_concealed; }
    int borderDepthPx() const override { return m_borderWidth; }
    int shapedBorderDepthPx() const override;
    void paintMixed(QPainter& painter) const override;

private:
    void buildToolBar();
    void buildTools();
    /// With the follow button, where it is offered.
    int fewToolsWidth() const;
    /// And those to undo and redo.
    int allToolsWidth() const;
    void showTools();
    QRect wantedToolBar() const;
    void noteKeyboard();
    bool isToolBarInside() const;
    void raiseToolBarInside();
    void onStartButton();
    void onCloseButton();

    void showFollowing(bool on);
    void moveOrHide(const QPoint& topLeft);
    void takeRatio();
    void resizeTo(const QRect& geometry);
    void moveWithToolBar(const QPoint& topLeft);
    void setConcealed(bool concealed);
    void reportGeometry(bool isMoving);

    qreal paintedBorderWidth() const;
    void paintBorder(QPainter& painter) const;

    QPushButton* m_drawToggleButton = nullptr;
    QPushButton* m_clearButton = nullptr;
    QPushButton* m_closeButton = nullptr;
    QPushButton* m_startButton = nullptr;
    /// Of the parts in the tool bar's layout; it does not count those that are hidden.
    QSize m_partsSize;
    /// Right of the others, where the bar is wide enough.
    QWidget* m_tools = nullptr;
    QPushButton* m_followButton = nullptr;
    /// From the frame's corner; holds while the bar is dragged.
    QPoint m_toolBarOffset;
    bool m_lockRatio = false;
    /// Width by height. Holds while the window has the size that the last drag left.
    double m_ratio = 0.0;
    QSize m_ratioSize;
    BlinkingLabel* m_timerLabel = nullptr;
    int m_borderWidth = 4;
    bool m_recording = false;
    bool m_insideRecorded = false;
    bool m_isKeyboardTaken = false;
    bool m_isBarLeftOut = false;
    bool m_areTipsLeftOut = false;
    std::function<bool(QWidget&, bool)> m_setExcluded;
    /// Only the strokes are painted.
    bool m_concealed = false;
    HideWhileDragging m_hideWhileDragging;
    StrokeHotkeys m_strokeHotkeys;
};
