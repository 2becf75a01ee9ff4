#include "platform/overlay_window.h"

#include <QWidget>
#include <QWindow>

namespace platform {

void readyAsOverlay(QWidget& window)
{
    // On the native window alone: the widget's own flags stay what its class says they are.
    window.winId();
    window.windowHandle()->setFlag(Qt::BypassWindowManagerHint);
}

} // namespace platform
