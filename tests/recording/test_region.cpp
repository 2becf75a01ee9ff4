// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/mediafile.h"
#include "tests/support/stillimage.h"
#include "tests/support/testrun.h"
#include "tests/support/x11clients.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cstdlib>

namespace {

const auto kMp4 = QStringLiteral("mp4");
constexpr int kTakeMs = 1500;
/// Lines are sharp after a few frames.
constexpr int kShortTakeMs = 250;

/// What of the display is recorded of a region in logical pixels: cut to whole pixels, then made a multiple of what the
/// video needs by more of the display, which at its far edges is what comes before the region.
QRect recordedPart(const QRect& region, double scale, const QSize& display)
{
    const auto cut = [scale](int logical) { return static_cast<int>(logical * scale); };
    const auto grown = [](int length, int step) { return (length + step - 1) / step * step; };
    const int columns = qgetenv("KESTRANO_CAPTURE") == "scene" ? 4 : 2;
    QRect part(cut(region.x()), cut(region.y()), grown(cut(region.width()), columns), grown(cut(region.height()), 2));
    part.moveRight(std::min(part.right(), display.width() - 1));
    part.moveBottom(std::min(part.bottom(), display.height() - 1));
    return part;
}

/// Lines of one pixel, white and black in turn: columns in the upper half of the part, rows in the lower one. Grey
/// around it.
QImage stripedImage(const QSize& size, const QRect& part)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(qRgb(128, 128, 128));
    for (int y = 0; y < part.height(); ++y) {
        for (int x = 0; x < part.width(); ++x) {
            const int line = y < part.height() / 2 ? x : y;
            image.setPixel(part.topLeft() + QPoint(x, y), line % 2 == 0 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
        }
    }
    return image;
}

/// The first pixel of a frame that is not the one of the image; empty when there is none.
QString wrongPixel(const QImage& frame, const QImage& image)
{
    constexpr int kEncoderError = 40;
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            const int grey = qGray(frame.pixel(x, y));
            const int expected = qGray(image.pixel(x, y));
            if (std::abs(grey - expected) > kEncoderError)
                return QStringLiteral("%1 instead of %2 at (%3, %4)").arg(grey).arg(expected).arg(x).arg(y);
        }
    }
    return {};
}

/// The strongest colour of a frame: 0 for all greys.
int strongestColour(const QImage& image)
{
    const QImage pixels = image.convertToFormat(QImage::Format_RGB32);
    int strongest = 0;
    for (int y = 0; y < pixels.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(pixels.constScanLine(y));
        for (int x = 0; x < pixels.width(); ++x) {
            const QRgb pixel = line[x];
            const auto [low, high] = std::minmax({qRed(pixel), qGreen(pixel), qBlue(pixel)});
            strongest = std::max(strongest, high - low);
        }
    }
    return strongest;
}

int redness(QRgb pixel)
{
    return qRed(pixel) - std::max(qGreen(pixel), qBlue(pixel));
}

/// Which of the regions each frame shows: its number, -1 for none of them.
QList<int> regionsShown(const QList<QImage>& frames, const QList<QRect>& regions, const QImage& grid)
{
    QList<int> shown;
    for (const QImage& image : frames) {
        const auto found = std::ranges::find_if(
            regions, [&](const QRect& region) { return differenceFromGrid(image, region, grid).isEmpty(); });
        shown.append(found == regions.end() ? -1 : static_cast<int>(found - regions.begin()));
    }
    return shown;
}

/// xdotool's words for a pointer that hurries to and fro, a step each hundredth of a second, back to where it was.
QStringList hurry(const QPoint& from, const QPoint& there, int steps, int times)
{
    QStringList words;
    for (int step = 0; step <= 2 * steps * times; ++step) {
        const int along = steps - std::abs(step % (2 * steps) - steps);
        const QPoint position = from + (there - from) * along / steps;
        words << QStringLiteral("mousemove") << QString::number(position.x()) << QString::number(position.y())
              << QStringLiteral("sleep") << QStringLiteral("0.01");
    }
    return words;
}

/// How far the darkest pixel of a frame is from white.
int darkness(const QImage& image)
{
    int darkest = 255;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            darkest = std::min(darkest, qGray(image.pixel(x, y)));
    }
    return 255 - darkest;
}

QString asText(const QList<int>& numbers)
{
    QStringList texts;
    for (const int number : numbers)
        texts.append(QString::number(number));
    return texts.join(QLatin1Char(' '));
}

} // namespace

