// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/hidewhiledragging.h"
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

    /// Whether resizing keeps the aspect ratio.
    bool lockRatio() const { return m_lockRatio; }

    /// The border lies inside the window.
    int borderWidth() const { return m_borderWidth; }
    void setBorderWidth(int widthPx);

    /// Shows whether a recording runs. Emits nothing.
    void setRecording(bool recording);
    bool isRecording() const { return m_recording; }

    /// Whether the inside is being recorded. Its size is then fixed, and border and tool bar are hidden while dragging.
    void setInsideRecorded(bool recorded);

    /// Shows the elapsed time as formatted ("00:00:00").
    void setTimeText(const QString& text);

public slots:
    void setLockRatio(bool lock) { m_lockRatio = lock; }

signals:
    /// A drag of the tool bar moves (isMoving), or any drag has moved or resized, the area inside the border:
    /// QRect(topLeft, bottomRight), in global coordinates.
    void windowGeometryChanged(bool isMoving, QPoint topLeft, QPoint bottomRight);

    void startRecording();
    /// The recording or the close button was pressed during a recording.
    void stopRecording();
    void hideDrawWindow();

    /// The frame is hidden while dragging, or visible again. Other windows of the program near it should follow.
    void concealedChanged(bool concealed);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

    void retranslate() override;
    void positionToolBar() override;
    void dragByToolBar(const QPoint& topLeft) override;
    void endToolBarDrag() override { m_hideWhileDragging.end(); }
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
    /// Only the strokes are painted.
    bool m_concealed = false;
    HideWhileDragging m_hideWhileDragging;
};
