// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/capture/capturearea.h"

#include <QObject>
#include <QPointer>

class QMenu;
class QScreen;
class Tile;

/// Which screen is recorded whole: the primary one until another is chosen. With several screens the tile shows the
/// number of the chosen one and offers all in a menu. A choice is not stored: it lasts until the program ends or the
/// screen goes. User-interface thread.
class ScreenChoice : public QObject
{
    Q_OBJECT

public:
    /// @param tile must outlive this object
    explicit ScreenChoice(Tile& tile);
    ~ScreenChoice() override;

    /// Empty in a session without a screen.
    CaptureScreen screen() const;

    /// Opens the menu; not for a single screen.
    void offer();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// By the user.
    void chosen();

    /// Screens have come, gone or changed their size or position, maybe the chosen one.
    void screensChanged();

private:
    const QScreen* current() const;
    static QString describe(const QScreen& screen, qsizetype number);
    void addEntry(const QScreen& screen, qsizetype number);
    void choose(const QScreen& screen);
    void watch(const QScreen* screen);
    void onScreenRemoved(const QScreen* screen);
    void onScreensChanged();
    void showChoice();

    Tile& m_tile;
    /// Null for the primary one.
    QPointer<const QScreen> m_chosen;
    QPointer<QMenu> m_menu;
};
