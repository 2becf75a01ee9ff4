#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpicture.h"
#include "tests/support/testrun.h"
#include "tests/support/testtone.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <unistd.h>

namespace {

const auto kHotkey = QStringLiteral("F9");
const auto kMp4 = QStringLiteral("mp4");
const auto kStarted = QStringLiteral("Recording started...");
const auto kStopped = QStringLiteral("Recording stopped...");
constexpr int kShortMs = 1500;
constexpr int kCountdownMs = 3000;
constexpr int kWindowTimeoutMs = 15'000;
constexpr int kMessageTimeoutMs = 60'000;

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files, QDir::Name);
}

bool isPlayable(const QString& path)
{
    const MediaFile file(path);
    return file.isReadable() && file.video() && !file.video()->frameSeconds.isEmpty();
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qsizetype countMessages(ProgramUnderTest& program, const QString& text)
{
    const auto& messages = program.messages();
    return std::count_if(messages.begin(), messages.end(),
                         [&](const ProgramUnderTest::Line& line) { return line.text.contains(text); });
}

/// A tone that the microphone hears, for as long as the object lives.
class VoiceAtTheMicrophone
{
public:
    static constexpr int kFrequencyHz = 720;

    VoiceAtTheMicrophone()
    {
        const QString tone = QStringLiteral("sine=frequency=%1:sample_rate=48000").arg(kFrequencyHz);
        m_player.start(QStringLiteral("ffmpeg"),
                       {"-hide_banner", "-nostdin", "-re", "-f", "lavfi", "-i", tone, "-f", "pulse", "-device",
                        qEnvironmentVariable("KESTRANO_TEST_MICROPHONE_SINK"), "voice"});
    }

    ~VoiceAtTheMicrophone()
    {
        m_player.kill();
        m_player.waitForFinished();
    }

    bool isHeard() { return m_player.waitForStarted() && m_player.state() == QProcess::Running; }

private:
    QProcess m_player;
};

} // namespace

/// How recordings begin and end, on the running program.
class TestSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_performance.begin(), QString()); }

    void theHotkeyCancelsTheCountdown();
    void anEmptyNameBecomesTheTime();
    void aTypedNameLosesItsBlanks();
    void aTypedNameStaysInTheFolder();
    void twoDotsCountAsAnEmptyName();
    void aMissingFolderIsMadeWithItsParents();
    void aTakenNameGetsANumber();
    void aRecordingIsInTheListOfFilesFromItsStartOn();
    void aFolderThatCannotBeMadeEndsInIdleWithAReason();
    void aFolderThatTakesNoFilesEndsInIdleWithAReason();
    void aFailedRecordingLeavesTheNextOneWhole();
    void aFailedPreparationEndsInIdleWithAReason();
    void aFullDiskEndsTheRecordingWithAReason();
    void threeRecordingsInARow();
    void theMicrophoneIsHeardWhereItIsSwitchedOn_data();
    void theMicrophoneIsHeardWhereItIsSwitchedOn();
    void aPrimaryScreenOffTheOriginIsRecorded();
    void closingTheWindowWhileRecordingFinishesTheFile();
    void terminatedWhileRecordingTheProgramFinishesTheFile();
    void closingTheWindowDuringTheCountdownRecordsNothing();
    void aRecordingStoppedAtOnceIsPlayable();
    void theHotkeyHammeredLeavesPlayableFiles();

private:
    void expectNothingRecorded(ProgramUnderTest& program, const QString& reason);

    Performance m_performance;
};

void TestSession::theHotkeyCancelsTheCountdown()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    ProgramUnderTest::pressKey(kHotkey);
    QVERIFY(program.mainWindow(true, kWindowTimeoutMs).has_value());
    ProgramUnderTest::pressKey(kHotkey);
    QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
    QTest::qWait(kCountdownMs);
    QCOMPARE(countMessages(program, kStarted), 0);
    QVERIFY(!QFileInfo::exists(program.saveFolder()));
    // The cancelled one leaves nothing behind that would keep the next one from recording.
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QVERIFY(isPlayable(take.path));
}

void TestSession::anEmptyNameBecomesTheTime()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const QStringList files = filesIn(program.saveFolder());
    QCOMPARE(files.size(), 1);
    const QRegularExpression pattern(QStringLiteral("^Recording_\\d{4}_\\d{2}_\\d{2}_\\d{2}-\\d{2}-\\d{2}\\.mp4$"));
    QVERIFY2(pattern.match(files.constFirst()).hasMatch(), qPrintable(files.constFirst()));
}

