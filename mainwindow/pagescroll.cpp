// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/pagescroll.h"

#include <QLayout>

#include <algorithm>

namespace {

constexpr QSize kSmallest(160, 96);

} // namespace

PageScroll::PageScroll(QWidget* parent) : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    // Its controls have the focus.
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
}

QSize PageScroll::neededSize() const
{
    return widget()->minimumSizeHint() + QSize(width() - viewport()->width(), 0);
}

QSize PageScroll::minimumSizeHint() const
{
    return kSmallest;
}

void PageScroll::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    QLayout* const layout = widget()->layout();
    QMargins margins = layout->contentsMargins();
    if (m_rightMargin < 0)
        m_rightMargin = margins.right();
    margins.setRight(std::max(m_rightMargin - (width() - viewport()->width()), 0));
    if (margins != layout->contentsMargins())
        layout->setContentsMargins(margins);
}
