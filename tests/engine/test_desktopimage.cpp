// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/damagetracker.h"
#include "engine/capture/x11/desktopimage.h"
#include "engine/capture/x11/x11regions.h"
#include "platform/windowing/excluded_windows.h"
#include "tests/engine/xserver.h"
#include "tests/support/testrun.h"

#include <QElapsedTimer>
#include <QImage>
#include <QTest>

#include <xcb/composite.h>
#include <xcb/shm.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>

using platform::ExcludedWindows;

namespace {

constexpr std::uint32_t kRed = 0xC81428;
constexpr std::uint32_t kGreen = 0x14C850;
constexpr std::uint32_t kBlue = 0x1428C8;
constexpr std::uint32_t kBlack = 0;
constexpr std::uint64_t kNsPerMs = 1'000'000;
constexpr std::uint64_t kFrameMs = 33;
constexpr std::uint64_t kPaintMs = WindowsBelow::kPaintNs / kNsPerMs;
constexpr std::uint64_t kLingerMs = ExcludedAreas::kLingerNs / kNsPerMs;
constexpr std::uint64_t kKeepMs = WindowsBelow::kKeepNs / kNsPerMs;
const QRect kDesktop(0, 0, 320, 240);
const QRect kBar(100, 50, 60, 20);
const QPoint kInBar = kBar.center();

/// A window that is entered as one to be left out, for as long as the object lives.
class Exclusion
{
public:
    explicit Exclusion(const PaintedWindow& window, int borderPx = 0) : m_id(window.id())
    {
        ExcludedWindows::ofProgram().insert({m_id, borderPx});
    }
    ~Exclusion() { ExcludedWindows::ofProgram().remove(m_id); }
    Exclusion(const Exclusion&) = delete;
    Exclusion& operator=(const Exclusion&) = delete;

private:
    std::uint32_t m_id;
};

/// The image of a desktop that is followed by its damage, on a clock of the test's.
class FollowedDesktop
{
public:
    explicit FollowedDesktop(const char* display, const QRect& area = kDesktop)
        : m_connection(display), m_damage(m_connection), m_image(m_connection, area)
    {}

    X11Connection& connection() { return m_connection; }
    DesktopImage& image() { return m_image; }

    bool prepare() { return m_image.prepare(m_nowMs * kNsPerMs); }

    /// Another frame.
    void follow() { followAt(m_nowMs += kFrameMs); }
    /// One that comes so much later.
    void followAfter(std::uint64_t ms) { followAt(m_nowMs + ms); }
    /// Frames for so long, and one more.
    void followFor(std::uint64_t ms)
    {
        follow();
        for (std::uint64_t followed = 0; followed < ms; followed += kFrameMs)
            follow();
    }
    void followAt(std::uint64_t nowMs)
    {
        m_nowMs = nowMs;
        // When it returns, the events of what was drawn before have arrived.
        m_connection.updateDesktop();
        while (const auto event = m_connection.nextEvent())
            m_damage.handle(*event);
        m_changed = m_image.update(m_damage.take(), nowMs * kNsPerMs);
    }

    const QRegion& changed() const { return m_changed; }
    QImage shown() const
    {
        const PixelView view = m_image.image();
        return {view.data, view.widthPx, view.heightPx, view.strideBytes, QImage::Format_RGB32};
    }
    std::uint32_t at(const QPoint& onDesktop) const
    {
        return shown().pixel(onDesktop - m_image.area().topLeft()) & 0xFFFFFF;
    }
    bool isAllOf(std::uint32_t color) const
    {
        QImage plain(shown().size(), QImage::Format_RGB32);
        plain.fill(color);
        return shown() == plain;
    }

private:
    X11Connection m_connection;
    DamageTracker m_damage;
    DesktopImage m_image;
    QRegion m_changed;
    std::uint64_t m_nowMs = 1000;
};

enum class Bar
{
    IsShown,
    IsHidden
};

/// A red desktop, and over it a green bar that is excluded.
struct CoveredDesktop
{
    explicit CoveredDesktop(const char* display, Bar state = Bar::IsShown)
        : below(kDesktop, kRed, display), bar(kBar, kGreen, display), desktop(display)
    {
        if (state == Bar::IsHidden)
            bar.hide();
    }

    PaintedWindow below;
    PaintedWindow bar;
    Exclusion exclusion{bar};
    FollowedDesktop desktop;
};

} // namespace

