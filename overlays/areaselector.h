#pragma once

#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QWidget>

/// The overlay with which the user drags out the rectangle of the primary screen that is to be recorded. It darkens the
/// screen, shows the rectangle with its size while it is dragged, and reports it once, on release.
///
/// Who shows it sets the application's override cursor before and makes it the active window, so that Escape reaches
/// it; the selector restores that cursor when a selection ends and on Escape, which only hides it. After a selection it
/// stays visible: the receiver of areaSelected() hides and deletes it.
class AreaSelector : public QWidget
{
    Q_OBJECT

public:
    explicit AreaSelector(QWidget* parent = nullptr);
    ~AreaSelector() override;

signals:
    /// The user let go of the button. area is in the selector's own coordinates, logical pixels with the primary
    /// screen's top-left corner at (0, 0), and at least 1 x 1: its corners are the pixels of press and release.
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
    /// What the screen showed before the selector; null where the system mixes the selector with it.
    QPixmap m_backdrop;
};
