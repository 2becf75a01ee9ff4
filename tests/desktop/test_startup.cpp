// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/startedinstance.h"
#include "tests/support/testrun.h"
#include "tests/support/x11clients.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScreen>
#include <QSharedMemory>
#include <QTest>

#include <algorithm>
#include <csignal>

namespace {

constexpr int kTimeoutMs = 20'000;
constexpr char kSegmentKey[] = "TolvaranKestranoSingleInstance";

/// The window the window manager manages for the instance; id 0 while there is none.
x11clients::Window mainWindowOf(const StartedInstance& instance)
{
    const QList<x11clients::Window> windows = x11clients::windowsOf(instance.processId());
    return windows.value(0);
}

int countMessages(StartedInstance& instance, const QString& text)
{
    return static_cast<int>(instance.messages().filter(text).size());
}

/// The sizes of the System V segments of memory that the process made; they outlast it unless it removes them. Without
/// those that go as soon as nobody is attached.
QList<qint64> sizesOfSegmentsMadeBy(qint64 processId)
{
    enum Column
    {
        Mode = 2,
        Size = 3,
        Creator = 4
    };
    constexpr int kGoesWithTheLast = 01000;
    QFile table("/proc/sysvipc/shm");
    if (!table.open(QIODevice::ReadOnly))
        return {-1};
    QList<qint64> sizes;
    const QStringList lines = QString::fromLatin1(table.readAll()).split(u'\n');
    for (const QString& line : lines) {
        const QStringList row = line.simplified().split(u' ');
        if (row.value(Creator).toLongLong() == processId && (row.value(Mode).toInt(nullptr, 8) & kGoesWithTheLast) == 0)
            sizes.append(row.value(Size).toLongLong());
    }
    return sizes;
}

/// What an image of the whole screen takes.
qint64 screenBytes()
{
    const QSize size = QGuiApplication::primaryScreen()->size();
    return qint64{4} * size.width() * size.height();
}

} // namespace

