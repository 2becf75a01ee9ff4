// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QAbstractButton;
class QLabel;
class QMainWindow;
class QWidget;

namespace platform {
class FramelessWindow;
}

/// User-interface thread.
namespace dialogwindow {

/// Makes a form frameless and as large as its content; Escape closes it. Call after setupUi(). logo may be null.
platform::FramelessWindow& prepare(QMainWindow& window, QLabel* logo, QAbstractButton* closeButton);

/// Centred and application-modal. Deletes itself when closed.
void showOver(QMainWindow& window, const QWidget& below);

} // namespace dialogwindow
