// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/videoconversion.h"
#include "tests/support/slowconversion.h"
#include "tests/support/testrun.h"

#include <QColor>
#include <QRect>
#include <QTest>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using slowconversion::Pixel;

/// What a plane holds where nothing has been written.
constexpr std::uint8_t kUntouched = 0xA5;
constexpr int kRows = 6;

/// Random pixels, or one colour, with rows that are not next to each other.
class Image
{
public:
    Image(int widthPx, int heightPx, int strideBytes)
        : m_widthPx(widthPx)
        , m_heightPx(heightPx)
        , m_strideBytes(strideBytes)
        , m_bytes(static_cast<std::size_t>(strideBytes) * static_cast<std::size_t>(heightPx))
    {
        std::mt19937 random(static_cast<unsigned>(1000 * widthPx + heightPx));
        // The ends are where sums could run over.
        const std::array<std::uint8_t, 4> ends{0, 255, 1, 254};
        for (std::uint8_t& byte : m_bytes)
            byte = random() % 4 == 0 ? ends.at(random() % ends.size()) : static_cast<std::uint8_t>(random());
    }

    Image(const Pixel& colour, int sidePx) : Image(sidePx, sidePx, 4 * sidePx)
    {
        for (std::size_t i = 0; i < m_bytes.size(); ++i)
            if (i % 4 < 3)
                m_bytes.at(i) = colour.at(i % 4);
    }

    PixelView view() const { return {m_bytes.data(), m_strideBytes, m_widthPx, m_heightPx}; }
    QRect rect() const { return {0, 0, m_widthPx, m_heightPx}; }

    Pixel at(int x, int y) const
    {
        const std::size_t first =
            static_cast<std::size_t>(m_strideBytes) * static_cast<std::size_t>(y) + 4 * static_cast<std::size_t>(x);
        return {m_bytes.at(first), m_bytes.at(first + 1), m_bytes.at(first + 2)};
    }

private:
    int m_widthPx;
    int m_heightPx;
    int m_strideBytes;
    std::vector<std::uint8_t> m_bytes;
};

class Frame
{
public:
    explicit Frame(const QSize& size, int paddingBytes = 3)
    {
        for (std::size_t plane = 0; plane < 3; ++plane) {
            const int part = plane == 0 ? 1 : 2;
            m_strides.at(plane) = size.width() / part + paddingBytes;
            m_planes.at(plane).assign(static_cast<std::size_t>(m_strides.at(plane)) *
                                          static_cast<std::size_t>(size.height() / part),
                                      kUntouched);
        }
    }

    I420View view()
    {
        return {{m_planes[0].data(), m_planes[1].data(), m_planes[2].data()},
                {m_strides[0], m_strides[1], m_strides[2]}};
    }

    std::uint8_t& at(std::size_t plane, int x, int y)
    {
        return m_planes.at(plane).at(static_cast<std::size_t>(y) * static_cast<std::size_t>(m_strides.at(plane)) +
                                     static_cast<std::size_t>(x));
    }

    bool operator==(const Frame&) const = default;

private:
    std::array<int, 3> m_strides{};
    std::array<std::vector<std::uint8_t>, 3> m_planes;
};

/// The four pixels that share a chroma sample.
std::array<Pixel, 4> fourAt(const Image& image, int x, int y)
{
    return {image.at(x, y), image.at(x + 1, y), image.at(x, y + 1), image.at(x + 1, y + 1)};
}

void convertSlowly(const Image& image, Frame& frame, const QRect& rect)
{
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x)
            frame.at(0, x, y) = slowconversion::luma(image.at(x, y));
    for (int y = rect.top(); y <= rect.bottom(); y += 2)
        for (int x = rect.left(); x <= rect.right(); x += 2) {
            frame.at(1, x / 2, y / 2) = slowconversion::cb(fourAt(image, x, y));
            frame.at(2, x / 2, y / 2) = slowconversion::cr(fourAt(image, x, y));
        }
}

double lumaOf(const Pixel& pixel)
{
    return 0.0722 * pixel[0] + 0.7152 * pixel[1] + 0.2126 * pixel[2];
}

struct Chroma
{
    double cb;
    double cr;
};

Chroma chromaOf(const std::array<Pixel, 4>& pixels)
{
    std::array<double, 3> mean{};
    for (const Pixel& pixel : pixels)
        for (std::size_t i = 0; i < mean.size(); ++i)
            mean.at(i) += pixel.at(i) / 4.0;
    const double luma = 0.0722 * mean[0] + 0.7152 * mean[1] + 0.2126 * mean[2];
    return {128 + (mean[0] - luma) / 1.8556, 128 + (mean[2] - luma) / 1.5748};
}

void addKinds()
{
    QTest::addColumn<int>("kind");
    int number = 0;
    for (const VideoConversionKind& kind : videoConversionKinds())
        QTest::newRow(kind.name) << number++;
}

} // namespace

/// Pixels of a screen become frames of a video: every kind that this processor has.
class TestVideoConversion : public QObject
{
    Q_OBJECT

private slots:
    void plainOneComesLast() { QCOMPARE(QByteArray(videoConversionKinds().back().name), QByteArray("plain")); }

    void isExactAtEveryWidth_data() { addKinds(); }
    void isExactAtEveryWidth()
    {
        QFETCH(const int, kind);
        for (int width = 2; width <= 70; ++width)
            for (const int padding : {0, 1, 7}) {
                const Image image(width, kRows, 4 * width + padding);
                const QRect even(0, 0, width & ~1, kRows);
                Frame expected(image.rect().size(), padding);
                Frame converted = expected;
                convertSlowly(image, expected, even);
                convertToI420(image.view(), converted.view(), even, kindAt(kind));
                QVERIFY2(converted == expected, qPrintable(QString::number(width)));
            }
    }

