// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class QLabel;

/// A clickable field with an icon above its name, and a note below.
class Tile : public QFrame
{
    Q_OBJECT
    Q_PROPERTY(bool selected READ isSelected WRITE setSelected)
    /// Also the accessible name.
    Q_PROPERTY(QString text READ text WRITE setText)
    /// ":/res/forms/images/<iconName>.svg"; the "-white" twin when selected or under the pointer.
    Q_PROPERTY(QString iconName READ iconName WRITE setIconName)

public:
    explicit Tile(QWidget* parent = nullptr);

    bool isSelected() const { return m_selected; }
    void setSelected(bool selected);

    QString text() const;
    void setText(const QString& text);

    /// In small letters; empty at first.
    QString note() const;
    void setNote(const QString& note);

    QString iconName() const { return m_iconName; }
    void setIconName(const QString& name);

    QSize minimumSizeHint() const override;

signals:
    void activated();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void showIcon();

    QLabel* m_icon;
    QLabel* m_label;
    QLabel* m_note;
    QString m_iconName;
    bool m_selected = false;
};
