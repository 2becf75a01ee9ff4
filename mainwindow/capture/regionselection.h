// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QRect>

#include <memory>

class AreaSelector;

/// A selector over the primary screen, made for each selection, with the cross as the application's cursor. Logical
/// pixels of the desktop. User-interface thread.
class RegionSelection : public QObject
{
    Q_OBJECT

public:
    explicit RegionSelection(QObject* parent);
    ~RegionSelection() override;

    /// selected() or cancelled() follows. Ignored during a selection.
    void begin();

    void cancel();

    bool isSelecting() const { return m_selecting; }

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void selected(QRect area);
    void cancelled();

private:
    void makeSelector();
    void onAreaSelected(const QRect& area);

    std::unique_ptr<AreaSelector> m_selector;
    bool m_selecting = false;
};
