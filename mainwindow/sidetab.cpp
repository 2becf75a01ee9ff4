// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/sidetab.h"

#include <QHelpEvent>
#include <QStyleOptionButton>
#include <QToolTip>

#include <algorithm>

void SideTab::setFolded(bool folded)
{
    if (m_folded == folded)
        return;
    m_folded = folded;
    if (folded)
        m_unfoldedMinimum = minimumWidth();
    setMinimumWidth(folded ? 0 : m_unfoldedMinimum);
    updateGeometry();
    update();
}

int SideTab::unfoldedWidth() const
{
    return std::max(QPushButton::sizeHint().width(), m_folded ? m_unfoldedMinimum : minimumWidth());
}

QSize SideTab::sizeHint() const
{
    const QSize size = QPushButton::sizeHint();
    return m_folded ? QSize(kFoldedWidthPx, size.height()) : size;
}

bool SideTab::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || !m_folded)
        return QPushButton::event(event);
    QToolTip::showText(static_cast<const QHelpEvent*>(event)->globalPos(), text(), this);
    return true;
}

void SideTab::initStyleOption(QStyleOptionButton* option) const
{
    QPushButton::initStyleOption(option);
    if (m_folded)
        option->text.clear();
}
