#include "app/appidentity.h"
#include "app/singleinstance.h"
#include "platform/shared_segment.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSharedMemory>
#include <QTest>

#include <cstring>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

using Role = SingleInstance::Role;

namespace {

/// Which file is numbered as somebody else's is, to the system's mind.
struct Collision
{
    QByteArray path;
    key_t number = 0;
    /// Only the first so many files of that path collide.
    int files = 0;
    ino_t lastFile = 0;
};

Collision g_collision;

key_t trueNumber(const struct stat& status, int project)
{
    return static_cast<key_t>((status.st_ino & 0xffff) | ((status.st_dev & 0xff) << 16) |
                              ((static_cast<unsigned>(project) & 0xff) << 24));
}

/// Stands for another program's segment while it lives.
class StrangersSegment
{
public:
    StrangersSegment(key_t number, const QByteArray& content)
        : m_id(shmget(number, static_cast<std::size_t>(content.size()), IPC_CREAT | IPC_EXCL | 0600))
    {
        m_memory = shmat(m_id, nullptr, 0);
        std::memcpy(m_memory, content.constData(), static_cast<std::size_t>(content.size()));
    }
    ~StrangersSegment()
    {
        shmdt(m_memory);
        shmctl(m_id, IPC_RMID, nullptr);
    }
    StrangersSegment(const StrangersSegment&) = delete;
    StrangersSegment& operator=(const StrangersSegment&) = delete;

    QByteArray content(qsizetype size) const { return {static_cast<const char*>(m_memory), size}; }

private:
    int m_id;
    void* m_memory = nullptr;
};

} // namespace

/// Takes the C library's place, for Qt as well: two files have the same number once in 65536 times.
extern "C" key_t ftok(const char* path, int project)
{
    struct stat status = {};
    if (stat(path, &status) != 0)
        return -1;
    if (path != g_collision.path)
        return trueNumber(status, project);
    if (status.st_ino != g_collision.lastFile && g_collision.files > 0) {
        g_collision.lastFile = status.st_ino;
        --g_collision.files;
    }
    return status.st_ino == g_collision.lastFile ? g_collision.number : trueNumber(status, project);
}

/// The guard where a segment of another program has the number that the system makes of the guard's key.
class TestSegmentNumbers : public QObject
{
    Q_OBJECT

private:
    /// No other test's, and none that the system makes for Qt.
    const key_t m_number = 0x7e000000 | (getpid() & 0xffffff);
    QString m_key;

    /// Where the file is of which the system makes the number.
    QByteArray keyFile() const { return QFile::encodeName(QSharedMemory(m_key).nativeKey()); }

    void collide(int files) { g_collision = {keyFile(), m_number, files, 0}; }

    /// That the guard of another copy works as if nothing had been in the way.
    void compareWithASecondCopy(const MessageCapture& capture)
    {
        QCOMPARE(capture.texts(QtInfoMsg), QStringList("[INFO] Created shared memory for single instance"));
        SingleInstance second(m_key);
        QCOMPARE(second.claim(), Role::Second);
    }

private slots:
    void init()
    {
        static int count = 0;
        m_key = QString("KestranoTest%1").arg(++count);
        g_collision = {};
    }

    void theNumberIsTheOneOfTheSystem()
    {
        // Else nothing here tells anything.
        platform::SharedSegment segment(m_key);
        QVERIFY(segment.create(16));
        QVERIFY(shmget(ftok(keyFile().constData(), 'Q'), 0, 0) >= 0);
    }

    void aStrangersSegmentDoesNotKeepTheProgramFromStarting_data()
    {
        QTest::addColumn<int>("files");
        QTest::newRow("the key's first number") << 1;
        QTest::newRow("its next as well") << 2;
    }

    void aStrangersSegmentDoesNotKeepTheProgramFromStarting()
    {
        QFETCH(const int, files);
        const QByteArray content(16, 'x');
        const StrangersSegment stranger(m_number, content);
        collide(files);
        const MessageCapture capture;
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        compareWithASecondCopy(capture);
        first.publish(1, QCoreApplication::applicationPid());
        QCOMPARE(stranger.content(content.size()), content);
        first.release();
        QCOMPARE(QDir::temp().entryList({QFileInfo(keyFile()).fileName() + "*"}, QDir::Files), QStringList());
    }

    void whereEveryNumberIsAStrangersTheProgramRunsUnguarded()
    {
        const StrangersSegment stranger(m_number, QByteArray(16, 'x'));
        collide(1000);
        const MessageCapture capture;
        SingleInstance copy(m_key);
        QCOMPARE(copy.claim(), Role::Unguarded);
        const QStringList said = capture.texts(QtCriticalMsg);
        QCOMPARE(said.size(), 1);
        QVERIFY2(said.first().startsWith("[ERROR] Unable to create shared memory: QSharedMemory::create: "),
                 qPrintable(said.first()));
    }

    void aSegmentLeftUnderTheNumberOfANewKeyIsRemoved()
    {
        collide(1);
        const int leftOver = shmget(m_number, 16, IPC_CREAT | IPC_EXCL | 0600);
        QVERIFY(leftOver >= 0);
        const MessageCapture capture;
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        compareWithASecondCopy(capture);
        shmid_ds status = {};
        QCOMPARE(shmctl(leftOver, IPC_STAT, &status), -1);
    }

    void aKeyFileThatNumbersAStrangersSegmentIsReplaced_data()
    {
        QTest::addColumn<int>("size");
        QTest::newRow("smaller than a copy's") << 8;
        QTest::newRow("with the id of no process") << 16;
    }

    void aKeyFileThatNumbersAStrangersSegmentIsReplaced()
    {
        QFETCH(const int, size);
        QSharedMemory theirs(m_key + "-theirs");
        QVERIFY(theirs.create(size));
        std::memset(theirs.data(), 0x7f, static_cast<std::size_t>(size));
        QCOMPARE(link(QFile::encodeName(theirs.nativeKey()).constData(), keyFile().constData()), 0);
        const MessageCapture capture;
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        compareWithASecondCopy(capture);
        QCOMPARE(static_cast<const char*>(theirs.constData())[size - 1], char{0x7f});
    }
};

REGISTER_TEST(testrun::core<TestSegmentNumbers>);

#include "test_segmentnumbers.moc"
