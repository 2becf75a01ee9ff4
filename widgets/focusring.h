// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QWidget>

/// A ring around the widget with the keyboard focus, where the widgets' own painting leaves no room.
class FocusRing : public QWidget
{
    Q_OBJECT

public:
    /// The widgets are in window and outlive the ring.
    FocusRing(QWidget* window, const QList<QWidget*>& widgets);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void surround(const QWidget& widget);

    const QWidget* m_surrounded = nullptr;
};
