#include "screenshot/screengrab.h"

#include <QRect>
#include <QScreen>

#include <cmath>

namespace {

/// The part in physical pixels. Each edge is rounded for itself, so that areas side by side stay so.
QRect physical(const QRect& part, double devicePixelRatio)
{
    const auto pixel = [devicePixelRatio](int edge) { return static_cast<int>(std::lround(edge * devicePixelRatio)); };
    const QPoint topLeft(pixel(part.left()), pixel(part.top()));
    return {topLeft, QPoint(pixel(part.left() + part.width()) - 1, pixel(part.top() + part.height()) - 1)};
}

} // namespace

QPixmap grabOfScreen(QScreen& screen, const QRect& onDesktop)
{
    const QRect part = onDesktop.translated(-screen.geometry().topLeft());
    const double ratio = screen.devicePixelRatio();
    const bool isWhole = ratio == std::floor(ratio);
    if (isWhole || !screen.geometry().contains(onDesktop))
        return screen.grabWindow(0, part.x(), part.y(), part.width(), part.height());
    // The logical size of such a screen is rounded: counted from it, a part may end a pixel beyond the screen.
    const QPixmap all = screen.grabWindow(0);
    return all.copy(physical(part, ratio) & QRect(QPoint(), all.size()));
}
