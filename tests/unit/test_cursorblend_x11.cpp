// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/cursorblend.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QTest>

#include <cmath>
#include <cstdint>

namespace {

constexpr QRgb kGround = qRgb(100, 150, 200);

MutablePixelView viewOf(QImage& image)
{
    return {image.bits(), static_cast<int>(image.bytesPerLine()), image.width(), image.height()};
}

QImage ground(const QSize& size = {40, 30})
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(kGround);
    return image;
}

/// Of one colour, alpha not multiplied in.
CursorImage cursorOf(const QSize& size, QRgb colour, const QPoint& hotSpot = {})
{
    return {size.width(), size.height(), hotSpot,
            std::vector<std::uint32_t>(static_cast<std::size_t>(size.width() * size.height()), qPremultiply(colour))};
}

int mixed(int below, int over, int alpha)
{
    return static_cast<int>(std::lround((below * (255 - alpha) + over * alpha) / 255.0));
}

bool isAbout(QRgb found, QRgb expected)
{
    return std::abs(qRed(found) - qRed(expected)) <= 1 && std::abs(qGreen(found) - qGreen(expected)) <= 1 &&
           std::abs(qBlue(found) - qBlue(expected)) <= 1;
}

} // namespace

/// A pointer drawn into an image of the screen.
class TestCursorBlend : public QObject
{
    Q_OBJECT

private slots:
    void hotSpotIsAtThePosition()
    {
        QImage image = ground();
        CursorImage cursor = cursorOf({5, 4}, qRgba(0, 0, 0, 0), {3, 1});
        cursor.argbPremultiplied.at(1 * 5 + 3) = 0xFFFFFFFF;
        QCOMPARE(blendCursor(viewOf(image), cursor, {20, 10}), QRect(17, 9, 5, 4));
        QImage expected = ground();
        expected.setPixel(20, 10, qRgb(255, 255, 255));
        QCOMPARE(image, expected);
    }

    void colourIsMixedByAlpha()
    {
        for (int alpha = 0; alpha < 256; ++alpha) {
            QImage image = ground({2, 2});
            blendCursor(viewOf(image), cursorOf({1, 1}, qRgba(250, 20, 0, alpha)), {1, 0});
            const QRgb expected = qRgb(mixed(100, 250, alpha), mixed(150, 20, alpha), mixed(200, 0, alpha));
            QVERIFY2(isAbout(image.pixel(1, 0), expected), qPrintable(QString::number(alpha)));
            QCOMPARE(image.pixel(0, 0), kGround);
        }
    }

    void transparentAndOpaqueAreExact()
    {
        QImage image = ground();
        blendCursor(viewOf(image), cursorOf({40, 30}, qRgba(0, 0, 0, 0)), {0, 0});
        QCOMPARE(image, ground());
        blendCursor(viewOf(image), cursorOf({40, 30}, qRgb(1, 2, 3)), {0, 0});
        QCOMPARE(image.pixel(39, 29), qRgb(1, 2, 3));
    }

    void brighterThanItsAlphaEndsAtWhite()
    {
        QImage image = ground({1, 1});
        blendCursor(viewOf(image), {1, 1, {}, {0x00FFFFFF}}, {0, 0});
        QCOMPARE(image.pixel(0, 0), qRgb(255, 255, 255));
    }

    void onlyWhatIsInsideIsDrawn_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<QRect>("drawn");
        QTest::newRow("inside") << QSize(8, 8) << QPoint(10, 10) << QRect(6, 6, 8, 8);
        QTest::newRow("top left") << QSize(8, 8) << QPoint(0, 0) << QRect(0, 0, 4, 4);
        QTest::newRow("bottom right") << QSize(8, 8) << QPoint(39, 29) << QRect(35, 25, 5, 5);
        QTest::newRow("left of it") << QSize(8, 8) << QPoint(-4, 10) << QRect();
        QTest::newRow("below it") << QSize(8, 8) << QPoint(10, 34) << QRect();
        QTest::newRow("last column") << QSize(8, 8) << QPoint(-3, 10) << QRect(0, 6, 1, 8);
        QTest::newRow("larger than the image") << QSize(256, 256) << QPoint(20, 15) << QRect(0, 0, 40, 30);
        QTest::newRow("hot spot outside") << QSize(256, 256) << QPoint(-100, -100) << QRect(0, 0, 28, 28);
    }

    void onlyWhatIsInsideIsDrawn()
    {
        QFETCH(const QSize, size);
        QFETCH(const QPoint, position);
        QFETCH(const QRect, drawn);
        QImage image = ground();
        const CursorImage cursor = cursorOf(size, qRgb(255, 0, 0), {size.width() / 2, size.height() / 2});
        QCOMPARE(blendCursor(viewOf(image), cursor, position), drawn);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                QCOMPARE(image.pixel(x, y), drawn.contains(x, y) ? qRgb(255, 0, 0) : kGround);
    }

    void eachPixelIsWhereItBelongs()
    {
        QImage image = ground();
        CursorImage cursor = cursorOf({20, 20}, 0);
        for (std::size_t i = 0; i < cursor.argbPremultiplied.size(); ++i)
            cursor.argbPremultiplied.at(i) = 0xFF000000 | static_cast<std::uint32_t>(i);
        QCOMPARE(blendCursor(viewOf(image), cursor, {-5, 15}), QRect(0, 15, 15, 15));
        for (int y = 15; y < 30; ++y)
            for (int x = 0; x < 15; ++x)
                QCOMPARE(image.pixel(x, y), 0xFF000000 | static_cast<QRgb>((y - 15) * 20 + x + 5));
    }

    void rowsOfAPartAreFound()
    {
        QImage image = ground();
        const MutablePixelView part{image.scanLine(5) + 28, static_cast<int>(image.bytesPerLine()), 10, 10};
        QCOMPARE(blendCursor(part, cursorOf({4, 4}, qRgb(9, 9, 9)), {8, 8}), QRect(8, 8, 2, 2));
        QImage expected = ground();
        for (const QPoint position : {QPoint(15, 13), QPoint(16, 13), QPoint(15, 14), QPoint(16, 14)})
            expected.setPixel(position, qRgb(9, 9, 9));
        QCOMPARE(image, expected);
    }

    void cursorWithoutItsPixelsIsNotDrawn()
    {
        QImage image = ground();
        CursorImage cursor = cursorOf({8, 8}, qRgb(0, 0, 0));
        cursor.argbPremultiplied.pop_back();
        QCOMPARE(blendCursor(viewOf(image), cursor, {10, 10}), QRect());
        QCOMPARE(blendCursor(viewOf(image), CursorImage(), {10, 10}), QRect());
        QCOMPARE(image, ground());
    }
};

REGISTER_TEST(testrun::core<TestCursorBlend>);
#include "test_cursorblend_x11.moc"
