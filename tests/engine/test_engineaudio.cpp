// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "engine/audio/audioserver.h"
#include "engine/obswrapper.h"
#include "tests/engine/channels.h"
#include "tests/engine/obsspy.h"
#include "tests/engine/standins.h"
#include "tests/support/loglines.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QTest>

#include <utility>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>

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

constexpr LevelSignal kSilence{};

constexpr std::chrono::milliseconds kRestoreInterval{100};
constexpr std::chrono::milliseconds kLossDelay{100};

/// A sound server that does as it is told.
class FakeAudioServer : public AudioServer
{
public:
    FakeAudioServer() { s_instance = this; }

    bool isRunning() const override { return m_isRunning; }
    std::optional<AudioPart> heardBy(const QString& stream) const override
    {
        return m_streams.contains(stream) ? std::optional(m_streams.value(stream)) : std::nullopt;
    }

    static FakeAudioServer& instance() { return *s_instance; }

    void setRunning(bool running)
    {
        m_isRunning = running;
        emit changed();
    }

    void setHeard(const QString& stream, AudioPart part)
    {
        m_streams.insert(stream, part);
        emit changed();
    }

private:
    static inline FakeAudioServer* s_instance = nullptr;

    bool m_isRunning = true;
    QMap<QString, AudioPart> m_streams;
};

/// What the engine reports of its audio, as "lost 0".
class AudioReports
{
public:
    explicit AudioReports(ObsWrapper& wrapper)
    {
        QObject::connect(&wrapper, &ObsWrapper::audioLost, &m_context,
                         [this](AudioPart part) { m_texts << QStringLiteral("lost %1").arg(static_cast<int>(part)); });
        QObject::connect(&wrapper, &ObsWrapper::audioReturned, &m_context,
                         [this](AudioPart part) { m_texts << QStringLiteral("back %1").arg(static_cast<int>(part)); });
        QObject::connect(&wrapper, &ObsWrapper::audioFellBack, &m_context, [this](AudioPart part) {
            m_texts << QStringLiteral("default %1").arg(static_cast<int>(part));
        });
        QObject::connect(&wrapper, &ObsWrapper::audioReturnedToChosen, &m_context, [this](AudioPart part) {
            m_texts << QStringLiteral("chosen %1").arg(static_cast<int>(part));
        });
    }

    qsizetype count() const { return m_texts.size(); }
    QStringList take() { return std::exchange(m_texts, {}); }

private:
    QStringList m_texts;
    QObject m_context;
};

const QStringList kServerLost{"lost 0"};
const QStringList kServerBack{"back 0"};

/// Waits for a signal of the tone that playTone() plays: an array of its own for each of the three levels.
bool hasTone(const LevelSignal& signal)
{
    const float magnitude = signal.magnitude.at(0);
    return magnitude < 0.0F && std::isfinite(magnitude) && signal.peak.at(0) < 0.0F &&
           std::isfinite(signal.peak.at(0)) && signal.inputPeak.at(0) < 0.0F && std::isfinite(signal.inputPeak.at(0));
}

} // namespace

