// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "tests/support/captureform.h"
#include "tests/support/regiontiles.h"
#include "tests/support/windowtest.h"

#include <QCursor>
#include <QFile>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>

namespace {

/// For Qt's platform without a display, as Windows has them: the second one has twice the pixels.
constexpr char kScreens[] = R"({"screens": [
    {"name": "Main", "x": 0, "y": 0, "width": 1280, "height": 720,
     "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
    {"name": "Fine", "x": 1280, "y": 0, "width": 2048, "height": 1200,
     "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";
constexpr QRect kRegion(100, 80, 640, 481);
constexpr QPoint kOnFine(1500, 50);

class RecordingForm : public CaptureForm
{
public:
    RecordingForm()
    {
        Activity::Facts facts = nothingUnderWay();
        facts.recording = [this] { return m_state; };
        facts.isRecordingActive = [this] { return m_state == RecordingState::Recording; };
        m_activity = Activity(facts);
    }

    CaptureController& capture() { return *m_capture; }

    void beginRecording()
    {
        // No engine runs; the size is settled all the same.
        m_capture->prepare();
        m_state = RecordingState::Recording;
    }
    void endRecording()
    {
        m_state = RecordingState::Idle;
        m_capture->onRecordingOver();
    }

private:
    RecordingState m_state = RecordingState::Idle;
};

AreaSelector* selectorAt(const QPoint& position)
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        auto* const selector = qobject_cast<AreaSelector*>(window);
        if (selector != nullptr && selector->isVisible() && selector->geometry().contains(position))
            return selector;
    }
    return nullptr;
}

void moveFrame(DrawWindow& frame, const QPoint& to, bool isMoving)
{
    const QRect framed(to, frame.size() - QSize(8, 8));
    emit frame.windowGeometryChanged(isMoving, framed.topLeft(), framed.bottomRight());
}

} // namespace

