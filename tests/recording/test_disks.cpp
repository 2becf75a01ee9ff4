// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/mp4file.h"
#include "tests/recording/formatjudge.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <algorithm>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

constexpr int kMessageTimeoutMs = 60'000;
constexpr int kWindowTimeoutMs = 15'000;
constexpr int kRecordedMs = 4000;
constexpr double kNsPerSecond = 1e9;
/// What a disk that fills all at once may take from a recording.
constexpr double kMaxLossSeconds = 2.0;
constexpr qint64 kMegabyte = 1'000'000;

const auto kSaveLocation = QStringLiteral("recording/saveLocation");
const auto kFormat = QStringLiteral("recording/format");
const auto kShortened = QStringLiteral("Notice: The disk is nearly full: the recording was ended and is saved.");
const auto kSaved =
    QStringLiteral("Notice: The folder of the recording went away: what was recorded is saved in the default folder.");
const auto kMoved =
    QStringLiteral("Notice: The folder of the recording was moved: the recording was ended and is saved.");
const auto kReplaced = QStringLiteral("Notice: The save folder cannot be used: files go to the default folder.");

/// A program with a disk for its recordings that only it sees; without root in a user's namespace of its own.
class ProgramWithDisk : public ProgramUnderTest
{
public:
    explicit ProgramWithDisk(const QString& size)
    {
        profile().mkpath(QStringLiteral("disk"));
        setSetting(kSaveLocation, folder());
        const QString mount = QStringLiteral("mount -t tmpfs -o size=%1 tmpfs \"$0\" && exec \"$1\"").arg(size);
        const QStringList unshare = isRoot() ? QStringList{"unshare", "--mount"}
                                             : QStringList{"unshare", "--user", "--map-root-user", "--mount"};
        startThrough(unshare + QStringList{"sh", "-c", mount, folder()});
    }

    /// As the program names it.
    QString folder() const { return profile().filePath(QStringLiteral("disk")); }
    /// A path of the program as others reach it.
    QString seen(const QString& path) const { return QStringLiteral("/proc/%1/root%2").arg(processId()).arg(path); }

    qint64 freeBytes() const
    {
        struct statvfs status = {};
        return statvfs(QFile::encodeName(seen(folder())).constData(), &status) == 0
                   ? static_cast<qint64>(status.f_bavail) * static_cast<qint64>(status.f_frsize)
                   : -1;
    }

