// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/windowing/window_opening.h"
#include "widgets/framegeometry.h"
#include "widgets/keyboardwindow.h"
#include "widgets/penstrokes.h"

#include <QColor>
#include <QPoint>
#include <QRect>
#include <QRegion>
#include <QWidget>

#include <memory>

class QHBoxLayout;
class QPushButton;

/// A frame over the desktop that the user moves and resizes, also with arrow keys, with a pen to draw inside and a tool
/// bar, a window of its own that show(), hide() and raise() of this class include. The pointer reaches what is below
/// the inside while the pen is off. Logical pixels of the desktop.
class OverlayFrame : public QWidget, public KeyboardWindow
{
    Q_OBJECT

public:
    ~OverlayFrame() override;

    /// Instead of setGeometry() before the frame is shown, on whichever screen that is.
    void positionAt(const QRect& geometry);

    bool offersKeyboard() const override { return isVisible(); }
    bool hasKeyboard() const override { return isActiveWindow() || m_toolBar->isActiveWindow(); }
    /// From the frame Tab leads to the tool bar.
    void takeKeyboard() override { activateWindow(); }

public slots:
    void hide();
    void show();
    void raise();

protected:
    static constexpr QColor kBorderColor{0, 122, 204};

    OverlayFrame(const QSize& minimumSize, const PenStrokes& strokes, QWidget* parent);

    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    /// The arrow keys; Ctrl+Z, Ctrl+Shift+Z and Ctrl+Y, while the pen is on.
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

    virtual void retranslate();
    virtual void positionToolBar() = 0;
    virtual void dragByToolBar(const QPoint& topLeft) { move(topLeft); }
    virtual void endToolBarDrag() {}
    virtual bool takesArrowKeys() const { return true; }
    /// Before a drag by the pointer or by keys.
    virtual void beginDrag() {}
    /// What a press there drags while the pen is off.
    virtual framegeometry::HitArea handleAt(const QPoint& position) const = 0;
    virtual void drag(framegeometry::HitArea area, const QRect& start, const QPoint& delta) = 0;
    virtual void endDrag(framegeometry::HitArea /*area*/, const QPoint& /*position*/) {}
    virtual bool takesPointer() const { return isDrawMode(); }
    virtual bool isBorderVisible() const = 0;
    /// How far the border reaches into the window.
    virtual int borderDepthPx() const = 0;
    /// How far the window's shape reaches there.
    virtual int shapedBorderDepthPx() const { return borderDepthPx(); }
    /// Where the system mixes translucent windows.
    virtual void paintMixed(QPainter& painter) const = 0;

    /// What the border leaves open, in own coordinates.
    QRect inside() const;
    QWidget& toolBar() const { return *m_toolBar; }
    bool isToolBarDragged() const { return m_toolBarDragging; }
    /// By the tool bar, or by a press on the frame.
    bool isDragged() const { return m_toolBarDragging || m_pressed; }
    QHBoxLayout& toolBarLayout() const;

    /// Its icon, if any, lights up under the pointer unless the button is checked.
    QPushButton* addButton(const QString& name, const QString& icon);
    /// The same, not in the tool bar's layout.
    QPushButton* makeButton(const QString& name, const QString& icon);
    /// For strokes; children of the tool bar, not in its layout. On where there is a step and the pen is on.
    QPushButton& undoButton() const { return *m_undoButton; }
    QPushButton& redoButton() const { return *m_redoButton; }
    /// Tool tip and accessible name.
    static void describe(QPushButton& button, const QString& text);

    void setDrawMode(bool on, QPushButton& penButton);
    bool isDrawMode() const { return m_drawMode; }
    void clearStrokes();
    /// Also forgets what could be undone.
    void resetStrokes();
    /// What was cleared or undone does not come back.
    void forgetHiddenStrokes();
    void undoStroke();
    void redoStroke();
    /// The strokes, or whether the pen is on.
    virtual void drawingChanged();
    const PenStrokes& strokes() const { return m_strokes; }
    /// Includes the pen.
    framegeometry::HitArea hitAreaAt(const QPoint& position) const;

    /// Asks the system again.
    void updateCompositing();
    bool isCompositing() const { return m_isCompositing; }
    /// Call when what the window paints or whether it takes the pointer has changed.
    void updateOpening();
    /// Takes the pointer in that region by a colour that nobody sees.
    void fillForPointer(QPainter& painter, const QRegion& region) const;

private:
    void setToolBarVisible(bool visible);
    void moveOrResize(framegeometry::HitArea area, const QPoint& step);
    static void showHoverIcon(QObject& watched, bool hovered);
    bool filterToolBar(const QMouseEvent& event);
    bool filterKey(QObject& watched, QKeyEvent& event);
    void extendStroke(const QPointF& position);
    void finishStroke(const QPointF& position);
    void showStrokes();
    QRegion paintedRegion() const;
    void paintCut(QPainter& painter) const;

    bool m_drawMode = false;
    PenStrokes m_strokes;
    /// Global; from the frame while the tool bar is dragged.
    QPoint m_dragStartPos;
    QRect m_dragStartGeometry;
    framegeometry::HitArea m_resizeRegion = framegeometry::HitArea::None;
    bool m_pressed = false;
    std::unique_ptr<QWidget> m_toolBar;
    QPushButton* m_undoButton;
    QPushButton* m_redoButton;
    bool m_toolBarDragging = false;
    bool m_isCompositing = true;
    platform::WindowOpening m_opening;
};
