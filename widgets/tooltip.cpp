// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/tooltip.h"

#include "platform/windowing/frame_exclusion.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QToolTip>
#include <QWidget>

#include <algorithm>
#include <array>

QWidget* visibleToolTip()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto found = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
        return window->windowType() == Qt::ToolTip && window->isVisible();
    });
    return found == windows.end() ? nullptr : *found;
}

ToolTipExclusion::ToolTipExclusion(QObject* parent) : QObject(parent)
{
    qApp->installEventFilter(this);
}

/// The event comes before the window has a handle.
bool ToolTipExclusion::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Polish || !watched->isWidgetType())
        return false;
    auto& widget = static_cast<QWidget&>(*watched);
    if (widget.isWindow() && widget.windowType() == Qt::ToolTip)
        platform::setExcludedFromFrames(widget, true);
    return false;
}

namespace bartip {

namespace {

constexpr int kGapPx = 4;

} // namespace

std::optional<QPoint> positionFor(const QSize& tip, const QRect& bar, int left, const QRect& screen,
                                  const QRect& recorded)
{
    const int rightmost = screen.x() + screen.width() - tip.width();
    const int x = std::max(screen.x(), std::min(left, rightmost));
    const std::array<QPoint, 4> positions{
        QPoint(x, bar.y() - kGapPx - tip.height()), QPoint(x, bar.y() + bar.height() + kGapPx),
        QPoint(bar.x() - kGapPx - tip.width(), bar.y()), QPoint(bar.x() + bar.width() + kGapPx, bar.y())};
    const auto* const found = std::ranges::find_if(positions, [&](const QPoint& position) {
        const QRect taken(position, tip);
        return screen.contains(taken) && !taken.intersects(recorded);
    });
    return found == positions.end() ? std::nullopt : std::optional(*found);
}

void show(QWidget& widget, const QRect& recorded)
{
    const QWidget& bar = *widget.window();
    const int left = widget.mapToGlobal(QPoint()).x();
    QToolTip::showText(QPoint(left, bar.y()), widget.toolTip(), &widget);
    QWidget* const tip = visibleToolTip();
    const QScreen* const screen = bar.screen();
    if (tip == nullptr || screen == nullptr)
        return;
    // Before the system draws it.
    if (const auto position = positionFor(tip->size(), bar.geometry(), left, screen->geometry(), recorded))
        tip->move(*position);
    else
        tip->hide();
}

} // namespace bartip
