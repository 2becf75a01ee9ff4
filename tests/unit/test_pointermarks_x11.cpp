// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/pointercircles.h"
#include "engine/capture/x11/pointermarks.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QTest>

#include <cmath>
#include <numbers>

namespace {

constexpr QRgb kGround = qRgb(100, 100, 100);
/// The ground with the circles' colours mixed in: 0.3 of the highlight, and then 0.7 of a click.
constexpr QRgb kHighlight = qRgb(70, 147, 108);
constexpr QRgb kLeftClick = qRgb(21, 44, 211);
constexpr QRgb kRightClick = qRgb(200, 44, 32);

const PointerEffectChoice kAll{EffectColor{0.0F, 1.0F, 0.5F, 0.3F}, EffectColor{0.0F, 0.0F, 1.0F, 0.7F},
                               EffectColor{1.0F, 0.0F, 0.0F, 0.7F}};
const QPoint kPosition(60, 50);

QImage ground()
{
    QImage image(120, 100, QImage::Format_RGB32);
    image.fill(kGround);
    return image;
}

QRect draw(QImage& image, const std::vector<PointerCircle>& circles)
{
    return drawPointerCircles({image.bits(), static_cast<int>(image.bytesPerLine()), image.width(), image.height()},
                              circles);
}

QRect draw(QImage& image, const platform::PointerState& pointer, float pixelRatio = 1.0F)
{
    return draw(image, kAll.circlesAround(pointer, pixelRatio));
}

bool isColour(const QImage& image, const QPoint& position, QRgb expected)
{
    const QRgb found = image.pixel(position);
    const bool same = std::abs(qRed(found) - qRed(expected)) <= 1 && std::abs(qGreen(found) - qGreen(expected)) <= 1 &&
                      std::abs(qBlue(found) - qBlue(expected)) <= 1;
    if (!same)
        qWarning() << "at" << position << "there is" << QColor(found).name() << "and not" << QColor(expected).name();
    return same;
}

/// The image outside of the rectangle is the ground.
bool isGroundOutside(const QImage& image, const QRect& rect)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (!rect.contains(x, y) && image.pixel(x, y) != kGround)
                return false;
    return true;
}

} // namespace

/// The circles around the pointer, drawn into an image of the screen.
class TestPointerMarks : public QObject
{
    Q_OBJECT

private slots:
    void eachCircleHasItsColourAndSize_data()
    {
        QTest::addColumn<bool>("left");
        QTest::addColumn<bool>("right");
        QTest::addColumn<QRgb>("inClick");
        QTest::newRow("none") << false << false << kHighlight;
        QTest::newRow("left") << true << false << kLeftClick;
        QTest::newRow("right") << false << true << kRightClick;
    }

    void eachCircleHasItsColourAndSize()
    {
        QFETCH(const bool, left);
        QFETCH(const bool, right);
        QFETCH(const QRgb, inClick);
        QImage image = ground();
        draw(image, {kPosition, left, right});
        for (const QPoint direction : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)}) {
            QVERIFY(isColour(image, kPosition, inClick));
            QVERIFY(isColour(image, kPosition + 11 * direction, inClick));
            QVERIFY(isColour(image, kPosition + 13 * direction, kHighlight));
            QVERIFY(isColour(image, kPosition + 19 * direction, kHighlight));
            QVERIFY(isColour(image, kPosition + 21 * direction, kGround));
        }
        QVERIFY(isColour(image, kPosition + QPoint(13, 13), kHighlight));
        QVERIFY(isColour(image, kPosition + QPoint(15, 15), kGround));
    }

    void rightClickIsDrawnOverTheLeftOne()
    {
        QImage image = ground();
        draw(image, {kPosition, true, true});
        const auto over = [](int below, int colour) {
            return static_cast<int>(std::lround(below + 0.702 * (colour - below)));
        };
        const QRgb expected =
            qRgb(over(qRed(kLeftClick), 255), over(qGreen(kLeftClick), 0), over(qBlue(kLeftClick), 0));
        QVERIFY(isColour(image, kPosition, expected));
    }

    void edgeIsHalfwayAtTheRadius()
    {
        QImage image = ground();
        // Its edge goes through the middle of a pixel.
        draw(image, {{QPointF(60.5, 50.5), 10.0F, {200, 200, 200, 255}}});
        QVERIFY(isColour(image, {69, 50}, qRgb(200, 200, 200)));
        QVERIFY(isColour(image, {70, 50}, qRgb(150, 150, 150)));
        QVERIFY(isColour(image, {71, 50}, kGround));
        QVERIFY(isColour(image, {60, 40}, qRgb(150, 150, 150)));
    }

    void coversTheAreaOfACircle_data()
    {
        QTest::addColumn<float>("radius");
        for (const float radius : {12.0F, 20.0F, 25.0F, 30.5F, 40.0F})
            QTest::newRow(qPrintable(QString::number(radius))) << radius;
    }

    void coversTheAreaOfACircle()
    {
        QFETCH(const float, radius);
        QImage image = ground();
        image.fill(Qt::black);
        draw(image, {{QPointF(60.5, 50.5), radius, {255, 255, 255, 255}}});
        double area = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                area += qRed(image.pixel(x, y)) / 255.0;
        const double expected = std::numbers::pi * radius * radius;
        QVERIFY2(std::abs(area - expected) < 0.005 * expected, qPrintable(QString::number(area / expected)));
    }

    void sizeFollowsThePixelRatio()
    {
        QImage image = ground();
        draw(image, {kPosition, true, false}, 1.5F);
        QVERIFY(isColour(image, kPosition + QPoint(17, 0), kLeftClick));
        QVERIFY(isColour(image, kPosition + QPoint(19, 0), kHighlight));
        QVERIFY(isColour(image, kPosition + QPoint(29, 0), kHighlight));
        QVERIFY(isColour(image, kPosition + QPoint(31, 0), kGround));
    }

    void onlyWhatIsInsideIsDrawn_data()
    {
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<bool>("anything");
        QTest::newRow("inside") << kPosition << true;
        QTest::newRow("corner") << QPoint(0, 0) << true;
        QTest::newRow("far corner") << QPoint(119, 99) << true;
        QTest::newRow("beside") << QPoint(-10, 50) << true;
        QTest::newRow("outside") << QPoint(-22, 50) << false;
        QTest::newRow("far away") << QPoint(4000, 3000) << false;
    }

    void onlyWhatIsInsideIsDrawn()
    {
        QFETCH(const QPoint, position);
        QFETCH(const bool, anything);
        QImage image = ground();
        const QRect drawn = draw(image, {position, true, false});
        QCOMPARE(!drawn.isEmpty(), anything);
        QCOMPARE(image != ground(), anything);
        QVERIFY(image.rect().contains(drawn) || drawn.isEmpty());
        QVERIFY(isGroundOutside(image, drawn));
    }

    void nothingToDrawChangesNothing()
    {
        QImage image = ground();
        QCOMPARE(draw(image, std::vector<PointerCircle>()), QRect());
        QCOMPARE(image, ground());
    }
};

REGISTER_TEST(testrun::core<TestPointerMarks>);
#include "test_pointermarks_x11.moc"
