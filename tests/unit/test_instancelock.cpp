// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/singleinstance.h"
#include "platform/process/instance_lock.h"
#include "platform/process/shared_segment.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testregistry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QSharedMemory>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

using Role = SingleInstance::Role;
using State = platform::InstanceLock::State;
/// Puts something in the place of a lock file.
using Make = std::function<bool(const QByteArray&)>;

Q_DECLARE_METATYPE(Make)

namespace {

constexpr uid_t kSomebodyElse = 65534;

/// Where the lock of that name has its file, for the user that this process runs as.
QByteArray lockFile(const QString& name)
{
    return QFile::encodeName(QDir::tempPath() + '/' + name + '-' + QString::number(geteuid()) + ".lock");
}

bool makeFile(const QByteArray& path)
{
    return QFile(QFile::decodeName(path)).open(QIODevice::WriteOnly);
}

/// The system's number of the segment of that key, and of Qt's lock of it.
key_t numberOfSegment(const QString& key)
{
    return ftok(QFile::encodeName(QSharedMemory(key).nativeKey()).constData(), 'Q');
}

/// Makes the segment of that key another user's, for as long as the object lives: root becomes somebody else, and
/// whoever is not root loses the rights in it.
class SegmentOfAnotherUser
{
public:
    explicit SegmentOfAnotherUser(const QString& key, unsigned short mode = 0) : m_segment(key)
    {
        m_segment.create(16);
        std::memset(m_segment.data(), 0x7f, 16);
        m_number = numberOfSegment(key);
        m_id = shmget(m_number, 0, 0);
        allow(mode);
        m_isForbidden = !m_isRoot || seteuid(kSomebodyElse) == 0;
    }
    ~SegmentOfAnotherUser()
    {
        if (m_isRoot && seteuid(0) != 0)
            qFatal("The test cannot become root again");
        allow(0600);
    }
    SegmentOfAnotherUser(const SegmentOfAnotherUser&) = delete;
    SegmentOfAnotherUser& operator=(const SegmentOfAnotherUser&) = delete;

    bool isForbidden() const { return m_isForbidden; }
    bool isAsItWas() const
    {
        return QByteArray(static_cast<const char*>(m_segment.constData()), 16) == QByteArray(16, 0x7f);
    }

private:
    void allow(unsigned short mode) const
    {
        shmid_ds status = {};
        shmctl(m_id, IPC_STAT, &status);
        status.shm_perm.mode = mode;
        shmctl(m_id, IPC_SET, &status);
    }

    QSharedMemory m_segment;
    bool m_isRoot = geteuid() == 0;
    bool m_isForbidden = false;
    key_t m_number = 0;
    int m_id = -1;
};

} // namespace

/// The lock files of X11 systems: what may stand in their place, and what the guard makes of it.
class TestInstanceLock : public QObject
{
    Q_OBJECT

private:
    const QString m_root;
    QString m_key;

public:
    explicit TestInstanceLock(QString root) : m_root(std::move(root)) {}

private:
    void shareTemporaryFolder() const
    {
        QVERIFY(chmod(QFile::encodeName(m_root).constData(), 0711) == 0);
        QVERIFY(chmod(QFile::encodeName(QDir::tempPath()).constData(), 01777) == 0);
    }

private slots:
    void init()
    {
        static int count = 0;
        m_key = QString("KestranoTest%1").arg(++count);
    }

    void oneHolderAtATime()
    {
        platform::InstanceLock first(m_key);
        platform::InstanceLock second(m_key);
        QCOMPARE(first.tryLock(), State::Acquired);
        QCOMPARE(first.tryLock(), State::Acquired);
        QCOMPARE(second.tryLock(), State::HeldByAnother);
        first.release();
        QCOMPARE(second.tryLock(), State::Acquired);
    }

    void whatIsNoFileOfTheUsersIsNotLocked_data()
    {
        QTest::addColumn<Make>("make");
        QTest::newRow("a folder") << Make([](const QByteArray& path) { return mkdir(path.constData(), 0700) == 0; });
        QTest::newRow("a pipe") << Make([](const QByteArray& path) { return mkfifo(path.constData(), 0600) == 0; });
        QTest::newRow("a link") << Make([](const QByteArray& path) {
            return makeFile(path + "-target") && symlink((path + "-target").constData(), path.constData()) == 0;
        });
        // Nobody else can give a file away.
        if (geteuid() == 0)
            QTest::newRow("another user's file") << Make([](const QByteArray& path) {
                return makeFile(path) && chown(path.constData(), kSomebodyElse, kSomebodyElse) == 0;
            });
    }

    void whatIsNoFileOfTheUsersIsNotLocked()
    {
        QFETCH(const Make, make);
        QVERIFY(make(lockFile(m_key)));
        platform::InstanceLock lock(m_key);
        QCOMPARE(lock.tryLock(), State::Unavailable);
        lock.release();

        // The user's own folder has the locks then.
        const QString own = m_root + "/own";
        platform::InstanceLock ownLock(m_key, own);
        platform::InstanceLock sameLock(m_key, own);
        QCOMPARE(ownLock.tryLock(), State::Acquired);
        QVERIFY(ownLock.isInOwnFolder());
        QCOMPARE(sameLock.tryLock(), State::HeldByAnother);
        QVERIFY(make(lockFile(SingleInstance::gateName(m_key))));
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        SingleInstance second(m_key);
        QCOMPARE(second.claim(), Role::Second);
        first.release();
        SingleInstance next(m_key);
        QCOMPARE(next.claim(), Role::First);
    }

