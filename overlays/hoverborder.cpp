// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/hoverborder.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr QColor kColor(0x00, 0x7a, 0xcc);

} // namespace

HoverBorder::HoverBorder(QWindow* window, int radiusPx) : QRasterWindow(window), m_radiusPx(radiusPx)
{
    // Else the system could not show it inside the translucent window.
    setFormat(window->requestedFormat());
    setFlag(Qt::WindowTransparentForInput);
    fit(window->size());
    window->installEventFilter(this);
}

QRegion HoverBorder::roundedRegion(const QRect& rect, int radiusPx)
{
    QPainterPath outline;
    outline.addRoundedRect(rect, radiusPx, radiusPx);
    return QRegion(outline.toFillPolygon().toPolygon());
}

bool HoverBorder::eventFilter(QObject* /*watched*/, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Enter:
        show();
        raise();
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        hide();
        break;
    case QEvent::Resize:
        fit(parent()->size());
        break;
    default:
        break;
    }
    return false;
}

void HoverBorder::fit(const QSize& size)
{
    const QRect area(QPoint(), size);
    setGeometry(area);
    setMask(roundedRegion(area, m_radiusPx) - roundedRegion(area.adjusted(1, 1, -1, -1), m_radiusPx));
}

void HoverBorder::paintEvent(QPaintEvent* /*event*/)
{
    QPainter(this).fillRect(QRect(QPoint(), size()), kColor);
}
