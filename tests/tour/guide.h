// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/tour/tour.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QTest>

/// What the parts of the tour share.
namespace tour {

/// Until the window is on the screen and what it holds is laid out.
inline void waitFor(QWidget& window)
{
    (void)QTest::qWaitForWindowExposed(&window);
    QCoreApplication::processEvents();
}

/// Looks at one window alone.
inline void stop(const Look& look, const QByteArray& name, QWidget& window)
{
    waitFor(window);
    look({name, window.frameGeometry(), {&window}});
}

/// As a click of the mouse does, which brings the focus along.
inline void choose(QAbstractButton& button)
{
    button.setFocus();
    button.click();
}

/// Calls once as soon as the window that is asked for is on the screen.
void whenShown(QWidget* (*window)(), std::function<void(QWidget&)> call);

/// Looks at the box that show() opens and waits for, then closes it.
void stopAtBox(const Look& look, const QByteArray& name, const std::function<void()>& show);

/// Looks at a box, then closes it.
void lookAtBox(const Look& look, const QByteArray& name, QWidget& box);

/// Looks at the list that drops out of a box of the window.
void stopAtList(const Look& look, const QByteArray& name, QWidget& window, const char* box);

template <typename Widget>
Widget& child(const QWidget& window, const char* name)
{
    return *window.findChild<Widget*>(QLatin1String(name));
}

} // namespace tour
