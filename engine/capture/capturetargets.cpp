// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/capturetargets.h"

#include <QRect>
#include <QRegularExpression>

#include <algorithm>

QRect captureTargetGeometry(const QString& name)
{
    // A screen's own name comes before the geometry and may hold a size as well.
    static const QRegularExpression pattern(QStringLiteral(R"((\d+)x(\d+) @ (-?\d+),(-?\d+))"));
    QRect geometry;
    auto matches = pattern.globalMatch(name);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        geometry = QRect(match.captured(3).toInt(), match.captured(4).toInt(), match.captured(1).toInt(),
                         match.captured(2).toInt());
    }
    return geometry;
}

namespace {

template <typename Condition>
QString firstWith(const QStringList& names, Condition condition)
{
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const QString& name) { return condition(captureTargetGeometry(name)); });
    return found == names.end() ? QString() : *found;
}

} // namespace

QString captureTargetForScreen(const QStringList& names, const QRect& screenPx)
{
    QString exact = firstWith(names, [&](const QRect& geometry) { return geometry == screenPx; });
    if (!exact.isEmpty())
        return exact;
    QString there = firstWith(
        names, [&](const QRect& geometry) { return !geometry.isNull() && geometry.topLeft() == screenPx.topLeft(); });
    if (!there.isEmpty())
        return there;
    return names.size() == 1 ? names.first() : QString();
}
