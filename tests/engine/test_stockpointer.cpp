// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "engine/capture/capturetargets.h"
#include "engine/capture/pointercircles.h"
#include "engine/capture/x11/pointermarks.h"
#include "engine/core/obshandles.h"
#include "tests/engine/stockengine.h"
#include "tests/support/mediafile.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QCursor>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTest>
#include <QWidget>

#include <atomic>
#include <cstdint>

namespace {

const QColor kGround(100, 100, 100);
/// The ground with the circles' colours mixed in: 0.3 of the highlight, and then 0.7 of a click.
const QColor kHighlight(70, 147, 108);
const QColor kLeftClick(21, 44, 211);
const QColor kRightClick(200, 44, 32);
/// What halved colours and full-range conversion make of them.
constexpr int kColourError = 6;

/// Distances from the pointer: in the click's circle, in the highlight's only, and outside of both.
const QPoint kInClick(0, 0);
const QPoint kInHighlight(16, 0);
const QPoint kOutside(23, 0);

/// The frame as the engine hands it to its outputs.
class FrameTap
{
public:
    /// The frame after a few that show what has just been set.
    static QImage take(const QSize& size)
    {
        FrameTap tap(size);
        video_scale_info form{};
        form.format = VIDEO_FORMAT_BGRA;
        form.width = static_cast<uint32_t>(size.width());
        form.height = static_cast<uint32_t>(size.height());
        form.range = VIDEO_RANGE_FULL;
        form.colorspace = VIDEO_CS_709;
        obs_add_raw_video_callback(&form, &FrameTap::onFrame, &tap);
        const int64_t before = rendered();
        const bool came =
            QTest::qWaitFor([&] { return rendered() - before >= kFramesUntilShown && tap.m_hasFrame; }, 10'000);
        obs_remove_raw_video_callback(&FrameTap::onFrame, &tap);
        return came ? tap.m_image : QImage();
    }

private:
    static constexpr int kFramesUntilShown = 6;

    explicit FrameTap(const QSize& size) : m_image(size, QImage::Format_RGB32) {}

    /// Frames that were drawn, not repeated ones: those show what was there before.
    static int64_t rendered() { return int64_t{obs_get_total_frames()} - obs_get_lagged_frames(); }

    static void onFrame(void* param, video_data* frame)
    {
        auto& self = *static_cast<FrameTap*>(param);
        for (int y = 0; y < self.m_image.height(); ++y)
            std::copy_n(frame->data[0] + static_cast<std::size_t>(frame->linesize[0]) * static_cast<std::size_t>(y),
                        4 * static_cast<std::size_t>(self.m_image.width()), self.m_image.scanLine(y));
        self.m_hasFrame = true;
    }

    QImage m_image;
    std::atomic<bool> m_hasFrame{false};
};

void xdotool(const QStringList& arguments)
{
    QCOMPARE(QProcess::execute(QStringLiteral("xdotool"), arguments), 0);
}

void movePointer(const QPoint& position)
{
    xdotool({QStringLiteral("mousemove"), QString::number(position.x()), QString::number(position.y())});
}

/// A button that is held down for as long as the object lives.
class HeldButton
{
public:
    explicit HeldButton(int button) : m_button(QString::number(button))
    {
        xdotool({QStringLiteral("mousedown"), m_button});
    }
    ~HeldButton() { xdotool({QStringLiteral("mouseup"), m_button}); }
    HeldButton(const HeldButton&) = delete;
    HeldButton& operator=(const HeldButton&) = delete;

private:
    QString m_button;
};

ObsSourceHandle captureSource()
{
    return ObsSourceHandle(obs_get_source_by_name("Computer_Monitor_Capture"));
}

} // namespace

/// The circles around the pointer in the video of a real desktop, with the stock capture. The desktop is grey, and
/// the pointer itself is not captured unless a test says so.
class TestStockPointer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_ground.setWindowFlags(Qt::Window | Qt::X11BypassWindowManagerHint | Qt::WindowStaysOnTopHint);
        m_ground.setPalette(kGround);
        m_ground.setGeometry(QGuiApplication::primaryScreen()->geometry());
        m_ground.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_ground));
        QCOMPARE(m_stock.start(), QString());
        m_stock.engine().setCaptureCursor(false);
    }

    void init()
    {
        QVERIFY(m_stock.setMargins(0, 0, 0, 0));
        m_stock.engine().setCursorEffects(true);
    }

    void cleanupTestCase() { m_stock.release(); }

    void highlightIsDrawnAtThePointer()
    {
        for (const QPoint position : {QPoint(200, 150), QPoint(420, 300)}) {
            movePointer(position);
            const QImage image = take();
            QVERIFY(isColour(image, position + kInClick, kHighlight));
            QVERIFY(isColour(image, position + kInHighlight, kHighlight));
            QVERIFY(isColour(image, position - kInHighlight, kHighlight));
            QVERIFY(isColour(image, position + kOutside, kGround));
            QVERIFY(isColour(image, position - kOutside, kGround));
            QVERIFY(isColour(image, position + kOutside.transposed(), kGround));
        }
    }

    void nothingIsDrawnWhenSwitchedOff()
    {
        movePointer({200, 150});
        m_stock.engine().setCursorEffects(false);
        const HeldButton left(1);
        QVERIFY(isColour(take(), {200, 150}, kGround));
        QVERIFY(!isFilterEnabled());
        m_stock.engine().setCursorEffects(true);
        QVERIFY(isColour(take(), {200 + kInHighlight.x(), 150}, kHighlight));
        QVERIFY(isFilterEnabled());
    }

    void clicksAreDrawnWhileAButtonIsDown_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("left") << 1 << kLeftClick;
        QTest::newRow("middle") << 2 << kHighlight;
        QTest::newRow("right") << 3 << kRightClick;
    }

    void clicksAreDrawnWhileAButtonIsDown()
    {
        QFETCH(const int, button);
        QFETCH(const QColor, colour);
        const QPoint position(300, 200);
        movePointer(position);
        {
            const HeldButton held(button);
            const QImage image = take();
            QVERIFY(isColour(image, position + kInClick, colour));
            QVERIFY(isColour(image, position + kInHighlight, kHighlight));
            QVERIFY(isColour(image, position + kOutside, kGround));
        }
        QVERIFY(isColour(take(), position, kHighlight));
    }

    void circlesAreDrawnBelowTheCrop()
    {
        const QPoint position(260, 210);
        movePointer(position);
        QVERIFY(m_stock.setMargins(100, 60, 50, 70));
        const HeldButton left(1);
        const QImage image = take();
        const QPoint inImage = position - QPoint(100, 50);
        QVERIFY(isColour(image, inImage + kInClick, kLeftClick));
        QVERIFY(isColour(image, inImage + kInHighlight, kHighlight));
        QVERIFY(isColour(image, inImage + kOutside, kGround));
        QVERIFY(isColour(image, position, kGround));
    }

    void circlesAreCutOffByTheCrop()
    {
        // The pointer stands ten pixels outside of the region.
        movePointer({90, 210});
        QVERIFY(m_stock.setMargins(100, 60, 50, 70));
        const QImage image = take();
        QVERIFY(isColour(image, {4, 160}, kHighlight));
        QVERIFY(isColour(image, {14, 160}, kGround));
    }

    void circleAtTheEdgeOfTheScreen()
    {
        movePointer({0, 0});
        const QImage image = take();
        QVERIFY(isColour(image, {4, 4}, kHighlight));
        QVERIFY(isColour(image, {24, 24}, kGround));
        QVERIFY(isColour(image, {image.width() - 4, 4}, kGround));
    }

    void monitorAwayFromTheOriginHasItsOwnPixels()
    {
        const auto xrandr = [](const QStringList& arguments) {
            return QProcess::execute(QStringLiteral("xrandr"), arguments) == 0;
        };
        QVERIFY(xrandr({"--setmonitor", "*Right", "320/85x480/127+320+0", "screen"}));
        QVERIFY(xrandr({"--setmonitor", "Left", "320/85x480/127+0+0", "none"}));
        const QRect monitor(320, 0, 320, 480);
        ObsWrapper& engine = m_stock.engine();
        engine.refreshCaptureTargets(false);
        const QString target = captureTargetForScreen(engine.captureTargetNames(), monitor);
        QVERIFY(!target.isEmpty());
        QCOMPARE(engine.resetVideo(320, 480, 320, 480, StockEngine::kFps), 0);
        QVERIFY(engine.setCaptureTarget(target.toUtf8().constData(), ObsWrapper::kCaptureMonitor, false, 0, 0, 0, 0));
        engine.setCursorEffects(true);
        movePointer({470, 300});
        const QImage onIt = FrameTap::take(monitor.size());
        movePointer({150, 300});
        const QImage besideIt = FrameTap::take(monitor.size());
        QVERIFY(xrandr({"--delmonitor", "Left"}));
        QVERIFY(xrandr({"--delmonitor", "Right"}));
        engine.refreshCaptureTargets(false);
        QVERIFY(isColour(onIt, {150, 300}, kHighlight));
        QVERIFY(isColour(besideIt, {150, 300}, kGround));
    }

    void nothingIsDrawnOnTheScreenItself()
    {
        const QPoint position(200, 150);
        movePointer(position);
        QVERIFY(isColour(take(), position, kHighlight));
        const QImage screen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        QVERIFY(isColour(screen, position, kGround));
    }

    void circlesFollowTheKeysOfTheCaptureSource()
    {
        const QPoint position(200, 150);
        movePointer(position);
        const HeldButton left(1);
        set("fixed_circle_color", "1.0, 1.0, 1.0, 1.0");
        set("left_click_color", "0.0, 0.0, 0.0, 1.0");
        const QImage image = take();
        QVERIFY(isColour(image, position + kInHighlight, Qt::white));
        QVERIFY(isColour(image, position + kInClick, Qt::black));
    }

    void circlesOfFramesFromTheServerLookTheSame()
    {
        const QPoint position(201, 150);
        movePointer(position);
        const HeldButton left(1);
        // Grey on grey: the video has every pixel's luma.
        set("fixed_circle_color", "1.0, 1.0, 1.0, 0.6");
        set("left_click_color", "0.0, 0.0, 0.0, 0.7");
        const QImage filtered = take();
        QImage drawn(filtered.size(), QImage::Format_RGB32);
        drawn.fill(kGround);
        const ObsDataHandle settings(obs_source_get_settings(captureSource().get()));
        drawPointerCircles({drawn.bits(), static_cast<int>(drawn.bytesPerLine()), drawn.width(), drawn.height()},
                           PointerEffectChoice::from(settings.get()).circlesAround({position, true, false}, 1.0F));
        for (int y = position.y() - 25; y <= position.y() + 25; ++y)
            for (int x = position.x() - 25; x <= position.x() + 25; ++x)
                QVERIFY(isColour(filtered, {x, y}, drawn.pixelColor(x, y), 0));
    }

    void circleWithABrokenColourIsNotDrawn()
    {
        const QPoint position(200, 150);
        movePointer(position);
        const HeldButton left(1);
        set("fixed_circle_color", "no colour at all");
        const QImage image = take();
        QVERIFY(isColour(image, position + kInHighlight, kGround));
        QVERIFY(!isColour(image, position + kInClick, kGround));
    }

    void pointerItselfIsCapturedOrNotBesideTheCircles()
    {
        const QPoint position(200, 150);
        movePointer(position);
        m_stock.engine().setCaptureCursor(false);
        const QImage without = take();
        m_stock.engine().setCaptureCursor(true);
        const QImage with = take();
        m_stock.engine().setCaptureCursor(false);
        QVERIFY(isColour(without, position + QPoint(2, 4), kHighlight));
        QVERIFY(differs(without, with, QRect(position, QSize(12, 16))));
        QVERIFY(isColour(with, position - kInHighlight, kHighlight));
    }