void TestSession::aTypedNameLosesItsBlanks()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(goBackFromRecordButton(program, kStepsToName));
    ProgramUnderTest::typeText(QStringLiteral("  demo  "));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QCOMPARE(filesIn(program.saveFolder()), QStringList{QStringLiteral("demo.mp4")});
    QVERIFY(isPlayable(take.path));
}

void TestSession::aTypedNameStaysInTheFolder()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(goBackFromRecordButton(program, kStepsToName));
    ProgramUnderTest::typeText(QStringLiteral("a/../b\\c:d"));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const QStringList files = filesIn(program.saveFolder());
    QCOMPARE(files.size(), 1);
    const QString name = QFileInfo(files.constFirst()).completeBaseName();
    QVERIFY2(name.contains(QLatin1String("a..bcd")), qPrintable(name));
    QVERIFY2(!name.contains(QRegularExpression(QStringLiteral("[/\\\\:]"))), qPrintable(name));
    QVERIFY(QDir(program.saveFolder()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).isEmpty());
}

void TestSession::twoDotsCountAsAnEmptyName()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(goBackFromRecordButton(program, kStepsToName));
    ProgramUnderTest::typeText(QStringLiteral(".."));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const QStringList files = filesIn(program.saveFolder());
    QCOMPARE(files.size(), 1);
    QVERIFY2(files.constFirst().startsWith(QLatin1String("Recording_")), qPrintable(files.constFirst()));
}

void TestSession::aMissingFolderIsMadeWithItsParents()
{
    ProgramUnderTest program;
    const QString folder = program.profile().filePath(QStringLiteral("not/there/yet, with blanks"));
    program.setSetting(QStringLiteral("recording/saveLocation"), folder);
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(!QFileInfo::exists(program.profile().filePath(QStringLiteral("not"))));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QCOMPARE(filesIn(folder).size(), 1);
    QVERIFY(isPlayable(take.path));
}

void TestSession::aTakenNameGetsANumber()
{
    ProgramUnderTest program;
    const QString first = program.saveFolder() + QLatin1String("/demo.mp4");
    const QByteArray precious("an earlier recording");
    QVERIFY(QDir().mkpath(program.saveFolder()));
    QFile earlier(first);
    QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write(precious) == precious.size());
    earlier.close();
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(goBackFromRecordButton(program, kStepsToName));
    ProgramUnderTest::typeText(QStringLiteral("demo"));
    for (const char* name : {"demo (2).mp4", "demo (3).mp4"}) {
        const Take take = record(program, kMp4, kShortMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QCOMPARE(QFileInfo(take.path).fileName(), QLatin1String(name));
        QVERIFY(isPlayable(take.path));
    }
    QCOMPARE(contentOf(first), precious);
    const QStringList expected{QStringLiteral("demo (2).mp4"), QStringLiteral("demo (3).mp4"),
                               QStringLiteral("demo.mp4")};
    QCOMPARE(filesIn(program.saveFolder()), expected);
}

void TestSession::aRecordingIsInTheListOfFilesFromItsStartOn()
{
    ProgramUnderTest program;
    const auto listed = [&program] {
        const QByteArray list = contentOf(program.profile().filePath("data/Tolvaran/Kestrano/file_data.json"));
        return QJsonDocument::fromJson(list).array().first().toObject();
    };
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(listed().isEmpty());
    Take take = beginTake(program, kMp4);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QTRY_COMPARE(listed().value("filepath").toString(), take.path);
    QCOMPARE(listed().value("properties").toObject().value("type").toString(), QStringLiteral("video"));
    // What a crash leaves behind is in the list as well.
    program.kill();
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QCOMPARE(listed().value("filepath").toString(), take.path);
}

void TestSession::expectNothingRecorded(ProgramUnderTest& program, const QString& reason)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        const qsizetype from = program.messages().size();
        ProgramUnderTest::pressKey(kHotkey);
        QVERIFY2(program.mainWindow(true, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
        QVERIFY2(program.waitForMessage(reason, kMessageTimeoutMs, from).has_value(), qPrintable(program.transcript()));
        QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
    }
    QVERIFY(program.logText().contains(reason));
}

void TestSession::aFolderThatCannotBeMadeEndsInIdleWithAReason()
{
    // Root may write everywhere; a file where a folder should be stops root as well.
    ProgramUnderTest program;
    QFile inTheWay(program.profile().filePath(QStringLiteral("file")));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    program.setSetting(QStringLiteral("recording/saveLocation"), inTheWay.fileName() + QLatin1String("/below"));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    expectNothingRecorded(program, QStringLiteral("could not be opened for writing"));
}