    void noLockIsMadeThatOutlivesItsHolder()
    {
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        SingleInstance second(m_key);
        QCOMPARE(second.claim(), Role::Second);
        first.publish(1, QCoreApplication::applicationPid());
        // Qt's semaphores are files of their own, or have the number of the segment.
        QCOMPARE(QDir::temp().entryList({"qipc_systemsem_*"}, QDir::Files), QStringList());
        QCOMPARE(semget(numberOfSegment(m_key), 0, 0), -1);
    }

    void whoFailsToMakeASegmentLeavesItsFile()
    {
        platform::SharedSegment theirs(m_key);
        QVERIFY2(theirs.create(16), qPrintable(theirs.errorString()));
        {
            platform::SharedSegment ours(m_key);
            QVERIFY(!ours.create(16));
        }
        QVERIFY(QFile::exists(QSharedMemory(m_key).nativeKey()));
    }

    void aSegmentLeavesTheFileOfItsSuccessor()
    {
        auto first = std::make_unique<platform::SharedSegment>(m_key);
        QVERIFY2(first->create(16), qPrintable(first->errorString()));
        // With the name gone and the file still there, a new one gets another number.
        const QString file = QSharedMemory(m_key).nativeKey();
        QVERIFY(QFile::rename(file, file + "-moved"));
        platform::SharedSegment successor(m_key);
        QVERIFY2(successor.create(16), qPrintable(successor.errorString()));
        first.reset();
        platform::SharedSegment next(m_key);
        QVERIFY2(next.attach(), qPrintable(next.errorString()));
    }

    void aStrangersSegmentOfTheSameNumberIsLoggedAndRunThrough()
    {
        // The system makes the number of a segment from the file of its key.
        QSharedMemory theirs(m_key + "-theirs");
        QVERIFY(theirs.create(16));
        std::memset(theirs.data(), 0x7f, 16);
        QCOMPARE(link(QFile::encodeName(theirs.nativeKey()).constData(),
                      QFile::encodeName(QSharedMemory(m_key).nativeKey()).constData()),
                 0);
        const MessageCapture capture;
        SingleInstance ours(m_key, std::chrono::milliseconds(1));
        QCOMPARE(ours.claim(), Role::Unguarded);
        QCOMPARE(capture.texts(QtCriticalMsg).size(), 1);
        QCOMPARE(QByteArray(static_cast<const char*>(theirs.constData()), 16), QByteArray(16, 0x7f));
    }

    void segmentOfAnotherUserIsGoneRound_data()
    {
        QTest::addColumn<unsigned short>("mode");
        QTest::newRow("for nobody") << static_cast<unsigned short>(0);
        // Without root there is one user only.
        if (geteuid() == 0)
            QTest::newRow("for everybody") << static_cast<unsigned short>(0666);
    }

    void segmentOfAnotherUserIsGoneRound()
    {
        QFETCH(const unsigned short, mode);
        shareTemporaryFolder();
        const QTemporaryDir data(m_root + "/data");
        QVERIFY(chmod(QFile::encodeName(data.path()).constData(), 0777) == 0);
        const QByteArray before = qgetenv("XDG_DATA_HOME");
        const auto restore = qScopeGuard([&before] { qputenv("XDG_DATA_HOME", before); });
        qputenv("XDG_DATA_HOME", QFile::encodeName(data.path()));
        const SegmentOfAnotherUser theirs(m_key, mode);
        QVERIFY(theirs.isForbidden());
        const MessageCapture capture;
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        first.publish(1, QCoreApplication::applicationPid());
        QVERIFY(capture.texts(QtWarningMsg).join('\n').contains("Another user has"));
        SingleInstance second(m_key);
        QCOMPARE(second.claim(), Role::Second);
        first.release();
        SingleInstance next(m_key);
        QCOMPARE(next.claim(), Role::First);
        QVERIFY(theirs.isAsItWas());
    }

    void withNoFolderToGoRoundToEveryInstanceRunsUnguarded()
    {
        shareTemporaryFolder();
        const QByteArray before = qgetenv("XDG_DATA_HOME");
        const auto restore = qScopeGuard([&before] { qputenv("XDG_DATA_HOME", before); });
        qputenv("XDG_DATA_HOME", "/proc");
        const SegmentOfAnotherUser theirs(m_key);
        QVERIFY(theirs.isForbidden());
        const MessageCapture capture;
        for (int start = 1; start <= 2; ++start) {
            SingleInstance ours(m_key);
            QCOMPARE(ours.claim(), Role::Unguarded);
            QCOMPARE(capture.texts(QtCriticalMsg).size(), start);
        }
        QVERIFY2(capture.texts(QtCriticalMsg).first().startsWith("[ERROR] Unable to create shared memory: "),
                 qPrintable(capture.texts().join('\n')));
    }
};

static int run(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    const QCoreApplication application(argc, argv);
    TestInstanceLock test(profile.path());
    return QTest::qExec(&test, argc, argv);
}

REGISTER_TEST(run);

#include "test_instancelock.moc"
