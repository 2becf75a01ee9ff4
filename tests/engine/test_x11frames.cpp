// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/videoconversion.h"
#include "engine/capture/x11/x11frames.h"
#include "platform/windowing/excluded_windows.h"
#include "tests/engine/xserver.h"
#include "tests/support/messagecapture.h"
#include "tests/support/slowconversion.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTest>

#include <util/platform.h>
#include <utility>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

constexpr std::uint32_t kRed = 0xC81428;
constexpr std::uint32_t kGreen = 0x14C850;
constexpr std::uint32_t kBlue = 0x1428C8;
const QRect kDesktop(0, 0, 320, 240);
constexpr std::uint32_t kHighlight = 0xFFFFFF;
constexpr std::uint32_t kLeftClick = 0x0000FF;
constexpr std::uint32_t kRightClick = 0x000000;
/// The circles without the pointer itself.
const FramePointer kOpaqueCircles{.isShown = false,
                                  .effects = {.highlight = EffectColor{1, 1, 1, 1},
                                              .leftClick = EffectColor{0, 0, 1, 1},
                                              .rightClick = EffectColor{0, 0, 0, 1}}};
const FramePointer kNoPointer{.isShown = false, .effects = {}};

/// A frame in memory of its own.
class FrameBuffer
{
public:
    explicit FrameBuffer(const QSize& size)
        : m_size(size)
        , m_bytes(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()) * 3 / 2)
    {}

    I420View view()
    {
        std::uint8_t* const luma = m_bytes.data();
        std::uint8_t* const cb = luma + static_cast<std::ptrdiff_t>(m_size.width()) * m_size.height();
        const int half = m_size.width() / 2;
        return {{luma, cb, cb + static_cast<std::ptrdiff_t>(half) * (m_size.height() / 2)},
                {m_size.width(), half, half}};
    }

    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }
    int lumaAt(int x, int y) const
    {
        return m_bytes.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(m_size.width()) +
                          static_cast<std::size_t>(x));
    }

private:
    QSize m_size;
    std::vector<std::uint8_t> m_bytes;
};

int lumaOf(std::uint32_t color)
{
    const std::vector<std::uint32_t> pixels(4, color);
    FrameBuffer frame(QSize(2, 2));
    convertToI420({reinterpret_cast<const std::uint8_t*>(pixels.data()), 8, 2, 2}, frame.view(), QRect(0, 0, 2, 2));
    return frame.lumaAt(0, 0);
}

slowconversion::Pixel pixelAt(const QImage& image, int x, int y)
{
    const QRgb color = image.pixel(x, y);
    return {static_cast<std::uint8_t>(qBlue(color)), static_cast<std::uint8_t>(qGreen(color)),
            static_cast<std::uint8_t>(qRed(color))};
}

/// The bytes that a frame of this image has.
std::vector<std::uint8_t> slowFrame(const QImage& image)
{
    std::vector<std::uint8_t> luma;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            luma.push_back(slowconversion::luma(pixelAt(image, x, y)));
    std::vector<std::uint8_t> cb;
    std::vector<std::uint8_t> cr;
    for (int y = 0; y < image.height(); y += 2)
        for (int x = 0; x < image.width(); x += 2) {
            const std::array<slowconversion::Pixel, 4> four{pixelAt(image, x, y), pixelAt(image, x + 1, y),
                                                            pixelAt(image, x, y + 1), pixelAt(image, x + 1, y + 1)};
            cb.push_back(slowconversion::cb(four));
            cr.push_back(slowconversion::cr(four));
        }
    std::vector<std::uint8_t> frame = luma;
    frame.insert(frame.end(), cb.begin(), cb.end());
    frame.insert(frame.end(), cr.begin(), cr.end());
    return frame;
}

/// A window over the whole desktop, and an image of what it shows.
class PaintedDesktop
{
public:
    explicit PaintedDesktop(const char* display)
        : m_window(kDesktop, kRed, display), m_image(kDesktop.size(), QImage::Format_RGB32)
    {
        m_image.fill(kRed);
    }

    PaintedWindow& window() { return m_window; }

