// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/mediafile.h"
#include "tests/support/stillimage.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QTest>

#include <algorithm>
#include <memory>

namespace {

const auto kMp4 = QStringLiteral("mp4");
const auto kBar = QStringLiteral("Recording Toolbar");
constexpr int kWatchMs = 1000;
/// Each of its numbers is seen, also on a busy machine.
constexpr int kCountdownStepMs = 3000;
/// What an encoder makes of greys.
constexpr int kGreyError = 24;
/// From the far end of the bar to the middle of its pin.
constexpr int kPinPx = 20;
/// From the near end to the middle of the button that pauses.
constexpr int kPausePx = 60;

QImage plainImage(const QSize& size, const QColor& color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

/// The greatest difference of a pixel in that part from a grey.
int differenceFromGrey(const QImage& image, const QRect& part, int grey)
{
    int greatest = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            for (const int channel : {qRed(pixel), qGreen(pixel), qBlue(pixel)})
                greatest = std::max(greatest, std::abs(channel - grey));
        }
    }
    return greatest;
}

/// Whether the display shows something on a white ground.
bool isSomethingShown(const QRect& area)
{
    return differenceFromGrey(x11clients::grab(area), QRect(QPoint(0, 0), area.size()), 255) > kGreyError;
}

} // namespace

/// What floats over the desktop of a running recording is on the screen and not in the file.
class TestOwnWindows : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(!m_size.isEmpty()); }

    void barIsShownAndInNoFrame()
    {
        const StillImage still(plainImage(m_size, Qt::white));
        ProgramUnderTest program;
        Take take = begin(program);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QCOMPARE(m_bar.topLeft(), QPoint((m_size.width() - m_bar.width()) / 2, 0));
        QTRY_VERIFY(isSomethingShown(m_bar));
        QTest::qWait(kWatchMs);
        QVERIFY(isSomethingShown(m_bar));
        endTake(program, take);
        expectWhite(take);
    }

    void barThatComesAndGoesIsInNoFrame()
    {
        const StillImage still(plainImage(m_size, Qt::white));
        ProgramUnderTest program;
        Take take = begin(program);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QVERIFY(pointTo(QPoint(m_bar.right() - kPinPx, m_bar.center().y())) && xdotool({"click", "1"}));
        for (int round = 0; round < 2; ++round) {
            QVERIFY(pointTo(QPoint(m_size.width() / 2, m_size.height() - 20)));
            QTRY_VERIFY(!isSomethingShown(m_bar));
            QVERIFY(pointTo(QPoint(m_size.width() / 2, 1)));
            QTRY_VERIFY(isSomethingShown(m_bar));
        }
        QTest::qWait(kWatchMs / 2);
        endTake(program, take);
        expectWhite(take);
    }

    void toolTipOfTheBarIsShownAndInNoFrame()
    {
        const StillImage still(plainImage(m_size, Qt::white));
        ProgramUnderTest program;
        Take take = begin(program);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const QRect below(m_bar.x(), m_bar.bottom() + 1, m_bar.width(), m_bar.height());
        QVERIFY(!isSomethingShown(below));
        QVERIFY(pointTo(QPoint(m_bar.x() + kPausePx, m_bar.center().y() - 2)));
        QVERIFY(pointTo(QPoint(m_bar.x() + kPausePx, m_bar.center().y())));
        QTRY_VERIFY(isSomethingShown(below));
        QTest::qWait(kWatchMs / 2);
        endTake(program, take);
        expectWhite(take);
    }

    void noticeIsShownAndInNoFrame()
    {
        const StillImage still(plainImage(m_size, Qt::white));
        ProgramUnderTest program;
        Take take = begin(program);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        // No screenshot is taken now, and a notice says so.
        QVERIFY(xdotool({"key", "F10"}));
        const QRect notice = visibleWindow(QStringLiteral("Recording Notice")).value_or(QRect());
        QVERIFY(!notice.isEmpty());
        QTRY_VERIFY(isSomethingShown(notice));
        QTest::qWait(kWatchMs);
        QVERIFY(isSomethingShown(notice));
        endTake(program, take);
        expectWhite(take);
    }

    /// Nothing else is between the countdown and the first frame.
    void countdownIsShownAndInNoFrame()
    {
        const StillImage still(plainImage(m_size, Qt::white));
        ProgramUnderTest program;
        regionuser::prepare(program);
        program.countDownBy(kCountdownStepMs);
        QVERIFY(program.startAndWaitUntilReady());
        const qsizetype from = program.messages().size();
        ProgramUnderTest::pressKey(QStringLiteral("F9"));
        // It is as dark.
        QVERIFY(program.mainWindow(true, 10'000));
        QTRY_VERIFY(isCountdownShown());
        const QImage first = x11clients::grab(countdownNumber());
        QTRY_VERIFY_WITH_TIMEOUT(isCountdownShown() && x11clients::grab(countdownNumber()) != first,
                                 3 * kCountdownStepMs);
        Take take = waitForTake(program, kMp4, from);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kWatchMs);
        endTake(program, take);
        expectWhite(take);
    }

    void strokesAreInTheFileBelowTheBarToo()
    {
        const StillImage still(plainImage(m_size, Qt::white));
        // Wider than the bar on both sides, and its first rows are below it.
        const QRect region(m_size.width() / 2 - 200, 36, 400, 160);
        constexpr int kStrokeRow = 2;
        ProgramUnderTest program;
        regionuser::prepare(program);
        QVERIFY(program.startAndWaitUntilReady());
        QCOMPARE(regionuser::chooseRegion(program, region).value_or(QRect()), region);
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const QRect bar = visibleWindow(kBar).value_or(QRect());
        QVERIFY(bar.left() > region.left() + 40 && bar.right() < region.right() - 40);
        QVERIFY(bar.contains(QPoint(bar.center().x(), region.top() + kStrokeRow)));
        QTest::qWait(kWatchMs / 2);
        QVERIFY(pointTo(regionuser::penButton(region)) && xdotool({"click", "1"}));
        const QPoint from = region.topLeft() + QPoint(20, kStrokeRow);
        const QPoint to(region.right() - 20, from.y());
        QVERIFY(drag(from, to));
        QVERIFY(pointTo(QPoint(20, m_size.height() - 20)));
        QTest::qWait(kWatchMs);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const QList<QImage> frames = MediaFile(take.path).frames();
        QVERIFY(frames.size() > kFramesPerSecond);
        QVERIFY(differenceFromGrey(frames.constFirst(), frames.constFirst().rect(), 255) <= kGreyError);
        expectStroke(frames.constLast(), from.x() - region.x(), to.x() - region.x(), kStrokeRow);
    }

    void whatChangesBelowTheBarIsInTheFile()
    {
        const StillImage white(plainImage(m_size, Qt::white));
        ProgramUnderTest program;
        Take take = begin(program);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kWatchMs);
        const StillImage black(plainImage(m_size, Qt::black));
        QTRY_VERIFY(differenceFromGrey(x11clients::grab(QRect(0, 0, 8, 8)), QRect(0, 0, 8, 8), 0) == 0);
        QTest::qWait(kWatchMs);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const QList<QImage> frames = MediaFile(take.path).frames();
        QVERIFY(frames.size() > kFramesPerSecond);
        QVERIFY(differenceFromGrey(frames.constFirst(), m_bar, 255) <= kGreyError);
        QVERIFY(differenceFromGrey(frames.constLast(), QRect(QPoint(0, 0), m_size), 0) <= kGreyError);
    }

    void barsOfARegionOverTheWholeScreenAreShownAndInNoFrame()
    {
        const StillImage still(plainImage(m_size, Qt::white));
        ProgramUnderTest program;
        regionuser::prepare(program);
        QVERIFY(program.startAndWaitUntilReady());
        const QRect screen(QPoint(), m_size);
        QCOMPARE(regionuser::chooseRegion(program, screen).value_or(QRect()), screen);
        QVERIFY(pointTo(QPoint(20, m_size.height() - 20)));
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        m_bar = visibleWindow(kBar).value_or(QRect());
        QTRY_VERIFY(isSomethingShown(m_bar));
        // The frame's own one is inside the corner, and the floating one beside it.
        const QRect corner(m_size.width() - 100, 4, 90, 34);
        QVERIFY(!m_bar.intersects(corner));
        QTRY_VERIFY(isSomethingShown(corner));
        QTest::qWait(kWatchMs);
        QVERIFY(isSomethingShown(corner));
        endTake(program, take);
        expectWhite(take);
        QCOMPARE(MediaFile(take.path).frames().constFirst().size(), m_size);
    }

    void barOverARegionIsInNoFrame()
    {
        const StillImage still(plainImage(m_size, Qt::white));
        const QRect region(m_size.width() / 2 - 130, 36, 260, 160);
        ProgramUnderTest program;
        regionuser::prepare(program);
        QVERIFY(program.startAndWaitUntilReady());
        QCOMPARE(regionuser::chooseRegion(program, region).value_or(QRect()), region);
        QVERIFY(pointTo(QPoint(20, m_size.height() - 20)));
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QVERIFY(visibleWindow(kBar).value_or(QRect()).intersects(region));
        QTest::qWait(kWatchMs);
        endTake(program, take);
        expectWhite(take);
    }

