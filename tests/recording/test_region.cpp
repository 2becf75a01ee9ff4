// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/mediafile.h"
#include "tests/support/stillimage.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cstdlib>

namespace {

const auto kMp4 = QStringLiteral("mp4");
constexpr int kTakeMs = 1500;
constexpr int kOutsideGrey = 255;
constexpr int kInsideGrey = 150;
/// Of the ring that lies just inside the edges of a region.
constexpr int kRingPx = 2;

/// White outside the region, grey inside, and along its edges a black ring.
QImage ringedImage(const QSize& size, const QRectF& region)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(qRgb(kOutsideGrey, kOutsideGrey, kOutsideGrey));
    const QRect pixels(region.topLeft().toPoint(), region.bottomRight().toPoint() - QPoint(1, 1));
    QPainter painter(&image);
    painter.fillRect(pixels, Qt::black);
    painter.fillRect(pixels.adjusted(kRingPx, kRingPx, -kRingPx, -kRingPx),
                     QColor(kInsideGrey, kInsideGrey, kInsideGrey));
    return image;
}

/// How many pixels of the line that goes from the edge inwards come before the ring; -1 where there is no ring.
int pixelsBeforeRing(const QImage& image, const QPoint& onEdge, const QPoint& inwards)
{
    constexpr int kLookPx = 6;
    constexpr int kDark = 75;
    for (int step = 0; step < kLookPx; ++step)
        if (qGray(image.pixel(onEdge + step * inwards)) < kDark)
            return step;
    return -1;
}

/// The strongest colour of a frame: 0 for all greys.
int strongestColour(const QImage& image)
{
    int strongest = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
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

    void theFileShowsExactlyTheRegion_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QRect>("selected");
        QTest::addColumn<QRect>("region");
        QTest::newRow("at odd coordinates") << 1.0 << QRect(151, 97, 244, 162) << QRect(151, 97, 244, 162);
        QTest::newRow("odd size") << 1.0 << QRect(151, 97, 361, 163) << QRect(151, 97, 362, 164);
        QTest::newRow("at scale 1.5") << 1.5 << QRect(100, 90, 240, 156) << QRect(100, 90, 240, 156);
    }

    void theFileShowsExactlyTheRegion()
    {
        QFETCH(const double, scale);
        QFETCH(const QRect, selected);
        QFETCH(const QRect, region);
        const StillImage still(m_grid);
        const QImage image = recorded(selected, scale, region);
        const QRect part((QPointF(region.topLeft()) * scale).toPoint(), (QSizeF(region.size()) * scale).toSize());
        const QString difference = differenceFromGrid(image, part, m_grid);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        QVERIFY2(strongestColour(image) <= kGreyError, qPrintable(QString::number(strongestColour(image))));
    }

    void theRegionsEdgesAreInTheVideoWithinAPixel_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<QRect>("region");
        QTest::newRow("scale 1.25") << 1.25 << QRect(101, 83, 207, 155);
    }

    void theRegionsEdgesAreInTheVideoWithinAPixel()
    {
        QFETCH(const double, scale);
        QFETCH(const QRect, region);
        const StillImage still(
            ringedImage(m_size, QRectF(QPointF(region.topLeft()) * scale, QSizeF(region.size()) * scale)));
        const QImage image = recorded(region, scale, region);
        QVERIFY(!image.isNull());
        const QRect all = image.rect();
        const QPoint centre = all.center();
        const QList<std::pair<QPoint, QPoint>> edges{{{all.left(), centre.y()}, {1, 0}},
                                                     {{all.right(), centre.y()}, {-1, 0}},
                                                     {{centre.x(), all.top()}, {0, 1}},
                                                     {{centre.x(), all.bottom()}, {0, -1}}};
        for (const auto& [onEdge, inwards] : edges) {
            const int before = pixelsBeforeRing(image, onEdge, inwards);
            QVERIFY2(before == 0 || before == 1, qPrintable(QStringLiteral("%1 pixels before the edge at (%2, %3)")
                                                                .arg(before)
                                                                .arg(onEdge.x())
                                                                .arg(onEdge.y())));
        }
    }

    void theFrameDraggedByItsBarTakesTheVideoAlong()
    {
        const StillImage still(m_grid);
        const QRect start(151, 197, 244, 162);
        const QList<QRect> stops{start, start.translated(61, 39), start.translated(122, 20)};
        ProgramUnderTest program;
        Take take = begin(program, start);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kTakeMs / 2);
        const QPoint grip = regionuser::bareBar(start);
        QVERIFY(pointTo(grip) && xdotool({"mousedown", "1"}));
        // Held at the stop on the way: the video is to follow before the button is released.
        for (qsizetype stop = 1; stop < stops.size(); ++stop) {
            QVERIFY(pointTo(grip + stops.at(stop).topLeft() - start.topLeft()));
            QTest::qWait(kTakeMs / 2);
        }
        QVERIFY(xdotool({"mouseup", "1"}));
        QTest::qWait(kTakeMs / 2);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

        const QList<QImage> frames = MediaFile(take.path).frames();
        const QList<int> shown = regionsShown(frames, stops, m_grid);
        const QByteArray story = asText(shown).toUtf8();
        QCOMPARE(shown.value(0), 0);
        QCOMPARE(shown.value(shown.size() - 1), 2);
        QVERIFY2(std::is_sorted(shown.begin(), shown.end(), [](int a, int b) { return a >= 0 && b >= 0 && a < b; }),
                 story.constData());
        int atRest = 0;
        for (qsizetype index = 0; index < shown.size(); ++index) {
            if (shown.at(index) < 0)
                continue;
            ++atRest;
            const int colour = strongestColour(frames.at(index));
            QVERIFY2(colour <= kGreyError, qPrintable(QStringLiteral("frame %1: %2").arg(index).arg(colour)));
        }
        for (int stop = 0; stop < stops.size(); ++stop)
            QVERIFY2(shown.count(stop) >= 5, story.constData());
        qInfo("%d of %d frames show the region at rest: %s", atRest, static_cast<int>(shown.size()), story.constData());
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
        const QImage image = recorded(region, 1.0, region);
        const QString difference = differenceFromGrid(image, region, m_grid);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

private:
    /// What an encoder makes of greys.
    static constexpr int kGreyError = 24;

    /// Begins to record a region given in logical pixels; the pointer is then elsewhere.
    Take begin(ProgramUnderTest& program, const QRect& region) { return begin(program, region, 1.0, region); }

    /// @param region what the program is to make of the selected one
    Take begin(ProgramUnderTest& program, const QRect& selected, double scale, const QRect& region)
    {
        Take take;
        regionuser::prepare(program, scale);
        if (!program.startAndWaitUntilReady()) {
            take.failure = QStringLiteral("the program did not start");
            return take;
        }
        const std::optional<QRect> chosen = regionuser::chooseRegion(program, selected, scale);
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

    /// The frame in the middle of a short recording of a region given in logical pixels.
    QImage recorded(const QRect& selected, double scale, const QRect& region)
    {
        ProgramUnderTest program;
        Take take = begin(program, selected, scale, region);
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
