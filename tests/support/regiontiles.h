// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "tests/support/shownwindow.h"

#include <QCoreApplication>
#include <QTest>

/// The object names of the window's selected tiles.
inline QStringList selectedTiles(const QWidget& window)
{
    QStringList names;
    for (const Tile* const tile : window.findChildren<Tile*>()) {
        if (tile->isSelected())
            names.append(tile->objectName());
    }
    return names;
}

/// Chooses the window's region tile and drags a region out, between two points of the selector.
inline void dragRegion(const QWidget& window, const QPoint& from, const QPoint& to)
{
    QTest::mouseClick(window.findChild<Tile*>(QStringLiteral("regionTile")), Qt::LeftButton);
    auto* const selector = shownWindow<AreaSelector>();
    QTest::mousePress(selector, Qt::LeftButton, {}, from);
    QTest::mouseMove(selector, to);
    QTest::mouseRelease(selector, Qt::LeftButton, {}, to);
    QCoreApplication::processEvents();
}
