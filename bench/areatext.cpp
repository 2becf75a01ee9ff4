// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/areatext.h"

#include <QRect>
#include <QStringList>

QString textFromArea(const QRect& area)
{
    return QStringLiteral("%1,%2,%3,%4").arg(area.x()).arg(area.y()).arg(area.width()).arg(area.height());
}

QRect areaFromText(const QString& text)
{
    const QStringList numbers = text.split(QLatin1Char(','));
    if (numbers.size() != 4)
        return {};
    return {numbers.at(0).toInt(), numbers.at(1).toInt(), numbers.at(2).toInt(), numbers.at(3).toInt()};
}
