#include "app/appidentity.h"
#include "engine/obshandles.h"
#include "engine/obswrapper.h"
#include "tests/engine/obsspy.h"
#include "tests/engine/standins.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"

#include <QApplication>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

using standins::behaviour;

namespace {

using LevelArray = std::array<float, ObsWrapper::kLevelChannels>;

/// The three arrays of a level signal.
struct LevelSignal
{
    LevelArray magnitude{};
    LevelArray peak{};
    LevelArray inputPeak{};

    bool operator==(const LevelSignal&) const = default;
};

/// The level signals, copied while they are valid, and the order they came in.
struct LevelNotes
{
    QList<LevelSignal> microphone;
    QList<LevelSignal> desktop;
    /// 'd' for the desktop, 'm' for the microphone.
    QByteArray order;

    void clear()
    {
        microphone.clear();
        desktop.clear();
        order.clear();
    }

    explicit LevelNotes(ObsWrapper& wrapper)
    {
        QObject::connect(&wrapper, &ObsWrapper::micVolumeDataChange, &context,
                         [this](const float* magnitude, const float* peak, const float* inputPeak) {
                             microphone << copy(magnitude, peak, inputPeak);
                             order += 'm';
                         });
        QObject::connect(&wrapper, &ObsWrapper::playerVolumeDataChange, &context,
                         [this](const float* magnitude, const float* peak, const float* inputPeak) {
                             desktop << copy(magnitude, peak, inputPeak);
                             order += 'd';
                         });
    }

private:
    static LevelSignal copy(const float* magnitude, const float* peak, const float* inputPeak)
    {
        LevelSignal signal;
        std::copy_n(magnitude, signal.magnitude.size(), signal.magnitude.begin());
        std::copy_n(peak, signal.peak.size(), signal.peak.begin());
        std::copy_n(inputPeak, signal.inputPeak.size(), signal.inputPeak.begin());
        return signal;
    }

    QObject context;
};

/// A tone from the stand-in on the channel, as its plug-in would send it.
void playTone(uint32_t channel)
{
    std::array<float, 480> samples{};
    samples.fill(0.5F);
    obs_source_audio audio{};
    audio.data[0] = reinterpret_cast<const uint8_t*>(samples.data());
    audio.frames = samples.size();
    audio.speakers = SPEAKERS_MONO;
    audio.format = AUDIO_FORMAT_FLOAT;
    audio.samples_per_sec = 48000;
    obs_source_t* source = obs_get_output_source(channel);
    for (int block = 0; block < 20; ++block) {
        audio.timestamp = static_cast<uint64_t>(block) * 10'000'000 + 1;
        obs_source_output_audio(source, &audio);
    }
    obs_source_release(source);
}

QString nameOnChannel(uint32_t channel)
{
    obs_source_t* source = obs_get_output_source(channel);
    QString name = source ? QString::fromUtf8(obs_source_get_name(source)) : QStringLiteral("nothing");
    obs_source_release(source);
    return name;
}

constexpr LevelSignal kSilence{};

/// Waits for a signal of the tone that playTone() plays: an array of its own for each of the three levels.
bool hasTone(const LevelSignal& signal)
{
    const float magnitude = signal.magnitude.at(0);
    return magnitude < 0.0F && std::isfinite(magnitude) && signal.peak.at(0) < 0.0F &&
           std::isfinite(signal.peak.at(0)) && signal.inputPeak.at(0) < 0.0F && std::isfinite(signal.inputPeak.at(0));
}

} // namespace

