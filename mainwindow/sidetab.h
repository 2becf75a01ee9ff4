// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

/// A button of the side bar: an icon with its text or, folded, the icon alone with the text for a tool tip.
class SideTab : public QPushButton
{
    Q_OBJECT
    Q_PROPERTY(bool folded READ isFolded WRITE setFolded)

public:
    static constexpr int kFoldedWidthPx = 42;

    using QPushButton::QPushButton;

    bool isFolded() const { return m_folded; }
    void setFolded(bool folded);

    /// With its text.
    int unfoldedWidth() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void initStyleOption(QStyleOptionButton* option) const override;

private:
    bool m_folded = false;
    int m_unfoldedMinimum = 0;
};
