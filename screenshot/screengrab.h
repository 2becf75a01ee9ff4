#pragma once

#include <QPixmap>

class QRect;
class QScreen;

/// What is on the screen within a rectangle of the desktop (logical pixels), in physical pixels; the picture knows
/// their ratio. Null when the system gives none. User-interface thread.
///
/// Other screens are in it as far as the rectangle reaches onto them and the system shows them in one picture.
QPixmap grabOfScreen(QScreen& screen, const QRect& onDesktop);
