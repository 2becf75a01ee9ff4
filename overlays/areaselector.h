// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QWidget>

/// Lets the user drag out a rectangle of a screen, at first of the primary one. Without a mouse the arrow keys move the
/// pointer, with Shift by single pixels, and Space or Enter marks one corner and then the other, on this screen or a
/// neighbour. The caller sets the override cursor and activates the selector; a selection, or Escape, which only hides
/// it, restores the cursor. The receiver of areaSelected() hides and deletes it.
class AreaSelector : public QWidget
{
    Q_OBJECT

public:
    explicit AreaSelector(QWidget* parent = nullptr);
    ~AreaSelector() override;

    /// Selectors on other screens, to which a drag goes on: they show their part of it.
    void setNeighbours(const QList<AreaSelector*>& neighbours) { m_neighbours = neighbours; }

    /// Dragged with the mouse, or marked with keys as far as one corner.
    bool isSelecting() const { return m_selecting; }

signals:
    /// Includes the pixels of press and release; logical pixels from the selector's top-left corner, also beyond its
    /// edges.
    void areaSelected(QRect area);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void beginAt(const QPoint& position);
    void finish();
    void movePointer(const QPoint& step);
    QPoint pointer() const;
    QPoint withinReach(const QPoint& position) const;
    void markCorner();
    void cancel();
    void showSelection();
    void showNeighboursSelection(const QRect& selection);
    static void paintSelection(QPainter& painter, const QRect& selection);
    QRect dragged() const;

    QPoint m_startPoint;
    QPoint m_currentPoint;
    QRect m_selectedRect;
    bool m_selecting = false;
    /// The first corner was marked with a key.
    bool m_isMarked = false;
    QList<AreaSelector*> m_neighbours;
    /// What is being dragged on a neighbour, in own coordinates, else null.
    QRect m_neighboursSelection;
    /// Shown below without a compositor, else null.
    QPixmap m_backdrop;
};