    /// Fills the disk but for so much, and to the last byte where that is 0.
    bool fill(qint64 leaveBytes) const
    {
        QFile filler(seen(folder() + QLatin1String("/filler")));
        if (!filler.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
            return false;
        const QByteArray block(qsizetype{64} * 1024, '\0');
        while (freeBytes() > leaveBytes)
            if (filler.write(block.constData(), qMin<qint64>(block.size(), freeBytes() - leaveBytes)) <= 0)
                break;
        return freeBytes() <= leaveBytes;
    }

    bool unmount() const
    {
        const QString id = QString::number(processId());
        const QStringList enter = isRoot() ? QStringList{"-t", id, "-m", "-r"}
                                           : QStringList{"-t", id, "-U", "-m", "-r", "--preserve-credentials"};
        return QProcess::execute(QStringLiteral("nsenter"), enter + QStringList{"umount", "-l", folder()}) == 0;
    }

private:
    static bool isRoot() { return geteuid() == 0; }
};

QString defaultFolder(const ProgramUnderTest& program)
{
    return program.profile().filePath(QStringLiteral("home/Videos/Kestrano"));
}

/// Where the newest entry of the list of files leads to.
QString listedPath(const ProgramUnderTest& program)
{
    QFile file(program.dataFolder().filePath(QStringLiteral("file_data.json")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).array().first().toObject().value("filepath").toString();
}

qsizetype countMessages(ProgramUnderTest& program, const QString& text)
{
    const auto& messages = program.messages();
    return std::count_if(messages.begin(), messages.end(),
                         [&](const ProgramUnderTest::Line& line) { return line.text.contains(text); });
}

/// How much of a recording is missing at a moment.
double lostSeconds(const formatjudge::Expected& expected, const MediaFile& file, const Take& take, int64_t untilNs)
{
    const MediaStream* const stream = *expected.videoCodec ? file.video() : file.audio();
    const double recorded = static_cast<double>(untilNs - take.startedNs) / kNsPerSecond;
    const double lasts = stream && !stream->frameSeconds.isEmpty() ? stream->frameSeconds.constLast() : 0;
    qInfo("%s: %.2f of %.2f s are there, %lld bytes", expected.name, lasts, recorded,
          static_cast<long long>(QFileInfo(file.path()).size()));
    return recorded - lasts;
}

/// Every format where all faults are asked for.
void addFormats(const QStringList& names)
{
    const bool isAll = qEnvironmentVariableIsSet("KESTRANO_ALL_KILLS");
    QTest::addColumn<int>("index");
    for (std::size_t index = 0; index < formatjudge::kFormats.size(); ++index)
        if (isAll || names.contains(QLatin1String(formatjudge::kFormats.at(index).name)))
            QTest::newRow(formatjudge::kFormats.at(index).name) << static_cast<int>(index);
}

} // namespace

/// Recordings whose disk gets full, or whose folder goes, or cannot be used.
class TestDisks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_performance.begin(), QString()); }

    void diskThatGetsFullEndsTheRecordingInOrder_data() { addFormats({"MP4", "AVI"}); }
    void diskThatGetsFullEndsTheRecordingInOrder()
    {
        QFETCH(const int, index);
        const formatjudge::Expected& expected = formatjudge::kFormats.at(static_cast<std::size_t>(index));
        ProgramWithDisk program(QStringLiteral("64m"));
        const Take take = beginRecording(program, expected);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kRecordedMs);
        const int64_t filledNs = monotonicNow();
        QVERIFY(program.fill(3 * kMegabyte));
        waitForEnd(program, kShortened);
        QVERIFY(program.logText().contains(QLatin1String("Warning: The recording is ended: the disk is nearly full")));
        QCOMPARE(countMessages(program, QStringLiteral("ended by itself")), 0);
        QVERIFY(program.waitForMessage(QStringLiteral("Recording stopped... 0"), kMessageTimeoutMs).has_value());
        const MediaFile file(program.seen(take.path));
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        QVERIFY(lostSeconds(expected, file, take, filledNs) < 0.5);
    }

    void diskThatFillsAllAtOnceTakesTheLastSecondsOnly_data() { addFormats({"MP4", "GIF", "MP3"}); }
    void diskThatFillsAllAtOnceTakesTheLastSecondsOnly()
    {
        QFETCH(const int, index);
        const formatjudge::Expected& expected = formatjudge::kFormats.at(static_cast<std::size_t>(index));
        ProgramWithDisk program(QStringLiteral("32m"));
        const Take take = beginRecording(program, expected);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kRecordedMs);
        const qsizetype before = program.messages().size();
        QVERIFY(program.fill(0));
        const int64_t filledNs = monotonicNow();
        // Either the watch or the output finds it first.
        waitForEnd(program, QStringLiteral("Notice: The disk is "), before);
        // A file that ends within the head of a fragment is mended in the background.
        QTRY_VERIFY_WITH_TIMEOUT(!MediaFile(program.seen(take.path)).streams().isEmpty(), kMessageTimeoutMs);
        const MediaFile file(program.seen(take.path));
        QVERIFY2(lostSeconds(expected, file, take, filledNs) < kMaxLossSeconds, qPrintable(file.error()));
    }

    void startWithLittleSpaceIsToldInMinutes()
    {
        ProgramWithDisk program(QStringLiteral("120m"));
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        Take take = beginTake(program, QStringLiteral("mp4"));
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QCOMPARE(
            countMessages(program, QStringLiteral("Notice: The disk is nearly full: there is room for about 3 min.")),
            1);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const MediaFile file(program.seen(take.path));
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
    }

    void startWithTooLittleSpaceStartsAndEnds()
    {
        ProgramWithDisk program(QStringLiteral("2m"));
        const Take take = beginRecording(program, formatjudge::kFormats.front());
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        waitForEnd(program, kShortened);
        QCOMPARE(countMessages(
                     program, QStringLiteral("Notice: The disk is nearly full: there is room for less than a minute.")),
                 1);
        const MediaFile file(program.seen(take.path));
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        QVERIFY(file.video() && !file.video()->frameSeconds.isEmpty());
    }

    void folderThatIsDeletedLeavesItsRecordingInTheDefaultFolder_data() { addFormats({"MP4", "GIF", "FLAC"}); }
    void folderThatIsDeletedLeavesItsRecordingInTheDefaultFolder()
    {
        QFETCH(const int, index);
        const formatjudge::Expected& expected = formatjudge::kFormats.at(static_cast<std::size_t>(index));
        ProgramUnderTest program;
        const Take take = beginRecording(program, expected);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kRecordedMs);
        const int64_t goneNs = monotonicNow();
        QVERIFY(QDir(program.saveFolder()).removeRecursively());
        judgeRescue(program, expected, take, goneNs);
        QVERIFY(!QFileInfo::exists(program.saveFolder()));
    }

    void folderThatIsUnmountedLeavesItsRecordingInTheDefaultFolder()
    {
        ProgramWithDisk program(QStringLiteral("64m"));
        const Take take = beginRecording(program, formatjudge::kFormats.front());
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kRecordedMs);
        const int64_t goneNs = monotonicNow();
        QVERIFY(program.unmount());
        judgeRescue(program, formatjudge::kFormats.front(), take, goneNs);
    }

    void folderThatIsMovedKeepsItsRecording()
    {
        ProgramUnderTest program;
        const Take take = beginRecording(program, formatjudge::kFormats.front());
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kRecordedMs);
        const int64_t goneNs = monotonicNow();
        const QString moved = program.profile().filePath(QStringLiteral("older videos"));
        QVERIFY(QDir().rename(program.saveFolder(), moved));
        waitForEnd(program, kMoved);
        const QString path = moved + QLatin1Char('/') + QFileInfo(take.path).fileName();
        QCOMPARE(listedPath(program), path);
        judgeFile(formatjudge::kFormats.front(), path, take, goneNs);
        QVERIFY(!QFileInfo::exists(defaultFolder(program)));
    }

    void saveFolderThatCannotBeUsedMeansTheDefaultOne_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::newRow("empty") << QString();
        QTest::newRow("relative") << "videos/of mine";
        QTest::newRow("root") << "/";
        QTest::newRow("not writable, not even for root") << "/proc/videos";
    }

    void saveFolderThatCannotBeUsedMeansTheDefaultOne()
    {
        QFETCH(const QString, stored);
        ProgramUnderTest program;
        program.setSetting(kSaveLocation, stored);
        program.setSetting(QStringLiteral("screenshot/saveLocation"), stored);
        const QString workingFolder = startInFolder(program);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const Take take = record(program, QStringLiteral("mp4"), 500);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QCOMPARE(countMessages(program, kReplaced), 1);
        QCOMPARE(QFileInfo(take.path).path(), defaultFolder(program));
        const MediaFile file(take.path);
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        takeScreenshot(program);
        QCOMPARE(countMessages(program, kReplaced), 2);
        QVERIFY(QDir(workingFolder).isEmpty());
        QCOMPARE(QDir(QStringLiteral("/")).entryList({"Recording_*", "Screenshot_*"}), QStringList());
        // The setting is the user's.
        QFile settings(program.profile().filePath(QStringLiteral("config/Tolvaran/Kestrano.conf")));
        QVERIFY(settings.open(QIODevice::ReadOnly));
        QCOMPARE(settings.readAll().count("saveLocation=\"" + stored.toUtf8() + "\"\n"), 2);
    }