    void paint(const QRect& area, std::uint32_t color)
    {
        m_window.paint(area, color);
        paintImage(area, color);
    }
    void paintImage(const QRect& area, std::uint32_t color)
    {
        const QRect inside = area & m_image.rect();
        for (int y = inside.top(); y <= inside.bottom(); ++y)
            for (int x = inside.left(); x <= inside.right(); ++x)
                m_image.setPixel(x, y, color);
    }

    /// Lines of one pixel in three colours, beside and across each other; all of the desktop.
    void paintLines()
    {
        paint(kDesktop, kRed);
        for (int x = 0; x < kDesktop.width(); x += 3)
            paint(QRect(x, 0, 1, kDesktop.height() / 2), x % 2 == 0 ? kGreen : kBlue);
        for (int y = 0; y < kDesktop.height(); y += 2)
            paint(QRect(0, y, kDesktop.width() / 2, 1), y % 3 == 0 ? kGreen : kBlue);
    }

    const QImage& image() const { return m_image; }
    /// What a frame of this area has to be; black outside the desktop.
    std::vector<std::uint8_t> frameOf(const QRect& area) const { return slowFrame(m_image.copy(area)); }

private:
    PaintedWindow m_window;
    QImage m_image;
};

/// @param ms since some moment
void showAt(FrameSource& frames, FrameBuffer& buffer, int ms)
{
    constexpr std::uint64_t kBeginNs = 1'000'000'000'000;
    frames.update(kBeginNs + std::uint64_t{1'000'000} * static_cast<std::uint64_t>(ms));
    frames.write(buffer.view());
}

void show(FrameSource& frames, FrameBuffer& buffer)
{
    showAt(frames, buffer, 0);
}

/// A red desktop with the pointer at (100, 100), and frames of it; none where they cannot be had.
struct PointedDesktop
{
    PointedDesktop(const char* display, const FramePointer& pointer)
        : window(kDesktop, kRed, display), frame(kDesktop.size())
    {
        window.movePointer(QPoint(100, 100));
        QString obstacle;
        frames = X11Frames::open(kDesktop, obstacle, display);
        if (frames)
            frames->setPointer(pointer);
    }

    void show(int ms = 0) { showAt(*frames, frame, ms); }

    PaintedWindow window;
    std::unique_ptr<FrameSource> frames;
    FrameBuffer frame;
};

} // namespace

