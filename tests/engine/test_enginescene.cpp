// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "engine/capture/captureplatform.h"
#include "engine/capture/framesource.h"
#include "engine/core/obshandles.h"
#include "engine/obswrapper.h"
#include "tests/engine/channels.h"
#include "tests/engine/obsspy.h"
#include "tests/engine/standins.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QJsonValue>
#include <QRect>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <atomic>
#include <chrono>
#include <limits>
#include <memory>
#include <thread>

using standins::behaviour;

/// The scene and its sources, on the real core with stand-ins under the names of the Windows
/// plug-ins.
class TestEngineScene : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(standins::startCore());
        standins::registerSources();
        standins::registerOutputs();
        standins::registerOtherTransitions();
    }

    void init()
    {
        if (qstrcmp(QTest::currentTestFunction(), "setupSceneWithoutFadeTransitionIsMinusOne") != 0)
            standins::registerFadeTransition();
        behaviour() = standins::Behaviour();
        m_wrapper = std::make_unique<ObsWrapper>(standins::platform());
        standins::clearEvents();
        obsspy::clear();
    }

    void cleanup()
    {
        m_wrapper.reset();
        obsspy::failNowhere();
        for (uint32_t channel = 0; channel < 3; ++channel)
            obs_set_output_source(channel, nullptr);
        obs_wait_for_destroy_queue();
    }

    // Runs first: what is registered stays for good.
    void setupSceneWithoutFadeTransitionIsMinusOne()
    {
        QCOMPARE(m_wrapper->setupScene(1), -1);
        QCOMPARE(nameOnChannel(0), QStringLiteral("nothing"));
    }

    void setupSceneWithoutSceneIsMinusTwo()
    {
        obsspy::failAt(QStringLiteral("obs_scene_create"));
        QCOMPARE(m_wrapper->setupScene(1), -2);
        QCOMPARE(nameOnChannel(0), QStringLiteral("nothing"));
    }

    void setupSceneWithoutCaptureSourceIsMinusThree()
    {
        behaviour().captureFails = true;
        QCOMPARE(m_wrapper->setupScene(1), -3);
        QCOMPARE(nameOnChannel(0), QStringLiteral("Fade"));
    }

    void setupSceneOrder()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        const QStringList expected{
            "obs_set_output_source 0 nothing", "obs_set_output_source 1 nothing",
            "obs_set_output_source 2 nothing", "obs_scene_create CurrentDesktopCapture",
            "obs_set_output_source 0 Fade",    "obs_source_create monitor_capture Computer_Monitor_Capture"};
        QStringList calls = obsspy::calls();
        calls.removeIf([](const QString& call) { return call.contains(QLatin1String("_release")); });
        QVERIFY2(calls == expected, qPrintable(calls.join(QLatin1Char(10))));
    }

    void setupSceneTriesOnlyTransitionsThatAreNotConfigurable()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        obs_wait_for_destroy_queue();
        QCOMPARE(standins::countOf("create cut_transition as Cut"), 1);
        QCOMPARE(standins::countOf("destroy cut_transition"), 1);
        QCOMPARE(standins::countOf("create fade_transition as Fade"), 1);
        QCOMPARE(standins::countOf("destroy fade_transition"), 0);
        QCOMPARE(standins::countOf("create wipe_transition as Wipe"), 0);
    }

    void setupSceneShowsTheSceneThroughTheTransition()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        obs_source_t* transition = obs_get_output_source(0);
        obs_source_t* scene = obs_transition_get_active_source(transition);
        QCOMPARE(QString::fromUtf8(obs_source_get_name(scene)), QStringLiteral("CurrentDesktopCapture"));
        QVERIFY(obs_scene_find_source(obs_scene_from_source(scene), "Computer_Monitor_Capture"));
        obs_source_release(scene);
        obs_source_release(transition);
    }

    void everyCaptureTypeButOneIsAWindow_data()
    {
        QTest::addColumn<int>("captureType");
        QTest::newRow("2") << 2;
        QTest::newRow("0") << 0;
        QTest::newRow("-1") << -1;
    }

    void everyCaptureTypeButOneIsAWindow()
    {
        QFETCH(const int, captureType);
        QCOMPARE(m_wrapper->setupScene(captureType), 0);
        QCOMPARE(standins::countOf("create window_capture as Window_Capture"), 1);
        QCOMPARE(standins::countOf("create monitor_capture as Computer_Monitor_Capture"), 0);
    }

    void setupSceneTakesTheAudioOffItsChannels()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        QCOMPARE(nameOnChannel(1), QStringLiteral("Default Desktop Audio"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Default Mic/Aux"));
        QCOMPARE(m_wrapper->setupScene(1), 0);
        QCOMPARE(nameOnChannel(1), QStringLiteral("nothing"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Mic/Aux"));
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        QCOMPARE(nameOnChannel(1), QStringLiteral("Desktop Audio"));
    }

    void secondSetupSceneReplacesTheFirst()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        QCOMPARE(m_wrapper->setupScene(1), 0);
        obs_wait_for_destroy_queue();
        QCOMPARE(standins::countOf("create monitor_capture as Computer_Monitor_Capture"), 2);
        QCOMPARE(standins::countOf("destroy monitor_capture"), 1);
        QCOMPARE(standins::countOf("destroy fade_transition"), 1);
    }

    void sceneIsRenderedFromItsSetUpOn()
    {
        QVERIFY(!m_wrapper->isSceneRendered());
        m_wrapper->setSceneRendered(true);
        QVERIFY(!m_wrapper->isSceneRendered());
        QCOMPARE(nameOnChannel(0), QStringLiteral("nothing"));
        QCOMPARE(m_wrapper->setupScene(1), 0);
        QVERIFY(m_wrapper->isSceneRendered());
    }

    void sceneIsTakenOffAndPutBack()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        obsspy::clear();
        m_wrapper->setSceneRendered(false);
        QVERIFY(!m_wrapper->isSceneRendered());
        QCOMPARE(nameOnChannel(0), QStringLiteral("nothing"));
        m_wrapper->setSceneRendered(true);
        QVERIFY(m_wrapper->isSceneRendered());
        QCOMPARE(nameOnChannel(0), QStringLiteral("Fade"));
        QCOMPARE(obsspy::calls().filter(QLatin1String("obs_set_output_source")),
                 (QStringList{"obs_set_output_source 0 nothing", "obs_set_output_source 0 Fade"}));
    }

    void sceneThatIsThereAlreadyIsNotWaitedFor()
    {
        // Who waited would do so for ever.
        CapturePlatform platform = standins::platform();
        platform.framesUntilDrawn = std::numeric_limits<int>::max();
        EngineTimings timings;
        timings.sceneDrawnLimit = std::chrono::hours(1);
        m_wrapper = std::make_unique<ObsWrapper>(platform, timings);
        QCOMPARE(m_wrapper->setupScene(1), 0);
        obsspy::clear();
        m_wrapper->setSceneRendered(true);
        QVERIFY(obsspy::calls().filter(QLatin1String("obs_set_output_source")).isEmpty());
    }

    void sceneThatComesBackIsDrawnWhenTheCallReturns()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setSceneRendered(false);
        waitForUpdates();
        const qsizetype before = standins::capturedFrames();
        m_wrapper->setSceneRendered(true);
        QVERIFY(standins::capturedFrames() - before >= 2);
        m_wrapper->setSceneRendered(false);
        waitForUpdates();
        const qsizetype after = standins::capturedFrames();
        waitForUpdates();
        QCOMPARE(standins::capturedFrames(), after);
    }

    void sceneThatIsNotDrawnIsWaitedForHalfASecond()
    {
        CapturePlatform platform = standins::platform();
        platform.framesUntilDrawn = std::numeric_limits<int>::max();
        EngineTimings timings;
        QCOMPARE(timings.sceneDrawnLimit, std::chrono::milliseconds(500));
        timings.sceneDrawnLimit = std::chrono::milliseconds(50);
        m_wrapper = std::make_unique<ObsWrapper>(platform, timings);
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setSceneRendered(false);
        QElapsedTimer timer;
        timer.start();
        m_wrapper->setSceneRendered(true);
        // A sleep may be a little shorter than asked for.
        QVERIFY2(timer.elapsed() >= timings.sceneDrawnLimit.count() * 9 / 10,
                 qPrintable(QString::number(timer.elapsed())));
        QVERIFY(m_wrapper->isSceneRendered());
    }

    void sceneLeavesTheAudioAlone()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        QSignalSpy levels(m_wrapper.get(), &ObsWrapper::micVolumeDataChange);
        m_wrapper->setSceneRendered(false);
        QCOMPARE(nameOnChannel(1), QStringLiteral("Desktop Audio"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Mic/Aux"));
        QTRY_VERIFY(levels.size() > 5);
    }

    void sceneThatIsOffStaysOffWhenTheVideoIsReset()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setSceneRendered(false);
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
        QVERIFY(!m_wrapper->isSceneRendered());
        m_wrapper->setSceneRendered(true);
        QVERIFY(m_wrapper->isSceneRendered());
        QCOMPARE(m_wrapper->resetVideo(320, 240, 320, 240, 30), 0);
        QVERIFY(m_wrapper->isSceneRendered());
    }

    void wrapperThatGoesWithItsSceneOffLeavesNothingBehind()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setSceneRendered(false);
        m_wrapper.reset();
        QCOMPARE(standins::countOf("destroy monitor_capture"), 1);
        QCOMPARE(standins::countOf("destroy fade_transition"), 1);
    }

    void whatSomebodyElsePutOnTheChannelIsNotTakenForTheScene()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        const ObsSourceHandle other(obs_source_create_private("cut_transition", "Other", nullptr));
        obs_set_output_source(0, other.get());
        QVERIFY(!m_wrapper->isSceneRendered());
        m_wrapper->setSceneRendered(false);
        QCOMPARE(nameOnChannel(0), QStringLiteral("Other"));
    }

    void runningEngineSkipsStartUpYetRemakesOutputsSourcesAndMeters()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        const QString first = nameOnChannel(2);
        obsspy::clear();
        QVERIFY(m_wrapper->initialize(640, 480, 30));
        const QStringList calls = obsspy::calls();
        for (const char* skipped : {"obs_startup", "obs_add_module_path", "obs_add_data_path", "obs_reset_audio",
                                    "obs_reset_video", "obs_find_modules2", "obs_load_all_modules2"})
            QVERIFY2(calls.filter(QLatin1String(skipped)).isEmpty(), skipped);
        QCOMPARE(calls.count("obs_output_create ffmpeg_output adv_ffmpeg_output"), 1);
        QCOMPARE(calls.filter("obs_audio_encoder_create").size(), 8);
        // The channels still hold the sources of the first time.
        QVERIFY(calls.filter("obs_source_create").isEmpty());
        QCOMPARE(nameOnChannel(2), first);
        // Callbacks leave the old meters before those go.
        const QStringList ofMeters{"obs_volmeter_remove_callback",
                                   "obs_volmeter_remove_callback",
                                   "obs_fader_destroy",
                                   "obs_fader_create 2",
                                   "obs_volmeter_destroy",
                                   "obs_volmeter_create 2",
                                   "obs_fader_destroy",
                                   "obs_fader_create 2",
                                   "obs_volmeter_destroy",
                                   "obs_volmeter_create 2",
                                   "obs_fader_add_callback",
                                   "obs_volmeter_add_callback",
                                   "obs_fader_add_callback",
                                   "obs_volmeter_add_callback",
                                   "obs_fader_attach_source Default Mic/Aux",
                                   "obs_volmeter_attach_source Default Mic/Aux",
                                   "obs_fader_attach_source Default Desktop Audio",
                                   "obs_volmeter_attach_source Default Desktop Audio"};
        static const QRegularExpression meter(QStringLiteral("^obs_(fader|volmeter)_"));
        QCOMPARE(calls.filter(meter).join(QLatin1Char('\n')), ofMeters.join(QLatin1Char('\n')));
    }

    void targetsOfTheMonitorListAreTexts()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        QCOMPARE(m_wrapper->captureTargetNames(), (QStringList{"Left: 1280x720 @ 0,0", "Right: 1920x1080 @ 1280,0"}));
        QCOMPARE(m_wrapper->captureTargetValues(), (QStringList{"\\\\.\\left", "\\\\.\\right"}));
        QVERIFY(m_wrapper->setCaptureTarget("Right: 1920x1080 @ 1280,0", 1, false, 0, 0, 0, 0));
        m_wrapper->setCaptureCursor(true);
        waitForUpdates();
        const QJsonObject settings = standins::lastSettings("monitor_capture");
        QCOMPARE(settings.value("monitor_id").toString(), QStringLiteral("\\\\.\\right"));
        QCOMPARE(settings.value("method").toInt(), 1);
    }

    void targetsOfTheOlderMonitorListAreIntegers()
    {
        behaviour().monitorsAsIntegers = true;
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        QCOMPARE(m_wrapper->captureTargetValues(), (QStringList{"0", "1"}));
        QVERIFY(m_wrapper->setCaptureTarget("Right: 1920x1080 @ 1280,0", 1, false, 0, 0, 0, 0));
        m_wrapper->setCaptureCursor(true);
        waitForUpdates();
        const QJsonObject settings = standins::lastSettings("monitor_capture");
        QCOMPARE(settings.value("monitor"), QJsonValue(1));
        QVERIFY(!settings.contains("monitor_id"));
    }

    void ofEqualNamesTheFirstIsTaken()
    {
        behaviour().monitors = {{"Other", "\\\\.\\other"}, {"Same", "\\\\.\\first"}, {"Same", "\\\\.\\second"}};
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->setCaptureTarget("Same", 1, false, 0, 0, 0, 0));
        m_wrapper->setCaptureCursor(true);
        waitForUpdates();
        QCOMPARE(standins::lastSettings("monitor_capture").value("monitor_id").toString(),
                 QStringLiteral("\\\\.\\first"));
    }

    void refreshReplacesTheList()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        m_wrapper->refreshCaptureTargets(false);
        QCOMPARE(m_wrapper->captureTargetNames().size(), 2);
        behaviour().monitors.clear();
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->captureTargetNames().isEmpty());
        QVERIFY(m_wrapper->captureTargetValues().isEmpty());
    }

    void windowTargetIsSetByItsName()
    {
        QCOMPARE(m_wrapper->setupScene(2), 0);
        m_wrapper->refreshCaptureTargets(true);
        QCOMPARE(m_wrapper->captureTargetValues(), (QStringList{"notes:Editor:editor.exe"}));
        QVERIFY(m_wrapper->setCaptureTarget("[editor.exe]: notes", 2, false, 0, 0, 0, 0));
        m_wrapper->setCaptureCursor(true);
        waitForUpdates();
        const QJsonObject settings = standins::lastSettings("window_capture");
        QCOMPARE(settings.value("window").toString(), QStringLiteral("[editor.exe]: notes"));
        QVERIFY(!settings.contains("method"));
    }

    void targetThatIsNotInTheListChangesNothing()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        for (const char* target : {"", "left: 1280x720 @ 0,0", "Left", "Centre"})
            QVERIFY(!m_wrapper->setCaptureTarget(target, 1, true, 1, 2, 3, 4));
        QVERIFY(!m_wrapper->setCaptureTarget(nullptr, 1, true, 1, 2, 3, 4));
        m_wrapper->setCaptureCursor(true);
        waitForUpdates();
        QVERIFY(!standins::lastSettings("monitor_capture").contains("monitor_id"));
        QCOMPARE(standins::countOf("create crop_filter as Crop/Pad"), 0);
    }

    void targetTakesEffectAtTheNextUpdate()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        standins::clearEvents();
        QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, false, 0, 0, 0, 0));
        waitForUpdates();
        QCOMPARE(standins::countOf("update monitor_capture"), 0);
        m_wrapper->setCursorEffects(false);
        waitForUpdates();
        QCOMPARE(standins::countOf("update monitor_capture"), 1);
        QCOMPARE(standins::lastSettings("monitor_capture").value("monitor_id").toString(),
                 QStringLiteral("\\\\.\\left"));
    }

    void cropMarginsReachTheFilter()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, true, 10, 20, 30, 40));
        waitForUpdates();
        const QJsonObject expected{{"relative", true}, {"left", 10}, {"right", 20}, {"top", 30},
                                   {"bottom", 40},     {"cx", 0},    {"cy", 0}};
        QCOMPARE(standins::lastSettings("crop_filter"), expected);
    }

    void cropFilterWorksOnlyWhereThereIsSomethingToCrop()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, false, 0, 0, 0, 0));
        QVERIFY(!isCropFilterEnabled());
        for (int side = 0; side < 4; ++side) {
            const auto margin = [side](int of) { return of == side ? 1 : 0; };
            QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, true, margin(0), margin(1), margin(2),
                                                margin(3)));
            QVERIFY(isCropFilterEnabled());
        }
        QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, false, 0, 0, 0, 0));
        QVERIFY(!isCropFilterEnabled());
    }

    void secondTargetReusesTheCropFilter()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, true, 10, 20, 30, 40));
        QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, false, 0, 0, 0, 0));
        waitForUpdates();
        QCOMPARE(standins::countOf("create crop_filter as Crop/Pad"), 1);
        QCOMPARE(standins::lastSettings("crop_filter").value("left").toInt(), 0);
        QCOMPARE(filtersOfTheCapture().count(QStringLiteral("crop_filter")), 1);
    }

    void pointerEffectsAreAppliedBeforeTheCrop()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, true, 10, 20, 30, 40));
        QCOMPARE(filtersOfTheCapture(), (QStringList{"kestrano_pointer_effects", "crop_filter"}));
        QCOMPARE(m_wrapper->setupScene(1), 0);
        QVERIFY(m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, true, 10, 20, 30, 40));
        QCOMPARE(filtersOfTheCapture(), (QStringList{"kestrano_pointer_effects", "crop_filter"}));
    }

    void secondSourceHasTheNameOfTheFirstThatIsStillHeld()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        const ObsSourceHandle first(obs_get_source_by_name("Computer_Monitor_Capture"));
        QCOMPARE(m_wrapper->setupScene(1), 0);
        const ObsSourceHandle second(obs_get_source_by_name("Computer_Monitor_Capture"));
        QVERIFY(second && second != first);
    }

    void cursorSwitch()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setCaptureCursor(true);
        waitForUpdates();
        QCOMPARE(standins::lastSettings("monitor_capture").value("capture_cursor"), QJsonValue(true));
        m_wrapper->setCaptureCursor(false);
        waitForUpdates();
        QCOMPARE(standins::lastSettings("monitor_capture").value("capture_cursor"), QJsonValue(false));
        QCOMPARE(standins::countOf("update monitor_capture"), 2);
    }

    void cursorEffects_data()
    {
        QTest::addColumn<bool>("show");
        QTest::newRow("on") << true;
        QTest::newRow("off") << false;
    }

    void cursorEffects()
    {
        QFETCH(const bool, show);
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setCursorEffects(show);
        waitForUpdates();
        const QJsonObject expected{{"show_fixed_circle", show}, {"fixed_circle_color", "0.0, 1.0, 0.5, 0.3"},
                                   {"show_left_click", show},   {"left_click_color", "0.0, 0.0, 1.0, 0.7"},
                                   {"show_right_click", show},  {"right_click_color", "1.0, 0.0, 0.0, 0.7"}};
        QCOMPARE(standins::lastSettings("monitor_capture"), expected);
        QCOMPARE(standins::countOf("update monitor_capture"), 1);
    }

    void withoutACaptureSourceItsOperationsDoNothing()
    {
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->captureTargetNames().isEmpty());
        m_wrapper->setCaptureCursor(true);
        m_wrapper->setCursorEffects(true);
        QVERIFY(!m_wrapper->setCaptureTarget("Left: 1280x720 @ 0,0", 1, false, 0, 0, 0, 0));
        QVERIFY(standins::events().isEmpty());
    }

    void resetVideoWithoutSceneSucceeds() { QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0); }

    void resetVideoWithoutCaptureSourceTouchesNoItem()
    {
        behaviour().captureFails = true;
        QCOMPARE(m_wrapper->setupScene(1), -3);
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
    }

    void resetVideoWithASceneThatDoesNotHoldTheCaptureSourceSucceeds()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        obs_source_t* sceneSource = obs_get_source_by_name("CurrentDesktopCapture");
        obs_sceneitem_remove(obs_scene_find_source(obs_scene_from_source(sceneSource), "Computer_Monitor_Capture"));
        obs_source_release(sceneSource);
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
    }

    void resetVideoStretchesTheCaptureOverTheOutput()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        QCOMPARE(m_wrapper->resetVideo(800, 600, 400, 300, 30), 0);
        const Layout layout = captureLayout();
        QCOMPARE(layout.x, 0.0F);
        QCOMPARE(layout.y, 0.0F);
        QCOMPARE(layout.alignment, uint32_t(OBS_ALIGN_LEFT | OBS_ALIGN_TOP));
        QCOMPARE(layout.boundsType, OBS_BOUNDS_STRETCH);
        QCOMPARE(layout.width, 400.0F);
        QCOMPARE(layout.height, 300.0F);
    }

    void failedResetVideoLeavesTheLayout()
    {
        QCOMPARE(m_wrapper->setupScene(1), 0);
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
        QCOMPARE(m_wrapper->resetVideo(0, 0, 0, 0, 30), OBS_VIDEO_INVALID_PARAM);
        QCOMPARE(captureLayout().width, 640.0F);
        QCOMPARE(captureLayout().height, 480.0F);
        QCOMPARE(m_wrapper->resetVideo(320, 240, 320, 240, 30), 0);
        QCOMPARE(captureLayout().width, 320.0F);
    }

    void resetVideoBeyondTheGraphicsChangesNothing()
    {
        constexpr int kTooLong = 30'000;
        QCOMPARE(m_wrapper->resetVideo(640, 480, 320, 240, 30), 0);
        QVERIFY(m_wrapper->resetVideo(kTooLong, 480, 640, 480, 30) < 0);
        QVERIFY(m_wrapper->resetVideo(640, 480, 640, kTooLong, 30) < 0);
        QCOMPARE(engineVideo(), (QList<QSize>{QSize(640, 480), QSize(320, 240)}));
        // However little is needed of it.
        QVERIFY(
            start([](const QRect&, QString&) -> std::unique_ptr<FrameSource> { return std::make_unique<NoFrames>(); }));
        QVERIFY(m_wrapper->resetVideo(kTooLong, 480, 640, 480, 30) < 0);
        QCOMPARE(engineVideo(), (QList<QSize>{QSize(4, 2), QSize(4, 2)}));
    }

    void resetVideoNeitherRoundsNorClamps()
    {
        m_wrapper->resetVideo(1279, 719, 1279, 719, 30);
        QVERIFY(
            obsspy::calls().contains(QStringLiteral("obs_reset_video %1 30/1 1279x719 to 1279x719 format 1 adapter 0 "
                                                    "gpu 1 space 2 range 2 scale 2")
                                         .arg(QLatin1String(CapturePlatform::current().graphicsModule))));
    }

    void resetVideoLogsItsOddLabels()
    {
        MessageCapture log;
        m_wrapper->resetVideo(640, 480, 320, 240, 30);
        QCOMPARE(log.texts(QtDebugMsg).first(),
                 QStringLiteral("reset video with srcWidth 640 srcHeight 480 outPutWidth 320 outOutHeight 240 fps 30"));
        QVERIFY(!log.texts().contains("obs not initialized!"));
    }

    void framesOfTheProgramsOwnTakeThePlaceOfTheScene()
    {
        QVERIFY(start([](const QRect& area, QString&) -> std::unique_ptr<FrameSource> {
            lastArea() = area;
            return std::make_unique<NoFrames>();
        }));
        m_wrapper->setSceneRendered(true);
        QVERIFY(!m_wrapper->isSceneRendered());
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 321, 241, 30, 4, 1);
        video_t* const video = obs_output_video(standins::currentOutput());
        QVERIFY(video != obs_get_video());
        QCOMPARE(lastArea(), QRect(10, 20, 322, 242));
        QCOMPARE(video_output_get_width(video), 322U);
        QCOMPARE(video_output_get_height(video), 242U);
        QCOMPARE(standins::lastOutputSettings().value("scale_width"), QJsonValue(322));
        QVERIFY(!m_wrapper->isSceneRendered());
        m_wrapper->stopRecording(true);
    }

    void areaGrowsToTheNearSideAtTheScreensFarEdge()
    {
        QVERIFY(start([](const QRect& area, QString&) -> std::unique_ptr<FrameSource> {
            lastArea() = area;
            return std::make_unique<NoFrames>();
        }));
        QVERIFY(m_wrapper->setCaptureTarget(kLeftMonitor, 1, true, 959, 0, 20, 479));
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 321, 221, 30, 4, 1);
        QCOMPARE(lastArea(), QRect(958, 20, 322, 222));
        m_wrapper->stopRecording(true);
        // A size that is even already.
        QVERIFY(m_wrapper->setCaptureTarget(kLeftMonitor, 1, true, 1, 0, 20, 0));
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 1280, 700, 30, 4, 1);
        QCOMPARE(lastArea(), QRect(0, 20, 1280, 700));
        m_wrapper->stopRecording(true);
    }

    void sceneIsUsedWhereThereAreNoFramesOfTheProgramsOwn()
    {
        const MessageCapture log;
        QVERIFY(start([](const QRect&, QString& obstacle) -> std::unique_ptr<FrameSource> {
            obstacle = QStringLiteral("the reason");
            return nullptr;
        }));
        const auto line = QStringLiteral("The screen is captured through the engine's scene: the reason");
        QCOMPARE(log.texts(QtInfoMsg).filter(line).size(), 1);
        m_wrapper->setSceneRendered(true);
        QVERIFY(m_wrapper->isSceneRendered());
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 320, 240, 30, 4, 1);
        QCOMPARE(obs_output_video(standins::currentOutput()), obs_get_video());
        QVERIFY(m_wrapper->isSceneRendered());
        m_wrapper->stopRecording(true);
    }

    void sceneTakesOverWhereFramesFailForARecording()
    {
        QVERIFY(start([](const QRect& area, QString& obstacle) -> std::unique_ptr<FrameSource> {
            obstacle = area.width() > 2 ? QStringLiteral("too large") : QString();
            return obstacle.isEmpty() ? std::make_unique<NoFrames>() : nullptr;
        }));
        m_wrapper->setSceneRendered(true);
        QVERIFY(!m_wrapper->isSceneRendered());
        const MessageCapture log;
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 320, 240, 30, 4, 1);
        QCOMPARE(log.texts(QtInfoMsg).filter(QStringLiteral("engine's scene: too large")).size(), 1);
        QVERIFY(m_wrapper->isSceneRendered());
        QCOMPARE(obs_output_video(standins::currentOutput()), obs_get_video());
        QCOMPARE(m_wrapper->startRecording(), 0);
        m_wrapper->setSceneRendered(false);
        QVERIFY(m_wrapper->isSceneRendered());
        m_wrapper->setSceneRendered(true);
        QVERIFY(m_wrapper->isSceneRendered());
        m_wrapper->stopRecording(true);
        m_wrapper->setSceneRendered(false);
        QVERIFY(!m_wrapper->isSceneRendered());
    }

    void sceneThatTakesOverHasPixelsOfItsOwnForThoseOfTheScreen()
    {
        QVERIFY(start([](const QRect& area, QString&) -> std::unique_ptr<FrameSource> {
            return area.width() > 2 ? nullptr : std::make_unique<NoFrames>();
        }));
        QCOMPARE(m_wrapper->resetVideo(362, 240, 362, 240, 30), 0);
        QVERIFY(m_wrapper->setCaptureTarget(kLeftMonitor, 1, true, 10, 908, 20, 460));
        m_wrapper->setSceneRendered(true);
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 362, 240, 30, 4, 1);
        QCOMPARE(engineVideo(), (QList<QSize>{QSize(364, 240), QSize(364, 240)}));
        QCOMPARE(captureLayout().width, 364.0F);
        QCOMPARE(standins::lastSettings("crop_filter").value("left"), QJsonValue(10));
        QCOMPARE(standins::lastSettings("crop_filter").value("right"), QJsonValue(906));
        QCOMPARE(standins::lastOutputSettings().value("scale_width"), QJsonValue(364));
        QCOMPARE(obs_output_video(standins::currentOutput()), obs_get_video());
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        m_wrapper->stopRecording(true);
    }

    void videoThatNobodySeesIsAsSmallAsCanBe()
    {
        const QList<QSize> least{QSize(4, 2), QSize(4, 2)};
        QVERIFY(
            start([](const QRect&, QString&) -> std::unique_ptr<FrameSource> { return std::make_unique<NoFrames>(); }));
        QCOMPARE(engineVideo(), least);
        obsspy::clear();
        QCOMPARE(m_wrapper->resetVideo(640, 480, 320, 240, 30), 0);
        QCOMPARE(obsspy::calls().filter("obs_reset_video").size(), 1);
        QCOMPARE(engineVideo(), least);
        // What is asked for is answered and laid out as ever.
        QCOMPARE(captureLayout().width, 320.0F);
        QCOMPARE(m_wrapper->resetVideo(0, 0, 0, 0, 30), OBS_VIDEO_INVALID_PARAM);
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 640, 480, 30, 4, 1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QCOMPARE(engineVideo(), least);
        m_wrapper->stopRecording(true);
        behaviour().monitors = {{"Somewhere", "somewhere"}};
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->setCaptureTarget("Somewhere", 1, false, 0, 0, 0, 0));
        QCOMPARE(engineVideo(), (QList<QSize>{QSize(640, 480), QSize(320, 240)}));
    }

    /// A pause is computed with the frame interval of libobs' own video.
    void videoThatNobodySeesIsSlowOnlyWhileNothingIsRecorded()
    {
        constexpr std::uint64_t kAskedNs = 33'333'333;
        constexpr std::uint64_t kIdleNs = 100'000'000;
        const auto intervalNs = [] { return video_output_get_frame_time(obs_get_video()); };
        QVERIFY(
            start([](const QRect&, QString&) -> std::unique_ptr<FrameSource> { return std::make_unique<NoFrames>(); }));
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
        QCOMPARE(intervalNs(), kAskedNs);
        m_wrapper->setSceneRendered(false);
        QCOMPARE(intervalNs(), kIdleNs);
        QVERIFY(m_wrapper->setCaptureTarget(kLeftMonitor, 1, true, 20, 0, 20, 0));
        QCOMPARE(intervalNs(), kIdleNs);
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 640, 480, 30, 4, 1);
        QCOMPARE(intervalNs(), kAskedNs);
        // With or without the video being reset once more.
        m_wrapper->setSceneRendered(false);
        QCOMPARE(intervalNs(), kAskedNs);
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
        m_wrapper->setSceneRendered(false);
        QCOMPARE(intervalNs(), kAskedNs);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        QVERIFY(m_wrapper->pauseRecording(true));
        QVERIFY(m_wrapper->pauseRecording(false));
        m_wrapper->stopRecording(true);
        m_wrapper->setSceneRendered(false);
        QCOMPARE(intervalNs(), kIdleNs);
        // Also after one that ends by itself.
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 640, 480, 30, 4, 1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        connect(m_wrapper.get(), &ObsWrapper::recordStatusChanged, m_wrapper.get(),
                [this] { m_wrapper->setSceneRendered(false); });
        std::thread([] { obs_output_signal_stop(standins::currentOutput(), OBS_OUTPUT_NO_SPACE); }).join();
        QTRY_COMPARE(intervalNs(), kIdleNs);
        QCOMPARE(m_wrapper->setupScene(1), 0);
        QCOMPARE(intervalNs(), kAskedNs);
    }

    void sceneThatIsSetUpAgainHasItsVideo()
    {
        QVERIFY(
            start([](const QRect&, QString&) -> std::unique_ptr<FrameSource> { return std::make_unique<NoFrames>(); }));
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
        QCOMPARE(m_wrapper->setupScene(1), 0);
        QCOMPARE(engineVideo(), (QList<QSize>{QSize(640, 480), QSize(640, 480)}));
    }

    void startThatFailsReleasesItsFrames()
    {
        behaviour().outputStarts = false;
        QVERIFY(
            start([](const QRect&, QString&) -> std::unique_ptr<FrameSource> { return std::make_unique<NoFrames>(); }));
        QTRY_COMPARE(NoFrames::count, 0);
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 320, 240, 30, 4, 1);
        QCOMPARE(NoFrames::count, 1);
        QCOMPARE(m_wrapper->startRecording(), -1);
        QTRY_COMPARE(NoFrames::count, 0);
    }

    void nextRecordingMayBePreparedWhenAFailedStartIsSignalled()
    {
        behaviour().outputStarts = false;
        QVERIFY(
            start([](const QRect&, QString&) -> std::unique_ptr<FrameSource> { return std::make_unique<NoFrames>(); }));
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 320, 240, 30, 4, 1);
        const auto prepared = connect(m_wrapper.get(), &ObsWrapper::recordStatusChanged, this, [&](int status) {
            if (status == recordstatus::kEnded) {
                behaviour().outputStarts = true;
                m_wrapper->setupFFmpeg(QStringLiteral("/next"), 320, 240, 30, 4, 1);
            }
        });
        QCOMPARE(m_wrapper->startRecording(), -1);
        disconnect(prepared);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        m_wrapper->stopRecording(true);
    }

    void sceneIsRenderedAsSoonAsTheTargetHasNoPositionOnTheDesktop()
    {
        QVERIFY(
            start([](const QRect&, QString&) -> std::unique_ptr<FrameSource> { return std::make_unique<NoFrames>(); }));
        m_wrapper->setSceneRendered(true);
        QVERIFY(!m_wrapper->isSceneRendered());
        behaviour().monitors = {{"Somewhere", "somewhere"}};
        m_wrapper->refreshCaptureTargets(false);
        QVERIFY(m_wrapper->setCaptureTarget("Somewhere", 1, false, 0, 0, 0, 0));
        QVERIFY(m_wrapper->isSceneRendered());
    }

    void windowIsCapturedByTheScene()
    {
        QVERIFY(
            start([](const QRect&, QString&) -> std::unique_ptr<FrameSource> { return std::make_unique<NoFrames>(); }));
        QCOMPARE(m_wrapper->setupScene(2), 0);
        m_wrapper->refreshCaptureTargets(true);
        QVERIFY(m_wrapper->setCaptureTarget("[editor.exe]: notes", 2, false, 0, 0, 0, 0));
        m_wrapper->setSceneRendered(true);
        QVERIFY(m_wrapper->isSceneRendered());
    }

