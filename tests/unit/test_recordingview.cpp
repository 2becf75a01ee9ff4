// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "app/settings.h"
#include "mainwindow/notices/floatingnotice.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/recording/recordingview.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "mainwindow/recording/toolbarplacement.h"
#include "overlays/drawwindow.h"
#include "tests/support/captureform.h"
#include "tests/support/countdowntest.h"
#include "tests/support/fakerecorder.h"
#include "tests/support/messagecapture.h"
#include "tests/support/regiontiles.h"
#include "tests/support/shownwindow.h"
#include "tests/support/widgetimage.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QCursor>
#include <QLabel>
#include <QScreen>
#include <QStackedWidget>
#include <QTest>
#include <QTimer>

namespace {

using namespace recordstatus;

/// The countdown leaves time to cancel it.
constexpr Durations kBrief{.countdownStepMs = 100, .toolbarFadeMs = 10, .toolbarPointerPollMs = 10, .drainPollMs = 1};

constexpr char kBar[] = "containerWidget";
constexpr char kFrameBar[] = "buttonBackground";

/// The form with a recording's view, and a recorder that only notes what it is asked.
class RecordingForm : public CaptureForm
{
public:
    RecordingForm()
    {
        Activity::Facts facts = nothingUnderWay();
        facts.recording = [this] { return state(); };
        facts.isRecordingActive = [this] { return view->isActive(); };
        m_activity = Activity(facts);
        view = std::make_unique<RecordingView>(
            *this, m_ui, *m_capture, *m_region, *m_output, recorder, *m_settings, m_activity, m_notices, kBrief,
            [this](const QWidget& window, bool excluded) {
                calls << QStringLiteral("exclude %1 %2").arg(window.metaObject()->className()).arg(int(excluded));
                return true;
            });
    }

    /// The view as the session uses it.
    RecordingStage& stage() { return *view; }
    RecordingState state() { return view->session().state(); }
    Activity& activity() { return m_activity; }

    /// As the engine does.
    void report(int status)
    {
        recorder.recording = status != kEnded;
        view->session().onRecordStatusChanged(status);
    }

    QStringList calls;
    FakeRecorder recorder{calls};
    std::unique_ptr<RecordingView> view;
};

/// A part of the floating bar, or of the region frame's tool bar.
template <typename Part>
Part* part(const char* bar, const char* name)
{
    for (const QWidget* const widget : QApplication::allWidgets()) {
        if (widget->objectName() == QLatin1String(bar))
            return widget->findChild<Part*>(QLatin1String(name));
    }
    return nullptr;
}

bool isTimeSeen(const char* bar)
{
    const QImage image = imageOf(*part<QLabel>(bar, "timerLabel"));
    QImage nothing(image.size(), image.format());
    nothing.fill(Qt::transparent);
    return image != nothing;
}

bool isBarAtTheTop()
{
    const auto* const bar = shownWindow<SCFullscreenToolbar>();
    return bar != nullptr && bar->pos() == toolbarTopCentre(primaryScreen().geometry, bar->size());
}

} // namespace

