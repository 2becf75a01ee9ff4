// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QAbstractButton;
class QLabel;
class QMainWindow;
class QWidget;

namespace platform {
class FramelessWindow;
}

/// What dialogs have in common. User-interface thread.
namespace dialogwindow {

/// Makes a form's window frameless and as large as its content; Escape closes it. Call after setupUi().
///
/// @param logo may be null
platform::FramelessWindow& prepare(QMainWindow& window, QLabel* logo, QAbstractButton* closeButton);

/// Shows a window centred on another one as application-modal. It deletes itself when closed.
void showOver(QMainWindow& window, const QWidget& below);

} // namespace dialogwindow
