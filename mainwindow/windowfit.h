// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QRect>
#include <QSize>

#include <functional>

class PageScroll;
class QScreen;
class QStackedWidget;
class QWidget;
class SideTab;

/// Keeps the main window as large as what it shows, and on its screen: where that is too small, the side bar folds and
/// the options of the first page scroll; title bar and what is below the options stay. Follows screens that change.
class WindowFit : public QObject
{
    Q_OBJECT

public:
    struct Parts
    {
        QWidget& window;
        QWidget& titleBar;
        QWidget& sideBar;
        QStackedWidget& pages;
        /// On the first page.
        PageScroll& options;
    };

    /// @param available what the window can have of its screen, in logical pixels of the desktop
    explicit WindowFit(const Parts& parts, std::function<QRect()> available = {});

    /// With all that the window shows.
    QSize neededSize() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watch(const QScreen* screen);
    void fit();
    void fitLater();
    void onScreenChanged();
    void onResized(const QSize& size);
    void resizeWindow();
    void fold();
    QRect available() const;
    bool isFree() const;

    Parts m_parts;
    QList<SideTab*> m_tabs;
    std::function<QRect()> m_available;
    /// What the window had before the screen took some of it.
    QSize m_wanted;
    bool m_isFitting = false;
    bool m_isFitPending = false;
    bool m_isScreenWatched = false;
};