private:
    static constexpr char kLeftMonitor[] = "Left: 1280x720 @ 0,0";

    /// Writes nothing.
    class NoFrames : public FrameSource
    {
    public:
        NoFrames() { ++count; }
        ~NoFrames() override { --count; }

        static inline std::atomic<int> count{0};

        void setOrigin(const QPoint&) override {}
        void setPointer(const FramePointer&) override {}
        void update(std::uint64_t) override {}
        void write(const I420View&) override {}
    };

    /// Base and output size of libobs' own.
    static QList<QSize> engineVideo()
    {
        obs_video_info video{};
        obs_get_video_info(&video);
        return {QSize(static_cast<int>(video.base_width), static_cast<int>(video.base_height)),
                QSize(static_cast<int>(video.output_width), static_cast<int>(video.output_height))};
    }

    /// What frames were opened for last.
    static QRect& lastArea()
    {
        static QRect area;
        return area;
    }

    /// Starts an engine that captures the left monitor from (10, 20) on, with frames of these.
    bool start(decltype(CapturePlatform::openFrames) openFrames)
    {
        CapturePlatform platform = standins::platform();
        platform.openFrames = openFrames;
        m_wrapper = std::make_unique<ObsWrapper>(platform);
        // The core runs already, and no start resets its video.
        if (!m_wrapper->initialize(1280, 720, 30) || m_wrapper->resetVideo(1280, 720, 1280, 720, 30) != 0 ||
            m_wrapper->setupScene(1) != 0)
            return false;
        m_wrapper->refreshCaptureTargets(false);
        return m_wrapper->setCaptureTarget(kLeftMonitor, 1, true, 10, 0, 20, 0);
    }

    /// The types of the capture source's filters, in the order in which they are applied.
    static QStringList filtersOfTheCapture()
    {
        QStringList types;
        const ObsSourceHandle capture(obs_get_source_by_name("Computer_Monitor_Capture"));
        obs_source_enum_filters(
            capture.get(),
            [](obs_source_t*, obs_source_t* filter, void* list) {
                static_cast<QStringList*>(list)->append(QString::fromUtf8(obs_source_get_id(filter)));
            },
            &types);
        return types;
    }
    static bool isCropFilterEnabled()
    {
        const ObsSourceHandle capture(obs_get_source_by_name("Computer_Monitor_Capture"));
        const ObsSourceHandle filter(obs_source_get_filter_by_name(capture.get(), "Crop/Pad"));
        return filter && obs_source_enabled(filter.get());
    }

    struct Layout
    {
        float x;
        float y;
        uint32_t alignment;
        obs_bounds_type boundsType;
        float width;
        float height;
    };

    /// The engine hands new settings to video sources at its next frame.
    static void waitForUpdates()
    {
        const uint32_t before = obs_get_total_frames();
        QTRY_VERIFY(obs_get_total_frames() >= before + 3);
    }

    static Layout captureLayout()
    {
        obs_source_t* sceneSource = obs_get_source_by_name("CurrentDesktopCapture");
        obs_sceneitem_t* item = obs_scene_find_source(obs_scene_from_source(sceneSource), "Computer_Monitor_Capture");
        vec2 position{};
        vec2 bounds{};
        obs_sceneitem_get_pos(item, &position);
        obs_sceneitem_get_bounds(item, &bounds);
        const Layout layout{
            position.x, position.y, obs_sceneitem_get_alignment(item), obs_sceneitem_get_bounds_type(item),
            bounds.x,   bounds.y};
        obs_source_release(sceneSource);
        return layout;
    }

    std::unique_ptr<ObsWrapper> m_wrapper;
};

REGISTER_TEST(testrun::gui<TestEngineScene>);

#include "test_enginescene.moc"
