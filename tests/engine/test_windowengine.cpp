// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/settings.h"
#include "engine/obswrapper.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "overlays/qtcamerasystem.h"
#include "overlays/scswitchwidget.h"
#include "tests/engine/obsspy.h"
#include "tests/engine/standins.h"
#include "tests/support/messagecapture.h"
#include "tests/support/shownwindow.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"
#include "tests/support/widgetimage.h"
#include "widgets/volumecontrol.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>

#include <algorithm>
#include <array>
#include <dlfcn.h>

using standins::behaviour;

namespace {

/// Physical pixels per logical one. With it the private desktop's 1280x720 pixels are exactly 1024x576 logical ones.
constexpr char kScaleFactor[] = "1.25";
/// The countdown's three seconds, and what a busy machine needs besides.
constexpr int kRoadTimeoutMs = 30'000;

bool screensAreGone = false;

QString nameOnChannel(uint32_t channel)
{
    obs_source_t* source = obs_get_output_source(channel);
    QString name = source ? QString::fromUtf8(obs_source_get_name(source)) : QStringLiteral("nothing");
    obs_source_release(source);
    return name;
}

QMap<QString, QVariant> storedSettings()
{
    const auto settings = openSettings();
    QMap<QString, QVariant> values;
    const QStringList keys = settings->allKeys();
    for (const QString& key : keys)
        values.insert(key, settings->value(key));
    return values;
}

/// A setting of a source; the library hands it to video sources with the next frame.
QJsonValue settingOf(const char* sourceType, const char* key)
{
    return standins::lastSettings(QLatin1String(sourceType)).value(QLatin1String(key));
}

QImage image(const QIcon& icon)
{
    return icon.pixmap(QSize(24, 24)).toImage();
}

} // namespace

/// Comes before Qt's own when the program's calls are bound, for sessions without a screen.
QScreen* QGuiApplication::primaryScreen()
{
    using Function = QScreen* (*)();
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "_ZN15QGuiApplication13primaryScreenEv"));
    return screensAreGone ? nullptr : real();
}

