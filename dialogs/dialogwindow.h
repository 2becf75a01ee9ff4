#pragma once

class QAbstractButton;
class QLabel;
class QMainWindow;
class QWidget;

namespace platform {
class FramelessWindow;
}

/// What the program's secondary windows have in common. User-interface thread.
namespace dialogwindow {

/// Readies a form's window: no frame of the system's, as large as its contents want and no larger, the close button
/// lights up under the pointer, Escape closes. The logo may be null. Call it when the form is set up.
///
/// @return the frame, to which the title bar may be given
platform::FramelessWindow& ready(QMainWindow& window, QLabel* logo, QAbstractButton* closeButton);

/// Shows a window over another one, centred on it and on its screen, and keeps the user from the program's other
/// windows until it is closed. It deletes itself then.
void showOver(QMainWindow& window, const QWidget& below);

} // namespace dialogwindow