/// What a recording shows of itself, and what it asks of the main window. A region is chosen.
class TestRecordingView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init()
    {
        windowtest::resetSettings();
        m_form = std::make_unique<RecordingForm>();
        dragRegion(*m_form, {100, 80}, {419, 319});
    }

    void cleanup() { m_form.reset(); }

    void buttonShowsTheStateOfTheRecording()
    {
        m_form->report(kStarted);
        expectButton("Stop Recording", "stop-recording", "");
        m_form->report(kPaused);
        expectButton("Pause Recording", "pause-recording", "Resume Recording");
        m_form->report(kStarted);
        expectButton("Stop Recording", "stop-recording", "");
        m_form->report(kPaused);
        m_form->report(kEnded);
        expectButton("Start Recording", "start-recording", "");
    }

    void startShowsTheBarAndForARegionItsFrame()
    {
        auto* const frame = shownWindow<DrawWindow>();
        frame->hide();
        m_form->report(kStarted);
        QVERIFY(frame->isVisible() && frame->isRecording());
        QVERIFY(isBarAtTheTop());
        QCOMPARE(part<QPushButton>(kBar, "recordButton")->toolTip(), QStringLiteral("Stop Recording"));
        QVERIFY(part<QPushButton>(kBar, "pauseButton")->isEnabled());
        QVERIFY(!part<QLabel>(kBar, "audioOnlyLabel")->isVisible());
        m_form->report(kEnded);
        m_form->findChild<SCSwitchWidget*>(QStringLiteral("screenSwitch"))->setChecked(false);
        m_form->recorder.pauseWorks = false;
        m_form->report(kStarted);
        QVERIFY(!frame->isVisible());
        QVERIFY(isBarAtTheTop());
        QVERIFY(!part<QPushButton>(kBar, "pauseButton")->isEnabled());
        QVERIFY(part<QLabel>(kBar, "audioOnlyLabel")->isVisible());
    }

    void barOverTheRecordedScreenWaitsForThePointer()
    {
        const QRect screen = primaryScreen().geometry;
        QTest::mouseClick(m_form->findChild<Tile*>(QStringLiteral("fullScreenTile")), Qt::LeftButton);
        QCursor::setPos(screen.center());
        m_form->report(kStarted);
        QVERIFY(shownWindow<DrawWindow>() == nullptr && shownWindow<SCFullscreenToolbar>() == nullptr);
        QCursor::setPos(screen.topLeft());
        QTRY_VERIFY(isBarAtTheTop());
    }

    void barIsConcealedWithTheFrameThatIsMovedAndLeavesItsRegion()
    {
        m_form->report(kStarted);
        const auto* const bar = shownWindow<SCFullscreenToolbar>();
        auto* const frame = shownWindow<DrawWindow>();
        emit frame->concealedChanged(true);
        QVERIFY(!bar->mask().isEmpty() && !bar->mask().intersects(bar->rect()));
        const QRect moved = regionUnderTheBar();
        frame->setGeometry(moved.adjusted(-4, -4, 4, 4));
        emit frame->windowGeometryChanged(true, moved.topLeft(), moved.bottomRight());
        QVERIFY(!bar->geometry().intersects(moved));
        emit frame->concealedChanged(false);
        QVERIFY(bar->mask().isEmpty() || bar->mask().intersects(bar->rect()));
    }

    void toolTipSaysThePauseKeyThatThereIs()
    {
        openSettings()->setValue(settingskeys::kRecordingHotkey, QStringLiteral("F9"));
        m_form->report(kStarted);
        const auto* const pause = part<QPushButton>(kBar, "pauseButton");
        QCOMPARE(pause->toolTip(), QStringLiteral("Pause Recording"));
        m_form->view->setPauseKey(QStringLiteral("Shift+F9"));
        QCOMPARE(pause->toolTip(), QStringLiteral("Pause Recording (Shift+F9)"));
    }

    /// The frame's bar has moved with them.
    void barIsPlacedAgainWhenScreensHaveChanged()
    {
        m_form->report(kStarted);
        shownWindow<SCFullscreenToolbar>()->move(5, 5);
        emit qGuiApp->primaryScreenChanged(QGuiApplication::primaryScreen());
        QTRY_VERIFY(isBarAtTheTop());
    }

    void windowAndBarAreExcludedFromCapturesUntilTheEnd()
    {
        dragRegion(*m_form, regionUnderTheBar().topLeft(), regionUnderTheBar().bottomRight());
        m_form->stage().setExcludedFromCapture(true);
        m_form->report(kStarted);
        QVERIFY(isBarAtTheTop());
        QCOMPARE(m_form->calls, (QStringList{"exclude QMainWindow 1", "exclude SCFullscreenToolbar 1"}));
        m_form->report(kEnded);
        QCOMPARE(m_form->calls.mid(2), (QStringList{"exclude QMainWindow 0", "exclude SCFullscreenToolbar 0"}));
        m_form->report(kStarted);
        QVERIFY(!isBarAtTheTop());
    }

    void barStaysAtTheTopWhereTheRecordingLeavesItOut()
    {
        dragRegion(*m_form, regionUnderTheBar().topLeft(), regionUnderTheBar().bottomRight());
        m_form->recorder.leavesOut = true;
        m_form->report(kStarted);
        QVERIFY(isBarAtTheTop());
        m_form->report(kEnded);
        // The next one is captured in another way.
        m_form->recorder.leavesOut = false;
        m_form->report(kStarted);
        QVERIFY(!isBarAtTheTop());
    }

    void noticeIsBelowTheBarUnlessItWouldBeRecorded_data()
    {
        QTest::addColumn<bool>("isLeftOut");
        QTest::addColumn<bool>("isExcluded");
        QTest::addColumn<QRect>("region");
        QTest::addColumn<bool>("isShown");
        const QRect elsewhere(100, 380, 320, 200);
        // Of any screen: there is no room beside the bar.
        const QRect below(0, 76, QGuiApplication::primaryScreen()->geometry().width(), 240);
        QTest::newRow("region elsewhere") << false << false << elsewhere << true;
        QTest::newRow("region below the bar") << false << false << below << false;
        QTest::newRow("windows left out of frames") << true << false << below << true;
        QTest::newRow("windows excluded by the system") << false << true << below << true;
    }

    void noticeIsBelowTheBarUnlessItWouldBeRecorded()
    {
        QFETCH(const bool, isLeftOut);
        QFETCH(const bool, isExcluded);
        QFETCH(const QRect, region);
        QFETCH(const bool, isShown);
        dragRegion(*m_form, region.topLeft(), region.bottomRight());
        m_form->recorder.leavesOut = isLeftOut;
        if (isExcluded)
            m_form->stage().setExcludedFromCapture(true);
        m_form->report(kStarted);
        QVERIFY(isBarAtTheTop());
        // Of some lines, whatever the font.
        m_form->view->showNotice({QStringLiteral("lines ").repeated(60), "Act", [] {}});
        auto* const notice = shownWindow<FloatingNotice>();
        QCOMPARE(notice != nullptr, isShown);
        QCOMPARE(m_form->calls.contains(QStringLiteral("exclude FloatingNotice 1")), isExcluded);
        if (notice == nullptr)
            return;
        const QRect bar = shownWindow<SCFullscreenToolbar>()->geometry();
        QCOMPARE(notice->y(), bar.y() + bar.height() + 4);
        QCOMPARE(notice->geometry().center().x(), bar.center().x());
        QCOMPARE(part<QLabel>("noticeBar", "noticeText")->window(), notice);
        QVERIFY(!part<QPushButton>("noticeBar", "noticeAction")->isVisible());
        m_form->report(kEnded);
        QVERIFY(!notice->isVisible());
    }

    void noticeIsNotShownOverTheRecordedScreenNorWithoutARecording()
    {
        m_form->view->showNotice({"early"});
        QTest::mouseClick(m_form->findChild<Tile*>(QStringLiteral("fullScreenTile")), Qt::LeftButton);
        m_form->report(kStarted);
        QVERIFY(shownWindow<FloatingNotice>() == nullptr);
        m_form->view->showNotice({"one"});
        QVERIFY(shownWindow<FloatingNotice>() == nullptr);
        m_form->report(kEnded);
        m_form->recorder.leavesOut = true;
        m_form->report(kStarted);
        QVERIFY(shownWindow<FloatingNotice>() == nullptr);
        m_form->view->showNotice({"two"});
        QVERIFY(shownWindow<FloatingNotice>() != nullptr);
        QCOMPARE(part<QLabel>("noticeBar", "noticeText")->text(), QStringLiteral("two"));
    }

    void noticeIsConcealedWithTheFrameThatIsMoved()
    {
        m_form->report(kStarted);
        m_form->view->showNotice({"one"});
        const auto* const notice = shownWindow<FloatingNotice>();
        auto* const frame = shownWindow<DrawWindow>();
        emit frame->concealedChanged(true);
        QVERIFY(!notice->mask().isEmpty() && !notice->mask().intersects(notice->rect()));
        const QRect moved = regionUnderTheBar().translated(0, 40);
        frame->setGeometry(moved.adjusted(-4, -4, 4, 4));
        emit frame->windowGeometryChanged(true, moved.topLeft(), moved.bottomRight());
        QVERIFY(!notice->geometry().intersects(moved));
        emit frame->concealedChanged(false);
        QVERIFY(notice->mask().isEmpty());
    }

    void entryOfTheRatioBoxHidesTheBar_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::newRow("preset") << "1:1";
        QTest::newRow("no preset") << "Custom";
    }

    void entryOfTheRatioBoxHidesTheBar()
    {
        QFETCH(const QString, entry);
        m_form->report(kStarted);
        QVERIFY(isBarAtTheTop());
        auto* const presets = m_form->findChild<QComboBox*>(QStringLiteral("ratioBox"));
        presets->setCurrentText(entry);
        emit presets->textActivated(entry);
        QVERIFY(shownWindow<SCFullscreenToolbar>() == nullptr);
    }

    void barPausesResumesAndStops()
    {
        m_form->report(kStarted);
        auto* const pause = part<QPushButton>(kBar, "pauseButton");
        QCOMPARE(pause->toolTip(), QStringLiteral("Pause Recording"));
        pause->click();
        QCOMPARE(pause->toolTip(), QStringLiteral("Resume Recording"));
        QVERIFY(m_form->isMinimized());
        pause->click();
        QCOMPARE(pause->toolTip(), QStringLiteral("Pause Recording"));
        part<QPushButton>(kBar, "recordButton")->click();
        QCOMPARE(m_form->calls, (QStringList{"pause 1", "pause 0", "end here"}));
    }

    void buttonOfAPausedRecordingGoesOnWithIt()
    {
        m_form->report(kStarted);
        part<QPushButton>(kBar, "pauseButton")->click();
        QCOMPARE(m_form->state(), RecordingState::Paused);
        m_form->showNormal();
        button().click();
        QVERIFY(m_form->isMinimized());
        QTRY_COMPARE(m_form->state(), RecordingState::Recording);
        QCOMPARE(m_form->calls, (QStringList{"pause 1", "pause 0"}));
        button().click();
        QCOMPARE(m_form->calls, (QStringList{"pause 1", "pause 0", "end here"}));
    }

    void clockBlinksDuringAPause()
    {
        m_form->report(kStarted);
        m_form->report(kPaused);
        for (const char* const bar : {kBar, kFrameBar})
            QTRY_VERIFY(!isTimeSeen(bar));
        m_form->report(kStarted);
        for (const char* const bar : {kBar, kFrameBar})
            QVERIFY(isTimeSeen(bar));
    }

    void endGivesTheButtonTheFocusOnItsPage()
    {
        auto* const format = m_form->findChild<QComboBox*>(QStringLiteral("formatBox"));
        format->setFocus();
        m_form->report(kStarted);
        m_form->report(kEnded);
        QCOMPARE(m_form->focusWidget(), &button());
        auto* const tab = m_form->findChild<QPushButton*>(QStringLiteral("filesTab"));
        auto* const pages = m_form->findChild<QStackedWidget*>(QStringLiteral("pages"));
        pages->setCurrentWidget(m_form->findChild<QWidget*>(QStringLiteral("screenshotPage")));
        tab->setFocus();
        m_form->report(kStarted);
        m_form->report(kEnded);
        QCOMPARE(m_form->focusWidget(), tab);
    }

    void frameStopsAndTheEndHidesBarAndFrame()
    {
        m_form->report(kStarted);
        m_form->report(kPaused);
        const auto* const frame = shownWindow<DrawWindow>();
        part<QPushButton>(kFrameBar, "startButton")->click();
        QTRY_COMPARE(m_form->calls, (QStringList{"end here", "stop 0"}));
        m_form->report(kEnded);
        QVERIFY(!frame->isVisible() && !frame->isRecording());
        QVERIFY(shownWindow<SCFullscreenToolbar>() == nullptr);
        QCOMPARE(part<QPushButton>(kBar, "recordButton")->toolTip(), QStringLiteral("Start Recording"));
        QCOMPARE(part<QPushButton>(kBar, "pauseButton")->toolTip(), QStringLiteral("Pause Recording"));
    }

    void elapsedTimeIsShownOnBarAndFrame()
    {
        m_form->report(kStarted);
        m_form->view->session().onTick();
        for (const char* const bar : {kBar, kFrameBar})
            QCOMPARE(part<QLabel>(bar, "timerLabel")->text(), QStringLiteral("00:00:01"));
        m_form->report(kEnded);
        for (const char* const bar : {kBar, kFrameBar})
            QCOMPARE(part<QLabel>(bar, "timerLabel")->text(), QStringLiteral("00:00:00"));
    }

    void onlyARunningRecordingMinimisesTheWindow()
    {
        m_form->report(kStarted);
        m_form->view->minimiseWhileActive();
        QVERIFY(m_form->stage().isWindowMinimised());
        m_form->report(kPaused);
        m_form->showNormal();
        m_form->view->minimiseWhileActive();
        QVERIFY(!m_form->stage().isWindowMinimised());
        m_form->hide();
        QVERIFY(m_form->stage().isWindowMinimised());
    }

    void endRestoresTheWindowUnlessTheProgramCloses()
    {
        for (const bool isClosing : {false, true}) {
            m_form->report(kStarted);
            m_form->report(kPaused);
            m_form->hide();
            if (isClosing)
                m_form->activity().setClosing();
            m_form->report(kEnded);
            QCOMPARE(m_form->isVisible() && !m_form->isMinimized(), !isClosing);
        }
    }

    void buttonCancelsTheCountdownInTheMiddleOfTheRegion()
    {
        QRect counter;
        bool isFinished = false;
        expectCancelledBy([&] {
            auto* const countdown = shownWindow<SCCountdownWidget>();
            connect(countdown, &SCCountdownWidget::countdownFinished, this, [&] { isFinished = true; });
            counter = countdown->geometry();
            button().click();
        });
        QCOMPARE(counter, QRect(260 - 100, 200 - 120, 200, 240));
        QVERIFY(!isFinished);
    }

    void countdownIsCancelledByItsOwnCloseAndByTheFrames()
    {
        expectCancelledBy([] { shownWindow<SCCountdownWidget>()->close(); });
        expectCancelledBy([] { QTest::mousePress(shownWindow<DrawWindow>(), Qt::RightButton, {}, {2, 2}); });
    }

    void programThatQuitsCancelsTheCountdown()
    {
        QTimer::singleShot(0, m_form.get(), [this] { expectCancelledBy([] { QCoreApplication::exit(0); }); });
        QApplication::exec();
    }

    void preparationThatFailsRestoresTheWindow()
    {
        const MessageCapture messages;
        button().click();
        QCOMPARE(messages.texts().filter(QStringLiteral("Failed")),
                 (QStringList{"[WARNING] Failed to reset video", "[ERROR] Failed to prepare recording"}));
        QVERIFY(!m_form->isMinimized());
    }

    void choicesAreWhatIsShownAndStored()
    {
        for (const auto& [name, text] : {std::pair{"fileNameEdit", "demo"}, std::pair{"saveLocationEdit", "/videos"}})
            m_form->findChild<QLineEdit*>(QLatin1String(name))->setText(QLatin1String(text));
        m_form->findChild<QComboBox*>(QStringLiteral("formatBox"))->setCurrentIndex(2);
        const QDateTime before = QDateTime::currentDateTime();
        const RecordingChoices choices = m_form->stage().choices();
        QCOMPARE(choices.fileName, QStringLiteral("demo"));
        QCOMPARE(choices.folder, QStringLiteral("/videos"));
        QCOMPARE(choices.formatIndex, 2);
        QCOMPARE(choices.areaSize, QSize(320, 240));
        QCOMPARE(QSize(choices.widthPx, choices.heightPx), QSize(320, 240));
        QVERIFY(choices.now >= before);
        for (const bool pointer : {false, true}) {
            openSettings()->setValue(settingskeys::kMouseShowCursor, pointer);
            openSettings()->setValue(settingskeys::kMouseSwitch, !pointer);
            QCOMPARE(m_form->stage().choices().showCursor, pointer);
            QCOMPARE(m_form->stage().choices().pointerEffects, !pointer);
        }
    }

