#pragma once

#include "overlays/unseenmove.h"
#include "widgets/overlayframe.h"

class QLabel;

/// The frame that marks the region to be recorded: a blue border with a tool bar on top of it, from which red lines are
/// drawn on what is inside, the recording is started and stopped, and its time is read.
class DrawWindow : public OverlayFrame
{
    Q_OBJECT
    Q_PROPERTY(bool lockRatio READ lockRatio WRITE setLockRatio)
    Q_PROPERTY(int borderWidth READ borderWidth WRITE setBorderWidth)

public:
    explicit DrawWindow(QWidget* parent = nullptr);
    ~DrawWindow() override;

    /// Whether resizing keeps the ratio of width to height. Off at first.
    bool lockRatio() const { return m_lockRatio; }

    /// How thick the border is, in logical pixels; it lies inside the window. 4 at first.
    int borderWidth() const { return m_borderWidth; }
    void setBorderWidth(int widthPx);

    /// Shows whether a recording runs. Emits nothing.
    void setRecording(bool recording);
    bool isRecording() const { return m_recording; }

    /// Whether what is inside is being recorded right now. The frame then keeps out of the picture, whose size is
    /// settled and which follows a drag of the tool bar: its edges do not resize it, and border and tool bar are not to
    /// be seen while it moves. False at first.
    void setInsideRecorded(bool recorded);

    /// Shows the elapsed time, ready to be read ("00:00:00").
    void setTimeText(const QString& text);

public slots:
    void setLockRatio(bool lock) { m_lockRatio = lock; }

signals:
    /// The area inside the border changed, by a drag of the tool bar (isMoving is true while it lasts, and false once
    /// at its end) or at the end of a drag of the frame.
    ///
    /// In global coordinates. topLeft is the first pixel inside the border, bottomRight the last one, as the corners of
    /// a QRect are: QRect(topLeft, bottomRight) is the area.
    void windowGeometryChanged(bool isMoving, QPoint topLeft, QPoint bottomRight);

    /// The recording button was pressed while no recording ran.
    void startRecording();

    /// The recording button, or the close button, was pressed while a recording ran.
    void stopRecording();

    /// The close button was pressed; the window hides itself.
    void hideDrawWindow();

    /// The frame has hidden itself for a move while its inside is recorded, or shows itself again. What else stands
    /// where it may go had better do the same.
    void concealedChanged(bool concealed);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

    void retranslate() override;
    void positionToolBar() override;
    void dragByToolBar(const QPoint& topLeft) override;
    void endToolBarDrag() override { m_unseenMove.end(); }
    framegeometry::HitArea handleAt(const QPoint& position) const override;
    void drag(framegeometry::HitArea area, const QRect& start, const QPoint& delta) override;
    void endDrag(framegeometry::HitArea area, const QPoint& position) override;
    bool isBorderVisible() const override { return !m_concealed; }
    int borderDepthPx() const override { return m_borderWidth; }
    void paintMixed(QPainter& painter) const override;

private:
    void buildToolBar();
    void onStartButton();
    void onCloseButton();

    void moveWithToolBar(const QPoint& topLeft);
    void setConcealed(bool concealed);
    const QScreen* screenOfDrag() const;
    void reportGeometry(bool isMoving);

    void paintBorder(QPainter& painter) const;

    QPushButton* m_drawToggleButton = nullptr;
    QPushButton* m_clearButton = nullptr;
    QPushButton* m_closeButton = nullptr;
    QPushButton* m_startButton = nullptr;
    bool m_lockRatio = false;
    QLabel* m_timerLabel = nullptr;
    int m_borderWidth = 4;
    bool m_recording = false;
    bool m_insideRecorded = false;
    /// Nothing but the strokes is to be seen.
    bool m_concealed = false;
    UnseenMove m_unseenMove;
};
