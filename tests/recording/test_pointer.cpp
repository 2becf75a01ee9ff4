// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QTest>

#include <algorithm>

namespace {

constexpr int kTakeMs = 1500;
/// What the codec makes of a flat colour.
constexpr int kColourError = 14;
/// Inside the highlight, away from the pointer's own image.
const QPoint kInHighlight(-14, 0);
const QPoint kOutside(-26, 0);

/// A position where the test pattern shows its background alone, far around.
QPoint emptyPosition(const TestPattern& pattern)
{
    constexpr int kAroundPx = 40;
    const QRect screen(QPoint(), pattern.screen());
    QList<QRect> taken{pattern.strip(), pattern.sweepArea()};
    for (const TestPattern::Patch& patch : pattern.patches())
        taken << patch.area;
    for (int y = screen.bottom() - kAroundPx; y > kAroundPx; y -= 8) {
        for (int x = screen.right() - kAroundPx; x > kAroundPx; x -= 8) {
            const QRect around(x - kAroundPx, y - kAroundPx, 2 * kAroundPx, 2 * kAroundPx);
            if (std::none_of(taken.begin(), taken.end(), [&](const QRect& area) { return area.intersects(around); }))
                return {x, y};
        }
    }
    return {};
}

QColor mixed(const QColor& below, const QColor& above, double alpha)
{
    const auto mix = [alpha](int under, int over) { return qRound(under * (1 - alpha) + over * alpha); };
    return {mix(below.red(), above.red()), mix(below.green(), above.green()), mix(below.blue(), above.blue())};
}

} // namespace

/// The pointer and the circles around it in files that the program recorded.
class TestPointer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(m_performance.begin(kFramesPerSecond, false), QString());
        m_position = emptyPosition(m_pattern);
        QVERIFY(!m_position.isNull());
        QVERIFY(xdotool({"mousemove", QString::number(m_position.x()), QString::number(m_position.y())}));
    }

    void pointerIsInTheFileWithoutCirclesWhereTheyAreOff()
    {
        const QImage image = recorded(false, true, {});
        QVERIFY(!image.isNull());
        const QColor ground = m_pattern.background();
        QVERIFY2(isColour(image, m_position + kInHighlight, ground), qPrintable(m_found));
        QVERIFY(isPointerSeen(image, ground));
    }

    void circlesAreInTheFileWithoutThePointerWhereItIsOff()
    {
        const QImage image = recorded(true, false, QStringLiteral("3"));
        QVERIFY(!image.isNull());
        const QColor ground = m_pattern.background();
        const QColor highlight = mixed(ground, QColor(0, 255, 128), 0.3);
        const QColor click = mixed(highlight, QColor(255, 0, 0), 0.7);
        QVERIFY2(isColour(image, m_position, click), qPrintable(m_found));
        QVERIFY2(isColour(image, m_position + kInHighlight, highlight), qPrintable(m_found));
        QVERIFY2(isColour(image, m_position + kOutside, ground), qPrintable(m_found));
        QVERIFY2(!isPointerSeen(image, click), qPrintable(m_found));
    }

private:
    /// A frame from the middle of a recording in which a button, if one is given, was held down throughout.
    QImage recorded(bool effects, bool cursor, const QString& button)
    {
        ProgramUnderTest program;
        program.setSetting(QStringLiteral("mouse/switch"), effects);
        program.setSetting(QStringLiteral("mouse/showHighlight"), effects);
        program.setSetting(QStringLiteral("mouse/showCursor"), cursor);
        if (!program.startAndWaitUntilReady())
            return {};
        Take take = beginTake(program, QStringLiteral("mp4"));
        if (!button.isEmpty())
            xdotool({"mousedown", button});
        QTest::qWait(kTakeMs);
        if (!button.isEmpty())
            xdotool({"mouseup", button});
        endTake(program, take);
        if (!take.failure.isEmpty())
            qWarning().noquote() << take.failure;
        return MediaFile(take.path).frameAt(kTakeMs / 2000.0);
    }

    /// The pointer's arrow is below and right of the position that it points at.
    bool isPointerSeen(const QImage& image, const QColor& below)
    {
        // Within a click's circle, whose radius is 12 pixels.
        constexpr int kArrowPx = 9;
        for (int step = 2; step <= kArrowPx; ++step) {
            if (!isColour(image, m_position + QPoint(step / 2, step), below))
                return true;
        }
        return false;
    }

    bool isColour(const QImage& image, const QPoint& position, const QColor& expected)
    {
        const QColor found = meanColour(image, position, 1);
        m_found = QStringLiteral("%1 instead of %2").arg(found.name(), expected.name());
        return colourDistance(found, expected) <= kColourError;
    }

    const TestPattern m_pattern{QSize(640, 360)};
    Performance m_performance;
    QPoint m_position;
    QString m_found;
};

REGISTER_TEST(testrun::core<TestPointer>);
#include "test_pointer.moc"
