// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "widgets/framegeometry.h"

#include <QTest>

using framegeometry::HitArea;

Q_DECLARE_METATYPE(HitArea)

namespace {

/// 800 x 600 with its corners at (100, 100) and (900, 700).
constexpr QRect kStart(100, 100, 800, 600);
constexpr QSize kMinimum(200, 150);

QRect byEdges(int left, int top, int right, int bottom)
{
    return {left, top, right - left, bottom - top};
}

} // namespace

class TestFrameGeometry : public QObject
{
    Q_OBJECT

private slots:
    void hitAreas_data()
    {
        QTest::addColumn<QPoint>("point");
        QTest::addColumn<HitArea>("area");
        QTest::addColumn<Qt::CursorShape>("cursor");
        const auto row = [](const char* name, const QPoint& point, HitArea area, Qt::CursorShape cursor) {
            QTest::newRow(name) << point << area << cursor;
        };
        row("top left, its first pixel", {0, 0}, HitArea::TopLeft, Qt::SizeFDiagCursor);
        row("top left, its last pixel", {9, 9}, HitArea::TopLeft, Qt::SizeFDiagCursor);
        row("top edge begins", {10, 9}, HitArea::Top, Qt::SizeVerCursor);
        row("left edge begins", {9, 10}, HitArea::Left, Qt::SizeHorCursor);
        row("inside begins", {10, 10}, HitArea::Move, Qt::SizeAllCursor);
        row("top edge ends", {189, 0}, HitArea::Top, Qt::SizeVerCursor);
        row("top right", {190, 9}, HitArea::TopRight, Qt::SizeBDiagCursor);
        row("right edge begins", {199, 10}, HitArea::Right, Qt::SizeHorCursor);
        row("right edge ends", {190, 139}, HitArea::Right, Qt::SizeHorCursor);
        row("bottom right", {190, 140}, HitArea::BottomRight, Qt::SizeFDiagCursor);
        row("bottom edge ends", {189, 149}, HitArea::Bottom, Qt::SizeVerCursor);
        row("bottom edge begins", {10, 140}, HitArea::Bottom, Qt::SizeVerCursor);
        row("bottom left", {9, 149}, HitArea::BottomLeft, Qt::SizeBDiagCursor);
        row("left edge ends", {0, 139}, HitArea::Left, Qt::SizeHorCursor);
        row("inside ends", {189, 139}, HitArea::Move, Qt::SizeAllCursor);
        row("outside", {-1, -1}, HitArea::Move, Qt::SizeAllCursor);
    }

    void hitAreas()
    {
        QFETCH(const QPoint, point);
        QFETCH(const HitArea, area);
        QFETCH(const Qt::CursorShape, cursor);
        QCOMPARE(framegeometry::hitAreaAt(point, QSize(200, 150)), area);
        QCOMPARE(framegeometry::cursorOf(area), cursor);
    }

    void otherCursors()
    {
        QCOMPARE(framegeometry::cursorOf(HitArea::Drawing), Qt::CrossCursor);
        QCOMPARE(framegeometry::cursorOf(HitArea::None), Qt::ArrowCursor);
        QCOMPARE(framegeometry::cursorOf(static_cast<HitArea>(11)), Qt::ArrowCursor);
    }

    void cornersWinInAFrameSmallerThanItsMargins()
    {
        QCOMPARE(framegeometry::hitAreaAt(QPoint(5, 5), QSize(12, 12)), HitArea::TopLeft);
        QCOMPARE(framegeometry::hitAreaAt(QPoint(11, 5), QSize(12, 12)), HitArea::TopRight);
        QCOMPARE(framegeometry::hitAreaAt(QPoint(11, 11), QSize(12, 12)), HitArea::BottomRight);
    }

