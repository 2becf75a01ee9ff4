// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/mediafile.h"
#include "tests/support/stillimage.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QScopeGuard>
#include <QTest>

#include <algorithm>
#include <memory>

namespace {

const auto kMp4 = QStringLiteral("mp4");
constexpr int kTakeMs = 1500;
constexpr int kAnswerTimeoutMs = 15'000;

/// What an encoder makes of black at most.
constexpr int kBlackError = 12;

/// Lets programs that are started meanwhile record through the engine's scene.
class SceneChosen
{
public:
    SceneChosen() { qputenv(kVariable, "scene"); }
    ~SceneChosen() { qputenv(kVariable, m_before); }

private:
    static constexpr char kVariable[] = "KESTRANO_CAPTURE";
    const QByteArray m_before = qgetenv(kVariable);
};

bool xrandr(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("xrandr"), arguments) == 0;
}

int brightest(const QImage& image, const QRect& part)
{
    int found = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x)
            found = std::max(found, qGray(image.pixel(x, y)));
    }
    return found;
}

} // namespace

/// Files that the program recorded with two screens side by side, of which the right one is the primary.
class TestScreens : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(!m_size.isEmpty());
        m_grid = gridImage(m_size);
    }

    void aRegionAcrossTwoScreensShowsBothToThePixel()
    {
        const StillImage still(m_grid);
        const TwoScreens screens(m_size);
        QVERIFY(screens.areMade());
        const QRect region(screens.primary().left() - 143, 97, 244, 162);
        ProgramUnderTest program;
        Take take = begin(program, region);
        if (take.failure.isEmpty()) {
            QTest::qWait(kTakeMs);
            endTake(program, take);
        }
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        expectGrid(take, region);
    }

    void aRegionOfTheOtherScreenAtAScaleIsRecordedFromThere()
    {
        constexpr double kScale = 1.5;
        const StillImage still(m_grid);
        const TwoScreens screens(m_size);
        QVERIFY(screens.areMade());
        const QRect region(20, 60, 200, 160);
        ProgramUnderTest program;
        Take take = begin(program, region, region, kScale);
        if (take.failure.isEmpty()) {
            QTest::qWait(kTakeMs);
            endTake(program, take);
        }
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        expectGrid(take, QRect(region.topLeft() * kScale, region.size() * kScale));
    }

    void theFrameTakesTheVideoToTheOtherScreen()
    {
        const StillImage still(m_grid);
        const TwoScreens screens(m_size);
        QVERIFY(screens.areMade());
        const QRect region(screens.primary().left() + 61, 197, 244, 162);
        const QPoint distance(-330, 41);
        ProgramUnderTest program;
        Take take = begin(program, region);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const QPoint grip = regionuser::bareBar(region);
        QVERIFY(drag(grip, grip + distance));
        QTest::qWait(kTakeMs);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const QString difference =
            differenceFromGrid(MediaFile(take.path).frames().constLast(), region.translated(distance), m_grid);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    void aRegionAcrossTwoScreensIsCutOffInTheScene()
    {
        const SceneChosen scene;
        const StillImage still(m_grid);
        const TwoScreens screens(m_size);
        QVERIFY(screens.areMade());
        const int edge = screens.primary().left();
        ProgramUnderTest program;
        // Grown to four columns, to the near side of the edge.
        const QRect region(edge - 244, 97, 244, 162);
        Take take = begin(program, QRect(edge - 243, 97, 400, 162), region);
        if (take.failure.isEmpty()) {
            const auto frame = visibleWindow(QStringLiteral("Drawing Window"));
            const int border = regionuser::kBorderPx;
            QCOMPARE(frame.value_or(QRect()).left(), region.left() - border);
            QTest::qWait(kTakeMs);
            endTake(program, take);
        }
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        expectGrid(take, region);
    }

    void theOtherScreenIsRecordedWhole_data()
    {
        QTest::addColumn<bool>("isScene");
        QTest::newRow("grabbed") << false;
        QTest::newRow("through the scene") << true;
    }

    void theOtherScreenIsRecordedWhole()
    {
        QFETCH(const bool, isScene);
        const auto scene = isScene ? std::make_unique<SceneChosen>() : nullptr;
        const StillImage still(m_grid);
        const TwoScreens screens(m_size);
        QVERIFY(screens.areMade());
        ProgramUnderTest program;
        regionuser::prepare(program);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY(goBackFromRecordButton(program, kStepsToFullScreen));
        const qsizetype from = program.messages().size();
        for (const char* key : {"space", "Down", "Return"}) {
            ProgramUnderTest::pressKey(QLatin1String(key));
            QTest::qWait(kMenuMs);
        }
        QVERIFY2(program.waitForMessage(QStringLiteral("Screen \"Left\" is chosen"), kAnswerTimeoutMs, from),
                 qPrintable(program.transcript()));
        const Take take = record(program, kMp4, kTakeMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        expectGrid(take, QRect(QPoint(0, 0), screens.primary().size()));
    }

    void aRegionIsKeptOnTheScreensThatAreThereWhenTheRecordingBegins()
    {
        const StillImage still(m_grid);
        const TwoScreens screens(m_size);
        QVERIFY(screens.areMade());
        const int edge = screens.primary().left();
        ProgramUnderTest program;
        regionuser::prepare(program);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const QRect region(edge - 143, 97, 244, 162);
        QVERIFY(regionuser::chooseRegion(program, region) == region);
        QVERIFY(xrandr({"--delmonitor", "Left"}));
        const Take take = record(program, kMp4, kTakeMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        // As narrow as a frame can be.
        expectGrid(take, QRect(edge, 97, 192, 162));
    }

    void aScreenThatIsUnpluggedIsBlackAndTheRecordingGoesOn()
    {
        const StillImage still(m_grid);
        const TwoScreens screens(m_size);
        QVERIFY(screens.areMade());
        const int edge = screens.primary().left();
        const QRect region(edge - 100, 97, 244, 162);
        ProgramUnderTest program;
        Take take = begin(program, region);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kTakeMs);
        const qsizetype from = program.messages().size();
        QVERIFY(xrandr({"--delmonitor", "Right"}));
        QVERIFY(
            xrandr({"--output", "screen", "--off", "--fb", QStringLiteral("%1x%2").arg(edge).arg(m_size.height())}));
        const auto restored = qScopeGuard([this] {
            xrandr({"--fb", QStringLiteral("%1x%2").arg(m_size.width()).arg(m_size.height())});
            xrandr({"--output", "screen", "--auto"});
        });
        QVERIFY2(program.waitForMessage(QStringLiteral("The screens have changed"), kAnswerTimeoutMs, from),
                 qPrintable(program.transcript()));
        QTest::qWait(kTakeMs);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

        const MediaFile file(take.path);
        const QList<QImage> frames = file.frames();
        const QString difference = differenceFromGrid(frames.at(frames.size() / 4), region, m_grid);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        const QImage& last = frames.constLast();
        // An encoder mixes what is in a block of pixels at the edge.
        const QRect there(0, 0, 96, region.height());
        const QString left = differenceFromGrid(last.copy(there), there.translated(region.topLeft()), m_grid);
        QVERIFY2(left.isEmpty(), qPrintable(left));
        const int light = brightest(last, QRect(108, 0, 136, region.height()));
        QVERIFY2(light <= kBlackError, qPrintable(QString::number(light)));
    }

private:
    static constexpr int kStepsToFullScreen = kStepsToRegion + 1;
    /// What a menu needs to take notice of one key before the next.
    static constexpr int kMenuMs = 300;

    static Take begin(ProgramUnderTest& program, const QRect& region) { return begin(program, region, region); }

    /// @param region what the program is to make of the selected one
    static Take begin(ProgramUnderTest& program, const QRect& selected, const QRect& region, double scale = 1.0)
    {
        Take take;
        regionuser::prepare(program, scale);
        if (!program.startAndWaitUntilReady()) {
            take.failure = QStringLiteral("the program did not start");
            return take;
        }
        if (regionuser::chooseRegion(program, selected, scale) == region)
            return beginTake(program, kMp4);
        take.failure = QStringLiteral("another region was chosen:\n") + program.transcript();
        return take;
    }

    void expectGrid(const Take& take, const QRect& part) const
    {
        const MediaFile file(take.path);
        QVERIFY2(file.isReadable() && file.video(), qPrintable(file.error()));
        QCOMPARE(file.video()->size, part.size());
        const QString difference = differenceFromGrid(file.frameAt(file.durationSeconds() / 2), part, m_grid);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    const QSize m_size = StillImage::displaySize();
    QImage m_grid;
};

REGISTER_TEST(testrun::core<TestScreens>);
#include "test_screens.moc"
