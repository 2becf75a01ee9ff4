// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/startedinstance.h"
#include "tests/support/testrun.h"
#include "tests/support/watchedwindow.h"
#include "tests/support/x11clients.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSharedMemory>
#include <QTest>

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

/// What another user leaves in the folder for temporary files, under the names of the instances in it.
using Leave = std::function<bool()>;

Q_DECLARE_METATYPE(Leave)

namespace {

constexpr uint kUser = 65534;
constexpr int kTimeoutMs = 20'000;
constexpr char kKey[] = "TolvaranKestranoSingleInstance";
constexpr mode_t kForEverybody = 0666;

/// In the temporary folder of this process.
QByteArray lockFile(const char* gate)
{
    return QFile::encodeName(QStringLiteral("%1/%2%3-%4.lock").arg(QDir::tempPath(), kKey, gate).arg(kUser));
}

QByteArray keyFile()
{
    return QFile::encodeName(QSharedMemory(kKey).nativeKey());
}

bool makeFile(const QByteArray& path, mode_t mode)
{
    const int file = open(path.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
    return file >= 0 && fchmod(file, mode) == 0 && close(file) == 0;
}

bool makeLockFiles(mode_t mode)
{
    return makeFile(lockFile(""), mode) && makeFile(lockFile("-gate"), mode);
}

/// The segment's number in the system, -1 where there is none.
int segment(int flags, int mode)
{
    const key_t number = ftok(keyFile().constData(), 'Q');
    return number == -1 ? -1 : shmget(number, 16, flags | mode);
}

/// With a window that is there, as a running instance would have it.
bool makeSegment(int mode, quint64 window)
{
    if (!makeFile(keyFile(), kForEverybody))
        return false;
    void* const memory = shmat(segment(IPC_CREAT | IPC_EXCL, mode), nullptr, 0);
    if (reinterpret_cast<std::intptr_t>(memory) == -1)
        return false;
    std::memcpy(memory, &window, sizeof window);
    return true;
}

struct RemoveSegment
{
    ~RemoveSegment() { shmctl(segment(0, 0), IPC_RMID, nullptr); }
};

int modeOf(const QString& path)
{
    struct stat status = {};
    return lstat(QFile::encodeName(path).constData(), &status) == 0 ? static_cast<int>(status.st_mode & 0777U) : -1;
}

/// What is the program's own has to be for the user alone.
bool isOwn(const QString& path)
{
    return path.contains(QLatin1String("/Tolvaran/")) || path.contains(QLatin1String(kKey));
}

} // namespace

/// Two users of one computer: one runs the program, the other one, who is the test, is in the way or curious.
class TestStrangers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (geteuid() != 0)
            QSKIP("Only root can be two users");
        // Of the instances, which inherit it.
        umask(S_IWGRP | S_IWOTH);
    }

    void programStartsWhateverAnotherUserLeft_data();
    void programStartsWhateverAnotherUserLeft();
    void nothingOfARunIsForOthers();
    void logHasNoMoreOfAPathThanNeeded();

private:
    static void expectSecondStart(const Profile& profile);
    static void record(StartedInstance& instance);
};

void TestStrangers::programStartsWhateverAnotherUserLeft_data()
{
    QTest::addColumn<Leave>("leave");
    QTest::newRow("lock files") << Leave([] { return makeLockFiles(0600); });
    QTest::newRow("lock files for everybody") << Leave([] { return makeLockFiles(kForEverybody); });
    QTest::newRow("a lock file that is a pipe") << Leave([] { return mkfifo(lockFile("").constData(), 0666) == 0; });
    QTest::newRow("a gate that is a folder") << Leave([] { return mkdir(lockFile("-gate").constData(), 0777) == 0; });
    QTest::newRow("a lock file that is a link")
        << Leave([] { return symlink("/etc/passwd", lockFile("").constData()) == 0; });
    QTest::newRow("the file of the key") << Leave([] { return makeFile(keyFile(), kForEverybody); });
    QTest::newRow("a segment") << Leave([] { return makeSegment(0600, 1); });
    QTest::newRow("a segment for everybody") << Leave([] { return makeSegment(kForEverybody, 1); });
    QTest::newRow("all of it") << Leave([] { return makeLockFiles(kForEverybody) && makeSegment(kForEverybody, 1); });
}

