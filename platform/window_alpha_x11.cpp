#include "platform/compositing.h"
#include "platform/window_alpha.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace platform {

bool readyForAlpha(QWidget& window)
{
    window.winId();
    return true;
}

bool setWindowAlpha(QWidget& window, int alpha)
{
    constexpr double kOpaque = 255.0;
    // The toolkit's other ways of drawing on Linux have no such thing, and complain.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return false;
    // Sets _NET_WM_WINDOW_OPACITY, which compositors follow.
    window.windowHandle()->setOpacity(alpha / kOpaque);
    return isCompositing();
}

} // namespace platform
