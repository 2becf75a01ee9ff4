#pragma once

#include "overlays/unseenmove.h"
#include "platform/windowing/window_opening.h"
#include "widgets/framegeometry.h"

#include <QList>
#include <QPoint>
#include <QPolygonF>
#include <QRect>
#include <QRegion>
#include <QWidget>

#include <memory>

class QLabel;
class QPushButton;

/// The frame that marks the region to be recorded: a blue border that the user moves and resizes, with a tool bar on
/// top of it from which red lines are drawn on what is inside, the recording is started and stopped, and its time is
/// read. The inside is open: it shows what lies below, and the pointer reaches that, except while the pen is on.
///
/// The tool bar is a window of its own that follows the frame, so the frame has to be shown and hidden with show() and
/// hide() of this class. All coordinates are logical pixels of the desktop.
class DrawWindow : public QWidget
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
    /// Hides the frame with its tool bar, QWidget::hide() the frame alone.
    void hide();

    /// Shows the frame with its tool bar, which takes its place on top of it.
    void show();

    void setLockRatio(bool lock);

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
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void buildToolBar();
    QPushButton* addButton(const QString& name, const QString& icon);
    void loadStyleSheet();
    void retranslate();
    void setPartsVisible(bool visible);
    void placeToolBar();

    void setDrawing(bool drawing);
    void clearDrawing();
    void onStartButton();
    void onCloseButton();

    bool filterToolBar(const QMouseEvent& event);
    void dragByToolBar(const QPoint& cursor);
    void showHoverIcon(const QObject* button, bool hovered);
    void setConcealed(bool concealed);
    void endToolBarDrag();

    const QScreen* screenOfDrag() const;
    framegeometry::HitArea hitAreaAt(const QPoint& place) const;
    void drag(const QMouseEvent& event, const QRect& available);
    void draw(const QPointF& place);
    void dropCurrentStroke();
    void reportGeometry(bool isMoving);

    QMargins borders() const;
    QRegion paintedRegion() const;
    void updateOpening();
    void paintMixed(QPainter& painter) const;
    void paintCut(QPainter& painter) const;
    void paintBorder(QPainter& painter) const;
    void paintStrokes(QPainter& painter) const;

    bool m_drawingInProgress = false;
    bool m_drawing = false;
    QList<QPolygonF> m_strokes;
    QPolygonF m_currentStroke;
    /// What all strokes cover.
    QRegion m_strokesRegion;
    framegeometry::HitArea m_dragMode = framegeometry::HitArea::None;
    /// Where the pointer went down, globally; while the tool bar is dragged, how far it is from the frame's corner.
    QPoint m_pressPoint;
    QPushButton* m_drawToggleButton = nullptr;
    QPushButton* m_clearButton = nullptr;
    QPushButton* m_closeButton = nullptr;
    QPushButton* m_startButton = nullptr;
    std::unique_ptr<QWidget> m_toolBar;
    bool m_toolBarDragging = false;
    QRect m_startGeometry;
    bool m_lockRatio = false;
    QLabel* m_timerLabel = nullptr;
    int m_borderWidth = 4;
    bool m_recording = false;
    /// Whether the system mixed the window with what lies below it when it was last asked.
    bool m_isCompositing = true;
    platform::WindowOpening m_opening;
    bool m_insideRecorded = false;
    /// Nothing but the strokes is to be seen.
    bool m_concealed = false;
    UnseenMove m_unseenMove;
};