/// The program as a user starts it: for the first time and again, after a crash, and in broken surroundings.
class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void theStepsComeInTheirOrder()
    {
        const Profile profile;
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        QVERIFY2(instance.waitForMessage("OBS initialized successfully"), qPrintable(instance.transcript()));
        instance.sendSignal(SIGTERM);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        QCOMPARE(instance.exitCode(), 0);
        const QString path = profile.logFolder().filePath(profile.logFiles().value(0));
        const QStringList steps{"=== Application Started ===",
                                "Log file initialized: " + path,
                                "Logger initialized successfully",
                                "Log file: " + path,
                                "Application starting...",
                                "System locale: C",
                                "Loaded fallback translation (en_US)",
                                "Creating main window...",
                                "Main window displayed",
                                "Stored window handle and process ID in shared memory",
                                "OBS initialized successfully",
                                "Application exiting..."};
        QStringList logged;
        for (const QString& message : profile.loggedMessages()) {
            if (steps.contains(message))
                logged.append(message);
        }
        QCOMPARE(logged, steps);
    }

    void theWindowHasTheProgramsIcon()
    {
        const Profile profile;
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(instance).id != 0, kTimeoutMs);
        const QList<uint32_t> icon = x11clients::iconOf(mainWindowOf(instance).id);
        QVERIFY(icon.value(0) >= 16 && icon.value(1) >= 16);
        // Pixels that are not all transparent.
        QVERIFY(std::any_of(icon.begin() + 2, icon.end(), [](uint32_t pixel) { return pixel != 0; }));
    }

    void aFractionOfAScaleFactorIsNotRounded()
    {
        QList<double> widths;
        for (const char* const factor : {"1", "1.25"}) {
            Profile profile;
            profile.environment.insert("QT_SCALE_FACTOR", factor);
            StartedInstance instance(profile);
            QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
            QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(instance).id != 0, kTimeoutMs);
            widths.append(mainWindowOf(instance).geometry.width());
        }
        QVERIFY2(qAbs(widths.at(1) - 1.25 * widths.at(0)) < 2,
                 qPrintable(QString("%1 and %2").arg(widths.at(0)).arg(widths.at(1))));
    }

    void eachStartHasALogFileOfItsOwn()
    {
        const Profile profile;
        QVERIFY(!profile.logFolder().exists());
        for (int start = 1; start <= 2; ++start) {
            StartedInstance instance(profile);
            QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
            QCOMPARE(profile.logFiles().size(), start);
            instance.sendSignal(SIGTERM);
            QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
            // File names have seconds.
            const QTime second = QTime::currentTime();
            QTRY_VERIFY(QTime::currentTime().second() != second.second());
        }
    }

    void anUnknownStoredLanguageFallsBackToEnglish()
    {
        const Profile profile;
        profile.writeSettings("[general]\nfirstRun=false\nlanguage=\"fr_FR\"\n");
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        QCOMPARE(countMessages(instance, "Loaded fallback translation (en_US)"), 1);
        QCOMPARE(countMessages(instance, "System locale:"), 0);
        instance.sendSignal(SIGTERM);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        QCOMPARE(profile.settings().value("general/language").toString(), QString("fr_FR"));
    }

    void theSecondRunUsesTheStoredLanguage()
    {
        Profile profile;
        profile.environment.insert("LC_ALL", "sv_SE.UTF-8");
        for (const char* const expected : {"System locale: sv_SE", "Loaded translation for: en_US"}) {
            StartedInstance instance(profile);
            QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
            QCOMPARE(countMessages(instance, expected), 1);
            // There is none for the system's; the fallback is stored.
            QCOMPARE(countMessages(instance, "Loaded fallback translation (en_US)"),
                     expected == QLatin1String("System locale: sv_SE") ? 1 : 0);
            instance.sendSignal(SIGTERM);
            QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        }
        QCOMPARE(profile.settings().value("general/language").toString(), QString("en_US"));
    }

    void aFreshProfileGetsAllFifteenSettings()
    {
        const Profile profile;
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        instance.sendSignal(SIGTERM);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        const QMap<QString, QVariant> settings = profile.settings();
        QCOMPARE(settings.size(), 15);
        QCOMPARE(settings.value("general/firstRun"), QVariant(false));
        QCOMPARE(settings.value("recording/webcamSwitch"), QVariant(false));
        QCOMPARE(settings.value("recording/format"), QVariant(QString("MP4")));
    }

    void wrongTypesUnderEveryKeyAreSurvived()
    {
        const QByteArray value("@Variant(\\0\\0\\0\\x7f)");
        const Profile profile;
        QByteArray text;
        for (const auto& [group, keys] : QList<std::pair<QByteArray, QList<QByteArray>>>{
                 {"general", {"language"}},
                 {"hotkeys", {"recording", "screenshot"}},
                 {"mouse", {"showCursor", "showHighlight", "switch"}},
                 {"recording",
                  {"format", "micSwitch", "saveLocation", "screenSwitch", "speakerSwitch", "webcamSwitch"}},
                 {"screenshot", {"format", "saveLocation"}}}) {
            text += '[' + group + "]\n" + (group == "general" ? "firstRun=false\n" : "");
            for (const QByteArray& key : keys)
                text += key + '=' + value + '\n';
        }
        profile.writeSettings(text);
        StartedInstance instance(profile);
        // The switches are restored once the engine is there.
        QVERIFY2(instance.waitForMessage("OBS initialized successfully"), qPrintable(instance.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(instance).id != 0, kTimeoutMs);
        QCOMPARE(countMessages(instance, "Loaded fallback translation (en_US)"), 1);
        instance.sendSignal(SIGTERM);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        QCOMPARE(instance.exitCode(), 0);
        QCOMPARE(profile.settings().size(), 15);
    }

    void aStoredWebcamSwitchIsNeitherRestoredNorWritten()
    {
        const Profile profile;
        profile.writeSettings("[recording]\nwebcamSwitch=true\n");
        StartedInstance instance(profile);
        QVERIFY2(instance.waitForMessage("OBS initialized successfully"), qPrintable(instance.transcript()));
        // The webcam has a window of its own.
        QCOMPARE(x11clients::windowsOf(instance.processId()).size(), 1);
        instance.sendSignal(SIGTERM);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        QCOMPARE(profile.settings().value("recording/webcamSwitch"), QVariant(true));
    }

    void aLogFolderThatCannotBeMadeIsSaidOnStandardError()
    {
        const Profile profile;
        QVERIFY(QDir().mkpath(QFileInfo(profile.logFolder().path()).path()));
        QFile blocker(profile.logFolder().path());
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        QVERIFY(instance.messages().contains("Failed to initialize logger"));
        QVERIFY(countMessages(instance, "Failed to open log file:") >= 1);
    }

    void settingsThatCannotBeWrittenAreSaidInTheLog()
    {
        const Profile profile;
        QFile blocker(QFileInfo(profile.settingsPath()).path());
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        QCOMPARE(profile.loggedMessages().filter("cannot be written").size(), 1);
    }

    void anEndAskedForBySignalIsOrderly_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
        QTest::newRow("SIGQUIT") << SIGQUIT;
    }

    void anEndAskedForBySignalIsOrderly()
    {
        QFETCH(const int, signal);
        const Profile profile;
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        // Into the event loop, which starts the engine.
        QVERIFY2(instance.waitForMessage("OBS initialized successfully"), qPrintable(instance.transcript()));
        instance.sendSignal(signal);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        QCOMPARE(instance.exitCode(), 0);
        QVERIFY(profile.loggedMessages().contains("Application exiting..."));
    }

    void anOrderlyEndLeavesNoSharedMemoryBehind()
    {
        Profile profile;
        // Without it no segment has an image of the screen.
        profile.environment.insert(QStringLiteral("KESTRANO_CAPTURE"), QStringLiteral("scene"));
        StartedInstance instance(profile);
        QVERIFY2(instance.waitForMessage("OBS initialized successfully"), qPrintable(instance.transcript()));
        const qint64 processId = instance.processId();
        QTRY_VERIFY_WITH_TIMEOUT(sizesOfSegmentsMadeBy(processId).contains(screenBytes()), kTimeoutMs);
        instance.sendSignal(SIGTERM);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        QCOMPARE(sizesOfSegmentsMadeBy(processId), QList<qint64>());
    }

    void closingTheWindowEndsTheProgram()
    {
        const Profile profile;
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(instance).id != 0, kTimeoutMs);
        x11clients::close(mainWindowOf(instance).id);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        QCOMPARE(instance.exitCode(), 0);
        QVERIFY(profile.loggedMessages().contains("Application exiting..."));

        const InTemporaryFolderOf profilesFolder(profile);
        QSharedMemory segment(kSegmentKey);
        QVERIFY(!segment.attach());
        QVERIFY(!QFile::exists(QSharedMemory(kSegmentKey).nativeKey()));
        StartedInstance next(profile);
        QVERIFY2(next.waitUntilPublished(), qPrintable(next.transcript()));
    }

    void aCrashLeavesAReportNextToTheLog()
    {
        const Profile profile;
        StartedInstance instance(profile);
        QVERIFY2(instance.waitUntilPublished(), qPrintable(instance.transcript()));
        instance.sendSignal(SIGSEGV);
        QVERIFY2(instance.waitUntilEnded(), qPrintable(instance.transcript()));
        QCOMPARE(instance.exitCode(), -1);
        const QStringList reports = profile.logFolder().entryList({"crash_*.dmp"}, QDir::Files);
        QCOMPARE(reports.size(), 1);
        QVERIFY(QRegularExpression("^crash_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d\\.dmp$")
                    .match(reports.first())
                    .hasMatch());
        QFile report(profile.logFolder().filePath(reports.first()));
        QVERIFY(report.open(QIODevice::ReadOnly));
        QVERIFY(report.readAll().endsWith("End of report\n"));
    }
};

REGISTER_TEST(testrun::gui<TestStartup>);
#include "test_startup.moc"
