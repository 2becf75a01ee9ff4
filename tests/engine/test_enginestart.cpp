// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/sclogger.h"
#include "engine/capture/captureplatform.h"
#include "engine/obswrapper.h"
#include "tests/engine/channels.h"
#include "tests/engine/obsspy.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <obs.h>

#include <memory>

// libobs starts once in a process. Each start therefore happens in a process of its own: this program again, with
// arguments that say which scenario to play and where to write what came of it.

namespace {

constexpr char kScenarioOption[] = "--scenario";

CapturePlatform platformFor(const QString& scenario)
{
    CapturePlatform platform = CapturePlatform::current();
    if (scenario == QLatin1String("load all modules"))
        platform.moduleLoading = ModuleLoading::All;
    if (scenario == QLatin1String("missing type"))
        platform.neededTypes.push_back({NeededType::Registry::Output, "smoke_output", "no smoke can be sent"});
    if (scenario == QLatin1String("missing module"))
        platform.neededModules.push_back("obs-smoke");
    return platform;
}

QJsonObject play(const QString& scenario)
{
    QJsonObject outcome;
    const MessageCapture log;
    ObsWrapper wrapper(platformFor(scenario));
    if (scenario.startsWith(QLatin1String("obs_")))
        obsspy::failAt(scenario);
    if (scenario == QLatin1String("video fails, then again")) {
        obsspy::failAt(QStringLiteral("obs_reset_video"));
        outcome["first"] = wrapper.initialize(640, 480, 30);
        obsspy::clear();
    }
    if (scenario == QLatin1String("reset video first"))
        outcome["reset"] = wrapper.resetVideo(640, 480, 640, 480, 30);
    else
        outcome["initialized"] = wrapper.initialize(640, 480, 30);
    outcome["calls"] = QJsonArray::fromStringList(obsspy::calls());
    if (scenario == QLatin1String("video fails, then again")) {
        wrapper.setupFFmpeg(QStringLiteral("/r"), 640, 480, 30, 4, 0);
        outcome["started"] = wrapper.startRecording();
        outcome["scene"] = wrapper.setupScene(ObsWrapper::kCaptureMonitor);
    }
    obsspy::failNowhere();
    if (obs_initialized()) {
        outcome["desktop"] = nameOnChannel(1);
        outcome["microphone"] = nameOnChannel(2);
    }
    outcome["debug"] = QJsonArray::fromStringList(log.texts(QtDebugMsg));
    outcome["info"] = QJsonArray::fromStringList(log.texts(QtInfoMsg));
    outcome["critical"] = QJsonArray::fromStringList(log.texts(QtCriticalMsg));
    return outcome;
}

int playInThisProcess(const QString& scenario, const QString& outcomePath)
{
    QFile file(outcomePath);
    if (!file.open(QIODevice::WriteOnly))
        return 2;
    file.write(QJsonDocument(play(scenario)).toJson());
    return 0;
}

QStringList texts(const QJsonObject& outcome, const char* key)
{
    QStringList result;
    const QJsonArray values = outcome.value(QLatin1String(key)).toArray();
    for (const auto& value : values)
        result << value.toString();
    return result;
}

} // namespace

/// How the engine starts, with the plug-ins that stand beside the program.
class TestEngineStart : public QObject
{
    Q_OBJECT

private slots:
    void startsInThisOrder()
    {
        const QJsonObject outcome = run("whole");
        QVERIFY(outcome.value("initialized").toBool());
        const QString dir = QCoreApplication::applicationDirPath();
        const QString config = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/obs-cfg";
        QStringList expected{
            "obs_startup en-US " + config,
            QStringLiteral("obs_add_module_path %1/obs-data/obs-plugins/64bit %1/obs-data/data/obs-plugins/").arg(dir) +
                "%module%",
            "obs_add_data_path " + dir + "/obs-data/data/libobs/",
            "obs_reset_audio 48000 2",
            QStringLiteral(
                "obs_reset_video %1 30/1 640x480 to 640x480 format 1 adapter 0 gpu 1 space 2 range 2 scale 2")
                .arg(QLatin1String(CapturePlatform::current().graphicsModule)),
            "obs_find_modules2",
            "obs_post_load_modules",
            "obs_output_create ffmpeg_output adv_ffmpeg_output",
            "obs_get_output_source 2",
            "obs_source_create pulse_input_capture Default Mic/Aux",
            "obs_get_output_source 1",
            "obs_source_create pulse_output_capture Default Desktop Audio",
            "obs_fader_create 2",
            "obs_volmeter_create 2",
            "obs_fader_create 2",
            "obs_volmeter_create 2",
            "obs_fader_add_callback",
            "obs_volmeter_add_callback",
            "obs_fader_add_callback",
            "obs_volmeter_add_callback",
            "obs_fader_attach_source Default Mic/Aux",
            "obs_volmeter_attach_source Default Mic/Aux",
            "obs_fader_attach_source Default Desktop Audio",
            "obs_volmeter_attach_source Default Desktop Audio",
            "obs_set_output_source 2 Default Mic/Aux",
            "obs_set_output_source 1 Default Desktop Audio"};
        QStringList calls = texts(outcome, "calls");
        calls.removeIf([](const QString& call) {
            // The last two try a video of the program's own.
            return call.startsWith("obs_init_module") || call.startsWith("obs_audio_encoder_create") ||
                   call.contains("kestrano_video_probe") || call == "obs_output_start";
        });
        QCOMPARE(calls.join('\n'), expected.join('\n'));
        QVERIFY(texts(outcome, "info").contains("All OBS modules loaded successfully"));
        QVERIFY(texts(outcome, "critical").isEmpty());
        QCOMPARE(outcome.value("desktop").toString(), QStringLiteral("Default Desktop Audio"));
        QCOMPARE(outcome.value("microphone").toString(), QStringLiteral("Default Mic/Aux"));
    }

