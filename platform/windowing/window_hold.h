// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>

class QWidget;

namespace platform {

/// Has a minimised window stay minimised and without the focus, whoever asks for it. User-interface thread.
///
/// On Windows the window refuses by answerWhileHeld(), and nothing is done here. On X11 a held window takes no input
/// and is minimised again when it is brought back.
void setHeld(QWidget& window, bool held);

/// The answer of a held window to a native message (QWidget::nativeEvent): 0 for a request to restore, maximise or
/// raise the window, which goes no further; nothing for every other message, and always on X11.
std::optional<qintptr> answerWhileHeld(const QByteArray& eventType, void* message);

} // namespace platform