    void resizing_data()
    {
        QTest::addColumn<HitArea>("area");
        QTest::addColumn<QPoint>("delta");
        QTest::addColumn<bool>("lockRatio");
        QTest::addColumn<QRect>("expected");
        const auto row = [](const char* name, HitArea area, const QPoint& delta, bool lockRatio,
                            const QRect& expected) { QTest::newRow(name) << area << delta << lockRatio << expected; };
        // Each area moves its own edges.
        row("top left", HitArea::TopLeft, {30, -20}, false, byEdges(130, 80, 900, 700));
        row("top right", HitArea::TopRight, {30, -20}, false, byEdges(100, 80, 930, 700));
        row("bottom left", HitArea::BottomLeft, {30, -20}, false, byEdges(130, 100, 900, 680));
        row("bottom right", HitArea::BottomRight, {30, -20}, false, byEdges(100, 100, 930, 680));
        row("left", HitArea::Left, {30, -20}, false, byEdges(130, 100, 900, 700));
        row("right", HitArea::Right, {30, -20}, false, byEdges(100, 100, 930, 700));
        row("top", HitArea::Top, {30, -20}, false, byEdges(100, 80, 900, 700));
        row("bottom", HitArea::Bottom, {30, -20}, false, byEdges(100, 100, 900, 680));
        row("not at all", HitArea::BottomRight, {0, 0}, false, kStart);
        row("moving is no resizing", HitArea::Move, {30, -20}, false, kStart);
        row("drawing is no resizing", HitArea::Drawing, {30, -20}, false, kStart);
        row("nothing is no resizing", HitArea::None, {30, -20}, false, kStart);

        // Past the minimum, with the other edges in place.
        row("top left past the minimum", HitArea::TopLeft, {700, 590}, false, byEdges(700, 550, 900, 700));
        row("top right past the minimum", HitArea::TopRight, {-700, 590}, false, byEdges(100, 550, 300, 700));
        row("bottom left past the minimum", HitArea::BottomLeft, {700, -590}, false, byEdges(700, 100, 900, 250));
        row("bottom right past the minimum", HitArea::BottomRight, {-700, -590}, false, byEdges(100, 100, 300, 250));
        row("bottom right past the other corner", HitArea::BottomRight, {-2000, -2000}, false,
            byEdges(100, 100, 300, 250));
        row("left past the minimum", HitArea::Left, {601, 0}, false, byEdges(700, 100, 900, 700));
        row("left at the minimum", HitArea::Left, {600, 0}, false, byEdges(700, 100, 900, 700));
        row("left before the minimum", HitArea::Left, {599, 0}, false, byEdges(699, 100, 900, 700));
        row("right past the minimum", HitArea::Right, {-799, 0}, false, byEdges(100, 100, 300, 700));
        row("top past the minimum", HitArea::Top, {0, 599}, false, byEdges(100, 550, 900, 700));
        row("bottom past the minimum", HitArea::Bottom, {0, -599}, false, byEdges(100, 100, 900, 250));

        // The ratio is 4 : 3. A corner's height follows its width, whatever the mouse says.
        row("locked, top left", HitArea::TopLeft, {-80, 500}, true, byEdges(20, 40, 900, 700));
        row("locked, top right", HitArea::TopRight, {80, 500}, true, byEdges(100, 40, 980, 700));
        row("locked, bottom left", HitArea::BottomLeft, {-80, 500}, true, byEdges(20, 100, 900, 760));
        row("locked, bottom right", HitArea::BottomRight, {-80, 500}, true, byEdges(100, 100, 820, 640));
        // An edge grows both neighbours alike about the middle.
        row("locked, left", HitArea::Left, {-80, 0}, true, byEdges(20, 70, 900, 730));
        row("locked, right", HitArea::Right, {-80, 0}, true, byEdges(100, 130, 820, 670));
        row("locked, top", HitArea::Top, {0, -60}, true, byEdges(60, 40, 940, 700));
        row("locked, bottom", HitArea::Bottom, {0, -60}, true, byEdges(140, 100, 860, 640));
        // 801 / (4 / 3) is 600.75, and half of nothing is nothing.
        row("locked, fractions are cut off", HitArea::BottomRight, {1, 0}, true, byEdges(100, 100, 901, 700));
        row("locked, half pixels are cut off", HitArea::Right, {2, 0}, true, byEdges(100, 100, 902, 700));
        // The smallest frame has the ratio as well.
        row("locked, left past the minimum", HitArea::Left, {640, 0}, true, byEdges(700, 325, 900, 475));
        row("locked, right past the other edge", HitArea::Right, {-900, 0}, true, byEdges(100, 325, 300, 475));
        row("locked, top past the minimum", HitArea::Top, {0, 590}, true, byEdges(400, 550, 600, 700));
        row("locked, bottom right past the minimum", HitArea::BottomRight, {-700, 0}, true,
            byEdges(100, 100, 300, 250));
    }

    void resizing()
    {
        QFETCH(const HitArea, area);
        QFETCH(const QPoint, delta);
        QFETCH(const bool, lockRatio);
        QFETCH(const QRect, expected);
        constexpr double kRatio = 4.0 / 3.0;
        QCOMPARE(framegeometry::resized(area, kStart, delta, kMinimum, lockRatio ? kRatio : 0.0), expected);
        QCOMPARE(framegeometry::isResize(area), area >= HitArea::TopLeft && area <= HitArea::Bottom);
    }

    void smallestLockedFrameIsNotTooLow()
    {
        const QRect start(100, 100, 800, 450);
        const double ratio = 16.0 / 9.0;
        // 150 * 16 / 9 is 266.7.
        QCOMPARE(framegeometry::resized(HitArea::BottomRight, start, {-700, 0}, kMinimum, ratio).size(),
                 QSize(267, 150));
        QCOMPARE(framegeometry::resized(HitArea::TopLeft, start, {700, 0}, kMinimum, ratio),
                 byEdges(633, 400, 900, 550));
        QCOMPARE(framegeometry::resized(HitArea::Bottom, start, {0, -400}, kMinimum, ratio).height(), 151);
    }