private:
    /// One of red across white, along a row, and nothing else below it.
    static void expectStroke(const QImage& frame, int from, int to, int row)
    {
        constexpr int kNear = 6;
        QStringList missing;
        for (int x = from + kNear; x < to - kNear; ++x) {
            int redness = 0;
            for (int y = row - 2; y <= row + 1; ++y) {
                const QRgb pixel = frame.pixel(x, y);
                redness = std::max(redness, qRed(pixel) - std::max(qGreen(pixel), qBlue(pixel)));
            }
            if (redness < 2 * kGreyError)
                missing << QString::number(x);
        }
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(QLatin1Char(' '))));
        const QRect rest = frame.rect().adjusted(0, row + kNear, 0, 0);
        QVERIFY(differenceFromGrey(frame, rest, 255) <= kGreyError);
    }

    /// Begins to record the whole screen, without the pointer, and finds the bar.
    Take begin(ProgramUnderTest& program)
    {
        regionuser::prepare(program);
        Take take;
        if (!program.startAndWaitUntilReady()) {
            take.failure = QStringLiteral("the program did not start");
            return take;
        }
        take = beginTake(program, kMp4);
        m_bar = visibleWindow(kBar).value_or(QRect());
        if (m_bar.isEmpty())
            take.failure = QStringLiteral("there is no bar");
        return take;
    }

    static void expectWhite(const Take& take)
    {
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const QList<QImage> frames = MediaFile(take.path).frames();
        QVERIFY(frames.size() >= kFramesPerSecond);
        QStringList stained;
        for (qsizetype index = 0; index < frames.size(); ++index) {
            if (differenceFromGrey(frames.at(index), frames.at(index).rect(), 255) > kGreyError)
                stained << QString::number(index);
        }
        QVERIFY2(stained.isEmpty(), qPrintable(QStringLiteral("%1 of %2 frames: %3")
                                                   .arg(stained.size())
                                                   .arg(frames.size())
                                                   .arg(stained.join(QLatin1Char(' ')))));
    }

    const QSize m_size = StillImage::displaySize();
    QRect m_bar;
};

REGISTER_TEST(testrun::core<TestOwnWindows>);
#include "test_ownwindows.moc"
