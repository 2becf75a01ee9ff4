// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/mediafile.h"
#include "tests/support/stillimage.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"
#include "tests/support/x11clients.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QRasterWindow>
#include <QTest>

#include <algorithm>

namespace {

const auto kMp4 = QStringLiteral("mp4");
const auto kTitle = QStringLiteral("Moving Window");
/// The argument with which this program is another one, whose window is recorded.
constexpr char kOtherProgram[] = "--other-program";
constexpr QRect kWindow(150, 200, 244, 162);
constexpr QPoint kDistance(240, 120);
constexpr int kSteps = 6;
constexpr int kTakeMs = 1500;
constexpr int kScreenshotBarPx = 260;
/// What an encoder makes of greys; the frame's border has more.
constexpr int kGreyError = 24;

/// A window with the grid in it.
class GridWindow : public QRasterWindow
{
public:
    GridWindow()
    {
        setFlag(Qt::FramelessWindowHint);
        setTitle(kTitle);
        setGeometry(kWindow);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override { QPainter(this).drawImage(0, 0, gridImage(kWindow.size())); }
};

bool isRed(QRgb pixel)
{
    return qRed(pixel) > 200 && qGreen(pixel) < 60;
}

bool isBlue(QRgb pixel)
{
    return qBlue(pixel) > 150 && qRed(pixel) < 60;
}

QRgb colourAt(const QPoint& position)
{
    const QImage image = x11clients::grab(QRect(position, QSize(1, 1)));
    return image.isNull() ? 0 : image.pixel(0, 0);
}

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

} // namespace

/// A window of another program that is recorded, and moved meanwhile.
class TestFollowedWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_other.start(QCoreApplication::applicationFilePath(),
                      {QStringLiteral("test_followedwindow"), QLatin1String(kOtherProgram)});
        QTRY_VERIFY(!x11clients::windowsOf(m_other.processId()).isEmpty());
        m_id = x11clients::windowsOf(m_other.processId()).constFirst().id;
    }

    void cleanupTestCase()
    {
        m_other.kill();
        m_other.waitForFinished();
    }

    void videoShowsTheWindowWhereverItIsMoved()
    {
        const QSize display = StillImage::displaySize();
        QImage grey(display, QImage::Format_RGB32);
        grey.fill(qRgb(128, 128, 128));
        const StillImage still(grey);
        ProgramUnderTest program;
        regionuser::prepare(program);
        QVERIFY(program.startAndWaitUntilReady());
        chooseWindow(program);
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kTakeMs);
        for (int step = 1; step <= kSteps; ++step) {
            const QPoint corner = kWindow.topLeft() + kDistance * step / kSteps;
            QVERIFY(xdotool(
                {"windowmove", QString::number(m_id), QString::number(corner.x()), QString::number(corner.y())}));
            // The border is hidden while the region moves.
            QTRY_VERIFY(isBlue(colourAt(corner + QPoint(-2, 60))));
        }
        QTest::qWait(kTakeMs);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QCOMPARE(QFileInfo(take.path).completeBaseName(), kTitle);
        expectWindow(MediaFile(take.path).frames());
    }

private:
    /// Picks the window, records it from its frame and lets the region follow it, as a user does.
    void chooseWindow(ProgramUnderTest& program) const
    {
        QVERIFY(goBackFromRecordButton(program, kStepsToRegion - 1));
        ProgramUnderTest::pressKey(QStringLiteral("space"));
        QTRY_VERIFY(isHighlighted());
        QVERIFY(xdotool({"click", "1"}));
        QTRY_VERIFY(isBlue(colourAt(kWindow.topLeft() + QPoint(1, 60))));
        const qsizetype from = program.messages().size();
        // The second button of the bar below the frame, flush with its right edge; it comes a little later.
        const QPoint record(kWindow.right() - kScreenshotBarPx + 45, kWindow.bottom() + 2 + 15);
        QTRY_VERIFY(pointTo(record) && xdotool({"click", "1"}) &&
                    program.waitForMessage(QStringLiteral("position 150 200 394 362"), 1000, from));
        QTRY_VERIFY(isBlue(colourAt(kWindow.topLeft() + QPoint(-2, 60))));
        // Right of the parts that every region's bar has.
        const QPoint follow(kWindow.left() - regionuser::kBorderPx + 220 + 15,
                            kWindow.top() - regionuser::kBorderPx - regionuser::kBarPx / 2);
        QVERIFY(pointTo(follow) && xdotool({"click", "1"}));
        QVERIFY(pointTo(QPoint(20, 20)));
        QTRY_VERIFY(isBlue(colourAt(follow + QPoint(0, 12))));
    }

    /// Brings the window before the program's own, and points to it.
    bool isHighlighted() const
    {
        x11clients::activate(m_id);
        const bool isPointed = pointTo(kWindow.center() + QPoint(1, 0)) && pointTo(kWindow.center());
        return isPointed && isRed(colourAt(kWindow.topLeft() + QPoint(1, 60)));
    }

    static void expectWindow(const QList<QImage>& frames)
    {
        const QImage grid = gridImage(kWindow.size());
        QString story;
        for (const QImage& frame : frames) {
            const bool isWindow = differenceFromGrid(frame, grid.rect(), grid).isEmpty();
            story += QLatin1Char(isWindow ? 'w' : '-');
            QVERIFY2(strongestColour(frame) <= kGreyError, qPrintable(story));
        }
        qInfo("%s", qPrintable(story));
        QVERIFY2(story.startsWith(QLatin1String("wwwww")) && story.endsWith(QLatin1String("wwwww")), qPrintable(story));
        // The region lags behind each step, but does not wait for the last one.
        const qsizetype onTheWay = story.lastIndexOf(QLatin1Char('-')) - story.indexOf(QLatin1Char('-'));
        QVERIFY2(3 * longestLag(story) < onTheWay, qPrintable(story));
    }

    /// In frames, of which those that show something else than the window are dashes.
    static qsizetype longestLag(const QString& story)
    {
        const QStringList lags = story.split(QLatin1Char('w'), Qt::SkipEmptyParts);
        qsizetype longest = 0;
        for (const QString& lag : lags)
            longest = std::max(longest, lag.size());
        return longest;
    }

    QProcess m_other;
    uint32_t m_id = 0;
};

static int run(int argc, char* argv[])
{
    if (argc != 2 || qstrcmp(argv[1], kOtherProgram) != 0)
        return testrun::core<TestFollowedWindow>(argc, argv);
    const TestProfile profile;
    const QGuiApplication application(argc, argv);
    GridWindow window;
    window.show();
    return QGuiApplication::exec();
}

REGISTER_TEST(run);
#include "test_followedwindow.moc"
