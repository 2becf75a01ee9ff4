#include "platform/window_hold.h"

#include <QWidget>
#include <QWindow>

void platform::setHeld(QWidget& window, bool held)
{
    // On the native window: the widget would be taken off the screen and put back.
    if (QWindow* const native = window.windowHandle())
        native->setFlag(Qt::WindowDoesNotAcceptFocus, held);
}

std::optional<qintptr> platform::answerWhileHeld(const QByteArray& /*eventType*/, void* /*message*/)
{
    return std::nullopt;
}
