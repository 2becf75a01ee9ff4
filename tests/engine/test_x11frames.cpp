// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/videoconversion.h"
#include "engine/capture/x11/x11frames.h"
#include "tests/engine/xserver.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <util/platform.h>

#include <array>

namespace {

constexpr std::uint32_t kRed = 0xC81428;
constexpr std::uint32_t kGreen = 0x14C850;
constexpr std::uint32_t kBlue = 0x1428C8;
const QRect kDesktop(0, 0, 320, 240);
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
    int lumaAt(int x, int y) const { return m_bytes.at(static_cast<std::size_t>(y * m_size.width() + x)); }

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
        std::vector<FrameBuffer> buffers(3, FrameBuffer(area.size()));
        const std::array<std::uint32_t, 3> colors{kRed, kGreen, kBlue};
        for (std::size_t i = 0; i < 60; ++i) {
            const auto at = static_cast<int>(i);
            window.paint(QRect((at * 37) % 300, (at * 23) % 200, 1 + at % 40, 1 + at % 30), colors.at(i % 3));
            window.movePointer(QPoint((at * 29) % 320, (at * 17) % 240));
            FrameBuffer& buffer = buffers.at(i % 3);
            show(*frames, buffer);
            FrameBuffer fresh(area.size());
            show(*open(area), fresh);
            QVERIFY2(buffer.bytes() == fresh.bytes(), qPrintable(QString::number(i)));
        }
    }

    void areaThatMovesShowsTheOtherPlaceAtOnce()
    {
        PaintedWindow window(kDesktop, kRed, display());
        window.paint(QRect(101, 51, 40, 40), kBlue);
        const auto frames = open(QRect(0, 0, 40, 40));
        frames->setPointer(kNoPointer);
        FrameBuffer frame(QSize(40, 40));
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(0, 0), lumaOf(kRed));
        frames->setOrigin(QPoint(101, 51));
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(0, 0), lumaOf(kBlue));
        QCOMPARE(frame.lumaAt(39, 39), lumaOf(kBlue));
    }

    void pointerIsDrawnWhereItPointsAndLeavesNothingBehind()
    {
        PaintedWindow window(kDesktop, kRed, display());
        window.setBlockPointer(8, QPoint(2, 3), 0);
        window.movePointer(QPoint(100, 100));
        const QRect area(50, 50, 200, 150);
        const auto frames = open(area);
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
        PaintedWindow window(kDesktop, kRed, display());
        window.setBlockPointer(8, QPoint(0, 0), 0);
        window.movePointer(QPoint(100, 100));
        const auto frames = open(kDesktop);
        FrameBuffer frame(kDesktop.size());
        show(*frames, frame);
        window.paint(QRect(90, 90, 40, 40), kGreen);
        show(*frames, frame);
        QCOMPARE(frame.lumaAt(99, 99), lumaOf(kGreen));
        QCOMPARE(frame.lumaAt(100, 100), lumaOf(0));
        QCOMPARE(frame.lumaAt(107, 107), lumaOf(0));
        QCOMPARE(frame.lumaAt(108, 108), lumaOf(kGreen));
    }

    void pointerAtTheEdgeIsCutOff()
    {
        PaintedWindow window(kDesktop, kRed, display());
        window.setBlockPointer(9, QPoint(4, 4), 0);
        const QRect area(100, 100, 50, 50);
        const auto frames = open(area);
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

    void displayWithoutFramesSaysWhy()
    {
        QString obstacle;
        QVERIFY(!X11Frames::open(kDesktop, obstacle, "nowhere:77"));
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

    static void show(FrameSource& frames, FrameBuffer& buffer)
    {
        frames.update(os_gettime_ns());
        frames.write(buffer.view());
    }

    std::unique_ptr<XServer> m_server;
};

REGISTER_TEST(testrun::core<TestX11Frames>);

#include "test_x11frames.moc"