/// The audio devices and their levels, on the real core with stand-ins under the names of the Windows plug-ins.
class TestEngineAudio : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(standins::startCore());
        standins::registerSources();
        standins::registerOutputs();
        standins::registerFadeTransition();
    }

    void init()
    {
        behaviour() = standins::Behaviour();
        m_wrapper = std::make_unique<ObsWrapper>(standins::platform());
        standins::clearEvents();
        obsspy::clear();
    }

    void cleanup()
    {
        m_wrapper.reset();
        for (uint32_t channel = 0; channel < 3; ++channel)
            obs_set_output_source(channel, nullptr);
        obs_wait_for_destroy_queue();
    }

    void microphoneThatVanishesIsSilentUntilItComesBack()
    {
        useAServer();
        AudioReports reports(*m_wrapper);
        const ObsSourceHandle microphone(obs_get_output_source(2));
        noticeChange();
        QVERIFY(!obs_source_muted(microphone.get()));
        behaviour().microphones.clear();
        noticeChange();
        QVERIFY(obs_source_muted(microphone.get()));
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), QStringList{"lost 1"});
        standins::clearEvents();
        behaviour().microphones = {{"Default", "default"}, {"Desk microphone", "mic-1"}};
        noticeChange();
        QVERIFY(!obs_source_muted(microphone.get()));
        QCOMPARE(standins::events(), QStringList{"update wasapi_input_capture"});
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("default"));
        QCOMPARE(reports.take(), QStringList{"back 1"});
    }

    void deviceThatIsBackAtOnceIsNotReported()
    {
        useAServer();
        AudioReports reports(*m_wrapper);
        const ObsSourceHandle microphone(obs_get_output_source(2));
        behaviour().microphones.clear();
        noticeChange();
        QVERIFY(obs_source_muted(microphone.get()));
        listDevices();
        noticeChange();
        QVERIFY(!obs_source_muted(microphone.get()));
        QTest::qWait(2 * static_cast<int>(kLossDelay.count()));
        QCOMPARE(reports.take(), QStringList());
    }

    void microphoneOfANameIsTakenUpAgainWhenItIsBackAmongOthers()
    {
        useAServer();
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        const ObsSourceHandle microphone(obs_get_output_source(2));
        behaviour().microphones = {{"Default", "default"}};
        noticeChange();
        QVERIFY(obs_source_muted(microphone.get()));
        standins::clearEvents();
        behaviour().microphones = {{"Default", "default"}, {"Desk microphone", "mic-1"}};
        noticeChange();
        QVERIFY(!obs_source_muted(microphone.get()));
        // Away from it and back: the same device again would be no change.
        QCOMPARE(standins::countOf("update wasapi_input_capture"), 2);
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("mic-1"));
    }

    void chosenMicrophoneThatStaysAwayIsReplacedByTheDefaultOne()
    {
        useAServer();
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        AudioReports reports(*m_wrapper);
        const LogLines log;
        const ObsSourceHandle microphone(obs_get_output_source(2));
        behaviour().microphones = {{"Default", "default"}};
        noticeChange();
        QVERIFY(obs_source_muted(microphone.get()));
        QCOMPARE(reports.take(), QStringList());
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), QStringList{"default 1"});
        QVERIFY(!obs_source_muted(microphone.get()));
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("default"));
        QCOMPARE(log.count("[WARNING] The chosen microphone has vanished: the default one is used"), 1);
        LevelNotes levels(*m_wrapper);
        playTone(2);
        QTRY_VERIFY(!levels.microphone.isEmpty() && hasTone(levels.microphone.last()));
        // Until it is back.
        listDevices();
        noticeChange();
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("mic-1"));
        QCOMPARE(reports.take(), QStringList{"chosen 1"});
        QVERIFY(!obs_source_muted(microphone.get()));
        noticeChange();
        QCOMPARE(reports.take(), QStringList());
    }

    void replacedMicrophoneStaysAwayOnceTheDefaultOneIsChosen()
    {
        useAServer();
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        AudioReports reports(*m_wrapper);
        behaviour().microphones = {{"Default", "default"}};
        noticeChange();
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), QStringList{"default 1"});
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        listDevices();
        noticeChange();
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("default"));
        QCOMPARE(reports.take(), QStringList());
    }

    void replacedMicrophoneIsUsedAgainAlsoAfterItWasSwitchedOffAndOn()
    {
        useAServer();
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        AudioReports reports(*m_wrapper);
        behaviour().microphones = {{"Default", "default"}};
        noticeChange();
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), QStringList{"default 1"});
        m_wrapper->setMicDevice(false, QStringLiteral("default"));
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        listDevices();
        noticeChange();
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("mic-1"));
        QCOMPARE(reports.take(), QStringList{"chosen 1"});
    }

    void chosenSpeakerIsReplacedByTheNextOneThatComesAfterAllHaveGone()
    {
        useAServer();
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("out-1"));
        AudioReports reports(*m_wrapper);
        behaviour().speakers.clear();
        noticeChange();
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), QStringList{"lost 2"});
        behaviour().speakers = {{"Default", "default"}, {"Monitor", "out-2"}};
        noticeChange();
        QCOMPARE(reports.take(), QStringList{"default 2"});
        QCOMPARE(standins::lastSettings("wasapi_output_capture").value("device_id").toString(), QString("default"));
        const ObsSourceHandle speaker(obs_get_output_source(1));
        QVERIFY(!obs_source_muted(speaker.get()));
    }

    void anotherMicrophoneThatIsChosenIsNotLostWithTheLastOne()
    {
        useAServer();
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        AudioReports reports(*m_wrapper);
        behaviour().microphones = {{"Default", "default"}, {"Headset", "mic-2"}};
        noticeChange();
        const ObsSourceHandle microphone(obs_get_output_source(2));
        QVERIFY(obs_source_muted(microphone.get()));
        m_wrapper->setMicDevice(true, QStringLiteral("mic-2"));
        QVERIFY(!obs_source_muted(microphone.get()));
        QTest::qWait(2 * static_cast<int>(kLossDelay.count()));
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("mic-2"));
        QCOMPARE(reports.take(), QStringList());
    }

    void chosenMicrophoneIsReplacedWherePluginsKeepTheirDevices()
    {
        EngineTimings timings;
        timings.audioDevicesInterval = std::chrono::milliseconds(1);
        timings.audioLossDelay = kLossDelay;
        makeAndStart(standins::platform(), timings);
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        AudioReports reports(*m_wrapper);
        behaviour().microphones = {{"Default", "default"}};
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), QStringList{"default 1"});
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("default"));
    }

    void microphoneThatIsSwitchedOffIsNotLookedFor()
    {
        useAServer();
        AudioReports reports(*m_wrapper);
        m_wrapper->setMicDevice(false, QStringLiteral("default"));
        standins::clearEvents();
        behaviour().microphones.clear();
        noticeChange();
        behaviour().microphones = {{"Default", "default"}};
        noticeChange();
        QCOMPARE(standins::events(), QStringList());
        QCOMPARE(reports.take(), QStringList());
    }

    void streamThatTheServerMovesToTheOtherKindOfDeviceIsOpenedAgainOnce()
    {
        useAServer();
        FakeAudioServer& server = FakeAudioServer::instance();
        const QString desktop = nameOnChannel(1);
        server.setHeard(desktop, AudioPart::Desktop);
        server.setHeard(nameOnChannel(2), AudioPart::Microphone);
        standins::clearEvents();
        server.setHeard(desktop, AudioPart::Microphone);
        QCOMPARE(standins::events(), QStringList{"update wasapi_output_capture"});
        noticeChange();
        QCOMPARE(standins::countOf("update wasapi_output_capture"), 1);
        server.setHeard(desktop, AudioPart::Desktop);
        server.setHeard(desktop, AudioPart::Microphone);
        QCOMPARE(standins::countOf("update wasapi_output_capture"), 2);
    }

    void serverThatIsBackGetsNewSourcesLikeTheOldOnes()
    {
        useAServer();
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        {
            const ObsSourceHandle microphone(obs_get_output_source(2));
            obs_source_set_volume(microphone.get(), 0.25F);
        }
        const QStringList names{nameOnChannel(1), nameOnChannel(2)};
        AudioReports reports(*m_wrapper);
        const LogLines log;
        loseServer();
        QCOMPARE(reports.take(), kServerLost);
        QCOMPARE(log.count("[WARNING] The sound server has vanished"), 1);
        standins::clearEvents();
        FakeAudioServer::instance().setRunning(true);
        // The lists stay empty until nobody uses the lost connection any more.
        QTRY_COMPARE(standins::countOf("destroy wasapi_input_capture"), 1);
        QTRY_COMPARE(standins::countOf("destroy wasapi_output_capture"), 1);
        QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
        QCOMPARE(reports.take(), QStringList());
        listDevices();
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), kServerBack);
        QCOMPARE(log.count("[INFO] The sound server is back"), 1);
        QCOMPARE((QStringList{nameOnChannel(1), nameOnChannel(2)}), names);
        const ObsSourceHandle microphone(obs_get_output_source(2));
        QCOMPARE(obs_source_get_volume(microphone.get()), 0.25F);
        QVERIFY(!obs_source_muted(microphone.get()));
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("mic-1"));
    }

    void metersAreEmptyWithoutAServerAndFollowTheNewSources()
    {
        useAServer();
        LevelNotes levels(*m_wrapper);
        playTone(1);
        QTRY_VERIFY(!levels.desktop.isEmpty() && hasTone(levels.desktop.last()));
        loseServer();
        QTRY_COMPARE(levels.desktop.last(), kSilence);
        bringServerBack();
        QTRY_COMPARE(nameOnChannel(1), QStringLiteral("Default Desktop Audio"));
        playTone(1);
        QTRY_VERIFY(hasTone(levels.desktop.last()));
    }

    void serverIsOfNoInterestToWhoHasNoAudioOn()
    {
        useAServer();
        AudioReports reports(*m_wrapper);
        m_wrapper->setMicDevice(false, QString());
        m_wrapper->setDesktopAudioDevice(false, QString());
        loseServer();
        bringServerBack();
        QTRY_COMPARE(standins::countOf("destroy wasapi_output_capture"), 1);
        QCOMPARE(reports.take(), QStringList());
        QCOMPARE(nameOnChannel(1), QStringLiteral("nothing"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
    }

    void whatIsSwitchedWithoutAServerIsDoneWhenThereIsOne()
    {
        useAServer();
        m_wrapper->setMicDevice(false, QString());
        loseServer();
        AudioReports reports(*m_wrapper);
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        m_wrapper->setDesktopAudioDevice(false, QString());
        QCOMPARE(reports.take(), QStringList());
        bringServerBack();
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), kServerBack);
        QCOMPARE(nameOnChannel(1), QStringLiteral("nothing"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Mic/Aux"));
        QCOMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("mic-1"));
    }

    void audioThatIsSwitchedOnWithoutAServerIsReportedAsLost()
    {
        useAServer();
        m_wrapper->setMicDevice(false, QString());
        m_wrapper->setDesktopAudioDevice(false, QString());
        AudioReports reports(*m_wrapper);
        loseServer();
        QCOMPARE(reports.take(), QStringList());
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), kServerLost);
    }

    void audioThatIsSwitchedOnForAMomentIsNotReportedAsLost()
    {
        useAServer();
        m_wrapper->setMicDevice(false, QString());
        m_wrapper->setDesktopAudioDevice(false, QString());
        AudioReports reports(*m_wrapper);
        loseServer();
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        m_wrapper->setDesktopAudioDevice(false, QString());
        QCoreApplication::processEvents();
        QCOMPARE(reports.take(), QStringList());
    }

    void serverThatStopsAgainBeforeItsDevicesAreThereIsStillLost()
    {
        useAServer();
        AudioReports reports(*m_wrapper);
        loseServer();
        FakeAudioServer::instance().setRunning(true);
        loseServer();
        bringServerBack();
        QTRY_COMPARE(reports.count(), 2);
        QCOMPARE(reports.take(), kServerLost + kServerBack);
        QCOMPARE(nameOnChannel(1), QStringLiteral("Default Desktop Audio"));
    }

    void pluginIsNotAskedBeforeTheServerHasRunForAWhile()
    {
        useAServer();
        loseServer();
        bringServerBack();
        m_wrapper->setMicDevice(true, QStringLiteral("mic-1"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
        QTRY_COMPARE(standins::lastSettings("wasapi_input_capture").value("device_id").toString(), QString("mic-1"));
    }

    void listsOfDevicesStayWhileTheServerIsLost()
    {
        useAServer();
        refreshLists();
        const QStringList microphones = m_wrapper->micDeviceIds();
        const QStringList speakers = m_wrapper->desktopDeviceIds();
        QVERIFY(microphones.size() > 1 && speakers.size() > 1);
        loseServer();
        refreshLists();
        QCOMPARE(m_wrapper->micDeviceIds(), microphones);
        QCOMPARE(m_wrapper->desktopDeviceIds(), speakers);
        // Nor is the plug-in asked while the server has not run for a while.
        behaviour().microphones = {{"Default", "default"}};
        FakeAudioServer::instance().setRunning(true);
        refreshLists();
        QCOMPARE(m_wrapper->micDeviceIds(), microphones);
        QTRY_COMPARE((refreshLists(), m_wrapper->micDeviceIds()), QStringList{"default"});
    }

    void desktopAudioIsRecordedLaterByWhatThePlatformSays()
    {
        CapturePlatform platform = standins::platform();
        platform.desktopAudioDelayNs = 24'000'000;
        makeAndStart(platform, {});
        QCOMPARE(delayMsOnChannel(1), 24);
        QCOMPARE(delayMsOnChannel(2), 0);
        // One that is made later has it, too.
        m_wrapper->setDesktopAudioDevice(false, QStringLiteral("default"));
        m_wrapper->setDesktopAudioDevice(true, QStringLiteral("default"));
        QCOMPARE(delayMsOnChannel(1), 24);
    }

    void pluginsThatKeepTheirDevicesAreLeftAloneButTheirLossIsReported()
    {
        EngineTimings timings;
        timings.audioDevicesInterval = std::chrono::milliseconds(1);
        timings.audioLossDelay = kLossDelay;
        makeAndStart(standins::platform(), timings);
        AudioReports reports(*m_wrapper);
        const ObsSourceHandle microphone(obs_get_output_source(2));
        standins::clearEvents();
        behaviour().microphones.clear();
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), QStringList{"lost 1"});
        QVERIFY(!obs_source_muted(microphone.get()));
        behaviour().microphones = {{"Default", "default"}};
        QTRY_COMPARE(reports.count(), 1);
        QCOMPARE(reports.take(), QStringList{"back 1"});
        QCOMPARE(standins::events(), QStringList());
        LevelNotes levels(*m_wrapper);
        playTone(2);
        QTRY_VERIFY(!levels.microphone.isEmpty() && hasTone(levels.microphone.last()));
    }

    void microphoneThatIsSwitchedOffWhileThereIsNoneIsNotHeardWhenItIsBack()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        const ObsSourceHandle microphone(obs_get_output_source(2));
        behaviour().microphones.clear();
        m_wrapper->setMicDevice(false, QString());
        QVERIFY(obs_source_muted(microphone.get()));
        listDevices();
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Default Mic/Aux"));
        QVERIFY(!obs_source_muted(microphone.get()));
    }

    void firstDeviceThatIsPluggedInIsUsedWhereItWasSwitchedOn()
    {
        behaviour().microphones.clear();
        EngineTimings timings;
        timings.audioDevicesInterval = std::chrono::milliseconds(1);
        makeAndStart(standins::platform(), timings);
        QCOMPARE(m_wrapper->setupScene(1), 0);
        m_wrapper->setMicDevice(true, QStringLiteral("default"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
        behaviour().microphones = {{"Default", "default"}};
        QTRY_COMPARE(nameOnChannel(2), QStringLiteral("Mic/Aux"));
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

    void switchingTheDesktopAudioOffEmitsOneSignalOfZeros()
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

    void levelsArriveEverySixteenMillisecondsAndDevicesAreLookedForEveryTwoSeconds()
    {
        const EngineTimings timings;
        QCOMPARE(timings.levelInterval, std::chrono::milliseconds(16));
        QCOMPARE(timings.audioDevicesInterval, std::chrono::seconds(2));
        QCOMPARE(timings.audioRestoreInterval, std::chrono::seconds(1));
        QCOMPARE(timings.audioLossDelay, std::chrono::seconds(2));
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

private:
    void useAServer()
    {
        CapturePlatform platform = standins::platform();
        platform.openAudioServer = []() -> std::unique_ptr<AudioServer> { return std::make_unique<FakeAudioServer>(); };
        EngineTimings timings;
        timings.audioRestoreInterval = kRestoreInterval;
        timings.audioLossDelay = kLossDelay;
        makeAndStart(platform, timings);
    }

    void makeAndStart(const CapturePlatform& platform, const EngineTimings& timings)
    {
        m_wrapper = std::make_unique<ObsWrapper>(platform, timings);
        QVERIFY(m_wrapper->initialize(320, 240, 30));
    }

    void refreshLists()
    {
        m_wrapper->refreshMicDevices();
        m_wrapper->refreshDesktopDevices();
    }

    static int delayMsOnChannel(uint32_t channel)
    {
        const ObsSourceHandle source(obs_get_output_source(channel));
        return static_cast<int>(obs_source_get_sync_offset(source.get()) / 1'000'000);
    }

    static void noticeChange() { emit FakeAudioServer::instance().changed(); }

    /// The plug-ins list nothing without a server.
    static void loseServer()
    {
        behaviour().microphones.clear();
        behaviour().speakers.clear();
        FakeAudioServer::instance().setRunning(false);
    }

    static void listDevices()
    {
        behaviour().microphones = standins::Behaviour().microphones;
        behaviour().speakers = standins::Behaviour().speakers;
    }

    static void bringServerBack()
    {
        listDevices();
        FakeAudioServer::instance().setRunning(true);
    }

    std::unique_ptr<ObsWrapper> m_wrapper;
};

REGISTER_TEST(testrun::gui<TestEngineAudio>);

#include "test_engineaudio.moc"
