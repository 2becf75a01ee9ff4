// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/tour/tour.h"

#include <QTest>

/// What the parts of the tour share.
namespace tour {

/// Until a window manager has a window in its place.
constexpr int kUntilShownMs = 150;

inline void wait()
{
    QTest::qWait(kUntilShownMs);
}

/// Looks at one window alone.
inline void stop(const Look& look, const QByteArray& name, QWidget& window)
{
    wait();
    look({name, window.frameGeometry(), {&window}});
}

/// Looks at the box that show() opens and waits for, then closes it.
void stopAtBox(const Look& look, const QByteArray& name, const std::function<void()>& show);

/// Looks at the box that is open, then closes it.
void lookAtBox(const Look& look, const QByteArray& name);

/// Looks at the list that drops out of a box of the window.
void stopAtList(const Look& look, const QByteArray& name, QWidget& window, const char* box);

template <typename Widget>
Widget& child(const QWidget& window, const char* name)
{
    return *window.findChild<Widget*>(QLatin1String(name));
}

} // namespace tour
