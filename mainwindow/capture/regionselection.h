// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QRect>

#include <memory>
#include <vector>

class AreaSelector;
class QScreen;

/// Selectors over the screens, made for each selection, with the cross as the application's cursor. Screens may come,
/// change and go meanwhile. Logical pixels of the desktop. User-interface thread.
class RegionSelection : public QObject
{
    Q_OBJECT

public:
    enum class Reach
    {
        PrimaryScreen,
        /// A drag goes on from one screen to the next where they are contiguous (desktopscreens), else it ends at the
        /// edge of its screen.
        AllScreens
    };

    explicit RegionSelection(QObject* parent, Reach reach = Reach::PrimaryScreen);
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
    QList<QScreen*> screens() const;
    void coverScreens();
    bool areScreensCovered() const;
    void followScreens();
    void showSelectors();
    AreaSelector& selectorAtPointer() const;
    void moveKeyboardToPointer();
    void hideSelectors();
    void releaseSelectors();
    void onAreaSelected(const AreaSelector& selector, const QRect& area);

    const Reach m_reach;
    /// That of the primary screen first.
    std::vector<std::unique_ptr<AreaSelector>> m_selectors;
    bool m_selecting = false;
};