void TestStrangers::programStartsWhateverAnotherUserLeft()
{
    QFETCH(const Leave, leave);
    Profile profile(QStringLiteral("/tmp"));
    profile.giveTo(kUser);
    const InTemporaryFolderOf profilesFolder(profile);
    const RemoveSegment removeSegment;
    QVERIFY(leave());
    const QStringList left = QDir::temp().entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    {
        StartedInstance first(profile);
        QVERIFY2(first.waitUntilPublished(), qPrintable(first.transcript()));
        QTRY_VERIFY(profile.loggedMessages().join(u'\n').contains("Another user has"));
        expectSecondStart(profile);
        first.sendSignal(SIGKILL);
        QVERIFY(first.waitUntilEnded());
    }
    // What the killed one has left keeps nobody from starting either.
    StartedInstance next(profile);
    QVERIFY2(next.waitUntilPublished(), qPrintable(next.transcript()));
    for (const QString& name : left)
        QCOMPARE(QFileInfo(QDir::temp().filePath(name)).ownerId(), 0U);
}

void TestStrangers::expectSecondStart(const Profile& profile)
{
    StartedInstance second(profile);
    QVERIFY2(second.waitUntilEnded(), qPrintable(second.transcript()));
    QCOMPARE(second.exitCode(), 0);
    QVERIFY2(second.messages().isEmpty(), qPrintable(second.transcript()));
}

void TestStrangers::record(StartedInstance& instance)
{
    QVERIFY2(instance.waitForMessage("OBS initialized successfully"), qPrintable(instance.transcript()));
    QCOMPARE(QProcess::execute("xdotool", {"key", "F9"}), 0);
    QVERIFY2(instance.waitForMessage("Recording started..."), qPrintable(instance.transcript()));
    QCOMPARE(QProcess::execute("xdotool", {"key", "F9"}), 0);
    QVERIFY2(instance.waitForMessage("Recording stopped... 0"), qPrintable(instance.transcript()));
}

void TestStrangers::nothingOfARunIsForOthers()
{
    Profile profile(QStringLiteral("/tmp"));
    profile.giveTo(kUser);
    profile.environment.insert("KESTRANO_COUNTDOWN_STEP_MS", "100");
    StartedInstance instance(profile);
    record(instance);
    instance.sendSignal(SIGSEGV);
    QVERIFY(instance.waitUntilEnded());
    int ownFiles = 0;
    int recordings = 0;
    QDirIterator files(profile.root().path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QFileInfo file(files.next());
        const QString mode = QString::number(modeOf(file.filePath()), 8);
        if (file.suffix() == QLatin1String("mp4")) {
            ++recordings;
            QCOMPARE(mode, QStringLiteral("644"));
        } else if (file.isFile() && isOwn(file.filePath())) {
            ++ownFiles;
            QVERIFY2(mode == QLatin1String("600"), qPrintable(file.filePath() + ' ' + mode));
        } else if (file.isDir() && file.filePath().contains(QLatin1String("/Tolvaran/"))) {
            QVERIFY2(mode == QLatin1String("700"), qPrintable(file.filePath() + ' ' + mode));
        }
    }
    QCOMPARE(recordings, 1);
    // Settings, log, crash report, list of files, two locks, the file of the segment's key.
    QVERIFY2(ownFiles >= 7, qPrintable(QString::number(ownFiles)));
}

void TestStrangers::logHasNoMoreOfAPathThanNeeded()
{
    const Profile profile;
    StartedInstance instance(profile);
    record(instance);
    instance.sendSignal(SIGTERM);
    QVERIFY(instance.waitUntilEnded());
    // These are as they have to be.
    static const QRegularExpression given(
        "^(Debug: Could not open file for reading:|Log file|Starting recording to file:)");
    for (const QString& message : profile.loggedMessages())
        QVERIFY2(!message.contains(profile.root().path()) || given.match(message).hasMatch(), qPrintable(message));
}

REGISTER_TEST(testrun::gui<TestStrangers>);

#include "test_strangers.moc"
