// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/regionuser.h"

#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/x11clients.h"

#include <QColor>
#include <QImage>
#include <QRegularExpression>
#include <QTest>

namespace {

constexpr int kAnswerTimeoutMs = 15'000;
constexpr int kAttempts = 3;

/// Of the display around a position. The veil that a region is dragged on takes two fifths of it.
int brightnessAt(const QPoint& position)
{
    constexpr QSize kAround(8, 8);
    return meanColour(x11clients::grab(QRect(position, kAround)), QPoint(4, 4), 4).value();
}

/// Presses the tile that has the keyboard, and waits for the veil. Where none comes, does it again, as a user would.
bool showVeil(ProgramUnderTest& program, const QPoint& watched)
{
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const qsizetype from = program.messages().size();
        // What lies below all windows may not be drawn yet, and nothing is darker than that.
        int clear = 0;
        if (!QTest::qWaitFor([&] { return (clear = brightnessAt(watched)) > 0; }, kAnswerTimeoutMs))
            return false;
        ProgramUnderTest::pressKey(QStringLiteral("space"));
        if (program.waitForMessage(QStringLiteral("Select region clicked"), kAnswerTimeoutMs, from) &&
            QTest::qWaitFor([&] { return brightnessAt(watched) < clear * 3 / 4; }, kAnswerTimeoutMs))
            return true;
        qWarning("No veil came where the brightness was %d and is %d.", clear, brightnessAt(watched));
        // The tile has the keyboard again.
        ProgramUnderTest::pressKey(QStringLiteral("Escape"));
        if (!goBackFromRecordButton(program, 0))
            return false;
    }
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
    const QPoint start = physical(logicalArea.topLeft());
    if (!showVeil(program, start))
        return std::nullopt;
    const qsizetype beforeDrag = program.messages().size();
    if (!drag(start, physical(logicalArea.bottomRight())))
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