    /// The name without a version is a link of the development package, which users do not have.
    void graphicsModuleHasAVersionInItsName()
    {
        QVERIFY(QByteArray(CapturePlatform::current().graphicsModule).contains(".so."));
    }

    void makesTheApplicationsFolderWhereItIsMissing()
    {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        QVERIFY(QDir(folder).removeRecursively());
        QVERIFY(!QFileInfo::exists(folder));
        QVERIFY(run("whole").value("initialized").toBool());
        QVERIFY(QFileInfo(folder).isDir());
    }

    void opensOnlyTheModulesBesideTheProgram()
    {
        QStringList opened = texts(run("whole"), "calls").filter("obs_init_module");
        opened.sort();
        QCOMPARE(opened, (QStringList{"obs_init_module linux-capture.so", "obs_init_module linux-pulseaudio.so",
                                      "obs_init_module obs-ffmpeg.so", "obs_init_module obs-filters.so",
                                      "obs_init_module obs-transitions.so"}));
    }

    void failedSteps_data()
    {
        QTest::addColumn<QString>("failing");
        QTest::addColumn<QString>("critical");
        QTest::addColumn<QString>("lastCall");

        QTest::newRow("start-up") << "obs_startup"
                                  << "obs_startup failed!"
                                  << "obs_startup";
        QTest::newRow("audio") << "obs_reset_audio"
                               << "obs reset audio failed!"
                               << "obs_reset_audio";
        QTest::newRow("video") << "obs_reset_video"
                               << "obs reset video failed!with -3"
                               << "obs_reset_video";
        QTest::newRow("output mode") << "obs_output_create"
                                     << "obs create output mode failed!"
                                     << "obs_output_create";
    }

    void failedSteps()
    {
        QFETCH(const QString, failing);
        QFETCH(const QString, critical);
        QFETCH(const QString, lastCall);
        const QJsonObject outcome = run(failing);
        QCOMPARE(outcome.value("initialized"), QJsonValue(false));
        QCOMPARE(texts(outcome, "critical"), QStringList{critical});
        QVERIFY(texts(outcome, "calls").last().startsWith(lastCall));
    }

    void secondAttemptAfterAFailedVideoResetFailsAsWell()
    {
        // The engine itself runs by then, and its start-up is skipped; but there is no video to record.
        const QJsonObject outcome = run("video fails, then again");
        QCOMPARE(outcome.value("first"), QJsonValue(false));
        QCOMPARE(outcome.value("initialized"), QJsonValue(false));
        QCOMPARE(texts(outcome, "calls"), QStringList());
        QCOMPARE(texts(outcome, "critical"),
                 (QStringList{"obs reset video failed!with -3", "obs create output mode failed!"}));
        QCOMPARE(outcome.value("started"), QJsonValue(-1));
        QCOMPARE(outcome.value("scene"), QJsonValue(-1));
    }

    void failedTrackEncoderFailsTheStart()
    {
        const QJsonObject outcome = run("obs_audio_encoder_create adv_aac0");
        QCOMPARE(outcome.value("initialized"), QJsonValue(false));
        QCOMPARE(texts(outcome, "critical"), QStringList{"obs create output mode failed!"});
    }

