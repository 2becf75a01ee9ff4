// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/savefolder.h"
#include "app/sclogger.h"
#include "app/settings.h"
#include "app/shownpath.h"
#include "mainwindow/recording/recordingsession.h"
#include "mainwindow/recording/recordingstage.h"
#include "tests/support/fakerecorder.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <optional>

namespace {

using Kind = RecordingOutcome::Kind;

/// What was asked of the session's surroundings, in order.
using Calls = QStringList;

constexpr int kNever = 1000000;

/// Every wait ends at the event that it waits for.
constexpr Durations kPatient{.clockTickMs = kNever, .windowGoneMs = 40, .drainPollMs = 1};
/// The event never comes.
constexpr Durations kHasty{.clockTickMs = kNever,
                           .windowGoneMs = 40,
                           .drainPollMs = 1,
                           .drainTimeoutMs = 60,
                           .sessionEndDrainTimeoutMs = 60,
                           .confirmTimeoutMs = 60};

class FakeStage : public RecordingStage
{
public:
    explicit FakeStage(Calls& calls) : m_calls(calls) {}

    void minimiseWindow() override
    {
        m_calls << QStringLiteral("minimise");
        minimised = true;
    }
    bool isWindowMinimised() const override { return minimised; }
    void hideOverlays() override { m_calls << QStringLiteral("hide overlays"); }
    void restoreWindow() override { m_calls << QStringLiteral("restore"); }

    void countDown(int from) override
    {
        m_calls << QStringLiteral("countdown %1").arg(from);
        if (duringCountdown)
            duringCountdown();
    }

    void cancelCountdown() override { m_calls << QStringLiteral("cancel countdown"); }

    bool prepareCapture() override
    {
        m_calls << QStringLiteral("prepare");
        if (duringPreparation)
            duringPreparation();
        return preparationWorks;
    }

    RecordingChoices choices() const override { return chosen; }

    void setExcludedFromCapture(bool excluded) override { m_calls << QStringLiteral("exclude %1").arg(int(excluded)); }

    std::function<void()> duringCountdown;
    std::function<void()> duringPreparation;
    bool preparationWorks = true;
    bool minimised = false;
    RecordingChoices chosen;

private:
    Calls& m_calls;
};

const Calls kStartOrder{
    "minimise", "countdown 3", "prepare", "cursor 1", "effects 0", "exclude 1", "setup 1920x1080 30 4 0", "start"};
const Calls kWayBack{"exclude 0", "restore"};
const Calls kWayBackFromRecording{"exclude 0", "hide overlays", "restore"};

} // namespace

class TestRecordingSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_logPath = m_folder.filePath(QStringLiteral("test.log"));
        QVERIFY(SCLogger::instance()->initialize(m_logPath));
    }

    void init()
    {
        m_calls.clear();
        m_recorder = std::make_unique<FakeRecorder>(m_calls);
        m_stage = std::make_unique<FakeStage>(m_calls);
        m_stage->chosen = {QStringLiteral("demo"),
                           m_folder.filePath(QStringLiteral("videos")),
                           0,
                           {1280, 720},
                           1920,
                           1080,
                           true,
                           false,
                           {QDate(2024, 5, 1), QTime(13, 7, 9)}};
        makeSession(kPatient);
        m_logSize = log().size();
    }

    void cleanup()
    {
        m_session.reset();
        QDir(m_folder.filePath(QStringLiteral("videos"))).removeRecursively();
    }

    void startTakesItsStepsInOrder()
    {
        const QSignalSpy files(m_session.get(), &RecordingSession::fileProduced);
        m_session->requestStart();
        QCOMPARE(m_calls, kStartOrder);
        QCOMPARE(m_session->state(), RecordingState::Recording);
        const QString base = m_folder.filePath(QStringLiteral("videos/demo"));
        QCOMPARE(m_recorder->path, base);
        QCOMPARE(files.size(), 1);
        QCOMPARE(files.at(0).at(0).toString(), base + ".mp4");
        QCOMPARE(files.at(0).at(1).toString(), QStringLiteral("video"));
        QCOMPARE(logged(), (QStringList{"Info: Starting recording to file: " + base,
                                        "Debug: Recording area set to: 1280x720", "Info: Recording started..."}));
    }

    void stopEndsInIdle()
    {
        m_session->requestStart();
        m_calls.clear();
        m_session->requestStop();
        QCOMPARE(m_session->state(), RecordingState::Stopping);
        QTRY_COMPARE(m_calls, (Calls{"end here", "stop 0"}));
        QCOMPARE(m_session->state(), RecordingState::Stopping);
        m_session->onRecordStatusChanged(2);
        QCOMPARE(m_session->state(), RecordingState::Ended);
        QCOMPARE(m_calls, (Calls{"end here", "stop 0"} + kWayBackFromRecording));
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(logged().last(), QStringLiteral("Info: Recording stopped... 0"));
    }

    void statusGoesToTheMirrors()
    {
        const QSignalSpy statuses(m_session.get(), &RecordingSession::statusChanged);
        m_session->requestStart();
        recordToTheEnd();
        QCOMPARE(statuses.size(), 2);
        QCOMPARE(statuses.at(0).at(0).toInt(), 0);
        QCOMPARE(statuses.at(1).at(0).toInt(), 2);
    }

    void pausedStatusMinimisesTheWindow()
    {
        m_session->requestStart();
        m_calls.clear();
        const QSignalSpy statuses(m_session.get(), &RecordingSession::statusChanged);
        m_session->onRecordStatusChanged(1);
        QCOMPARE(m_calls, Calls{"minimise"});
        QCOMPARE(statuses.at(0).at(0).toInt(), 1);
    }

    void pauseStopsTheClockAndIsReported()
    {
        m_session->requestStart();
        m_calls.clear();
        const QSignalSpy statuses(m_session.get(), &RecordingSession::statusChanged);
        m_session->setPaused(true);
        QCOMPARE(m_calls, (Calls{"pause 1", "minimise"}));
        QCOMPARE(m_session->state(), RecordingState::Paused);
        QCOMPARE(statuses.at(0).at(0).toInt(), 1);
        const QSignalSpy elapsed(m_session.get(), &RecordingSession::elapsedChanged);
        m_session->onTick();
        QCOMPARE(elapsed.size(), 0);
    }

    void resumeGoesOnWhereThePauseBegan()
    {
        m_session->requestStart();
        m_session->onTick();
        m_session->setPaused(true);
        m_calls.clear();
        const QSignalSpy statuses(m_session.get(), &RecordingSession::statusChanged);
        m_session->setPaused(false);
        QCOMPARE(m_calls, Calls{"pause 0"});
        QCOMPARE(m_session->state(), RecordingState::Recording);
        QCOMPARE(statuses.at(0).at(0).toInt(), 0);
        QSignalSpy elapsed(m_session.get(), &RecordingSession::elapsedChanged);
        m_session->onTick();
        QCOMPARE(elapsed.takeLast().at(0).toString(), QStringLiteral("00:00:02"));
    }

    void windowThatWasRestoredDuringAPauseIsGoneBeforeTheRecordingGoesOn()
    {
        m_session->requestStart();
        m_session->setPaused(true);
        m_stage->minimised = false;
        m_calls.clear();
        m_session->setPaused(false);
        QCOMPARE(m_calls, Calls{"minimise"});
        QCOMPARE(m_session->state(), RecordingState::Paused);
        QTRY_COMPARE(m_calls, (Calls{"minimise", "pause 0"}));
        QCOMPARE(m_session->state(), RecordingState::Recording);
    }

    void stopWhileTheWindowGoesAwayResumesNothing()
    {
        m_session->requestStart();
        m_session->setPaused(true);
        m_stage->minimised = false;
        m_session->setPaused(false);
        m_calls.clear();
        m_session->requestStop();
        QTest::qWait(100);
        QCOMPARE(m_calls, (Calls{"end here", "stop 0"}));
    }

    void endAskedForDuringTheCountdownCancelsIt()
    {
        m_stage->duringCountdown = [this] { m_session->requestEnd(); };
        m_session->requestStart();
        QVERIFY(m_calls.contains("cancel countdown"));
        QVERIFY(!m_recorder->recording);
    }

    void pauseIsIgnoredUnlessRecordingAndResumeUnlessPaused()
    {
        m_session->setPaused(true);
        QCOMPARE(m_calls, Calls());
        m_session->requestStart();
        m_calls.clear();
        m_session->setPaused(false);
        QCOMPARE(m_calls, Calls());
        m_session->setPaused(true);
        m_calls.clear();
        m_session->setPaused(true);
        QCOMPARE(m_calls, Calls());
        m_recorder->pollsUntilDrained = kNever;
        m_session->requestStop();
        m_calls.clear();
        m_session->setPaused(false);
        QCOMPARE(m_calls, Calls());
    }

    void engineThatCannotPauseGoesOnRecording()
    {
        m_session->requestStart();
        m_recorder->pauseWorks = false;
        m_session->setPaused(true);
        QCOMPARE(m_session->state(), RecordingState::Recording);
        QCOMPARE(logged().last(), QStringLiteral("Warning: The recording cannot be paused"));
    }

    void hotkeyStopsAPausedRecording()
    {
        m_session->requestStart();
        m_session->setPaused(true);
        m_calls.clear();
        m_session->toggle();
        QTRY_COMPARE(m_calls, (Calls{"end here", "stop 0"}));
        m_session->onRecordStatusChanged(2);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
    }

    void pausedRecordingThatEndsByItselfLeadsBackToIdle()
    {
        m_session->requestStart();
        m_session->setPaused(true);
        m_recorder->endByItself(QStringLiteral("the disk is full"));
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QVERIFY(logged().contains("Error: The recording ended by itself: the disk is full"));
    }

    void finishingAPausedRecordingStopsIt()
    {
        m_session->requestStart();
        m_session->setPaused(true);
        m_calls.clear();
        m_session->requestEnd();
        QTRY_COMPARE(m_calls, (Calls{"end here", "stop 0"}));
    }

    void clockCountsSecondsWhileRecording()
    {
        QSignalSpy elapsed(m_session.get(), &RecordingSession::elapsedChanged);
        m_session->requestStart();
        QCOMPARE(elapsed.takeLast().at(0).toString(), QStringLiteral("00:00:00"));
        m_session->onTick();
        QCOMPARE(elapsed.takeLast().at(0).toString(), QStringLiteral("00:00:01"));
        for (int second = 1; second < 3661; ++second)
            m_session->onTick();
        QCOMPARE(elapsed.takeLast().at(0).toString(), QStringLiteral("01:01:01"));
        recordToTheEnd();
        QCOMPARE(elapsed.takeLast().at(0).toString(), QStringLiteral("00:00:00"));
    }

    void clockRunsWhileTheRecordingIsNotPaused()
    {
        makeSession({.clockTickMs = 2, .drainPollMs = 1});
        QSignalSpy elapsed(m_session.get(), &RecordingSession::elapsedChanged);
        m_session->requestStart();
        QTRY_VERIFY(elapsed.size() > 3);
        m_session->setPaused(true);
        elapsed.clear();
        QTest::qWait(50);
        QCOMPARE(elapsed.size(), 0);
        m_session->setPaused(false);
        QTRY_VERIFY(elapsed.size() > 3);
        recordToTheEnd();
        elapsed.clear();
        QTest::qWait(50);
        QCOMPARE(elapsed.size(), 0);
    }

    void clockStopsWithTheStopRequest()
    {
        m_session->requestStart();
        m_recorder->pollsUntilDrained = kNever;
        m_session->requestStop();
        const QSignalSpy elapsed(m_session.get(), &RecordingSession::elapsedChanged);
        m_session->onTick();
        QCOMPARE(elapsed.size(), 0);
    }

    void emptyFileNameGivesTheTime()
    {
        m_stage->chosen.fileName.clear();
        m_session->requestStart();
        QCOMPARE(m_recorder->path, m_folder.filePath(QStringLiteral("videos/Recording_2024_05_01_13-07-09")));
    }

    void blanksAroundTheFileNameAreDropped()
    {
        m_stage->chosen.fileName = QStringLiteral("  demo ");
        m_session->requestStart();
        QCOMPARE(m_recorder->path, m_folder.filePath(QStringLiteral("videos/demo")));
    }

    void missingSaveLocationIsMadeBeforeTheStart()
    {
        m_stage->chosen.folder = m_folder.filePath(QStringLiteral("videos/deep/er"));
        m_session->requestStart();
        QVERIFY(QDir(m_stage->chosen.folder).exists());
    }

    void saveLocationThatCannotBeMadeMeansTheDefaultOne()
    {
        QFile file(m_folder.filePath(QStringLiteral("blocker")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        m_stage->chosen.folder = file.fileName() + "/videos";
        const QSignalSpy replaced(m_session.get(), &RecordingSession::folderReplaced);
        m_session->requestStart();
        QCOMPARE(replaced.size(), 1);
        QCOMPARE(m_recorder->path, defaultSaveFolder(settingskeys::kRecordingSaveLocation) + "/demo");
        QVERIFY(logged().contains("Warning: The save folder cannot be used, files go to the default folder: \"" +
                                  shownPath(m_stage->chosen.folder) + '"'));
    }

    void saveLocationThatWorksIsNotReplaced()
    {
        const QSignalSpy replaced(m_session.get(), &RecordingSession::folderReplaced);
        m_session->requestStart();
        QCOMPARE(replaced.size(), 0);
    }

    void startIsAnnouncedWithTheRateOfItsFormatBeforeTheFileIsMade()
    {
        QStringList callsBefore;
        connect(m_session.get(), &RecordingSession::starting, this, [&] { callsBefore = m_calls; });
        const QSignalSpy starting(m_session.get(), &RecordingSession::starting);
        m_stage->chosen.formatIndex = 5;
        m_session->requestStart();
        QCOMPARE(starting.size(), 1);
        QCOMPARE(starting.at(0).at(0).toString(), m_folder.filePath(QStringLiteral("videos/demo.aac")));
        QCOMPARE(starting.at(0).at(1).toLongLong(), 192'000 / 8);
        QCOMPARE(callsBefore.last(), QStringLiteral("exclude 1"));
    }

    void formatIndexFiveIsAnAacFileOfTypeAudio()
    {
        m_stage->chosen.formatIndex = 5;
        const QSignalSpy files(m_session.get(), &RecordingSession::fileProduced);
        m_session->requestStart();
        QVERIFY(files.at(0).at(0).toString().endsWith(QLatin1String("/demo.aac")));
        QCOMPARE(files.at(0).at(1).toString(), QStringLiteral("audio"));
        QVERIFY(m_calls.contains(QStringLiteral("setup 1920x1080 30 4 5")));
    }

    void listWithoutEntriesIsFormatZero()
    {
        m_stage->chosen.formatIndex = -1;
        const QSignalSpy files(m_session.get(), &RecordingSession::fileProduced);
        m_session->requestStart();
        QVERIFY(files.at(0).at(0).toString().endsWith(QLatin1String("/demo.mp4")));
        QVERIFY(m_calls.contains(QStringLiteral("setup 1920x1080 30 4 0")));
    }

    void takenNameIsNotOverwritten()
    {
        QDir().mkpath(m_stage->chosen.folder);
        QFile taken(m_stage->chosen.folder + "/demo.mp4");
        QVERIFY(taken.open(QIODevice::WriteOnly));
        const QSignalSpy files(m_session.get(), &RecordingSession::fileProduced);
        m_session->requestStart();
        QCOMPARE(m_recorder->path, m_stage->chosen.folder + "/demo (2)");
        QCOMPARE(files.at(0).at(0).toString(), m_stage->chosen.folder + "/demo (2).mp4");
        QVERIFY(logged().contains("Info: Starting recording to file: " + m_stage->chosen.folder + "/demo (2)"));
    }

    void hotkeyDuringTheCountdownCancels()
    {
        m_stage->duringCountdown = [this] { m_session->toggle(); };
        m_session->toggle();
        QCOMPARE(m_calls, (Calls{"minimise", "countdown 3", "cancel countdown"} + kWayBack));
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QVERIFY(!m_recorder->recording);
    }

    void hotkeyPressedManyTimesDuringTheCountdownCancelsOnce()
    {
        m_stage->duringCountdown = [this] {
            for (int press = 0; press < 5; ++press)
                m_session->toggle();
        };
        m_session->toggle();
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls.count(QStringLiteral("start")), 0);
        m_stage->duringCountdown = nullptr;
        m_session->toggle();
        QCOMPARE(m_session->state(), RecordingState::Recording);
    }

    void cancelledCountdownLeavesTheNextOneAlone()
    {
        m_stage->duringCountdown = [this] { m_session->cancelCountdown(); };
        m_session->requestStart();
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        m_stage->duringCountdown = nullptr;
        m_session->requestStart();
        QCOMPARE(m_session->state(), RecordingState::Recording);
    }

    void cancelWithoutACountdownDoesNothing()
    {
        m_session->cancelCountdown();
        m_session->requestStart();
        QCOMPARE(m_session->state(), RecordingState::Recording);
    }

    void startDuringTheCountdownIsIgnored()
    {
        m_stage->duringCountdown = [this] { m_session->requestStart(); };
        m_session->requestStart();
        QCOMPARE(m_calls, kStartOrder);
    }

    void hotkeyDuringThePreparationIsIgnored()
    {
        m_stage->duringPreparation = [this] { m_session->toggle(); };
        m_session->toggle();
        QCOMPARE(m_calls, kStartOrder);
        QCOMPARE(m_session->state(), RecordingState::Recording);
    }

    void hotkeyDuringTheStopIsIgnored()
    {
        m_session->toggle();
        m_session->toggle();
        m_session->toggle();
        QTRY_COMPARE(m_calls.count(QStringLiteral("stop 0")), 1);
        m_session->toggle();
        m_session->onRecordStatusChanged(2);
        m_session->toggle();
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls.count(QStringLiteral("stop 0")), 1);
        QCOMPARE(m_calls.count(QStringLiteral("start")), 1);
    }

    void engineThatDoesNotRunBringsTheWindowBack()
    {
        m_recorder->ready = false;
        const QSignalSpy statuses(m_session.get(), &RecordingSession::statusChanged);
        m_session->requestStart();
        QCOMPARE(m_calls, (Calls{"minimise", "countdown 3"} + kWayBack));
        QCOMPARE(logged(), QStringList{"Warning: OBS wrapper not initialized"});
        QCOMPARE(statuses.at(0).at(0).toInt(), 2);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
    }

    void existingRecordingIsStoppedInsteadOfStartingASecond()
    {
        m_recorder->recording = true;
        m_session->requestStart();
        QTRY_COMPARE(m_calls, (Calls{"minimise", "countdown 3", "end here", "stop 0"}));
        QCOMPARE(logged().first(), QStringLiteral("Info: Stopping existing recording"));
        m_session->onRecordStatusChanged(2);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls.last(), QStringLiteral("restore"));
    }

    void failedPreparationBringsTheWindowBack()
    {
        m_stage->preparationWorks = false;
        m_session->requestStart();
        QCOMPARE(m_calls, (Calls{"minimise", "countdown 3", "prepare"} + kWayBack));
        QCOMPARE(logged(), QStringList{"Error: Failed to prepare recording"});
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
    }

    void failedStartBringsTheWindowBackWithItsReason()
    {
        m_recorder->startWorks = false;
        m_recorder->error = QStringLiteral("no encoder");
        m_session->requestStart();
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls.last(kWayBackFromRecording.size()), kWayBackFromRecording);
        QVERIFY(logged().contains(QStringLiteral("Error: The recording could not start: no encoder")));
    }

    void failedStartStillEntersTheFile()
    {
        m_recorder->startWorks = false;
        const QSignalSpy files(m_session.get(), &RecordingSession::fileProduced);
        m_session->requestStart();
        QCOMPARE(files.size(), 1);
        QVERIFY(logged().contains(QStringLiteral("Error: The recording could not start: the engine gave no reason")));
    }

    void recordingThatEndsByItselfBringsTheWindowBackWithItsReason()
    {
        m_session->requestStart();
        m_calls.clear();
        m_recorder->endByItself(QStringLiteral("disk full"));
        QCOMPARE(m_calls, kWayBackFromRecording);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(logged().last(), QStringLiteral("Error: The recording ended by itself: disk full"));
    }

    void recordingThatEndsDuringTheDrainIsNotStoppedAgain()
    {
        m_session->requestStart();
        m_recorder->pollsUntilDrained = kNever;
        m_session->requestStop();
        m_recorder->endByItself(QStringLiteral("disk full"));
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QTest::qWait(100);
        QCOMPARE(m_calls.count(QStringLiteral("stop 0")), 0);
        QCOMPARE(logged().last(), QStringLiteral("Error: The recording ended by itself: disk full"));
    }

    void recordingWhoseEndIsOnItsWayIsNotStoppedAgain()
    {
        m_session->requestStart();
        m_recorder->pollsUntilDrained = kNever;
        m_session->requestStop();
        // The engine's flag is down before its queued word has arrived.
        m_recorder->recording = false;
        QTest::qWait(50);
        QCOMPARE(m_calls.count(QStringLiteral("stop 0")), 0);
        m_recorder->endByItself(QStringLiteral("disk full"));
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(logged().last(), QStringLiteral("Error: The recording ended by itself: disk full"));
    }

    void lateEndOfAnEndedRecordingIsIgnored()
    {
        m_session->onRecordStatusChanged(2);
        QCOMPARE(m_calls, Calls());
        QCOMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(logged(), QStringList());
    }

    void stopWithoutARecordingDoesNothing()
    {
        m_session->requestStop();
        QCOMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls, Calls());
    }

    void stopWaitsUntilTheEncoderHasReturnedItsFrames()
    {
        m_session->requestStart();
        m_calls.clear();
        m_recorder->pollsUntilDrained = 17;
        m_session->requestStop();
        QCOMPARE(m_calls, Calls{"end here"});
        QCOMPARE(m_session->state(), RecordingState::Stopping);
        QTRY_COMPARE(m_calls, (Calls{"end here", "stop 0"}));
        QVERIFY(m_recorder->pollsUntilDrained < 0);
    }

    void waitsAreAsLongAsTheUserHasThem()
    {
        const Durations durations;
        QCOMPARE(durations.windowGoneMs, 400);
        QCOMPARE(durations.fileWatchMs, 1000);
        QCOMPARE(durations.drainTimeoutMs, 10000);
        QCOMPARE(durations.sessionEndDrainTimeoutMs, 3500);
        QCOMPARE(durations.confirmTimeoutMs, 60000);
    }

    void stalledEncoderDoesNotHoldTheStopForEver()
    {
        makeSession(kHasty);
        m_session->requestStart();
        m_recorder->pollsUntilDrained = kNever;
        m_session->requestStop();
        QTRY_VERIFY(m_calls.contains(QStringLiteral("stop 0")));
        QVERIFY(logged().contains(
            QStringLiteral("Warning: The recorder stalls, the recording ends without its last frames")));
    }

    void endThatCannotBeWrittenIsLogged()
    {
        m_session->requestStart();
        m_session->requestStop();
        QTRY_VERIFY(m_calls.contains(QStringLiteral("stop 0")));
        m_recorder->endByItself(QStringLiteral("disk full"));
        QCOMPARE(logged().last(), QStringLiteral("Error: The recording's end could not be written: disk full"));
    }

    void engineThatNeverConfirmsTheEndIsNotWaitedForForever()
    {
        makeSession(kHasty);
        m_session->requestStart();
        m_session->requestStop();
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls.last(kWayBackFromRecording.size()), kWayBackFromRecording);
        QVERIFY(logged().last().startsWith(QLatin1String("Error: The engine did not report the end")));
    }

    void outcomeOfARecordingThatEndedAsAsked()
    {
        m_session->requestStart();
        recordToTheEnd();
        expectOutcome(Kind::Complete, StopCause::AsAsked);
    }

    void outcomeOfARecordingThatDidNotStart()
    {
        m_recorder->startWorks = false;
        m_recorder->error = QStringLiteral("no encoder");
        m_recorder->cause = StopCause::CannotEncode;
        m_session->requestStart();
        expectOutcome(Kind::NotStarted, StopCause::CannotEncode);
    }

    void outcomeWithoutAnEngineOrACapture()
    {
        m_recorder->ready = false;
        m_session->requestStart();
        expectOutcome(Kind::NotStarted, StopCause::Unknown, QString());
        m_recorder->ready = true;
        m_stage->preparationWorks = false;
        m_session->requestStart();
        expectOutcome(Kind::NotPrepared, StopCause::Unknown, QString());
    }

    void outcomeOfACancelledCountdown()
    {
        m_stage->duringCountdown = [this] { m_session->toggle(); };
        m_session->toggle();
        expectOutcome(Kind::Complete, StopCause::AsAsked, QString());
    }

    void outcomeOfARecordingThatEndedByItself()
    {
        m_session->requestStart();
        m_recorder->endByItself(QStringLiteral("disk full"), StopCause::DiskFull);
        expectOutcome(Kind::EndedByItself, StopCause::DiskFull);
        // The next one has its own.
        m_recorder->error.clear();
        m_session->requestStart();
        recordToTheEnd();
        expectOutcome(Kind::Complete, StopCause::AsAsked, m_folder.filePath(QStringLiteral("videos/demo.mp4")));
    }

    void outcomeOfAnEndThatCouldNotBeWritten()
    {
        m_session->requestStart();
        m_session->requestStop();
        QTRY_VERIFY(m_calls.contains(QStringLiteral("stop 0")));
        m_recorder->endByItself(QStringLiteral("no more room"), StopCause::DiskFull);
        expectOutcome(Kind::EndMissing, StopCause::DiskFull);
    }

    void outcomeOfAnEndThatIsNeverConfirmed()
    {
        makeSession(kHasty);
        m_session->requestStart();
        m_session->requestStop();
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        expectOutcome(Kind::EndMissing, StopCause::Unknown);
    }

    void lackOfSpaceAndALostFolderEndTheRecordingInOrder_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<bool>("isPaused");
        QTest::addColumn<QString>("line");
        const auto full = QStringLiteral("Warning: The recording is ended: the disk is nearly full");
        const auto gone = QStringLiteral("Warning: The recording is ended: its file is no longer in its folder");
        QTest::newRow("space") << Kind::Shortened << false << full;
        QTest::newRow("space, paused") << Kind::Shortened << true << full;
        QTest::newRow("folder") << Kind::FolderGone << false << gone;
    }

    void lackOfSpaceAndALostFolderEndTheRecordingInOrder()
    {
        QFETCH(const Kind, kind);
        QFETCH(const bool, isPaused);
        m_session->requestStart();
        if (isPaused)
            m_session->setPaused(true);
        m_calls.clear();
        endBecause(kind);
        QTEST(logged().last(), "line");
        QCOMPARE(m_session->state(), RecordingState::Stopping);
        QTRY_COMPARE(m_calls, (Calls{"end here", "stop 0"}));
        m_session->onRecordStatusChanged(2);
        expectOutcome(kind, StopCause::AsAsked);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
    }

    void folderThatHasGoneOutlivesAnEndThatFails()
    {
        m_session->requestStart();
        m_recorder->pollsUntilDrained = kNever;
        m_session->endWithoutFolder();
        m_recorder->endByItself(QStringLiteral("disk full"), StopCause::DiskFull);
        expectOutcome(Kind::FolderGone, StopCause::AsAsked);
        QCOMPARE(logged().last(), QStringLiteral("Error: The recording ended by itself: disk full"));
    }

    /// It is not saved as a whole then.
    void lackOfSpaceDoesNotOutliveAnEndThatFails()
    {
        m_session->requestStart();
        m_recorder->pollsUntilDrained = kNever;
        m_session->endForLackOfSpace();
        m_recorder->endByItself(QStringLiteral("disk full"), StopCause::DiskFull);
        expectOutcome(Kind::EndedByItself, StopCause::DiskFull);
        QCOMPARE(logged().last(), QStringLiteral("Error: The recording ended by itself: disk full"));
    }

    void lackOfSpaceChangesNothingWhereNothingIsRecordedOrTheStopHasBegun()
    {
        m_session->endForLackOfSpace();
        QCOMPARE(m_session->state(), RecordingState::Idle);
        m_session->requestStart();
        m_session->requestStop();
        m_session->endForLackOfSpace();
        m_session->endWithoutFolder();
        QTRY_VERIFY(m_calls.contains(QStringLiteral("stop 0")));
        m_session->onRecordStatusChanged(2);
        expectOutcome(Kind::Complete, StopCause::AsAsked);
    }

    void threeRecordingsInARow()
    {
        const QSignalSpy files(m_session.get(), &RecordingSession::fileProduced);
        for (int recording = 0; recording < 3; ++recording) {
            m_calls.clear();
            m_session->toggle();
            QCOMPARE(m_calls, kStartOrder);
            recordToTheEnd();
        }
        QCOMPARE(files.size(), 3);
    }

    void finishStopsARunningRecording()
    {
        m_session->requestStart();
        m_session->requestEnd();
        QTRY_VERIFY(m_calls.contains(QStringLiteral("stop 0")));
        m_session->onRecordStatusChanged(2);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
    }

    void finishCancelsACountdown()
    {
        m_stage->duringCountdown = [this] { m_session->requestEnd(); };
        m_session->requestStart();
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls.count(QStringLiteral("start")), 0);
    }

    void finishWhileIdleDoesNothing()
    {
        m_session->requestEnd();
        QCOMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls, Calls());
    }

    void endOfTheSessionClosesTheFileBeforeItGoesOn()
    {
        m_session->requestStart();
        m_calls.clear();
        m_recorder->pollsUntilDrained = 5;
        m_session->finishAtOnce();
        QCOMPARE(m_calls, (Calls{"end here", "stop 0"}));
        QVERIFY(!m_recorder->recording);
        QVERIFY(m_recorder->pollsUntilDrained < 0);
        QTest::qWait(50);
        QCOMPARE(m_calls.count(QStringLiteral("stop 0")), 1);
        m_session->onRecordStatusChanged(2);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
    }

    void endOfTheSessionDoesNotWaitForEverForAStalledEncoder()
    {
        // The limit of an ordinary stop is not the one that is kept here.
        makeSession({.drainPollMs = 1, .drainTimeoutMs = kNever, .sessionEndDrainTimeoutMs = 60});
        m_session->requestStart();
        m_recorder->pollsUntilDrained = kNever;
        m_session->finishAtOnce();
        QVERIFY(!m_recorder->recording);
    }

    void endOfTheSessionShortensADrain()
    {
        makeSession({.drainPollMs = 1, .drainTimeoutMs = kNever, .sessionEndDrainTimeoutMs = 60});
        m_session->requestStart();
        m_recorder->pollsUntilDrained = kNever;
        m_session->requestStop();
        m_session->finishAtOnce();
        QCOMPARE(m_calls.count(QStringLiteral("end here")), 1);
        QCOMPARE(m_calls.count(QStringLiteral("stop 0")), 1);
        QVERIFY(!m_recorder->recording);
    }

    void endOfTheSessionCancelsACountdown()
    {
        m_stage->duringCountdown = [this] { m_session->finishAtOnce(); };
        m_session->requestStart();
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls, (Calls{"minimise", "countdown 3", "cancel countdown"} + kWayBack));
    }

    void endOfTheSessionWhileIdleDoesNothing()
    {
        m_session->finishAtOnce();
        QCOMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_calls, Calls());
    }

    void withoutAStageTheFileIsClosedAndNothingElseIsAsked()
    {
        m_session->requestStart();
        m_calls.clear();
        m_recorder->pollsUntilDrained = 5;
        const QSignalSpy states(m_session.get(), &RecordingSession::stateChanged);
        m_session->finishWithoutStage();
        // The engine reports the end meanwhile, or later.
        m_session->onRecordStatusChanged(2);
        QCOMPARE(m_calls, (Calls{"end here", "stop 0"}));
        QVERIFY(!m_recorder->recording);
        QVERIFY(states.isEmpty());
    }

    void withoutAStageACountdownIsLeftAlone()
    {
        Calls until;
        m_stage->duringCountdown = [this, &until] {
            m_session->finishWithoutStage();
            until = m_calls;
            m_session->cancelCountdown();
        };
        m_session->requestStart();
        QCOMPARE(until, (Calls{"minimise", "countdown 3"}));
    }

    void statesFollowEachOther()
    {
        QList<RecordingState> states;
        connect(m_session.get(), &RecordingSession::stateChanged, this,
                [&states](RecordingState state) { states.append(state); });
        m_session->requestStart();
        recordToTheEnd();
        QCOMPARE(states,
                 (QList<RecordingState>{RecordingState::Countdown, RecordingState::Preparing, RecordingState::Recording,
                                        RecordingState::Stopping, RecordingState::Ended, RecordingState::Idle}));
    }