/// The desktop without windows that are to be left out of it. On servers of its own, so that nobody else draws.
class TestDesktopImage : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(start({})); }
    void cleanup() { QCOMPARE(ExcludedWindows::ofProgram().all().size(), std::size_t{0}); }

    void windowThatComesAndGoesIsInNoImage()
    {
        CoveredDesktop covered(display(), Bar::IsHidden);
        FollowedDesktop& desktop = covered.desktop;
        desktop.follow();
        QVERIFY(desktop.isAllOf(kRed));
        covered.bar.show();
        for (std::uint64_t ms = 0; ms < 2 * kPaintMs; ms += kFrameMs) {
            desktop.follow();
            QVERIFY(desktop.isAllOf(kRed));
        }
        covered.bar.hide();
        for (std::uint64_t ms = 0; ms < 2 * kLingerMs; ms += kFrameMs) {
            desktop.follow();
            QVERIFY(desktop.isAllOf(kRed));
        }
    }

    void windowIsInNoImageWhenTheServerCannotWriteIntoSharedMemoryAnyMore()
    {
        QVERIFY(start({QStringLiteral("-extension"), QStringLiteral("Composite")}));
        CoveredDesktop covered(display(), Bar::IsHidden);
        FollowedDesktop& desktop = covered.desktop;
        xcb_connection_t* const server = desktop.connection().get();
        // The connection numbers what it makes.
        const xcb_shm_seg_t memory = xcb_generate_id(server) - 1;
        desktop.follow();
        QVERIFY(desktop.isAllOf(kRed));
        covered.bar.show();
        QVERIFY(desktop.connection().check(xcb_shm_detach_checked(server, memory)));
        covered.below.paint(QRect(0, 0, 320, 40), kBlue);
        for (std::uint64_t ms = 0; ms < kPaintMs; ms += kFrameMs) {
            desktop.follow();
            QCOMPARE(desktop.at(kInBar), kRed);
        }
        QCOMPARE(desktop.at(QPoint(0, 0)), kBlue);
    }

    void windowIsInTheImageOnceItIsNotExcludedAnyMore()
    {
        const PaintedWindow below(kDesktop, kRed, display());
        const PaintedWindow bar(kBar, kGreen, display());
        FollowedDesktop desktop(display());
        {
            const Exclusion exclusion(bar);
            desktop.followFor(kPaintMs);
            QVERIFY(desktop.isAllOf(kRed));
        }
        desktop.followFor(kLingerMs);
        QCOMPARE(desktop.at(kInBar), kGreen);
        QCOMPARE(desktop.at(kBar.topLeft() - QPoint(1, 1)), kRed);
    }

    void whatChangesBelowTheWindowIsShown()
    {
        CoveredDesktop covered(display());
        FollowedDesktop& desktop = covered.desktop;
        desktop.followFor(kPaintMs);
        covered.below.paint(QRect(kInBar, QSize(7, 5)), kBlue);
        desktop.follow();
        QCOMPARE(desktop.at(kInBar), kBlue);
        QCOMPARE(desktop.at(kInBar + QPoint(6, 4)), kBlue);
        QCOMPARE(desktop.at(kInBar + QPoint(7, 5)), kRed);
        QVERIFY(desktop.changed().contains(kInBar));
        desktop.follow();
        QVERIFY(desktop.changed().isEmpty());
    }

    void whatChangesBelowTheWindowAfterALongTimeIsShownAFewFramesLater()
    {
        CoveredDesktop covered(display());
        FollowedDesktop& desktop = covered.desktop;
        desktop.followFor(5 * kPaintMs);
        covered.below.paint(kBar, kBlue);
        desktop.followFor((DesktopImage::kQuietInterval - 1) * kFrameMs);
        QCOMPARE(desktop.at(kInBar), kBlue);
        covered.below.paint(kBar, kRed);
        desktop.follow();
        QCOMPARE(desktop.at(kInBar), kRed);
    }

    /// Another window stands for what a compositing manager still shows of it.
    void windowThatGoesAfterALongTimeIsStillLeftOutForAMoment()
    {
        QVERIFY(start({QStringLiteral("-extension"), QStringLiteral("Composite")}));
        CoveredDesktop covered(display(), Bar::IsHidden);
        FollowedDesktop& desktop = covered.desktop;
        desktop.follow();
        covered.bar.show();
        desktop.followFor(3 * kLingerMs);
        covered.bar.hide();
        const PaintedWindow ghost(kBar, kGreen, display());
        desktop.followFor(kLingerMs - 2 * kFrameMs);
        QCOMPARE(desktop.at(kInBar), kRed);
        desktop.followFor(2 * kFrameMs);
        QCOMPARE(desktop.at(kInBar), kGreen);
    }

    void whatChangesAroundTheWindowIsShownMeanwhile()
    {
        CoveredDesktop covered(display());
        FollowedDesktop& desktop = covered.desktop;
        desktop.followFor(kPaintMs);
        covered.below.paint(kDesktop, kBlue);
        desktop.follow();
        QVERIFY(desktop.isAllOf(kBlue));
    }

    void windowThatIsThereFirstIsBlackUntilWhatIsBelowIsThere()
    {
        CoveredDesktop covered(display());
        FollowedDesktop& desktop = covered.desktop;
        desktop.follow();
        QCOMPARE(desktop.at(kInBar), kBlack);
        QCOMPARE(desktop.at(kBar.bottomRight()), kBlack);
        QCOMPARE(desktop.at(kBar.bottomRight() + QPoint(1, 1)), kRed);
        desktop.follow();
        QCOMPARE(desktop.at(kInBar), kBlack);
        desktop.followFor(kPaintMs);
        QVERIFY(desktop.isAllOf(kRed));
    }

    void windowThatIsThereFirstIsBlackInNoImageWhereItWasPreparedFor()
    {
        CoveredDesktop covered(display());
        FollowedDesktop& desktop = covered.desktop;
        QVERIFY(desktop.prepare());
        desktop.followAfter(kPaintMs);
        QVERIFY(desktop.isAllOf(kRed));
    }

    void nothingIsPreparedWhereNoWindowIsShown()
    {
        CoveredDesktop covered(display(), Bar::IsHidden);
        QVERIFY(!covered.desktop.prepare());
        QVERIFY(!hasImage(covered.desktop.connection(), covered.below));
    }

    /// Nobody knows what a compositing manager shows where no window is.
    void partThatWasNeverSeenIsShownAsSoonAsTheWindowGoes()
    {
        const PaintedWindow beside(QRect(0, 0, 120, 240), kRed, display());
        const X11Connection others(display());
        paintRoot(others, kBlue);
        announceCompositor(others);
        PaintedWindow bar(kBar, kGreen, display());
        const Exclusion exclusion(bar);
        FollowedDesktop desktop(display());
        desktop.followFor(kPaintMs);
        QCOMPARE(desktop.at(QPoint(119, 60)), kRed);
        QCOMPARE(desktop.at(QPoint(120, 60)), kBlack);
        bar.hide();
        desktop.follow();
        QCOMPARE(desktop.at(QPoint(119, 60)), kRed);
        QCOMPARE(desktop.at(QPoint(120, 60)), kBlue);
    }

    void withoutCompositingWhatWasThereStaysUntilTheWindowHasGone()
    {
        QVERIFY(start({QStringLiteral("-extension"), QStringLiteral("Composite")}));
        CoveredDesktop covered(display(), Bar::IsHidden);
        FollowedDesktop& desktop = covered.desktop;
        desktop.follow();
        covered.bar.show();
        desktop.followFor(2 * kPaintMs);
        covered.below.paint(kDesktop, kBlue);
        desktop.follow();
        QCOMPARE(desktop.at(kInBar), kRed);
        QCOMPARE(desktop.at(QPoint(0, 0)), kBlue);
        covered.bar.hide();
        desktop.followFor(kLingerMs);
        // The server has drawn the background of the window below.
        QCOMPARE(desktop.at(kInBar), kRed);
        covered.below.paint(kDesktop, kBlue);
        desktop.follow();
        QVERIFY(desktop.isAllOf(kBlue));
    }

    void windowThatMovesIsOutAtBothPositions()
    {
        CoveredDesktop covered(display(), Bar::IsHidden);
        FollowedDesktop& desktop = covered.desktop;
        desktop.follow();
        covered.bar.show();
        for (const QPoint& position : {QPoint(101, 50), QPoint(150, 60), QPoint(-10, -5), QPoint(300, 230)}) {
            covered.bar.moveTo(position);
            desktop.follow();
            QVERIFY(desktop.isAllOf(kRed));
        }
    }

    /// It comes, moves or goes once while each image is grabbed, sooner or later.
    void windowThatNeverRestsIsInNoImage()
    {
        CoveredDesktop covered(display(), Bar::IsHidden);
        FollowedDesktop& desktop = covered.desktop;
        desktop.follow();
        constexpr int kFrames = 400;
        std::atomic<int> begun = 0;
        std::atomic<int> moved = 0;
        std::thread mover([&] {
            for (int step = 1; step <= kFrames; ++step) {
                begun.wait(step - 1);
                QElapsedTimer waited;
                for (waited.start(); waited.nsecsElapsed() < (step * 7919) % 1'000'000;)
                    std::this_thread::yield();
                if (step % 3 != 0)
                    covered.bar.moveTo(QPoint((step * 37) % 300, (step * 23) % 220));
                else if (step % 2 == 0)
                    covered.bar.hide();
                else
                    covered.bar.show();
                moved = step;
                moved.notify_one();
            }
        });
        QList<int> stained;
        for (int frame = 1; frame <= kFrames; ++frame) {
            covered.below.paint(kDesktop, kRed);
            begun = frame;
            begun.notify_one();
            desktop.follow();
            if (!desktop.isAllOf(kRed))
                stained.append(frame);
            moved.wait(frame - 1);
        }
        mover.join();
        QCOMPARE(stained, QList<int>());
    }

    void onlyTheShapeOfTheWindowIsLeftOut()
    {
        PaintedWindow below(kDesktop, kRed, display());
        PaintedWindow bar(kBar, kGreen, display());
        const QRegion shape = QRegion(0, 0, 60, 20) - QRegion(10, 5, 40, 10);
        bar.setShape(shape);
        const Exclusion exclusion(bar);
        FollowedDesktop desktop(display());
        desktop.follow();
        QCOMPARE(desktop.at(kBar.topLeft()), kBlack);
        QCOMPARE(desktop.at(kBar.topLeft() + QPoint(9, 10)), kBlack);
        QCOMPARE(desktop.at(kBar.topLeft() + QPoint(10, 10)), kRed);
        bar.setShape(QRegion(-1, -1, 1, 1));
        desktop.followFor(kLingerMs);
        QVERIFY(desktop.isAllOf(kRed));
    }

    void insideOfAWindowStaysInAndItsBorderIsOut()
    {
        PaintedWindow below(kDesktop, kRed, display());
        PaintedWindow frame(kBar, kGreen, display());
        frame.paint(QRect(4, 4, 52, 12), kBlue);
        const Exclusion exclusion(frame, 4);
        FollowedDesktop desktop(display());
        desktop.followFor(kPaintMs);
        const QImage shown = desktop.shown();
        for (const QPoint& onBorder : {QPoint(0, 0), QPoint(3, 10), QPoint(59, 19), QPoint(30, 16), QPoint(56, 10)})
            QCOMPARE(desktop.at(kBar.topLeft() + onBorder), kRed);
        for (const QPoint& inside : {QPoint(4, 4), QPoint(55, 15), QPoint(30, 10)})
            QCOMPARE(desktop.at(kBar.topLeft() + inside), kBlue);
    }

    void otherWindowsAreDrawnInTheirOrderAboveItToo()
    {
        const PaintedWindow below(kDesktop, kRed, display());
        PaintedWindow middle(QRect(90, 40, 30, 100), kBlue, display());
        PaintedWindow bar(kBar, kGreen, display());
        const PaintedWindow above(QRect(150, 60, 50, 50), kBlue, display());
        middle.setShape(QRegion(0, 0, 20, 100));
        const Exclusion exclusion(bar);
        FollowedDesktop desktop(display());
        desktop.followFor(kPaintMs);
        QCOMPARE(desktop.at(QPoint(100, 50)), kBlue);
        QCOMPARE(desktop.at(QPoint(109, 69)), kBlue);
        QCOMPARE(desktop.at(QPoint(110, 69)), kRed);
        QCOMPARE(desktop.at(QPoint(149, 69)), kRed);
        QCOMPARE(desktop.at(QPoint(150, 60)), kBlue);
        QCOMPARE(desktop.at(QPoint(159, 59)), kRed);
        // Nothing of it is covered any more, and it is still not in the image.
        bar.raise();
        desktop.follow();
        QCOMPARE(desktop.at(QPoint(150, 60)), kBlue);
    }

    void translucentWindowIsMixedWhereACompositingManagerDoesSo_data()
    {
        QTest::addColumn<bool>("isMixed");
        QTest::addColumn<std::uint32_t>("color");
        QTest::newRow("compositing manager") << true << std::uint32_t{0x008064};
        QTest::newRow("none") << false << std::uint32_t{0x008000};
    }

    void translucentWindowIsMixedWhereACompositingManagerDoesSo()
    {
        QFETCH(const bool, isMixed);
        QFETCH(const std::uint32_t, color);
        const PaintedWindow below(kDesktop, 0x0000C8, display());
        const X11Connection others(display());
        makeTranslucentWindow(others, QRect(90, 40, 30, 100), 0x80008000);
        if (isMixed)
            announceCompositor(others);
        const PaintedWindow bar(kBar, kGreen, display());
        const Exclusion exclusion(bar);
        FollowedDesktop desktop(display());
        desktop.followFor(kPaintMs);
        QVERIFY2(isNearly(desktop.at(QPoint(105, 55)), color),
                 qPrintable(QString::number(desktop.at(QPoint(105, 55)), 16)));
        QCOMPARE(desktop.at(QPoint(130, 55)), std::uint32_t{0x0000C8});
    }

    void windowBelowThatGoesIsGoneBelow()
    {
        const PaintedWindow below(kDesktop, kRed, display());
        PaintedWindow other(QRect(90, 40, 30, 100), kBlue, display());
        const PaintedWindow bar(kBar, kGreen, display());
        const Exclusion exclusion(bar);
        FollowedDesktop desktop(display());
        desktop.followFor(kPaintMs);
        QCOMPARE(desktop.at(QPoint(105, 55)), kBlue);
        other.hide();
        desktop.follow();
        QVERIFY(desktop.isAllOf(kRed));
    }

    void backgroundOfTheDesktopIsShownWhereNoWindowIs()
    {
        const PaintedWindow bar(kBar, kGreen, display());
        const Exclusion exclusion(bar);
        FollowedDesktop desktop(display());
        desktop.followFor(kPaintMs);
        QCOMPARE(desktop.at(kInBar), kBlack);
        setBackground(desktop.connection(), kBlue);
        desktop.follow();
        QCOMPARE(desktop.at(kInBar), kBlue);
        QCOMPARE(desktop.at(kBar.topLeft()), kBlue);
        QCOMPARE(desktop.at(kBar.bottomRight()), kBlue);
    }

    void partThatIsBeyondTheDesktopStaysBlack()
    {
        const PaintedWindow below(kDesktop.adjusted(-50, -50, 50, 50), kRed, display());
        const PaintedWindow bar(QRect(-20, -10, 60, 20), kGreen, display());
        const Exclusion exclusion(bar);
        FollowedDesktop desktop(display(), QRect(-30, -20, 100, 100));
        desktop.followFor(kPaintMs);
        QCOMPARE(desktop.at(QPoint(0, 0)), kRed);
        QCOMPARE(desktop.at(QPoint(-1, 0)), kBlack);
        QCOMPARE(desktop.at(QPoint(0, -1)), kBlack);
        QCOMPARE(desktop.at(QPoint(-20, -10)), kBlack);
    }

    void areaThatMovesUnderTheWindowIsExactAtOnce()
    {
        const PaintedWindow left(QRect(0, 0, 100, 240), kRed, display());
        const PaintedWindow right(QRect(100, 0, 220, 240), kBlue, display());
        const PaintedWindow bar(kBar, kGreen, display());
        const Exclusion exclusion(bar);
        FollowedDesktop desktop(display(), QRect(0, 0, 200, 100));
        desktop.followFor(kPaintMs);
        for (const QPoint& origin : {QPoint(1, 0), QPoint(40, 30), QPoint(110, 60), QPoint(0, 0)}) {
            desktop.image().setArea(QRect(origin, QSize(200, 100)));
            desktop.follow();
            const QImage shown = desktop.shown();
            for (int y = 0; y < shown.height(); ++y) {
                for (int x = 0; x < shown.width(); ++x)
                    QCOMPARE(shown.pixel(x, y) & 0xFFFFFF, origin.x() + x < 100 ? kRed : kBlue);
            }
        }
    }

    /// A program that asks for no image of its window has none, and nothing of it may be read.
    void imagesOfWindowsAreKeptOnlyWhileTheyAreNeeded()
    {
        CoveredDesktop covered(display(), Bar::IsHidden);
        FollowedDesktop& desktop = covered.desktop;
        desktop.followFor(kPaintMs);
        QVERIFY(!hasImage(desktop.connection(), covered.below));
        covered.bar.show();
        desktop.followFor(kPaintMs);
        QVERIFY(hasImage(desktop.connection(), covered.below));
        covered.bar.hide();
        desktop.followFor(kLingerMs);
        QVERIFY(hasImage(desktop.connection(), covered.below));
        desktop.followFor(kKeepMs);
        QVERIFY(!hasImage(desktop.connection(), covered.below));
        QVERIFY(desktop.isAllOf(kRed));
    }

