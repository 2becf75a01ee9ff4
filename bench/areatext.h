// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QRect;
class QString;

/// An area of the screen on the command lines of the bench's programs: "X,Y,WIDTH,HEIGHT".
QString textFromArea(const QRect& area);
/// Empty where the text is no area.
QRect areaFromText(const QString& text);
