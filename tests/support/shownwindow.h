// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QWidget>

/// The top-level window of that class that is on the screen; null where there is none.
template <typename Window>
Window* shownWindow()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* const window : windows) {
        auto* const found = qobject_cast<Window*>(window);
        if (found != nullptr && found->isVisible())
            return found;
    }
    return nullptr;
}
