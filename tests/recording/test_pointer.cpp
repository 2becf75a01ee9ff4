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
/// Inside the highlight, away from the pointer's own picture.
const QPoint kInHighlight(-14, 0);
const QPoint kOutside(-26, 0);

/// A place where the test pattern shows its background alone, far around.
QPoint emptyPlace(const TestPattern& picture)
{
    constexpr int kAroundPx = 40;
    const QRect screen(QPoint(), picture.screen());
    QList<QRect> taken{picture.strip(), picture.sweepArea()};
    for (const TestPattern::Patch& patch : picture.patches())
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
        m_place = emptyPlace(m_picture);
        QVERIFY(!m_place.isNull());
        QVERIFY(xdotool({"mousemove", QString::number(m_place.x()), QString::number(m_place.y())}));
    }

    void pointerIsInTheFileWithoutCirclesWhereTheyAreOff()
    {
        const QImage picture = recorded(false, true, {});
        QVERIFY(!picture.isNull());
        const QColor ground = m_picture.background();
        QVERIFY2(isColour(picture, m_place + kInHighlight, ground), qPrintable(m_found));
        QVERIFY(isPointerSeen(picture, ground));
    }

    void circlesAreInTheFileWithoutThePointerWhereItIsOff()
    {
        const QImage picture = recorded(true, false, QStringLiteral("3"));
        QVERIFY(!picture.isNull());
        const QColor ground = m_picture.background();
        const QColor highlight = mixed(ground, QColor(0, 255, 128), 0.3);
        const QColor click = mixed(highlight, QColor(255, 0, 0), 0.7);
        QVERIFY2(isColour(picture, m_place, click), qPrintable(m_found));
        QVERIFY2(isColour(picture, m_place + kInHighlight, highlight), qPrintable(m_found));
        QVERIFY2(isColour(picture, m_place + kOutside, ground), qPrintable(m_found));
        QVERIFY2(!isPointerSeen(picture, click), qPrintable(m_found));
    }

private:
    /// A picture from the middle of a recording in which a button, if one is given, was held down throughout.
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

    /// The pointer's arrow lies below and right of the place that it points at.
    bool isPointerSeen(const QImage& picture, const QColor& below)
    {
        // Within a click's circle, whose radius is 12 pixels.
        constexpr int kArrowPx = 9;
        for (int step = 2; step <= kArrowPx; ++step) {
            if (!isColour(picture, m_place + QPoint(step / 2, step), below))
                return true;
        }
        return false;
    }

    bool isColour(const QImage& picture, const QPoint& place, const QColor& expected)
    {
        const QColor found = meanColour(picture, place, 1);
        m_found = QStringLiteral("%1 instead of %2").arg(found.name(), expected.name());
        return colourDistance(found, expected) <= kColourError;
    }

    const TestPattern m_picture{QSize(640, 360)};
    Performance m_performance;
    QPoint m_place;
    QString m_found;
};

REGISTER_TEST(testrun::core<TestPointer>);
#include "test_pointer.moc"
