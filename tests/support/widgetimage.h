// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QWidget>

/// What the widget paints by itself, over nothing: no window background below it.
inline QImage pictureOf(QWidget& widget)
{
    QImage picture(widget.size(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    widget.render(&picture, QPoint(), QRegion(), QWidget::RenderFlags());
    return picture;
}
