// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class QLabel;

/// A large clickable field with an icon over its name. Its style sheet sees the property "selected".
class Tile : public QFrame
{
    Q_OBJECT
    Q_PROPERTY(bool selected READ isSelected WRITE setSelected)
    /// Also what a screen reader calls the tile.
    Q_PROPERTY(QString text READ text WRITE setText)
    /// ":/res/forms/images/<iconName>.svg"; the "-white" twin while the tile is selected or the pointer is over it.
    Q_PROPERTY(QString iconName READ iconName WRITE setIconName)

public:
    explicit Tile(QWidget* parent = nullptr);
    ~Tile() override;

    bool isSelected() const { return m_selected; }
    void setSelected(bool selected);

    QString text() const;
    void setText(const QString& text);

    QString iconName() const { return m_iconName; }
    void setIconName(const QString& name);

    QSize minimumSizeHint() const override;

signals:
    /// The left mouse button was released on the tile, or the space bar or the enter key pressed.
    void activated();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void showIcon();

    QLabel* m_icon;
    QLabel* m_label;
    QString m_iconName;
    bool m_selected = false;
};