/// The scene, its sources and the sound devices, on the real core with stand-ins under the names of the Windows
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

    void setupSceneTakesTheSoundOffItsChannels()
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
        obs_source_t* capture = obs_get_source_by_name("Computer_Monitor_Capture");
        QCOMPARE(obs_source_filter_count(capture), size_t(1));
        obs_source_release(capture);
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

    void deviceLists()
    {
        m_wrapper->refreshMicDevices();
        QCOMPARE(m_wrapper->micDeviceNames(), (QStringList{"Default", "Desk microphone"}));
        QCOMPARE(m_wrapper->micDeviceIds(), (QStringList{"default", "mic-1"}));
        m_wrapper->refreshDesktopDevices();
        QCOMPARE(m_wrapper->desktopDeviceNames(), (QStringList{"Default", "Headphones"}));
        QCOMPARE(m_wrapper->desktopDeviceIds(), (QStringList{"default", "out-1"}));
    }

    void deviceWithoutIdentifierHasAnEmptyOne()
    {
        behaviour().microphones = {{"Nameless", nullptr}};
        m_wrapper->refreshMicDevices();
        QCOMPARE(m_wrapper->micDeviceIds(), QStringList{QString()});
    }

    void withoutDevicesTheListsHoldExactlyNoDeviceAndDefault()
    {
        behaviour().microphones.clear();
        behaviour().speakers.clear();
        m_wrapper->refreshMicDevices();
        m_wrapper->refreshDesktopDevices();
        QCOMPARE(m_wrapper->micDeviceNames(), QStringList{"No Device"});
        QCOMPARE(m_wrapper->micDeviceIds(), QStringList{"default"});
        QCOMPARE(m_wrapper->desktopDeviceNames(), QStringList{"No Device"});
        QCOMPARE(m_wrapper->desktopDeviceIds(), QStringList{"default"});
    }

    void withoutDevicesSettingOneDoesNothing()
    {
        behaviour().microphones.clear();
        behaviour().speakers.clear();
        LevelNotes levels(*m_wrapper);
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        m_wrapper->setMicDevice(false, QString());
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        m_wrapper->setDesktopAudioDevice(false, QString());
        QVERIFY(obsspy::calls().filter("obs_set_output_source").isEmpty());
        QVERIFY(levels.microphone.isEmpty());
        QVERIFY(levels.desktop.isEmpty());
    }

    void deviceOnAnEmptyChannelIsCreatedWithItsIdentifier()
    {
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Mic/Aux"));
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QStringLiteral("mic-1"));
        QCOMPARE(standins::countOf("update wasapi_input_capture"), 0);
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("out-1"));
        QCOMPARE(nameOnChannel(1), QStringLiteral("Desktop Audio"));
        QCOMPARE(standins::lastSettings("wasapi_output_capture").value("device_id").toString(),
                 QStringLiteral("out-1"));
    }

    void equalDeviceDoesNotUpdateTheSource()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        standins::clearEvents();
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        QVERIFY(standins::events().isEmpty());
    }

    void otherDeviceUpdatesTheSourceOnTheChannel()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        standins::clearEvents();
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        QCOMPARE(standins::events(), QStringList{"update wasapi_input_capture"});
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QStringLiteral("mic-1"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Default Mic/Aux"));
        standins::clearEvents();
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("out-1"));
        QCOMPARE(standins::events(), QStringList{"update wasapi_output_capture"});
        QCOMPARE(standins::lastSettings("wasapi_output_capture").value("device_id").toString(),
                 QStringLiteral("out-1"));
    }

    void switchingTheMicrophoneOffEmitsOneSignalOfZeros()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        LevelNotes levels(*m_wrapper);
        playTone(2);
        QTRY_VERIFY(!levels.microphone.isEmpty() && hasTone(levels.microphone.last()));
        levels.clear();
        m_wrapper->setMicDevice(false, QStringLiteral("default"));
        QCOMPARE(levels.microphone, QList<LevelSignal>{kSilence});
        QVERIFY(levels.desktop.isEmpty());
        QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
        QCOMPARE(nameOnChannel(1), QStringLiteral("Default Desktop Audio"));
        // And zeros at every tick that follows.
        QTRY_VERIFY(levels.microphone.size() > 5);
        QCOMPARE(levels.microphone.count(kSilence), levels.microphone.size());
    }

    void switchingTheDesktopSoundOffEmitsOneSignalOfZeros()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        LevelNotes levels(*m_wrapper);
        playTone(1);
        QTRY_VERIFY(!levels.desktop.isEmpty() && hasTone(levels.desktop.last()));
        levels.clear();
        m_wrapper->setDesktopAudioDevice(false, QStringLiteral("default"));
        QCOMPARE(levels.desktop, QList<LevelSignal>{kSilence});
        QVERIFY(levels.microphone.isEmpty());
        QCOMPARE(nameOnChannel(1), QStringLiteral("nothing"));
        QTRY_VERIFY(levels.desktop.size() > 5);
        QCOMPARE(levels.desktop.count(kSilence), levels.desktop.size());
    }

    void deviceNamedDisabledIsNoDeviceThoughEnabled()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        LevelNotes levels(*m_wrapper);
        m_wrapper->setMicDevice(true, QStringLiteral("disabled"));
        QCOMPARE(levels.microphone, QList<LevelSignal>{kSilence});
        QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("disabled"));
        QCOMPARE(levels.desktop, QList<LevelSignal>{kSilence});
        QCOMPARE(nameOnChannel(1), QStringLiteral("nothing"));
    }

    void levelsArriveEverySixteenMilliseconds()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        LevelNotes levels(*m_wrapper);
        QTest::qWait(1000);
        // 62 in a second; fewer on a busy machine, never many more.
        QVERIFY2(levels.order.size() >= 2 * 40, qPrintable(QString::number(levels.order.size())));
        QVERIFY2(levels.order.size() <= 2 * 70, qPrintable(QString::number(levels.order.size())));
    }

    void desktopLevelsComeBeforeTheMicrophonesAtEveryTick()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        LevelNotes levels(*m_wrapper);
        QTRY_VERIFY(levels.order.size() >= 20);
        QCOMPARE(levels.order, QByteArray("dm").repeated(levels.order.size() / 2));
    }

    void everyChannelHasLevelsOfItsOwn_data()
    {
        QTest::addColumn<bool>("desktop");
        QTest::newRow("microphone") << false;
        QTest::newRow("desktop") << true;
    }

    void everyChannelHasLevelsOfItsOwn()
    {
        QFETCH(const bool, desktop);
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        LevelNotes levels(*m_wrapper);
        const QList<LevelSignal>& sounding = desktop ? levels.desktop : levels.microphone;
        const QList<LevelSignal>& silent = desktop ? levels.microphone : levels.desktop;
        playTone(desktop ? 1 : 2);
        QTRY_VERIFY(!sounding.isEmpty() && hasTone(sounding.last()));
        QVERIFY(!silent.isEmpty());
        QCOMPARE(silent.count(kSilence), silent.size());
    }

    void switchedOffMicrophoneStaysAtZeroThoughItsSourceGoesOn()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        obs_source_t* microphone = obs_get_output_source(2);
        m_wrapper->setMicDevice(false, QString());
        LevelNotes levels(*m_wrapper);
        // What a microphone does that is not on its channel any more.
        obs_set_output_source(5, microphone);
        playTone(5);
        obs_set_output_source(5, nullptr);
        obs_source_release(microphone);
        QTRY_VERIFY(levels.microphone.size() >= 10);
        QCOMPARE(levels.microphone.count(kSilence), levels.microphone.size());
    }

    void meterFollowsTheDeviceThatWasSwitchedOnAgain()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        m_wrapper->setMicDevice(false, QString());
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        LevelNotes levels(*m_wrapper);
        playTone(2);
        QTRY_VERIFY(!levels.microphone.isEmpty() && hasTone(levels.microphone.last()));
    }

    void wrapperThatGoesLeavesTheChannelsEmpty()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        m_wrapper.reset();
        for (uint32_t channel = 0; channel < 3; ++channel)
            QCOMPARE(nameOnChannel(channel), QStringLiteral("nothing"));
        for (const char* const kind : {"monitor_capture", "wasapi_input_capture", "wasapi_output_capture"})
            QCOMPARE(standins::countOf(QStringLiteral("destroy %1").arg(QLatin1String(kind))),
                     standins::events().filter(QStringLiteral("create %1 ").arg(QLatin1String(kind))).size());
    }

    void wrapperThatGoesLeavesTheChannelsOfAnother()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        {
            ObsWrapper other(standins::platform());
            QVERIFY(other.initialize(320, 240, 30));
        }
        QCOMPARE(nameOnChannel(0), QStringLiteral("Fade"));
        QCOMPARE(nameOnChannel(1), QStringLiteral("Desktop Audio"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Mic/Aux"));
    }

    void meterAndOutputChannels()
    {
        QCOMPARE(m_wrapper->micMeterChannels(), 0);
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        QCOMPARE(m_wrapper->audioOutputChannels(), 2);
        QVERIFY(m_wrapper->micMeterChannels() <= ObsWrapper::kLevelChannels);
        playTone(2);
        playTone(1);
        QVERIFY(m_wrapper->micMeterChannels() > 0);
        QVERIFY(m_wrapper->desktopMeterChannels() > 0);
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

    void resetVideoNeitherRoundsNorClamps()
    {
        m_wrapper->resetVideo(1279, 719, 1279, 719, 30);
        QVERIFY(obsspy::calls().contains("obs_reset_video libobs-opengl 30/1 1279x719 to 1279x719 format 1 adapter 0 "
                                         "gpu 1 space 2 range 2 scale 2"));
    }

    void resetVideoLogsItsOddLabels()
    {
        MessageCapture log;
        m_wrapper->resetVideo(640, 480, 320, 240, 30);
        QCOMPARE(log.texts(QtDebugMsg).first(),
                 QStringLiteral("reset video with srcWidth 640 srcHeight 480 outPutWidth 320 outOutHeight 240 fps 30"));
        QVERIFY(!log.texts().contains("obs not initialized!"));
    }

private:
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

    /// The engine hands new settings to sources of pictures at its next picture.
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

int main(int argc, char** argv)
{
    const TestProfile profile;
    appidentity::apply();
    QApplication application(argc, argv);
    TestEngineScene test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_enginescene.moc"
