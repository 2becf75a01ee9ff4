// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QWidget>

class QPropertyAnimation;

/// An animated switch, toggled by a left click or the space bar.
class SCSwitchWidget : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(bool checked READ isChecked WRITE setChecked NOTIFY checkedChanged)
    Q_PROPERTY(double position READ position WRITE setPosition)
    Q_PROPERTY(QColor activeColor READ activeColor WRITE setActiveColor)
    Q_PROPERTY(QColor inactiveColor READ inactiveColor WRITE setInactiveColor)

public:
    explicit SCSwitchWidget(QWidget* parent = nullptr);
    ~SCSwitchWidget() override;

    bool isChecked() const { return m_checked; }
    void setChecked(bool checked);

    /// Of the knob: 0.0 at the left (off) to 1.0 at the right (on).
    double position() const { return m_position; }
    void setPosition(double position);

    QColor activeColor() const { return m_activeColor; }
    void setActiveColor(const QColor& color);

    QColor inactiveColor() const { return m_inactiveColor; }
    void setInactiveColor(const QColor& color);

    QSize sizeHint() const override;

signals:
    void checkedChanged(bool checked);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void toggle();
    void paintTrack(QPainter& painter, int heightPx) const;
    void paintKnob(QPainter& painter, int diameterPx) const;

    bool m_checked = false;
    double m_position = 0.0;
    QPropertyAnimation* m_animation;
    QColor m_activeColor{QStringLiteral("#BC382F")};
    QColor m_inactiveColor{QStringLiteral("#1E1E1E")};
};