void TestSession::aFolderThatTakesNoFilesEndsInIdleWithAReason()
{
    ProgramUnderTest program;
    program.setSetting(QStringLiteral("recording/saveLocation"), QStringLiteral("/proc/self"));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    expectNothingRecorded(program, QStringLiteral("could not be opened for writing"));
}

void TestSession::aFailedRecordingLeavesTheNextOneWhole()
{
    ProgramUnderTest program;
    QFile inTheWay(program.saveFolder());
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    expectNothingRecorded(program, QStringLiteral("could not be opened for writing"));
    QVERIFY(inTheWay.remove());
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QVERIFY(isPlayable(take.path));
}

void TestSession::aFailedPreparationEndsInIdleWithAReason()
{
    // The same program beside engine data that lack what captures the screen.
    const QTemporaryDir folder;
    const QDir original(QCoreApplication::applicationDirPath());
    const QString plugins = QStringLiteral("obs-data/obs-plugins/64bit");
    const QDir copy(folder.path());
    QVERIFY(QFile::copy(original.filePath(QStringLiteral("kestrano")), copy.filePath(QStringLiteral("kestrano"))));
    QVERIFY(copy.mkpath(plugins));
    QVERIFY(QFile::link(original.filePath(QStringLiteral("obs-data/data")),
                        copy.filePath(QStringLiteral("obs-data/data"))));
    for (const QFileInfo& plugin : QDir(original.filePath(plugins)).entryInfoList({QStringLiteral("*.so")}))
        if (!plugin.fileName().contains(QLatin1String("linux-capture")))
            QVERIFY(
                QFile::link(plugin.absoluteFilePath(), copy.filePath(plugins + QLatin1Char('/') + plugin.fileName())));
    ProgramUnderTest program(copy.filePath(QStringLiteral("kestrano")));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const QString scene = QStringLiteral("The capture scene could not be made: code -3");
    QVERIFY2(program.waitForMessage(scene, kMessageTimeoutMs).has_value(), qPrintable(program.transcript()));
    expectNothingRecorded(program, QStringLiteral("Failed to prepare recording"));
    QCOMPARE(countMessages(program, kStarted), 0);
    QVERIFY(!QFileInfo::exists(program.saveFolder()));
}

void TestSession::aFullDiskEndsTheRecordingWithAReason()
{
    ProgramUnderTest program;
    const QString disk = program.profile().filePath(QStringLiteral("disk"));
    QVERIFY(QDir().mkpath(disk));
    program.setSetting(QStringLiteral("recording/saveLocation"), disk);
    // A disk of 200 KiB that only the program sees; without root in a user's namespace of its own.
    const QStringList unshare = geteuid() == 0 ? QStringList{"unshare", "--mount"}
                                               : QStringList{"unshare", "--user", "--map-root-user", "--mount"};
    program.startThrough(unshare +
                         QStringList{"sh", "-c", "mount -t tmpfs -o size=200k tmpfs \"$0\" && exec \"$1\"", disk});
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const qsizetype from = program.messages().size();
    ProgramUnderTest::pressKey(kHotkey);
    const auto reason =
        program.waitForMessage(QStringLiteral("The recording ended by itself"), kMessageTimeoutMs, from);
    QVERIFY2(reason.has_value(), qPrintable(program.transcript()));
    QVERIFY2(reason->text.contains(QLatin1String("disk is full")), qPrintable(reason->text));
    QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
    QVERIFY(program.isRunning());
}

void TestSession::threeRecordingsInARow()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    for (int number = 1; number <= 3; ++number) {
        const Take take = record(program, kMp4, kShortMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QVERIFY2(isPlayable(take.path), qPrintable(take.path));
        QCOMPARE(filesIn(program.saveFolder()).size(), number);
    }
}

void TestSession::theMicrophoneIsHeardWhereItIsSwitchedOn_data()
{
    QTest::addColumn<bool>("on");
    QTest::newRow("on") << true;
    QTest::newRow("off") << false;
}

