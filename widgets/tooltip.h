// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

class QWidget;

/// Null without one.
QWidget* visibleToolTip();

/// Excludes the program's tool tips from frames (platform/windowing/frame_exclusion.h) before they are on the screen.
/// User-interface thread.
class ToolTipExclusion : public QObject
{
    Q_OBJECT

public:
    /// Those that are shown from now on, as long as the parent lives.
    explicit ToolTipExclusion(QObject* parent);

    bool eventFilter(QObject* watched, QEvent* event) override;
};

/// Tool tips of bars that float over a recorded desktop. Logical pixels of the desktop.
namespace bartip {

/// Above, below or beside the bar, on the screen and outside the recorded area, if possible. @param left of the bar's
/// part that the tip belongs to
std::optional<QPoint> positionFor(const QSize& tip, const QRect& bar, int left, const QRect& screen,
                                  const QRect& recorded);

/// Shows the tip of a widget of the bar, or hides it where it has no position.
void show(QWidget& widget, const QRect& recorded);

} // namespace bartip
