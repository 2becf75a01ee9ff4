#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>

class QWidget;

namespace platform {

/// Asks the system to leave a minimised window alone: nobody brings it back, and it does not take the focus.
/// User-interface thread.
///
/// On Windows the window refuses by itself, through answerWhileHeld(), and nothing is done here. X11 window managers do
/// not ask: they are told that the window takes no input, and a held window that is brought back all the same is
/// minimised again.
void setHeld(QWidget& window, bool held);

/// The answer of a held window to a native message (QWidget::nativeEvent): 0 for one that is to go no further, a
/// request to restore or maximise the window or to move it in front, which loses its right to the focus. Nothing for
/// every other message, and always on X11.
std::optional<qintptr> answerWhileHeld(const QByteArray& eventType, void* message);

} // namespace platform
