#pragma once

#include <QObject>
#include <QRect>

#include <memory>

class AreaSelector;

/// The dragging out of a region of the primary screen: a selector over the whole of it, made anew each time, with the
/// cross as the application's cursor while it is there. Logical pixels of the desktop. User-interface thread.
class RegionSelection : public QObject
{
    Q_OBJECT

public:
    explicit RegionSelection(QObject* parent);
    ~RegionSelection() override;

    /// Shows the selector; selected() or cancelled() follows. Does nothing while it is shown.
    void begin();

    /// Gives the selection up as the user does with Escape.
    void cancel();

    bool isSelecting() const { return m_selecting; }

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The user has dragged out a region; the selector is still there.
    void selected(QRect area);

    /// The user has given the selection up.
    void cancelled();

private:
    void makeSelector();
    void onAreaSelected(const QRect& area);

    std::unique_ptr<AreaSelector> m_selector;
    bool m_selecting = false;
};
