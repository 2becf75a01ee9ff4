// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/userinput.h"

#include <QPoint>
#include <QProcess>
#include <QTest>

namespace userinput {

void xdotool(const QStringList& arguments)
{
    QCOMPARE(QProcess::execute(QStringLiteral("xdotool"), arguments), 0);
}

void pointTo(const QPoint& desktopPx)
{
    xdotool({"mousemove", QString::number(desktopPx.x()), QString::number(desktopPx.y())});
}

void setKeyboardLayout(const QString& layout)
{
    QCOMPARE(QProcess::execute(QStringLiteral("setxkbmap"), {layout}), 0);
}

} // namespace userinput
