// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

class QRect;

/// The geometry of a screen that a capture target's name ends with, in physical pixels of the desktop; a null rectangle
/// where there is none.
QRect captureTargetGeometry(const QString& name);

/// Finds the capture target that shows a screen. The engine numbers and names the screens in an order of its own, but
/// each name has the position of its screen: "Screen HDMI-1 (1920x1080 @ 1280,0)", "Display: 2560x1440 @ -2560,0
/// (Primary Monitor)".
///
/// @param names the engine's target names
/// @param screenPx the screen in physical pixels, with its position on the desktop
/// @return the name of the target with this geometry; else of the one at this position, whose size may be rounded; else
///         of the only one; else an empty text. Of screens that mirror each other, the first.
QString captureTargetForScreen(const QStringList& names, const QRect& screenPx);
