// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/focusring.h"

#include <QEvent>
#include <QPainter>

namespace {

constexpr int kDistancePx = 3;
constexpr double kLinePx = 1.0;
constexpr double kRadiusPx = 4.0;

} // namespace

FocusRing::FocusRing(QWidget* window, const QList<QWidget*>& widgets) : QWidget(window)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    for (QWidget* const widget : widgets)
        widget->installEventFilter(this);
    hide();
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    const auto& widget = static_cast<const QWidget&>(*watched);
    const QEvent::Type type = event->type();
    if (type == QEvent::FocusIn) {
        m_surrounded = &widget;
        surround(widget);
    } else if (m_surrounded == &widget && (type == QEvent::FocusOut || type == QEvent::Hide)) {
        m_surrounded = nullptr;
        hide();
    } else if (m_surrounded == &widget && (type == QEvent::Move || type == QEvent::Resize)) {
        surround(widget);
    }
    return false;
}

void FocusRing::surround(const QWidget& widget)
{
    const QRect area(widget.mapTo(parentWidget(), QPoint(0, 0)), widget.size());
    setGeometry(area.adjusted(-kDistancePx, -kDistancePx, kDistancePx, kDistancePx));
    show();
    raise();
}

void FocusRing::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0x00, 0x7a, 0xcc), kLinePx));
    const double half = kLinePx / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), kRadiusPx, kRadiusPx);
}