/// A region that is recorded and moved to a screen of another scale.
class TestCaptureScale : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(SCLogger::instance()->initialize());
        const QScreen* const main = QGuiApplication::screenAt(kRegion.center());
        const QScreen* const fine = QGuiApplication::screenAt(kOnFine);
        if (main == nullptr || fine == nullptr)
            QFAIL("the test needs its two screens");
        QCOMPARE(main->devicePixelRatio(), 1.0);
        QCOMPARE(fine->devicePixelRatio(), 2.0);
    }

    void init() { windowtest::resetSettings(); }

    void recordedRegionKeepsItsPixels()
    {
        RecordingForm form;
        chooseRegion(form);
        form.beginRecording();
        DrawWindow& frame = *shownWindow<DrawWindow>();
        moveFrame(frame, kOnFine, true);
        const QRect onFine(kOnFine, QSize(320, 241));
        QCOMPARE(form.capture().area(), onFine);
        moveFrame(frame, kOnFine, false);
        QCOMPARE(frame.geometry(), onFine.adjusted(-4, -4, 4, 4));
        moveFrame(frame, kOnFine + QPoint(100, 40), true);
        QCOMPARE(form.capture().area(), onFine.translated(100, 40));
        // Back again, and as large as before.
        moveFrame(frame, kRegion.topLeft(), true);
        QCOMPARE(form.capture().area(), kRegion);
        form.endRecording();
    }

    void recordedRegionIsAllOnTheScreenThatItComesTo()
    {
        RecordingForm form;
        chooseRegion(form);
        form.beginRecording();
        moveFrame(*shownWindow<DrawWindow>(), QPoint(1200, 50), true);
        QCOMPARE(form.capture().area(), QRect(1280, 50, 320, 241));
        form.endRecording();
    }

    /// It is the frame that is on one screen or the other, and it keeps its size while it is dragged.
    void recordedRegionChangesItsScreenOnceAtTheBorderOfTwo()
    {
        RecordingForm form;
        chooseRegion(form);
        form.beginRecording();
        DrawWindow& frame = *shownWindow<DrawWindow>();
        QList<int> widths;
        QList<int> positions;
        for (const int x : {900, 961, 962, 963, 1000, 1001, 1100, 1279, 1280}) {
            moveFrame(frame, QPoint(x, 50), true);
            widths.append(form.capture().area().width());
            positions.append(form.capture().area().x());
        }
        QCOMPARE(widths, (QList<int>{640, 320, 320, 320, 320, 320, 320, 320, 320}));
        QCOMPARE(positions, (QList<int>{900, 1280, 1280, 1280, 1280, 1280, 1280, 1280, 1280}));
        moveFrame(frame, QPoint(1280, 50), false);
        QCOMPARE(frame.geometry().width(), 320 + 8);
        widths.clear();
        positions.clear();
        // The smaller one is most on the screen on the left from a later column on.
        for (const int x : {1130, 1119, 1118, 1000, 960, 641, 640}) {
            moveFrame(frame, QPoint(x, 50), true);
            widths.append(form.capture().area().width());
            positions.append(form.capture().area().x());
        }
        QCOMPARE(widths, (QList<int>{320, 640, 640, 640, 640, 640, 640}));
        QCOMPARE(positions, (QList<int>{1130, 640, 640, 640, 640, 640, 640}));
        form.endRecording();
    }

    /// Nothing is dragged from one screen to another there.
    void cornersAreMarkedOnTheScreenWithThePointer()
    {
        RecordingForm form;
        QCursor::setPos(kOnFine);
        QTest::mouseClick(form.findChild<Tile*>(QStringLiteral("regionTile")), Qt::LeftButton);
        AreaSelector* const onMain = selectorAt(kRegion.center());
        AreaSelector* const onFine = selectorAt(kOnFine);
        QTRY_VERIFY(onFine->isActiveWindow());
        QCursor::setPos(kRegion.topLeft());
        QEvent enter(QEvent::Enter);
        QCoreApplication::sendEvent(onMain, &enter);
        QTRY_VERIFY(onMain->isActiveWindow());
        QTest::keyClick(onMain, Qt::Key_Space);
        QCursor::setPos(kOnFine);
        QCoreApplication::sendEvent(onFine, &enter);
        QVERIFY(onMain->isActiveWindow());
        QTest::keyClick(onMain, Qt::Key_Space);
        QCOMPARE(form.capture().area(), QRect(kRegion.left(), 50, 1280 - kRegion.left(), 142));
    }

    void regionThatIsNotRecordedKeepsItsSizeInLogicalPixels()
    {
        RecordingForm form;
        chooseRegion(form);
        form.beginRecording();
        form.endRecording();
        moveFrame(*shownWindow<DrawWindow>(), kOnFine, false);
        QCOMPARE(form.capture().area(), QRect(kOnFine, kRegion.size()));
    }

private:
    static void chooseRegion(RecordingForm& form)
    {
        QTest::mouseClick(form.findChild<Tile*>(QStringLiteral("regionTile")), Qt::LeftButton);
        AreaSelector* const selector = selectorAt(kRegion.center());
        QVERIFY(selector != nullptr);
        QTest::mousePress(selector, Qt::LeftButton, {}, kRegion.topLeft());
        QTest::mouseMove(selector, kRegion.bottomRight());
        QTest::mouseRelease(selector, Qt::LeftButton, {}, kRegion.bottomRight());
        QCOMPARE(form.capture().area(), kRegion);
    }
};

static int run(int argc, char* argv[])
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("screens.json")));
    if (!file.open(QIODevice::WriteOnly) || file.write(kScreens) < 0)
        return EXIT_FAILURE;
    file.close();
    qputenv("QT_SCREEN_SCALE_FACTORS", "Main=1;Fine=2");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + file.fileName().toLocal8Bit());
    return windowtest::run<TestCaptureScale>(argc, argv);
}

REGISTER_TEST(run);

#include "test_capturescale_x11.moc"
