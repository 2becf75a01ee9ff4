// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollArea>

/// Scrolls a part of a page where the window is too small for it. Elsewhere it looks like the part alone. The vertical
/// scroll bar takes its room from the part's right margin.
class PageScroll : public QScrollArea
{
    Q_OBJECT

public:
    explicit PageScroll(QWidget* parent = nullptr);

    /// So that nothing has to be scrolled.
    QSize neededSize() const;

    /// The least with which it is of use.
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    int m_rightMargin = -1;
};