private:
    bool start(const QStringList& options)
    {
        m_server = std::make_unique<XServer>();
        return m_server->start(
            QStringList{QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("320x240x24")} + options);
    }
    const char* display() const { return m_server->display().constData(); }

    /// The background that the server itself draws.
    static void paintRoot(const X11Connection& connection, std::uint32_t color)
    {
        xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_BACK_PIXEL, &color);
        QVERIFY(connection.check(xcb_clear_area_checked(connection.get(), 0, connection.root(), 0, 0, 0, 0)));
    }

    /// As programs do that set wallpapers.
    static void setBackground(const X11Connection& connection, std::uint32_t color)
    {
        constexpr std::uint16_t kTilePx = 16;
        xcb_connection_t* const server = connection.get();
        const auto tile = xcb_generate_id(server);
        const auto context = xcb_generate_id(server);
        xcb_create_pixmap(server, 24, tile, connection.root(), kTilePx, kTilePx);
        xcb_create_gc(server, context, tile, XCB_GC_FOREGROUND, &color);
        const xcb_rectangle_t whole{0, 0, kTilePx, kTilePx};
        xcb_poly_fill_rectangle(server, tile, context, 1, &whole);
        xcb_change_property(server, XCB_PROP_MODE_REPLACE, connection.root(),
                            platform::xcb::atomNamed(server, "_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1, &tile);
        xcb_flush(server);
    }

    /// @param argb the colours multiplied by alpha
    static void makeTranslucentWindow(const X11Connection& connection, const QRect& area, std::uint32_t argb)
    {
        xcb_connection_t* const server = connection.get();
        const xcb_visualid_t visual = translucentVisual(server);
        QVERIFY(visual != 0);
        const auto colormap = xcb_generate_id(server);
        const auto window = xcb_generate_id(server);
        const xcb_rectangle_t at = x11regions::fromRect(area);
        xcb_create_colormap(server, XCB_COLORMAP_ALLOC_NONE, colormap, connection.root(), visual);
        const std::array<std::uint32_t, 4> values{argb, 0, 1, colormap};
        QVERIFY(connection.check(xcb_create_window_checked(
            server, 32, window, connection.root(), at.x, at.y, at.width, at.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
            visual, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
            values.data())));
        QVERIFY(connection.check(xcb_map_window_checked(server, window)));
    }

    /// 0 without one.
    static xcb_visualid_t translucentVisual(xcb_connection_t* server)
    {
        for (auto depth = xcb_screen_allowed_depths_iterator(xcb_setup_roots_iterator(xcb_get_setup(server)).data);
             depth.rem > 0; xcb_depth_next(&depth)) {
            if (depth.data->depth == 32 && depth.data->visuals_len > 0)
                return xcb_depth_visuals(depth.data)->visual_id;
        }
        return 0;
    }

    static void announceCompositor(const X11Connection& connection)
    {
        xcb_connection_t* const server = connection.get();
        const auto window = xcb_generate_id(server);
        xcb_create_window(server, 0, window, connection.root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0,
                          nullptr);
        QVERIFY(connection.check(xcb_set_selection_owner_checked(
            server, window, platform::xcb::atomNamed(server, "_NET_WM_CM_S0"), XCB_CURRENT_TIME)));
    }

    /// The server rounds in its own way.
    static bool isNearly(std::uint32_t color, std::uint32_t expected)
    {
        return std::abs(qRed(color) - qRed(expected)) <= 1 && std::abs(qGreen(color) - qGreen(expected)) <= 1 &&
               std::abs(qBlue(color) - qBlue(expected)) <= 1;
    }

    static bool hasImage(const X11Connection& connection, const PaintedWindow& window)
    {
        const auto pixmap = xcb_generate_id(connection.get());
        return connection.check(xcb_composite_name_window_pixmap_checked(connection.get(), window.id(), pixmap));
    }

    std::unique_ptr<XServer> m_server;
};

REGISTER_TEST(testrun::core<TestDesktopImage>);

#include "test_desktopimage.moc"