private:
    QPushButton& button() const { return *m_form->findChild<QPushButton*>(QStringLiteral("recordButton")); }

    static QRect regionUnderTheBar() { return {primaryScreen().geometry.center().x() - 160, 20, 320, 240}; }

    void expectButton(const char* text, const char* icon, const char* toolTip) const
    {
        const QIcon expected(QStringLiteral(":/res/forms/images/%1.svg").arg(QLatin1String(icon)));
        QCOMPARE(button().text(), QLatin1String(text));
        QCOMPARE(button().icon().pixmap(24, 24).toImage(), expected.pixmap(24, 24).toImage());
        QCOMPARE(button().toolTip(), QLatin1String(toolTip));
    }

    /// A countdown that runs to its end leads to a preparation; a cancelled one is at once off the screen.
    template <typename Action>
    void expectCancelledBy(Action action) const
    {
        const MessageCapture messages;
        whenCountingDown(m_form.get(), action);
        button().click();
        QVERIFY(shownWindow<SCCountdownWidget>() == nullptr);
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded")));
        QVERIFY(!m_form->isMinimized());
        QTRY_COMPARE(m_form->state(), RecordingState::Idle);
    }

    std::unique_ptr<RecordingForm> m_form;
};

REGISTER_TEST(windowtest::run<TestRecordingView>);

#include "test_recordingview.moc"
