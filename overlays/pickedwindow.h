// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/input/native_windows.h"

#include <QPoint>
#include <QString>

#include <functional>
#include <optional>

/// A window of another program that the user has picked. It may be gone at any moment. User-interface thread.
struct PickedWindow
{
    /// The program's window that the picked one is, or is a part of.
    static PickedWindow holding(platform::NativeWindow picked);

    QString title;
    /// In logical pixels of the desktop; none while the window is minimised, hidden or gone.
    std::function<std::optional<QPoint>()> position;
    /// False once it is gone.
    std::function<bool()> exists;
};
