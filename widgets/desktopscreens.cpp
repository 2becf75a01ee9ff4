// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/desktopscreens.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace {

const QScreen* screenForDrag(const QWidget& window)
{
    const QScreen* const below = QGuiApplication::screenAt(QCursor::pos());
    if (below != nullptr)
        return below;
    return window.screen() != nullptr ? window.screen() : QGuiApplication::primaryScreen();
}

} // namespace

QList<QScreen*> desktopscreens::all()
{
    return QGuiApplication::primaryScreen() != nullptr ? QGuiApplication::screens() : QList<QScreen*>();
}

bool desktopscreens::areContiguous()
{
    const QList<QScreen*> screens = all();
    return screens.size() < 2 ||
           std::ranges::all_of(screens, [](const QScreen* screen) { return screen->devicePixelRatio() == 1.0; });
}

QRect desktopscreens::availableForDrag(const QWidget& window)
{
    if (!areContiguous())
        return screenForDrag(window)->availableGeometry();
    QRect available;
    for (const QScreen* const screen : all())
        available |= screen->availableGeometry();
    return available;
}
