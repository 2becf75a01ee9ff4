// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/regionuser.h"

#include "tests/recording/recordinghelpers.h"
#include "tests/support/programundertest.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

namespace {

constexpr int kAnswerTimeoutMs = 15'000;

/// The veil that a region is dragged on: a window of the program that has just come to lie above the others.
bool waitForVeil(const ProgramUnderTest& program, uint32_t topmostBefore)
{
    QElapsedTimer waited;
    waited.start();
    do {
        const QList<x11clients::Window> windows = x11clients::windowsOf(program.processId());
        if (!windows.isEmpty() && windows.constLast().id != topmostBefore) {
            // Shown to the window manager is not yet ready for the pointer.
            QTest::qWait(300);
            return true;
        }
        QTest::qWait(20);
    } while (!waited.hasExpired(kAnswerTimeoutMs));
    return false;
}

/// The area of the program's last word on it.
std::optional<QRect> saidArea(ProgramUnderTest& program, qsizetype from)
{
    const auto line = program.waitForMessage(QStringLiteral("position "), kAnswerTimeoutMs, from);
    static const QRegularExpression corners(QStringLiteral("position (\\d+) (\\d+) (\\d+) (\\d+)"));
    const auto match = corners.match(line ? line->text : QString());
    if (!match.hasMatch())
        return std::nullopt;
    const auto number = [&match](int index) { return match.captured(index).toInt(); };
    return QRect(number(1), number(2), number(3) - number(1), number(4) - number(2));
}

} // namespace

void regionuser::prepare(ProgramUnderTest& program, double scale)
{
    for (const char* key : {"mouse/switch", "mouse/showHighlight", "mouse/showCursor"})
        program.setSetting(QLatin1String(key), false);
    program.startThrough({QStringLiteral("env"), QStringLiteral("QT_SCALE_FACTOR=%1").arg(scale)});
}

std::optional<QRect> regionuser::chooseRegion(ProgramUnderTest& program, const QRect& logicalArea, double scale)
{
    const auto physical = [scale](const QPoint& logical) { return (QPointF(logical) * scale).toPoint(); };
    if (!goBackFromRecordButton(program, kStepsToRegion))
        return std::nullopt;
    const qsizetype from = program.messages().size();
    const QList<x11clients::Window> windows = x11clients::windowsOf(program.processId());
    ProgramUnderTest::pressKey(QStringLiteral("space"));
    if (!program.waitForMessage(QStringLiteral("Select region clicked"), kAnswerTimeoutMs, from) ||
        !waitForVeil(program, windows.isEmpty() ? 0 : windows.constLast().id))
        return std::nullopt;
    const qsizetype beforeDrag = program.messages().size();
    if (!drag(physical(logicalArea.topLeft()), physical(logicalArea.bottomRight())))
        return std::nullopt;
    return saidArea(program, beforeDrag);
}

QPoint regionuser::bareBar(const QRect& region)
{
    return {region.right() - 5, region.top() - kBorderPx - kBarPx / 2};
}

QPoint regionuser::penButton(const QRect& region)
{
    return {region.left() - kBorderPx + 15, region.top() - kBorderPx - kBarPx / 2};
}
