// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/menustyle.h"

#include <QApplication>
#include <QFontInfo>

namespace {

constexpr char kStyleSheet[] =
    "QMenu { background-color: #252526; border: 1px solid #1E1E1E; padding: 5px 0px; font-size: 7.5pt; font-family: "
    "Microsoft YaHei UI; }                         QMenu::item { color: #99A1B0; padding: 8px 20px; padding-right: "
    "24px; }                         QMenu::item:selected { background-color: #37373D; color: #FFFFFF; }               "
    "          QMenu::indicator { width: 12px; height: 12px; left: 4px; }                         "
    "QMenu::indicator:non-exclusive:checked { image: url(:/res/forms/images/check.svg); }";

} // namespace

QString menuStyleSheet()
{
    const double points = QFontInfo(QApplication::font()).pointSizeF();
    return QLatin1String(kStyleSheet) + QStringLiteral(" QMenu { font-size: %1pt; }").arg(points);
}
