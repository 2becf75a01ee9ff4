// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/pickedwindow.h"

#include "overlays/windowhighlighter.h"

#include <memory>

PickedWindow PickedWindow::holding(platform::NativeWindow picked)
{
    const auto windows = std::make_shared<platform::NativeWindows>();
    const platform::NativeWindow window = windows->topLevelOf(picked);
    const auto position = [windows, window]() -> std::optional<QPoint> {
        const std::optional<QRect> rect = windows->isShown(window) ? windows->rectOf(window) : std::nullopt;
        if (!rect)
            return std::nullopt;
        return WindowHighlighter::logicalRectOnItsScreen(*rect).topLeft();
    };
    return {windows->titleOf(window), position, [windows, window] { return windows->exists(window); }};
}