/// The main window and its engine together, on the real core with stand-ins under the names of the Windows plug-ins.
class TestWindowEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(standins::startCore());
        standins::registerSources();
        standins::registerOutputs();
        standins::registerFadeTransition();
        QCOMPARE(QGuiApplication::primaryScreen()->size() * 1.25, QSize(1280, 720));
    }

    void init()
    {
        behaviour() = standins::Behaviour();
        // The primary screen's entry is not the first.
        behaviour().monitors = {{"Right: 1920x1080 @ 1280,0", "\\\\.\\right"}, {"Left: 1280x720 @ 0,0", "\\\\.\\left"}};
        const auto settings = openSettings();
        settings->clear();
        settings->setValue(settingskeys::kFirstRun, false);
        settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("None"));
        settings->setValue(settingskeys::kMicSwitch, false);
        settings->setValue(settingskeys::kSpeakerSwitch, true);
        auto engine = std::make_unique<ObsWrapper>(standins::platform());
        m_engine = engine.get();
        m_window = std::make_unique<SCMainWindow>(std::move(engine), std::make_shared<QtCameraSystem>(),
                                                  Durations{.countdownStepMs = 10});
        m_window->show();
        standins::clearEvents();
        obsspy::clear();
    }

    void cleanup()
    {
        screensAreGone = false;
        obsspy::failNowhere();
        m_window.reset();
        QTRY_VERIFY(!obs_video_active());
    }

    void targetIsThePrimaryScreensEntry()
    {
        m_window->initializeCapture();
        QTRY_COMPARE(settingOf("monitor_capture", "monitor_id"), QJsonValue("\\\\.\\left"));
        for (const char* margin : {"left", "top", "right", "bottom"})
            QTRY_COMPARE(settingOf("crop_filter", margin), QJsonValue(0));
    }

    void fieldsShowPhysicalPixels()
    {
        m_window->initializeCapture();
        QCOMPARE(field("widthEdit"), QStringLiteral("1280"));
        QCOMPARE(field("heightEdit"), QStringLiteral("720"));
        QCOMPARE(obsspy::calls().filter("obs_source_create monitor_capture").size(), 1);
    }

    void screenAndAreaAreLoggedInLogicalPixels()
    {
        const MessageCapture messages;
        m_window->initializeCapture();
        const QStringList debug = messages.texts(QtDebugMsg);
        const auto screen = debug.indexOf("[DEBUG] Screen geometry: x=0, y=0, width=1024, height=576");
        QVERIFY2(screen >= 0, qPrintable(debug.join('\n')));
        QCOMPARE(debug.value(screen + 1), QStringLiteral("[DEBUG] position 0 0 1024 576"));
        QVERIFY(messages.texts(QtInfoMsg).contains("[INFO] OBS initialized successfully"));
    }

    void nothingIsDrawnUntilItIsRecorded()
    {
        m_window->initializeCapture();
        QVERIFY(!m_engine->isSceneRendered());
        button()->click();
        QTRY_COMPARE_WITH_TIMEOUT(standins::countOf(QStringLiteral("start output")), 1, kRoadTimeoutMs);
        QVERIFY(m_engine->isSceneRendered());
        button()->click();
        QTRY_VERIFY_WITH_TIMEOUT(!m_engine->isSceneRendered(), kRoadTimeoutMs);
    }

    void metersAreFedAndPreparedForTheEnginesChannels()
    {
        m_window->initializeCapture();
        const auto* const speaker = m_window->findChild<VolumeControl*>(QStringLiteral("speakerMeter"));
        const auto* const mic = m_window->findChild<VolumeControl*>(QStringLiteral("micMeter"));
        QCOMPARE(speaker->channelCount(), m_engine->desktopMeterChannels());
        QCOMPARE(mic->channelCount(), qMin(m_engine->micMeterChannels(), VolumeControl::kMaxChannels));
        QCOMPARE(speaker->audioChannelCount(), m_engine->audioOutputChannels());
        QVERIFY(speaker->isActive());
        QVERIFY(!mic->isActive());
        std::array<float, ObsWrapper::kLevelChannels> levels{};
        levels.fill(-6.0F);
        emit m_engine->playerVolumeDataChange(levels.data(), levels.data(), levels.data());
        const QColor first = imageOf(*const_cast<VolumeControl*>(speaker)).pixelColor(1, 6);
        QVERIFY(first.blue() - first.red() > 40);
    }

    void regionIsCutOutAndItsSizeIsTheVideos()
    {
        m_window->initializeCapture();
        chooseRegion(QRect(100, 80, 400, 240));
        // 1.25 physical pixels to a logical one.
        QTRY_COMPARE(settingOf("crop_filter", "left"), QJsonValue(125));
        QCOMPARE(settingOf("crop_filter", "top"), QJsonValue(100));
        QCOMPARE(settingOf("crop_filter", "right"), QJsonValue(1280 - 125 - 500));
        QCOMPARE(settingOf("crop_filter", "bottom"), QJsonValue(720 - 100 - 300));
        QCOMPARE(field("widthEdit"), QStringLiteral("500"));
        QCOMPARE(field("heightEdit"), QStringLiteral("300"));
        button()->click();
        QTRY_COMPARE_WITH_TIMEOUT(standins::countOf(QStringLiteral("start output")), 1, kRoadTimeoutMs);
        obs_video_info video{};
        QVERIFY(obs_get_video_info(&video));
        QCOMPARE(QSize(int(video.base_width), int(video.base_height)), QSize(500, 300));
        QVERIFY(frame()->isVisible());
        QVERIFY(frame()->isRecording());
        button()->click();
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isMinimized(), kRoadTimeoutMs);
        QVERIFY(!frame()->isVisible());
    }

    void cropFollowsTheFrameLiveWhileRecordingAndOnlyThen()
    {
        m_window->initializeCapture();
        chooseRegion(QRect(100, 80, 400, 240));
        emit frame()->windowGeometryChanged(true, {120, 80}, {519, 319});
        QVERIFY(waitForUpdates());
        QCOMPARE(settingOf("crop_filter", "left"), QJsonValue(125));
        emit frame()->windowGeometryChanged(false, {120, 80}, {519, 319});
        QTRY_COMPARE(settingOf("crop_filter", "left"), QJsonValue(150));
        button()->click();
        QTRY_COMPARE_WITH_TIMEOUT(standins::countOf(QStringLiteral("start output")), 1, kRoadTimeoutMs);
        emit frame()->windowGeometryChanged(true, {200, 80}, {599, 319});
        QTRY_COMPARE(settingOf("crop_filter", "left"), QJsonValue(250));
        emit frame()->windowGeometryChanged(false, {240, 80}, {639, 319});
        QVERIFY(waitForUpdates());
        QCOMPARE(settingOf("crop_filter", "left"), QJsonValue(250));
        button()->click();
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isMinimized(), kRoadTimeoutMs);
    }

    void sizeIsSettledWhileRecording()
    {
        m_window->initializeCapture();
        chooseRegion(QRect(100, 80, 400, 240));
        startRecording();
        emit frame()->windowGeometryChanged(false, {100, 80}, {299, 229});
        QCOMPARE(frame()->geometry(), QRect(96, 76, 408, 248));
        emit frame()->windowGeometryChanged(true, {160, 80}, {559, 319});
        QTRY_COMPARE(settingOf("crop_filter", "left"), QJsonValue(200));
        QCOMPARE(settingOf("crop_filter", "right"), QJsonValue(1280 - 200 - 500));
        stopRecording();
    }

    /// Its left edge is a column narrower than the frame, which is the size of no moved frame.
    void regionOfTheFirstColumnMovedDuringAPauseIsRecordedWhereItIs()
    {
        m_window->initializeCapture();
        chooseRegion(QRect(0, 80, 400, 240));
        startRecording();
        emit m_engine->recordStatusChanged(1);
        emit frame()->windowGeometryChanged(true, {200, 80}, {599, 319});
        emit frame()->windowGeometryChanged(false, {200, 80}, {599, 319});
        QTRY_COMPARE(settingOf("crop_filter", "left"), QJsonValue(250));
        QCOMPARE(frame()->geometry(), QRect(196, 76, 407, 248));
        emit m_engine->recordStatusChanged(0);
        stopRecording();
    }

    void barGetsOutOfTheWayOfAMovedFrame()
    {
        m_window->initializeCapture();
        chooseRegion(QRect(100, 200, 400, 240));
        startRecording();
        const auto* const bar = shownWindow<SCFullscreenToolbar>();
        if (bar == nullptr)
            QFAIL("the bar is not shown");
        QVERIFY(!bar->geometry().intersects(QRect(100, 200, 400, 240)));
        for (const QPoint& corner : {QPoint(312, 4), QPoint(312, 40), QPoint(600, 10)}) {
            const QRect moved(corner, QSize(400, 240));
            emit frame()->windowGeometryChanged(true, moved.topLeft(), moved.bottomRight());
            QVERIFY2(!bar->geometry().intersects(moved), qPrintable(QString::number(corner.x())));
        }
        stopRecording();
    }

    void choicesOfAPausedRecordingCannotBeChanged()
    {
        m_window->initializeCapture();
        startRecording();
        emit m_engine->recordStatusChanged(1);
        for (const char* name :
             {"fullScreenTile", "regionTile", "windowTile", "ratioBox", "lockButton", "screenSwitch", "formatBox"})
            QVERIFY2(!m_window->findChild<QWidget*>(QLatin1String(name))->isEnabled(), name);
        emit m_engine->recordStatusChanged(0);
        stopRecording();
        for (const char* name : {"fullScreenTile", "ratioBox", "screenSwitch", "formatBox"})
            QTRY_VERIFY2(m_window->findChild<QWidget*>(QLatin1String(name))->isEnabled(), name);
    }

    void presetLargerThanTheScreenShowsTheSizeThatIsRecorded()
    {
        m_window->initializeCapture();
        auto* const box = m_window->findChild<QComboBox*>(QStringLiteral("ratioBox"));
        box->setCurrentText(QStringLiteral("9:16"));
        emit box->textActivated(QStringLiteral("9:16"));
        QCOMPARE(field("widthEdit"), QStringLiteral("404"));
        QCOMPARE(field("heightEdit"), QStringLiteral("718"));
        startRecording();
        QCOMPARE(field("heightEdit"), QStringLiteral("718"));
        obs_video_info video{};
        QVERIFY(obs_get_video_info(&video));
        QCOMPARE(QSize(int(video.base_width), int(video.base_height)),
                 QSize(field("widthEdit").toInt(), field("heightEdit").toInt()));
        stopRecording();
    }

    void audioIsRecordedWhereTheScreenCannotBe()
    {
        behaviour().monitors = {{"A: 640x480 @ 1280,0", "a"}};
        m_window->findChild<QComboBox*>(QStringLiteral("formatBox"))->setCurrentIndex(4);
        m_window->initializeCapture();
        startRecording();
        QVERIFY(!m_engine->isSceneRendered());
        stopRecording();
    }

    void switchedOffScreenIsRestoredWithAnAudioFormat()
    {
        openSettings()->setValue(settingskeys::kScreenSwitch, false);
        m_window->initializeCapture();
        QVERIFY(!m_window->findChild<SCSwitchWidget*>(QStringLiteral("screenSwitch"))->isChecked());
        QCOMPARE(m_window->findChild<QComboBox*>(QStringLiteral("formatBox"))->currentText(), QStringLiteral("MP3"));
        QVERIFY(!m_window->findChild<Tile*>(QStringLiteral("fullScreenTile"))->isSelected());
        QCOMPARE(openSettings()->value(settingskeys::kRecordingFormat).toString(), QStringLiteral("MP4"));
    }

    void microphoneShownAsOffIsOff()
    {
        m_window->initializeCapture();
        QCOMPARE(nameOnChannel(1), QStringLiteral("Desktop Audio"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
    }

    void everySwitchReachesTheEngine()
    {
        const auto settings = openSettings();
        settings->setValue(settingskeys::kMicSwitch, true);
        settings->setValue(settingskeys::kSpeakerSwitch, false);
        settings->setValue(settingskeys::kMouseSwitch, false);
        m_window->initializeCapture();
        QCOMPARE(nameOnChannel(1), QStringLiteral("nothing"));
        QCOMPARE(nameOnChannel(2), QStringLiteral("Mic/Aux"));
        QTRY_COMPARE(settingOf("monitor_capture", "capture_cursor"), QJsonValue(false));
    }

    void defaultDevicesAreSetUpBeforeTheAreaAndTheSwitchesComeLast()
    {
        m_window->initializeCapture();
        QStringList calls = obsspy::calls();
        // From the scene's last step on.
        calls.remove(0, calls.indexOf("obs_source_create monitor_capture Computer_Monitor_Capture") + 1);
        calls.removeIf([](const QString& call) {
            return !call.startsWith("obs_set_output_source") && !call.startsWith("obs_source_create");
        });
        QCOMPARE(calls,
                 (QStringList{"obs_source_create wasapi_output_capture Desktop Audio",
                              "obs_set_output_source 1 Desktop Audio", "obs_source_create wasapi_input_capture Mic/Aux",
                              "obs_set_output_source 2 Mic/Aux", "obs_source_create crop_filter Crop/Pad",
                              "obs_set_output_source 1 Desktop Audio", "obs_set_output_source 2 nothing",
                              "obs_set_output_source 0 nothing"}));
        QCOMPARE(settingOf("wasapi_input_capture", "device_id"), QJsonValue("default"));
    }

    void restoringTheSwitchesWritesNoSetting()
    {
        const auto before = storedSettings();
        m_window->initializeCapture();
        QCOMPARE(storedSettings(), before);
    }

    void sessionWithoutAScreenStartsNoEngine()
    {
        const MessageCapture messages;
        screensAreGone = true;
        m_window->initializeCapture();
        screensAreGone = false;
        QCOMPARE(messages.texts(), QStringList{"Failed to get primary screen"});
        QCOMPARE(obsspy::calls(), QStringList());
        QCOMPARE(attemptToRecord(), QStringList{"[WARNING] OBS wrapper not initialized"});
    }

    void failedStartOfTheEngineIsLoggedAndRestoresNoSwitch()
    {
        const MessageCapture messages;
        obsspy::failAt(QStringLiteral("obs_output_create"));
        m_window->initializeCapture();
        QVERIFY(messages.texts().contains("[WARNING] Failed to initialize OBS"));
        QVERIFY(!messages.texts().contains("[INFO] OBS initialized successfully"));
        QVERIFY(obsspy::calls().filter("obs_set_output_source").isEmpty());
        QCOMPARE(field("widthEdit"), QString());
    }

    void sceneThatCannotBeMadeLeavesTheEngineRunning()
    {
        const MessageCapture messages;
        obsspy::failAt(QStringLiteral("obs_scene_create"));
        m_window->initializeCapture();
        QVERIFY(messages.texts().contains("[INFO] OBS initialized successfully"));
        QVERIFY(!m_engine->isSceneRendered());
        QCOMPARE(nameOnChannel(1), QStringLiteral("Desktop Audio"));
    }

    void primaryScreenThatIsNoneOfTheMonitorsIsNotRecorded()
    {
        behaviour().monitors = {{"A: 640x480 @ 1280,0", "a"}, {"B: 640x480 @ 1920,0", "b"}};
        m_window->initializeCapture();
        QCOMPARE(attemptToRecord().last(), QStringLiteral("[ERROR] Failed to prepare recording"));
        QCOMPARE(standins::countOf(QStringLiteral("start output")), 0);
        QVERIFY(settingOf("monitor_capture", "monitor_id").isUndefined());
    }

    void failedVideoResetIsLoggedAndNothingIsRecorded()
    {
        m_window->initializeCapture();
        obsspy::failAt(QStringLiteral("obs_reset_video"));
        QCOMPARE(attemptToRecord(),
                 (QStringList{"[WARNING] Failed to reset video", "[ERROR] Failed to prepare recording"}));
        QCOMPARE(standins::countOf(QStringLiteral("start output")), 0);
    }

    void pointerAndItsEffectsAreChosenApart_data()
    {
        QTest::addColumn<bool>("pointer");
        QTest::addColumn<bool>("effects");
        QTest::newRow("pointer alone") << true << false;
        QTest::newRow("effects alone") << false << true;
    }

    void pointerAndItsEffectsAreChosenApart()
    {
        QFETCH(const bool, pointer);
        QFETCH(const bool, effects);
        openSettings()->setValue(settingskeys::kMouseShowCursor, pointer);
        openSettings()->setValue(settingskeys::kMouseSwitch, effects);
        m_window->initializeCapture();
        behaviour().outputStarts = false;
        attemptToRecord();
        QTRY_COMPARE(settingOf("monitor_capture", "show_left_click"), QJsonValue(effects));
        QTRY_COMPARE(settingOf("monitor_capture", "capture_cursor"), QJsonValue(pointer));
    }

    void buttonShowsTheStateOfTheRecording()
    {
        m_window->initializeCapture();
        expectLook("Start Recording", "start-recording");
        button()->click();
        QTRY_COMPARE_WITH_TIMEOUT(standins::countOf(QStringLiteral("start output")), 1, kRoadTimeoutMs);
        expectLook("Stop Recording", "stop-recording");
        QVERIFY(m_window->isMinimized());
        emit m_engine->recordStatusChanged(1);
        expectLook("Pause Recording", "pause-recording");
        emit m_engine->recordStatusChanged(0);
        expectLook("Stop Recording", "stop-recording");
        button()->click();
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isMinimized(), kRoadTimeoutMs);
        expectLook("Start Recording", "start-recording");
        QCOMPARE(standins::countOf(QStringLiteral("stop output")), 1);
    }

private:
    /// On the screen or not.
    static DrawWindow* frame()
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        const auto found = std::find_if(windows.begin(), windows.end(),
                                        [](QWidget* window) { return qobject_cast<DrawWindow*>(window) != nullptr; });
        return found == windows.end() ? nullptr : qobject_cast<DrawWindow*>(*found);
    }

    /// The engine hands new settings to video sources at its next frame.
    static bool waitForUpdates()
    {
        return QTest::qWaitFor([wanted = obs_get_total_frames() + 3] { return obs_get_total_frames() >= wanted; });
    }

    void startRecording() const
    {
        const auto before = standins::countOf(QStringLiteral("start output"));
        button()->click();
        [before] {
            QTRY_VERIFY_WITH_TIMEOUT(standins::countOf(QStringLiteral("start output")) > before, kRoadTimeoutMs);
        }();
    }

    void stopRecording() const
    {
        button()->click();
        [this] { QTRY_VERIFY_WITH_TIMEOUT(!m_window->isMinimized(), kRoadTimeoutMs); }();
    }

    void chooseRegion(const QRect& region) const
    {
        QTest::keyClick(m_window->findChild<Tile*>(QStringLiteral("regionTile")), Qt::Key_Space);
        auto* const selector = shownWindow<AreaSelector>();
        QVERIFY(selector != nullptr);
        QTest::mousePress(selector, Qt::LeftButton, {}, region.topLeft());
        QTest::mouseMove(selector, region.bottomRight());
        QTest::mouseRelease(selector, Qt::LeftButton, {}, region.bottomRight());
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
    }

    QPushButton* button() const { return m_window->findChild<QPushButton*>(QStringLiteral("recordButton")); }

    QString field(const char* name) const { return m_window->findChild<QLineEdit*>(QLatin1String(name))->text(); }

    void expectLook(const char* text, const char* icon) const
    {
        QCOMPARE(button()->text(), QLatin1String(text));
        const QIcon expected(QStringLiteral(":/res/forms/images/%1.svg").arg(QLatin1String(icon)));
        QVERIFY(!image(expected).isNull());
        QCOMPARE(image(button()->icon()), image(expected));
    }

    /// Presses the button and waits until the window is back; what was warned of meanwhile.
    QStringList attemptToRecord() const
    {
        const MessageCapture messages;
        button()->click();
        [this] { QTRY_VERIFY_WITH_TIMEOUT(!m_window->isMinimized(), kRoadTimeoutMs); }();
        return messages.texts(QtWarningMsg) + messages.texts(QtCriticalMsg);
    }

    std::unique_ptr<SCMainWindow> m_window;
    ObsWrapper* m_engine = nullptr;
};

static int run(int argc, char* argv[])
{
    qputenv("QT_SCALE_FACTOR", kScaleFactor);
    return testrun::gui<TestWindowEngine>(argc, argv);
}

REGISTER_TEST(run);

#include "test_windowengine.moc"