    void failedModulesAreLoggedAndTolerated()
    {
        const QJsonObject outcome = run("obs_init_module");
        QVERIFY(outcome.value("initialized").toBool());
        const QStringList critical = texts(outcome, "critical");
        QCOMPARE(critical.first(), QStringLiteral("Failed to load 5 OBS modules:"));
        for (const char* const name :
             {"linux-capture", "linux-pulseaudio", "obs-ffmpeg", "obs-filters", "obs-transitions"}) {
            QVERIFY(critical.contains(QLatin1String("  - Failed module: ") + QLatin1String(name)));
            QVERIFY(critical.contains(QLatin1String("[ERROR] Failed to load OBS module: ") + QLatin1String(name)));
        }
        QVERIFY(!texts(outcome, "info").contains("All OBS modules loaded successfully"));
    }

    void whereAllModulesAreLoadedTheRecordOfTheLibraryIsLogged()
    {
        const QJsonObject outcome = run("load all modules");
        QVERIFY(outcome.value("initialized").toBool());
        QVERIFY(texts(outcome, "calls").contains("obs_load_all_modules2"));
        QVERIFY(!texts(outcome, "calls").contains("obs_find_modules2"));
        QCOMPARE(texts(outcome, "calls").filter("obs_module_failure_info_free"),
                 QStringList{"obs_module_failure_info_free 1"});
        const QStringList critical = texts(outcome, "critical");
        // The one that failed and the five that are not there.
        QCOMPARE(critical.first(), QStringLiteral("Failed to load 6 OBS modules:"));
        QCOMPARE(critical.at(1), QStringLiteral("  - Failed module: broken-plugin"));
        QCOMPARE(critical.at(2), QStringLiteral("[ERROR] Failed to load OBS module: broken-plugin"));
    }

    void neededModuleThatIsNotThereCountsAsFailed()
    {
        const QJsonObject outcome = run("missing module");
        QVERIFY(outcome.value("initialized").toBool());
        QCOMPARE(texts(outcome, "critical"),
                 (QStringList{"Failed to load 1 OBS modules:", "  - Failed module: obs-smoke",
                              "[ERROR] Failed to load OBS module: obs-smoke"}));
    }

    void missingTypeIsNamedWithWhatWillNotWork()
    {
        const QJsonObject outcome = run("missing type");
        QVERIFY(outcome.value("initialized").toBool());
        const QStringList critical = texts(outcome, "critical");
        QCOMPARE(critical.size(), 1);
        QCOMPARE(critical.filter("smoke_output").filter("no smoke can be sent").size(), 1);
    }

    void missingObsDataIsReportedButDoesNotFailTheStart()
    {
        // The same program, but nothing stands beside it.
        const QTemporaryDir folder;
        const QString copy = folder.filePath("test_enginestart");
        QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), copy));
        const QJsonObject outcome = run("whole", copy);
        QVERIFY(outcome.value("initialized").toBool());
        const QStringList critical = texts(outcome, "critical");
        QCOMPARE(critical.first(), QStringLiteral("Failed to load 5 OBS modules:"));
        QVERIFY(critical.contains("[ERROR] Failed to load OBS module: linux-capture"));
        QVERIFY(!critical.filter("ffmpeg_output").isEmpty());
    }

    void resetVideoBeforeInitializeSaysSoAndStillTries()
    {
        const QJsonObject outcome = run("reset video first");
        QCOMPARE(outcome.value("reset").toInt(), OBS_VIDEO_FAIL);
        QCOMPARE(texts(outcome, "debug").last(), QStringLiteral("obs not initialized!"));
        QCOMPARE(texts(outcome, "calls").filter("obs_reset_video").size(), 1);
    }

private:
    /// What came of a scenario; an empty object where its process did not end well.
    static QJsonObject run(const QString& scenario, const QString& program = QCoreApplication::applicationFilePath())
    {
        const QTemporaryDir folder;
        const QString outcomePath = folder.filePath("outcome.json");
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(program, {QStringLiteral("test_enginestart"), kScenarioOption, scenario, outcomePath});
        QFile file(outcomePath);
        if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit ||
            process.exitCode() != 0 || !file.open(QIODevice::ReadOnly))
            return {};
        return QJsonDocument::fromJson(file.readAll()).object();
    }
};

static int run(int argc, char* argv[])
{
    if (argc != 4 || qstrcmp(argv[1], kScenarioOption) != 0)
        return testrun::gui<TestEngineStart>(argc, argv);
    // A scenario plays in the profile of the test that started it.
    appidentity::apply();
    const QApplication application(argc, argv);
    return playInThisProcess(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
}

REGISTER_TEST(run);

#include "test_enginestart.moc"
