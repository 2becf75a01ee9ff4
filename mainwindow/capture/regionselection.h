// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QRect>

#include <memory>

class AreaSelector;

/// Lets the user drag out a region of the primary screen: a selector over the whole of it, made for each selection,
/// with the cross as the application's cursor. Logical pixels of the desktop. User-interface thread.
class RegionSelection : public QObject
{
    Q_OBJECT

public:
    explicit RegionSelection(QObject* parent);
    ~RegionSelection() override;

    /// Shows the selector; selected() or cancelled() follows. Does nothing while it is shown.
    void begin();

    /// As the user does with Escape.
    void cancel();

    bool isSelecting() const { return m_selecting; }

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The selector is still shown.
    void selected(QRect area);
    void cancelled();

private:
    void makeSelector();
    void onAreaSelected(const QRect& area);

    std::unique_ptr<AreaSelector> m_selector;
    bool m_selecting = false;
};