private:
    QImage take() { return FrameTap::take(m_stock.size()); }

    /// @param around how many pixels on each side count as well
    static bool isColour(const QImage& image, const QPoint& position, const QColor& expected, int around = 1)
    {
        const QColor found = meanColour(image, position, around);
        const bool same = colourDistance(found, expected) <= kColourError;
        if (!same)
            qWarning() << "at" << position << "there is" << found.name() << "and not" << expected.name();
        return same;
    }

    static bool differs(const QImage& left, const QImage& right, const QRect& area)
    {
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                if (colourDistance(left.pixelColor(x, y), right.pixelColor(x, y)) > 4 * kColourError)
                    return true;
        return false;
    }

    static bool isFilterEnabled()
    {
        bool enabled = false;
        obs_source_enum_filters(
            captureSource().get(),
            [](obs_source_t*, obs_source_t* filter, void* found) {
                if (qstrcmp(obs_source_get_id(filter), "kestrano_pointer_effects") == 0)
                    *static_cast<bool*>(found) = obs_source_enabled(filter);
            },
            &enabled);
        return enabled;
    }

    static void set(const char* key, const char* value)
    {
        const ObsDataHandle settings(obs_data_create());
        obs_data_set_string(settings.get(), key, value);
        obs_source_update(captureSource().get(), settings.get());
    }

    StockEngine m_stock;
    QWidget m_ground;
};

REGISTER_TEST(testrun::gui<TestStockPointer>);

#include "test_stockpointer.moc"
