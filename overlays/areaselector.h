// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QWidget>

/// Lets the user drag out a rectangle of the primary screen. The caller sets the override cursor and activates the
/// selector; a selection, or Escape, which only hides it, restores the cursor. The receiver of areaSelected() hides and
/// deletes it.
class AreaSelector : public QWidget
{
    Q_OBJECT

public:
    explicit AreaSelector(QWidget* parent = nullptr);
    ~AreaSelector() override;

signals:
    /// Includes the pixels of press and release; logical pixels from the primary screen's top-left corner.
    void areaSelected(QRect area);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void paintSelection(QPainter& painter) const;
    QRect dragged() const;

    QPoint m_startPoint;
    QPoint m_currentPoint;
    QRect m_selectedRect;
    bool m_selecting = false;
    /// Shown below without a compositor, else null.
    QPixmap m_backdrop;
};