private:
    static Take beginRecording(ProgramUnderTest& program, const formatjudge::Expected& expected)
    {
        program.setSetting(kFormat, QLatin1String(expected.name));
        if (program.startAndWaitUntilReady())
            return beginTake(program, QLatin1String(expected.extension));
        Take take;
        take.failure = program.transcript();
        return take;
    }

    /// The program tells why, and its window comes back.
    static void waitForEnd(ProgramUnderTest& program, const QString& notice, qsizetype from = 0)
    {
        QVERIFY2(program.waitForMessage(notice, kMessageTimeoutMs, from).has_value(), qPrintable(program.transcript()));
        QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
    }

    static void judgeFile(const formatjudge::Expected& expected, const QString& path, const Take& take, int64_t goneNs)
    {
        if (QLatin1String(expected.extension) == QLatin1String("mp4"))
            QTRY_VERIFY_WITH_TIMEOUT(!isFragmentedMp4(path), kMessageTimeoutMs);
        const MediaFile file(path);
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        QVERIFY(lostSeconds(expected, file, take, goneNs) < 0.5);
    }

    static void judgeRescue(ProgramUnderTest& program, const formatjudge::Expected& expected, const Take& take,
                            int64_t goneNs)
    {
        waitForEnd(program, kSaved);
        const auto noticed = program.waitForMessage(QStringLiteral("its file is no longer in its folder"), 0);
        QVERIFY2(noticed.has_value(), qPrintable(program.transcript()));
        qInfo("noticed after %.2f s", static_cast<double>(noticed->monotonicNs - goneNs) / kNsPerSecond);
        const QString path = defaultFolder(program) + QLatin1Char('/') + QFileInfo(take.path).fileName();
        QCOMPARE(listedPath(program), path);
        judgeFile(expected, path, take, goneNs);
        // The entry stays.
        program.kill();
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QCOMPARE(listedPath(program), path);
    }

    /// Where a relative path would lead to.
    static QString startInFolder(ProgramUnderTest& program)
    {
        QString folder = program.profile().filePath(QStringLiteral("working"));
        QDir().mkpath(folder);
        program.startThrough({"sh", "-c", "cd \"$0\" && exec \"$1\"", folder});
        return folder;
    }

    static void takeScreenshot(ProgramUnderTest& program)
    {
        const QDir folder(program.profile().filePath(QStringLiteral("home/Pictures/Kestrano")));
        ProgramUnderTest::pressKey(QStringLiteral("F10"));
        QVERIFY2(program.mainWindow(true, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
        // The frame gets the keyboard some time after it is shown.
        for (int attempt = 0; attempt < 30 && folder.entryList({"Screenshot_*"}).isEmpty(); ++attempt) {
            ProgramUnderTest::pressKey(QStringLiteral("Return"));
            QTest::qWait(500);
        }
        QCOMPARE(folder.entryList({"Screenshot_*"}).size(), 1);
    }

    Performance m_performance;
};

REGISTER_TEST(testrun::core<TestDisks>);

#include "test_disks.moc"