    void isWithinOneOfRealNumbers_data() { addKinds(); }
    void isWithinOneOfRealNumbers()
    {
        QFETCH(const int, kind);
        const Image image(254, 254, 4 * 254);
        Frame frame(image.rect().size());
        convertToI420(image.view(), frame.view(), image.rect(), kindAt(kind));
        for (int y = 0; y < 254; ++y)
            for (int x = 0; x < 254; ++x)
                QVERIFY(std::abs(frame.at(0, x, y) - lumaOf(image.at(x, y))) < 1.0);
        for (int y = 0; y < 254; y += 2)
            for (int x = 0; x < 254; x += 2) {
                const Chroma chroma = chromaOf(fourAt(image, x, y));
                QVERIFY(std::abs(frame.at(1, x / 2, y / 2) - chroma.cb) < 1.0);
                QVERIFY(std::abs(frame.at(2, x / 2, y / 2) - chroma.cr) < 1.0);
            }
    }

    void coloursComeOutAsTheyShould_data()
    {
        QTest::addColumn<QColor>("colour");
        QTest::addColumn<QList<int>>("expected");
        QTest::newRow("black") << QColor(Qt::black) << QList<int>{0, 128, 128};
        QTest::newRow("white") << QColor(Qt::white) << QList<int>{255, 128, 128};
        QTest::newRow("blue") << QColor(0, 0, 255) << QList<int>{18, 255, 116};
        QTest::newRow("green") << QColor(0, 255, 0) << QList<int>{182, 30, 12};
        QTest::newRow("red") << QColor(255, 0, 0) << QList<int>{54, 99, 255};
        QTest::newRow("yellow") << QColor(255, 255, 0) << QList<int>{237, 1, 140};
        QTest::newRow("cyan") << QColor(0, 255, 255) << QList<int>{201, 157, 1};
    }

    void coloursComeOutAsTheyShould()
    {
        QFETCH(const QColor, colour);
        QFETCH(const QList<int>, expected);
        for (const VideoConversionKind& kind : videoConversionKinds())
            QCOMPARE(converted(colour, kind), expected);
    }

    void greyStaysGrey_data() { addKinds(); }
    void greyStaysGrey()
    {
        QFETCH(const int, kind);
        for (int grey = 0; grey < 256; ++grey)
            QCOMPARE(converted(QColor(grey, grey, grey), kindAt(kind)), (QList<int>{grey, 128, 128}));
    }

    void onlyTheRectangleIsWritten_data() { addKinds(); }
    void onlyTheRectangleIsWritten()
    {
        QFETCH(const int, kind);
        const Image image(200, 40, 4 * 200);
        for (const QRect& rect : {QRect(0, 0, 2, 2), QRect(198, 38, 2, 2), QRect(10, 6, 134, 20), QRect(2, 2, 66, 2)}) {
            Frame expected(image.rect().size());
            Frame converted = expected;
            convertSlowly(image, expected, rect);
            convertToI420(image.view(), converted.view(), rect, kindAt(kind));
            QVERIFY(converted == expected);
        }
    }

    void rectanglesGrowToEvenEdgesWithinTheImage_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRect>("rect");
        QTest::addColumn<QRect>("written");
        QTest::newRow("odd position") << QSize(40, 20) << QRect(3, 5, 4, 4) << QRect(2, 4, 6, 6);
        QTest::newRow("odd size") << QSize(40, 20) << QRect(4, 4, 3, 5) << QRect(4, 4, 4, 6);
        QTest::newRow("a pixel") << QSize(40, 20) << QRect(7, 7, 1, 1) << QRect(6, 6, 2, 2);
        QTest::newRow("partly outside") << QSize(40, 20) << QRect(-5, 15, 10, 10) << QRect(0, 14, 6, 6);
        QTest::newRow("all and more") << QSize(40, 20) << QRect(-1, -1, 90, 90) << QRect(0, 0, 40, 20);
        QTest::newRow("odd image") << QSize(41, 21) << QRect(0, 0, 41, 21) << QRect(0, 0, 40, 20);
        QTest::newRow("last of an odd image") << QSize(41, 21) << QRect(40, 20, 1, 1) << QRect();
        QTest::newRow("outside") << QSize(40, 20) << QRect(40, 0, 10, 10) << QRect();
        QTest::newRow("empty") << QSize(40, 20) << QRect() << QRect();
        QTest::newRow("no image") << QSize(1, 1) << QRect(0, 0, 1, 1) << QRect();
    }

    void rectanglesGrowToEvenEdgesWithinTheImage()
    {
        QFETCH(const QSize, size);
        QFETCH(const QRect, rect);
        QFETCH(const QRect, written);
        const Image image(size.width(), size.height(), 4 * size.width());
        Frame expected(size);
        Frame converted = expected;
        convertSlowly(image, expected, written);
        convertToI420(image.view(), converted.view(), rect);
        QVERIFY(converted == expected);
    }

private:
    static const VideoConversionKind& kindAt(int number)
    {
        return videoConversionKinds().at(static_cast<std::size_t>(number));
    }

    /// The first sample of each plane; wide enough for every kind.
    static QList<int> converted(const QColor& colour, const VideoConversionKind& kind)
    {
        const Image image({static_cast<std::uint8_t>(colour.blue()), static_cast<std::uint8_t>(colour.green()),
                           static_cast<std::uint8_t>(colour.red())},
                          64);
        Frame frame(image.rect().size());
        convertToI420(image.view(), frame.view(), image.rect(), kind);
        return {frame.at(0, 0, 0), frame.at(1, 0, 0), frame.at(2, 0, 0)};
    }
};

REGISTER_TEST(testrun::core<TestVideoConversion>);
#include "test_videoconversion_x11.moc"