private:
    void makeSession(const Durations& durations)
    {
        m_session = std::make_unique<RecordingSession>(*m_recorder, *m_stage, nullptr, durations);
        m_outcomes.clear();
        connect(m_session.get(), &RecordingSession::ended, this,
                [this](const RecordingOutcome& outcome) { m_outcomes.append(outcome); });
        m_recorder->onStatus = [this](int status) { m_session->onRecordStatusChanged(status); };
    }

    void recordToTheEnd()
    {
        m_session->toggle();
        QTRY_VERIFY(m_calls.contains(QStringLiteral("stop 0")));
        m_session->onRecordStatusChanged(2);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
    }

    void endBecause(Kind kind)
    {
        if (kind == Kind::Shortened)
            m_session->endForLackOfSpace();
        else
            m_session->endWithoutFolder();
    }

    /// One, since the last time it was asked for; the session is idle then.
    void expectOutcome(Kind kind, StopCause cause, const std::optional<QString>& path = {})
    {
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QCOMPARE(m_outcomes.size(), 1);
        const RecordingOutcome outcome = m_outcomes.takeFirst();
        QCOMPARE(outcome.kind, kind);
        QCOMPARE(outcome.cause, cause);
        QCOMPARE(outcome.path, path.value_or(m_folder.filePath(QStringLiteral("videos/demo.mp4"))));
    }

    QByteArray log() const
    {
        QFile file(m_logPath);
        return file.open(QIODevice::ReadOnly | QIODevice::Text) ? file.readAll() : QByteArray();
    }

    /// The lines written since the test began, without their time stamps.
    QStringList logged() const
    {
        QStringList lines;
        const QStringList raw = QString::fromUtf8(log().mid(m_logSize)).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const QString& line : raw)
            lines.append(line.section(QLatin1String(" - "), 1));
        return lines;
    }

    QTemporaryDir m_folder;
    QString m_logPath;
    qsizetype m_logSize = 0;
    Calls m_calls;
    std::unique_ptr<FakeRecorder> m_recorder;
    std::unique_ptr<FakeStage> m_stage;
    QList<RecordingOutcome> m_outcomes;
    std::unique_ptr<RecordingSession> m_session;
};

REGISTER_TEST(testrun::core<TestRecordingSession>);
#include "test_recordingsession.moc"