    void draggingAtAnAspect_data()
    {
        QTest::addColumn<HitArea>("area");
        QTest::addColumn<QPoint>("delta");
        QTest::addColumn<QRect>("expected");
        const auto row = [](const char* name, HitArea area, const QPoint& delta, const QRect& expected) {
            QTest::newRow(name) << area << delta << expected;
        };
        // From 400 x 225 with its corners at (100, 100) and (500, 325), at 16 : 9.
        row("moved", HitArea::Move, {-30, 500}, byEdges(70, 600, 470, 825));
        row("corner where it was", HitArea::BottomRight, {0, 0}, byEdges(100, 100, 500, 325));
        row("edge where it was", HitArea::Left, {0, 0}, byEdges(100, 100, 500, 325));
        // A corner's height follows its width, whatever the mouse says.
        row("top left", HitArea::TopLeft, {-32, 500}, byEdges(68, 82, 500, 325));
        row("top right", HitArea::TopRight, {32, 500}, byEdges(100, 82, 532, 325));
        row("bottom left", HitArea::BottomLeft, {32, 500}, byEdges(132, 100, 500, 307));
        row("bottom right", HitArea::BottomRight, {32, 500}, byEdges(100, 100, 532, 343));
        // An edge grows both neighbours alike about the middle; half pixels are cut off.
        row("left", HitArea::Left, {-80, 33}, byEdges(20, 78, 500, 347));
        row("left, narrower", HitArea::Left, {80, 0}, byEdges(180, 122, 500, 303));
        row("right", HitArea::Right, {80, 33}, byEdges(100, 78, 580, 347));
        row("right, even", HitArea::Right, {32, 0}, byEdges(100, 91, 532, 334));
        row("top", HitArea::Top, {33, -45}, byEdges(60, 55, 540, 325));
        row("bottom", HitArea::Bottom, {33, 45}, byEdges(60, 100, 540, 370));
        row("bottom, lower", HitArea::Bottom, {0, -45}, byEdges(140, 100, 460, 280));
        // The width has a minimum of 200, and the height what belongs to it: 112.5, cut off.
        row("top left, too narrow", HitArea::TopLeft, {300, 0}, byEdges(300, 213, 500, 325));
        row("top right, too narrow", HitArea::TopRight, {-300, 0}, byEdges(100, 213, 300, 325));
        row("bottom left, too narrow", HitArea::BottomLeft, {300, 0}, byEdges(300, 100, 500, 212));
        row("bottom right, too narrow", HitArea::BottomRight, {-300, 0}, byEdges(100, 100, 300, 212));
        row("bottom right, past the other corner", HitArea::BottomRight, {-900, 0}, byEdges(100, 100, 300, 212));
        row("left, too narrow", HitArea::Left, {300, 0}, byEdges(300, 184, 500, 296));
        row("right, too narrow", HitArea::Right, {-300, 0}, byEdges(100, 184, 300, 296));
        row("right at the minimum", HitArea::Right, {-200, 0}, byEdges(100, 156, 300, 269));
        row("top, too low", HitArea::Top, {0, 180}, byEdges(260, 213, 460, 325));
        row("bottom, too low", HitArea::Bottom, {0, -180}, byEdges(260, 100, 460, 212));
    }

    void draggingAtAnAspect()
    {
        QFETCH(const HitArea, area);
        QFETCH(const QPoint, delta);
        QFETCH(const QRect, expected);
        QCOMPARE(framegeometry::draggedAtAspect(area, QRect(100, 100, 400, 225), delta, 200, 1920.0F / 1080.0F),
                 expected);
    }

    void moving_data()
    {
        QTest::addColumn<QPoint>("delta");
        QTest::addColumn<QPoint>("expected");
        QTest::newRow("within") << QPoint(20, -30) << QPoint(120, 70);
        QTest::newRow("past the left") << QPoint(-300, 0) << QPoint(50, 100);
        QTest::newRow("past the top") << QPoint(0, -300) << QPoint(100, 25);
        QTest::newRow("past the right") << QPoint(5000, 0) << QPoint(1050, 100);
        QTest::newRow("past the bottom, by the bar's height") << QPoint(0, 5000) << QPoint(100, 455);
    }

    void moving()
    {
        QFETCH(const QPoint, delta);
        QFETCH(const QPoint, expected);
        const QRect available(50, 25, 1800, 1000);
        QCOMPARE(framegeometry::moved(kStart, delta, available, 30), expected);
    }

    void aFrameLargerThanTheScreenStartsAtItsTopLeft()
    {
        const QRect available(50, 25, 640, 480);
        QCOMPARE(framegeometry::moved(kStart, QPoint(10, 10), available, 30), QPoint(50, 25));
    }
};

REGISTER_TEST(testrun::core<TestFrameGeometry>);
#include "test_framegeometry.moc"
