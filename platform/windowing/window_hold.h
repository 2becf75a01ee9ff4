// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>

class QWidget;

namespace platform {

/// Keeps a minimised window minimised and without the focus, whoever asks for it: on X11 by minimising it again, on
/// Windows by answerWhileHeld(). User-interface thread.
void setHeld(QWidget& window, bool held);

/// A held window's answer to a native message (QWidget::nativeEvent): 0 for a request to restore, maximise or raise it,
/// which goes no further; else nothing. On X11 nothing.
std::optional<qintptr> answerWhileHeld(const QByteArray& eventType, void* message);

} // namespace platform