void TestSession::theMicrophoneIsHeardWhereItIsSwitchedOn()
{
    QFETCH(const bool, on);
    VoiceAtTheMicrophone voice;
    QVERIFY(voice.isHeard());
    ProgramUnderTest program;
    program.setSetting(QStringLiteral("recording/micSwitch"), on);
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = record(program, kMp4, 2 * kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QVERIFY(voice.isHeard());
    constexpr int kSpan = testtone::kSamplesPerSecond / 2;
    const QList<float> samples = MediaFile(take.path).samples(testtone::kSamplesPerSecond);
    const auto loudness = [&samples](double frequencyHz) {
        return testtone::amplitude(samples, samples.size() / 2, kSpan, frequencyHz, testtone::kSamplesPerSecond);
    };
    const double heard = loudness(VoiceAtTheMicrophone::kFrequencyHz);
    QVERIFY2(on ? heard > 0.05 : heard < 0.005, qPrintable(QString::number(heard)));
    // The sound of the computer is in the file beside it.
    QVERIFY2(loudness(testtone::kBaseFrequencyHz) > 0.05, qPrintable(QString::number(loudness(440.0))));
}

void TestSession::aPrimaryScreenOffTheOriginIsRecorded()
{
    const TwoScreens screens({640, 360});
    QVERIFY(screens.areMade());
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const MediaFile file(take.path);
    QVERIFY2(file.isReadable() && file.video(), qPrintable(file.error()));
    QCOMPARE(file.video()->size, screens.primary().size());
    const QImage picture = file.pictureAt(file.durationSeconds() / 2);
    int compared = 0;
    const QList<TestPicture::Patch> patches = TestPicture({640, 360}).patches();
    for (const TestPicture::Patch& patch : patches) {
        if (!screens.primary().contains(patch.area))
            continue;
        const QColor found = meanColour(picture, patch.area.center() - screens.primary().topLeft(), 4);
        QVERIFY2(colourDistance(found, patch.colour) <= 12,
                 qPrintable(patch.colour.name() + QLatin1String(" came out as ") + found.name()));
        ++compared;
    }
    QCOMPARE(compared, 4);
}

void TestSession::closingTheWindowWhileRecordingFinishesTheFile()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = beginTake(program, kMp4);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QTest::qWait(kShortMs);
    const auto window = program.mainWindow(true, kWindowTimeoutMs);
    QVERIFY(window.has_value());
    x11clients::close(window->id);
    QVERIFY2(program.waitUntilEnded(kMessageTimeoutMs), qPrintable(program.transcript()));
    QVERIFY2(program.endedWell(), qPrintable(program.transcript()));
    QVERIFY(isPlayable(take.path));
}

void TestSession::terminatedWhileRecordingTheProgramFinishesTheFile()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = beginTake(program, kMp4);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QTest::qWait(kShortMs);
    QCOMPARE(kill(static_cast<pid_t>(program.processId()), SIGTERM), 0);
    QVERIFY2(program.waitUntilEnded(kMessageTimeoutMs), qPrintable(program.transcript()));
    QVERIFY2(program.endedWell(), qPrintable(program.transcript()));
    QVERIFY(isPlayable(take.path));
}

void TestSession::closingTheWindowDuringTheCountdownRecordsNothing()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    ProgramUnderTest::pressKey(kHotkey);
    const auto window = program.mainWindow(true, kWindowTimeoutMs);
    QVERIFY(window.has_value());
    x11clients::close(window->id);
    QVERIFY2(program.waitUntilEnded(kMessageTimeoutMs), qPrintable(program.transcript()));
    QVERIFY2(program.endedWell(), qPrintable(program.transcript()));
    QCOMPARE(countMessages(program, kStarted), 0);
    QVERIFY(!QFileInfo::exists(program.saveFolder()));
}

void TestSession::aRecordingStoppedAtOnceIsPlayable()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    Take take = beginTake(program, kMp4);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    endTake(program, take);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QVERIFY(take.stopRequestedNs - take.startedNs < 300'000'000);
    QVERIFY(isPlayable(take.path));
}

void TestSession::theHotkeyHammeredLeavesPlayableFiles()
{
    constexpr int kPresses = 20;
    constexpr int kLongestPauseMs = 2500;
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    for (int press = 0; press < kPresses; ++press) {
        ProgramUnderTest::pressKey(kHotkey);
        QTest::qWait(random.bounded(kLongestPauseMs));
        QVERIFY2(program.isRunning(), qPrintable(program.transcript()));
    }
    // What was begun last may still be counted down, and then runs until it is stopped.
    QTest::qWait(2 * kCountdownMs);
    if (countMessages(program, kStarted) > countMessages(program, kStopped))
        ProgramUnderTest::pressKey(kHotkey);
    QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
    QTRY_COMPARE_WITH_TIMEOUT(countMessages(program, kStopped), countMessages(program, kStarted), kWindowTimeoutMs);
    const QStringList files = filesIn(program.saveFolder());
    QCOMPARE(files.size(), countMessages(program, kStarted));
    for (const QString& name : files)
        QVERIFY2(isPlayable(program.saveFolder() + QLatin1Char('/') + name), qPrintable(name));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
}

REGISTER_TEST(testrun::core<TestSession>);
#include "test_session.moc"
