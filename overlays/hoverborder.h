// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRasterWindow>

/// A line of one pixel around a rounded window while the pointer is over it. A native window of its own: what widgets
/// paint lies below the window's native children, such as a video surface. Passes the pointer through.
class HoverBorder : public QRasterWindow
{
    Q_OBJECT

public:
    /// Child of the window.
    HoverBorder(QWindow* window, int radiusPx);

    /// Without what rounded corners of that radius cut off.
    static QRegion roundedRegion(const QRect& rect, int radiusPx);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void fit(const QSize& size);

    int m_radiusPx;
};