/// On servers of its own, so that nobody else draws.
class TestX11Frames : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_server = std::make_unique<XServer>();
        QVERIFY(start({}));
    }

    void frameShowsTheAreaAndWhatChangesInIt()
    {
        const QRect area(20, 10, 102, 52);
        PaintedWindow window(area, kRed, display());
        const auto frames = open(area);
        QVERIFY(frames);
        frames->setPointer(kNoPointer);
        FrameBuffer frame(area.size());
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(0, 0), lumaOf(kRed));
        QCOMPARE(frame.lumaAt(101, 51), lumaOf(kRed));
        window.paint(QRect(33, 21, 5, 7), kGreen);
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(32, 21), lumaOf(kRed));
        QCOMPARE(frame.lumaAt(33, 21), lumaOf(kGreen));
        QCOMPARE(frame.lumaAt(37, 27), lumaOf(kGreen));
        QCOMPARE(frame.lumaAt(38, 28), lumaOf(kRed));
    }

    /// Each buffer is written only in part, and has to come out as if all of it had been.
    void everyBufferIsWhole_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("damage") << QStringList();
        QTest::newRow("no damage") << QStringList{QStringLiteral("-extension"), QStringLiteral("DAMAGE")};
        QTest::newRow("no shared memory") << QStringList{QStringLiteral("-extension"), QStringLiteral("MIT-SHM")};
    }

    void everyBufferIsWhole()
    {
        QFETCH(const QStringList, options);
        m_server = std::make_unique<XServer>();
        QVERIFY(start(options));
        PaintedWindow window(kDesktop, kRed, display());
        const QRect area(15, 25, 200, 150);
        const auto frames = open(area);
        QVERIFY(frames);
        std::vector<FrameBuffer> buffers(3, FrameBuffer(area.size()));
        const std::array<std::uint32_t, 3> colors{kRed, kGreen, kBlue};
        for (std::size_t i = 0; i < 60; ++i) {
            const auto at = static_cast<int>(i);
            window.paint(QRect((at * 37) % 300, (at * 23) % 200, 1 + at % 40, 1 + at % 30), colors.at(i % 3));
            window.movePointer(QPoint((at * 29) % 320, (at * 17) % 240));
            FrameBuffer& buffer = buffers.at(i % 3);
            show(*frames, buffer);
            const auto newFrames = open(area);
            QVERIFY(newFrames);
            FrameBuffer fresh(area.size());
            show(*newFrames, fresh);
            QVERIFY2(buffer.bytes() == fresh.bytes(), qPrintable(QString::number(i)));
        }
    }

    void linesOfOnePixelAreExact_data()
    {
        QTest::addColumn<QRect>("area");
        QTest::newRow("even position") << QRect(20, 10, 202, 152);
        QTest::newRow("odd column") << QRect(21, 10, 202, 152);
        QTest::newRow("odd row") << QRect(20, 11, 202, 152);
        QTest::newRow("odd position") << QRect(33, 35, 58, 154);
        QTest::newRow("beyond the near edges") << QRect(-7, -5, 102, 52);
        QTest::newRow("beyond the far edges") << QRect(253, 201, 102, 52);
        QTest::newRow("whole desktop") << kDesktop;
    }

    void linesOfOnePixelAreExact()
    {
        QFETCH(const QRect, area);
        PaintedDesktop desktop(display());
        desktop.paintLines();
        const auto frames = open(area);
        QVERIFY(frames);
        frames->setPointer(kNoPointer);
        FrameBuffer frame(area.size());
        show(*frames, frame);
        QVERIFY(frame.bytes() == desktop.frameOf(area));
        desktop.paint(QRect(57, 0, 1, 240), kBlue);
        desktop.paint(QRect(0, 41, 320, 1), kGreen);
        desktop.paint(QRect(300, 215, 1, 1), kBlue);
        show(*frames, frame);
        QVERIFY(frame.bytes() == desktop.frameOf(area));
    }

    void areaThatMovesIsExactAtOnce()
    {
        PaintedDesktop desktop(display());
        desktop.paintLines();
        QRect area(10, 20, 102, 52);
        const auto frames = open(area);
        QVERIFY(frames);
        frames->setPointer(kNoPointer);
        std::vector<FrameBuffer> buffers(2, FrameBuffer(area.size()));
        int number = 0;
        for (const QPoint& origin : {QPoint(11, 20), QPoint(11, 21), QPoint(101, 51), QPoint(-9, 53), QPoint(271, 211),
                                     QPoint(400, 300), QPoint(0, 0), QPoint(1, 1)}) {
            area.moveTopLeft(origin);
            frames->setOrigin(origin);
            desktop.paint(QRect(origin + QPoint(5, 5), QSize(3, 3)), kBlue);
            FrameBuffer& buffer = buffers.at(static_cast<std::size_t>(++number % 2));
            show(*frames, buffer);
            QVERIFY2(buffer.bytes() == desktop.frameOf(area), qPrintable(QString::number(number)));
        }
    }

    void desktopThatShrinksIsBlackOutsideUntilItGrowsAgain()
    {
        PaintedDesktop desktop(display());
        desktop.paintLines();
        const QRect area(21, 11, 282, 222);
        const auto frames = open(area);
        QVERIFY(frames);
        frames->setPointer(kNoPointer);
        FrameBuffer frame(area.size());
        show(*frames, frame);
        const MessageCapture log;
        QVERIFY(run("xrandr", {"--output", "screen", "--off", "--fb", "200x151"}));
        // The server has cleared the window.
        desktop.paintLines();
        show(*frames, frame);
        QVERIFY(!log.texts(QtInfoMsg).filter(changedTo(QStringLiteral("200x151"))).isEmpty());
        const QImage rest = desktop.image().copy(0, 0, 200, 151).copy(kDesktop);
        QVERIFY(frame.bytes() == slowFrame(rest.copy(area)));
        desktop.paint(QRect(100, 100, 99, 51), kGreen);
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(100 - 21, 100 - 11), lumaOf(kGreen));
        QVERIFY(run("xrandr", {"--fb", "320x240"}));
        desktop.paintLines();
        show(*frames, frame);
        QVERIFY(!log.texts(QtInfoMsg).filter(changedTo(QStringLiteral("320x240"))).isEmpty());
        QVERIFY(frame.bytes() == desktop.frameOf(area));
    }

    void screenThatIsUnpluggedIsLoggedAndTheFramesGoOn()
    {
        PaintedDesktop desktop(display());
        const auto frames = open(kDesktop);
        QVERIFY(frames);
        frames->setPointer(kNoPointer);
        FrameBuffer frame(kDesktop.size());
        show(*frames, frame);
        const MessageCapture log;
        show(*frames, frame);
        const auto line = changedTo(QStringLiteral("320x240"));
        QCOMPARE(log.texts(QtInfoMsg).filter(line).size(), 0);
        QVERIFY(run("xrandr", {"--output", "screen", "--off", "--fb", "320x240"}));
        desktop.paintLines();
        show(*frames, frame);
        QCOMPARE(log.texts(QtInfoMsg).filter(line).size(), 1);
        QVERIFY(frame.bytes() == desktop.frameOf(kDesktop));
        show(*frames, frame);
        QCOMPARE(log.texts(QtInfoMsg).filter(line).size(), 1);
    }

    void connectionThatIsLostIsOpenedAgain()
    {
        PaintedDesktop desktop(display());
        desktop.window().setBlockPointer(8, QPoint(0, 0), 0);
        desktop.window().movePointer(QPoint(100, 100));
        const auto frames = open(kDesktop);
        QVERIFY(frames);
        FrameBuffer frame(kDesktop.size());
        show(*frames, frame);
        desktop.window().disconnectOthers();
        desktop.paintLines();
        desktop.paintImage(QRect(100, 100, 8, 8), 0);
        const MessageCapture log;
        show(*frames, frame);
        QVERIFY(frame.bytes() == desktop.frameOf(kDesktop));
        desktop.paint(QRect(0, 0, 50, 50), kBlue);
        show(*frames, frame);
        QVERIFY(frame.bytes() == desktop.frameOf(kDesktop));
        const auto reason =
            QStringLiteral("[WARNING] The X server had closed the connection of the recording; it is open again");
        QCOMPARE(log.texts(QtWarningMsg).filter(reason).size(), 1);
    }

    void videoIsFrozenWhereTheServerHasEnded()
    {
        // Servers that choose a number take the lowest one: no other server takes this one over.
        m_server = std::make_unique<XServer>();
        QVERIFY(start({QStringLiteral(":%1").arg(10'000 + QCoreApplication::applicationPid() % 40'000)}));
        const auto frames = open(kDesktop);
        QVERIFY(frames);
        FrameBuffer frame(kDesktop.size());
        show(*frames, frame);
        const FrameBuffer before = frame;
        FrameBuffer other(kDesktop.size());
        m_server.reset();
        const MessageCapture log;
        const auto reason = QStringLiteral("[WARNING] The recorded video is frozen: there is no X server");
        for (const auto& [ms, lines] : {std::pair(0, 0), {999, 0}, {1'000, 1}, {2'000, 1}, {60'000, 1}}) {
            showAt(*frames, frame, ms);
            QVERIFY(frame.bytes() == before.bytes());
            frames->write(other.view());
            QVERIFY(other.bytes() == before.bytes());
            QCOMPARE(log.texts(QtWarningMsg).filter(reason).size(), lines);
        }
    }

    void pointerIsDrawnWhereItPointsAndLeavesNothingBehind()
    {
        PaintedWindow window(kDesktop, kRed, display());
        window.setBlockPointer(8, QPoint(2, 3), 0);
        window.movePointer(QPoint(100, 100));
        const QRect area(50, 50, 200, 150);
        const auto frames = open(area);
        QVERIFY(frames);
        FrameBuffer frame(area.size());
        show(*frames, frame);
        const int black = lumaOf(0);
        QCOMPARE(frame.lumaAt(47, 47), lumaOf(kRed));
        QCOMPARE(frame.lumaAt(48, 47), black);
        QCOMPARE(frame.lumaAt(55, 54), black);
        QCOMPARE(frame.lumaAt(56, 54), lumaOf(kRed));
        window.movePointer(QPoint(150, 120));
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(48, 47), lumaOf(kRed));
        QCOMPARE(frame.lumaAt(55, 54), lumaOf(kRed));
        QCOMPARE(frame.lumaAt(98, 67), black);
        frames->setPointer(kNoPointer);
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(98, 67), lumaOf(kRed));
    }

    void screenThatChangesBelowThePointerIsSeenAroundIt()
    {
        PointedDesktop desktop(display(), FramePointer());
        QVERIFY(desktop.frames);
        desktop.window.setBlockPointer(8, QPoint(0, 0), 0);
        desktop.show();
        desktop.window.paint(QRect(90, 90, 40, 40), kGreen);
        desktop.show();
        QCOMPARE(desktop.frame.lumaAt(99, 99), lumaOf(kGreen));
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(0));
        QCOMPARE(desktop.frame.lumaAt(107, 107), lumaOf(0));
        QCOMPARE(desktop.frame.lumaAt(108, 108), lumaOf(kGreen));
    }

    void pointerAtTheEdgeIsCutOff()
    {
        PaintedWindow window(kDesktop, kRed, display());
        window.setBlockPointer(9, QPoint(4, 4), 0);
        const QRect area(100, 100, 50, 50);
        const auto frames = open(area);
        QVERIFY(frames);
        FrameBuffer frame(area.size());
        window.movePointer(QPoint(100, 100));
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(4, 4), lumaOf(0));
        QCOMPARE(frame.lumaAt(5, 5), lumaOf(kRed));
        window.movePointer(QPoint(149, 149));
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(4, 4), lumaOf(kRed));
        QCOMPARE(frame.lumaAt(45, 45), lumaOf(0));
        QCOMPARE(frame.lumaAt(49, 49), lumaOf(0));
    }

    void veryLargePointerIsWhole()
    {
        PaintedDesktop desktop(display());
        desktop.paintLines();
        desktop.window().setBlockPointer(256, QPoint(101, 200), 0);
        desktop.window().movePointer(QPoint(150, 210));
        const auto frames = open(kDesktop);
        QVERIFY(frames);
        FrameBuffer frame(kDesktop.size());
        show(*frames, frame);
        desktop.paintImage(QRect(49, 10, 256, 256), 0);
        QVERIFY(frame.bytes() == desktop.frameOf(kDesktop));
    }

    void animatedPointerShowsAllOfItsImages()
    {
        PaintedDesktop desktop(display());
        desktop.window().setAnimatedPointer(16, {0x0000, 0x8080, 0xFFFF}, 200);
        desktop.window().movePointer(QPoint(101, 55));
        const auto frames = open(kDesktop);
        QVERIFY(frames);
        FrameBuffer frame(kDesktop.size());
        for (const std::uint32_t color : {0x000000U, 0x800000U, 0xFF0000U, 0x000000U}) {
            desktop.paintImage(QRect(101, 55, 16, 16), color);
            const std::vector<std::uint8_t> expected = desktop.frameOf(kDesktop);
            QTRY_VERIFY((show(*frames, frame), frame.bytes() == expected));
        }
    }

    void highlightIsDrawnAroundThePointerAndLeavesNothingBehind()
    {
        PointedDesktop desktop(display(), kOpaqueCircles);
        QVERIFY(desktop.frames);
        desktop.show();
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(kHighlight));
        QCOMPARE(desktop.frame.lumaAt(100 - 18, 100), lumaOf(kHighlight));
        QCOMPARE(desktop.frame.lumaAt(100, 100 + 18), lumaOf(kHighlight));
        QCOMPARE(desktop.frame.lumaAt(100 + 23, 100), lumaOf(kRed));
        desktop.window.movePointer(QPoint(200, 150));
        desktop.show();
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(kRed));
        QCOMPARE(desktop.frame.lumaAt(200, 150), lumaOf(kHighlight));
        desktop.frames->setPointer(kNoPointer);
        desktop.show();
        QCOMPARE(desktop.frame.lumaAt(200, 150), lumaOf(kRed));
    }

    void highlightHasTheSizeOfTheScreensPixels()
    {
        FramePointer pointer = kOpaqueCircles;
        pointer.pixelRatio = 1.5F;
        PointedDesktop desktop(display(), pointer);
        QVERIFY(desktop.frames);
        desktop.show();
        QCOMPARE(desktop.frame.lumaAt(100 - 28, 100), lumaOf(kHighlight));
        QCOMPARE(desktop.frame.lumaAt(100 - 33, 100), lumaOf(kRed));
    }

    void clickIsMarkedWhileTheButtonIsDown_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<std::uint32_t>("color");
        QTest::newRow("left") << QStringLiteral("1") << kLeftClick;
        QTest::newRow("middle") << QStringLiteral("2") << kHighlight;
        QTest::newRow("right") << QStringLiteral("3") << kRightClick;
    }

    void clickIsMarkedWhileTheButtonIsDown()
    {
        QFETCH(const QString, button);
        QFETCH(const std::uint32_t, color);
        PointedDesktop desktop(display(), kOpaqueCircles);
        QVERIFY(desktop.frames);
        desktop.show();
        QVERIFY(xdotool({QStringLiteral("mousedown"), button}));
        desktop.show(1'000);
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(color));
        QCOMPARE(desktop.frame.lumaAt(100 + 16, 100), lumaOf(kHighlight));
        desktop.show(5'000);
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(color));
        QVERIFY(xdotool({QStringLiteral("mouseup"), button}));
        desktop.show(6'000);
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(kHighlight));
    }

    void clickBetweenTwoFramesIsMarkedLongEnoughToBeSeen()
    {
        PointedDesktop desktop(display(), kOpaqueCircles);
        QVERIFY(desktop.frames);
        desktop.show();
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("1")}));
        for (const int ms : {33, 66, 199}) {
            desktop.show(ms);
            QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(kLeftClick));
        }
        desktop.show(300);
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(kHighlight));
    }

    void clicksAreThoseOfTheUsersArrangement()
    {
        PaintedWindow(kDesktop, kRed, display()).arrangeButtons({3, 2, 1});
        PointedDesktop desktop(display(), kOpaqueCircles);
        QVERIFY(desktop.frames);
        desktop.show();
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("1")}));
        desktop.show(33);
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(kRightClick));
        desktop.show(300);
        desktop.window.arrangeButtons({1, 2, 3});
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("1")}));
        desktop.show(333);
        QCOMPARE(desktop.frame.lumaAt(100, 100), lumaOf(kLeftClick));
    }

    void windowThatIsExcludedFromTheBeginningIsInNoFrameNorIsItsPlaceBlack()
    {
        const PaintedWindow below(kDesktop, kRed, display());
        const PaintedWindow bar(QRect(100, 50, 60, 20), kGreen, display());
        platform::ExcludedWindows::ofProgram().insert({bar.id(), 0});
        const auto frames = open(kDesktop);
        FrameBuffer frame(kDesktop.size());
        if (frames) {
            frames->setPointer(kNoPointer);
            frames->update(os_gettime_ns());
            frames->write(frame.view());
        }
        platform::ExcludedWindows::ofProgram().remove(bar.id());
        QVERIFY(frames);
        QCOMPARE(frame.lumaAt(0, 0), lumaOf(kRed));
        QCOMPARE(frame.lumaAt(100, 50), lumaOf(kRed));
        QCOMPARE(frame.lumaAt(159, 69), lumaOf(kRed));
    }

    void displayWithoutFramesSaysWhy()
    {
        QString obstacle;
        QVERIFY(!X11Frames::open(kDesktop, obstacle, ":999"));
        QCOMPARE(obstacle, QStringLiteral("there is no X server"));
    }

private:
    bool start(const QStringList& options)
    {
        return m_server->start(
            QStringList{QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("320x240x24")} + options);
    }

    const char* display() const { return m_server->display().constData(); }

    std::unique_ptr<FrameSource> open(const QRect& area) const
    {
        QString obstacle;
        return X11Frames::open(area, obstacle, display());
    }

    bool xdotool(const QStringList& arguments) const { return run("xdotool", arguments); }

    bool run(const char* program, const QStringList& arguments) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(m_server->display()));
        process.setProcessEnvironment(environment);
        process.start(QString::fromLatin1(program), arguments);
        return process.waitForFinished() && process.exitCode() == 0;
    }

    static QString changedTo(const QString& size)
    {
        return QStringLiteral("The screens have changed: the desktop is %1 now; the recording goes on").arg(size);
    }

    std::unique_ptr<XServer> m_server;
};

REGISTER_TEST(testrun::core<TestX11Frames>);

#include "test_x11frames.moc"
