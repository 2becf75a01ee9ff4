// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QRgb>
#include <QString>
#include <QUrl>

class QScreen;
class QWidget;

/// A user before the primary screen, who points, presses and looks. Points are logical pixels of the desktop, whatever
/// the scale. Works on a private desktop; what its tools cannot do fails the test.
namespace desktopuser {

/// Physical pixels per logical one on the primary screen.
double scale();

/// A point of the primary screen, from its top left corner.
QPoint onScreen(const QPoint& position);

void pointTo(const QPoint& position);

/// Goes there and clicks a button of the pointer: "1" is the left one, "3" the right one.
void click(const QPoint& position, const char* button = "1");
void click(const QWidget& widget);

/// Presses the left button at the first point, goes to the second one in steps, as a hand does, and lets go.
void drag(const QPoint& from, const QPoint& to);

/// A key ("space", "F9", "ctrl+a"), pressed and released.
void press(const QString& key);

/// Presses Tab until the widget has the keyboard's focus. False when it is not reached.
bool tabTo(const QWidget& widget);

/// Where a window's inside begins in screenshot(). As the server has it: Qt may have missed where the window manager
/// has put a frameless one.
QPoint originInImage(const QWidget& window);

/// From that origin.
QPoint centreOf(const QWidget& widget);

/// What the primary screen shows, in physical pixels.
QImage screenshot();
QImage screenshot(QScreen& screen);

/// Waits until the primary screen shows the same for some looks in a row: what has been begun there is over. Where a
/// test knows what is to be seen it waits for that instead.
void waitUntilStill();

/// What the primary screen shows at a point.
QRgb colourAt(const QPoint& position);

/// The lightest grey of the icon in the middle of the widget.
int brightestOf(const QWidget& widget);

/// Takes the left one of the two screens away, and gives it back; false when it could not be done.
bool unplugSecondScreen();
bool plugSecondScreen();

/// Splits the display in two screens, of which the right one is the primary, where KESTRANO_TEST_TWO_SCREENS is set.
/// Before the application is made; false when it could not be done.
bool splitDisplayWhereAsked();

} // namespace desktopuser