/// Regions in files that the program recorded, with their frames on the screen.
class TestRegion : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(!m_size.isEmpty());
        m_grid = gridImage(m_size);
    }

    void fileShowsTheRegionPixelByPixelAndNothingOfItsFrame_data()
    {
        QTest::addColumn<double>("scale");
        for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0})
            QTest::addRow("scale %g", scale) << scale;
    }

    void fileShowsTheRegionPixelByPixelAndNothingOfItsFrame()
    {
        QFETCH(const double, scale);
        ProgramUnderTest program;
        regionuser::prepare(program, scale);
        QVERIFY(program.startAndWaitUntilReady());
        QRect inTheFarCorner(0, 0, 362, 145);
        const QSize logical = (QSizeF(m_size) / scale).toSize();
        inTheFarCorner.moveBottomRight(QPoint(logical.width() - 1, logical.height() - 1));
        for (const QRect& region :
             {QRect(17, 53, 361, 143), inTheFarCorner, QRect(15, 51, 363, 147), QRect(13, 57, 401, 149)}) {
            const QRect part = recordedPart(region, scale, m_size);
            const QImage stripes = stripedImage(m_size, part);
            const StillImage still(stripes);
            QVERIFY(regionuser::chooseRegion(program, region, scale));
            Take take = beginTake(program, kMp4);
            QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
            QTest::qWait(kShortTakeMs);
            const QRect leftOfIt(part.left() - kBorderIsWithinPx, part.top(), kBorderIsWithinPx, part.height());
            QVERIFY(strongestColour(x11clients::grab(leftOfIt)) > kBorderColour);
            endTake(program, take);
            QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
            expectStripes(MediaFile(take.path).frames(), stripes.copy(part));
        }
    }

    void theFrameDraggedByItsBarTakesTheVideoAlong()
    {
        constexpr double kScale = 1.25;
        const StillImage still(m_grid);
        // At this scale as wide as the engine's scene can record it.
        const QRect start(151, 197, 256, 160);
        const QList<QPoint> ways{{0, 0}, {61, 39}, {122, 20}};
        ProgramUnderTest program;
        Take take = begin(program, start, kScale);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kTakeMs / 2);
        const auto grip = [&](const QPoint& way) {
            return (QPointF(regionuser::bareBar(start) + way) * kScale).toPoint();
        };
        QVERIFY(pointTo(grip({})) && xdotool({"mousedown", "1"}));
        // Held at the stop on the way: the video is to follow before the button is released.
        for (const QPoint& way : ways.sliced(1)) {
            QVERIFY(pointTo(grip(way)));
            QTest::qWait(kTakeMs / 2);
        }
        QVERIFY(xdotool({"mouseup", "1"}));
        QTest::qWait(kTakeMs / 2);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

        QList<QRect> stops;
        for (const QPoint& way : ways)
            stops.append(recordedPart(start.translated(way), kScale, m_size));
        expectStops(MediaFile(take.path).frames(), stops);
    }

    void nothingOfTheFrameIsInAnyVideoFrameOfAFastDrag_data()
    {
        QTest::addColumn<QPoint>("distance");
        QTest::addColumn<int>("steps");
        QTest::newRow("across") << QPoint(180, 120) << 12;
        QTest::newRow("to where the floating toolbar stands") << QPoint(0, -170) << 2;
    }

    void nothingOfTheFrameIsInAnyVideoFrameOfAFastDrag()
    {
        QFETCH(const QPoint, distance);
        QFETCH(const int, steps);
        QImage white(m_size, QImage::Format_RGB32);
        white.fill(Qt::white);
        const StillImage still(white);
        const QRect start(151, 197, 244, 162);
        ProgramUnderTest program;
        Take take = begin(program, start);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kTakeMs / 2);
        const QPoint grip = regionuser::bareBar(start);
        const int times = 72 / steps;
        QVERIFY(pointTo(grip));
        QVERIFY(xdotool(QStringList({"mousedown", "1"}) + hurry(grip, grip + distance, steps, times) +
                        hurry(grip, grip + distance / 2, steps, 1) + QStringList({"mouseup", "1"})));
        QTest::qWait(kTakeMs / 2);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

        const QList<QImage> frames = MediaFile(take.path).frames();
        QVERIFY(frames.size() > qsizetype{2} * kFramesPerSecond);
        QList<int> stained;
        for (qsizetype index = 0; index < frames.size(); ++index) {
            if (darkness(frames.at(index)) > kGreyError)
                stained.append(static_cast<int>(index));
        }
        QVERIFY2(
            stained.isEmpty(),
            qPrintable(
                QStringLiteral("%1 of %2 frames: %3").arg(stained.size()).arg(frames.size()).arg(asText(stained))));
    }

    void strokesDrawnWhileRecordingAreInTheFileAndTheFrameIsNot()
    {
        const StillImage still(m_grid);
        const QRect region(151, 197, 244, 162);
        const QPoint from(40, 81);
        const QPoint to(200, 81);
        ProgramUnderTest program;
        Take take = begin(program, region);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kTakeMs / 2);
        QVERIFY(pointTo(regionuser::penButton(region)) && xdotool({"click", "1"}));
        QVERIFY(drag(region.topLeft() + from, region.topLeft() + to));
        QVERIFY(pointTo(region.topLeft() - QPoint(100, 100)));
        QTest::qWait(kTakeMs / 2);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

        const QList<QImage> frames = MediaFile(take.path).frames();
        QVERIFY(frames.size() > kFramesPerSecond);
        const QString difference = differenceFromGrid(frames.constFirst(), region, m_grid);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        QVERIFY(strongestColour(frames.constFirst()) <= kGreyError);
        // What is not near the stroke stays as grey as before.
        QImage last = frames.constLast();
        const QRect around = QRect(from, to).adjusted(-6, -6, 6, 6);
        for (int x = from.x() + 4; x < to.x() - 4; ++x) {
            int strongest = 0;
            for (int y = from.y() - 2; y <= from.y() + 1; ++y)
                strongest = std::max(strongest, redness(last.pixel(x, y)));
            QVERIFY2(strongest > 60, qPrintable(QStringLiteral("%1 at %2").arg(strongest).arg(x)));
        }
        QPainter(&last).fillRect(around, Qt::gray);
        QVERIFY2(strongestColour(last) <= kGreyError, qPrintable(QString::number(strongestColour(last))));
    }

    void aRegionOfAPrimaryScreenOffTheOriginIsRecordedFromThere()
    {
        const StillImage still(m_grid);
        const TwoScreens screens(m_size);
        QVERIFY(screens.areMade());
        const QRect region(screens.primary().left() + 61, 97, 244, 162);
        const QImage image = recorded(region);
        const QString difference = differenceFromGrid(image, region, m_grid);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

private:
    /// What an encoder makes of greys.
    static constexpr int kGreyError = 24;
    /// Less than the border of a region's frame has.
    static constexpr int kBorderColour = 150;
    /// At every scale of a test.
    static constexpr int kBorderIsWithinPx = 8;

    /// Begins to record a region in logical pixels; the pointer is then elsewhere.
    static Take begin(ProgramUnderTest& program, const QRect& region, double scale = 1.0)
    {
        Take take;
        regionuser::prepare(program, scale);
        if (!program.startAndWaitUntilReady()) {
            take.failure = QStringLiteral("the program did not start");
            return take;
        }
        const std::optional<QRect> chosen = regionuser::chooseRegion(program, region, scale);
        if (chosen == region)
            return beginTake(program, kMp4);
        const QRect said = chosen.value_or(QRect());
        take.failure = QStringLiteral("the program took %1,%2 %3x%4 for the region")
                           .arg(said.x())
                           .arg(said.y())
                           .arg(said.width())
                           .arg(said.height());
        return take;
    }

    /// The encoder makes the lines sharper from frame to frame.
    static void expectStripes(const QList<QImage>& frames, const QImage& stripes)
    {
        QVERIFY(!frames.isEmpty());
        QCOMPARE(frames.constFirst().size(), stripes.size());
        const QString wrong = wrongPixel(frames.constLast(), stripes);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        expectGreys(frames);
    }

    /// The video goes from one part of the screen to the next.
    void expectStops(const QList<QImage>& frames, const QList<QRect>& stops) const
    {
        const QList<int> shown = regionsShown(frames, stops, m_grid);
        const QByteArray story = asText(shown).toUtf8();
        QCOMPARE(shown.value(0), 0);
        QCOMPARE(shown.value(shown.size() - 1), static_cast<int>(stops.size()) - 1);
        QVERIFY2(std::is_sorted(shown.begin(), shown.end(), [](int a, int b) { return a >= 0 && b >= 0 && a < b; }),
                 story.constData());
        for (int stop = 0; stop < stops.size(); ++stop)
            QVERIFY2(shown.count(stop) >= 5, story.constData());
        expectGreys(frames);
        qInfo("%s", story.constData());
    }

    /// The border of a region's frame has a colour.
    static void expectGreys(const QList<QImage>& frames)
    {
        for (qsizetype index = 0; index < frames.size(); ++index) {
            const int colour = strongestColour(frames.at(index));
            QVERIFY2(colour <= kGreyError, qPrintable(QStringLiteral("frame %1: %2").arg(index).arg(colour)));
        }
    }

    /// The frame in the middle of a short recording of a region at scale 1.
    static QImage recorded(const QRect& region)
    {
        ProgramUnderTest program;
        Take take = begin(program, region);
        if (take.failure.isEmpty()) {
            QTest::qWait(kTakeMs);
            endTake(program, take);
        }
        if (!take.failure.isEmpty())
            QTest::qFail(qPrintable(take.failure), __FILE__, __LINE__);
        const MediaFile file(take.path);
        return file.frameAt(file.durationSeconds() / 2);
    }

    const QSize m_size = StillImage::displaySize();
    QImage m_grid;
};

REGISTER_TEST(testrun::core<TestRegion>);
#include "test_region.moc"
