// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingwatch.h"
#include "platform/files/held_file.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <atomic>
#include <functional>
#include <thread>

namespace {

constexpr int kIntervalMs = 5;
/// Windows refuses what is asked of the folder during a look.
constexpr int kRefusedMs = 5000;
constexpr qint64 kMegabyte = 1'000'000;

bool write(const QString& path, qint64 bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Append) && file.write(QByteArray(bytes, 'x')) == bytes;
}

} // namespace

/// A recording's file and the disk below it, watched.
class TestRecordingWatch : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        m_path = m_root->filePath(QStringLiteral("videos/demo.mp4"));
        QVERIFY(QDir().mkpath(m_root->filePath(QStringLiteral("videos"))));
        m_freeBytes = 1000 * kMegabyte;
        m_looks = 0;
        m_duringLook = nullptr;
        m_watch = std::make_unique<RecordingWatch>(kIntervalMs, [this](const QString& folder) {
            ++m_looks;
            if (m_duringLook)
                m_duringLook(m_looks);
            return folder == m_root->filePath(QStringLiteral("videos")) ? m_freeBytes.load() : -1;
        });
        m_tight = std::make_unique<QSignalSpy>(m_watch.get(), &RecordingWatch::spaceRunsOut);
        m_gone = std::make_unique<QSignalSpy>(m_watch.get(), &RecordingWatch::fileGone);
    }

    void cleanup() { m_watch.reset(); }

    void fileThatIsThereWithSpaceBesideItIsNotReported()
    {
        startWithFile();
        waitForLooks(10);
        QCOMPARE(m_tight->size() + m_gone->size(), 0);
    }

    void fileThatComesLateIsWaitedFor()
    {
        m_watch->start(m_path);
        QTest::qWait(10 * kIntervalMs);
        QCOMPARE(m_looks.load(), 0);
        QVERIFY(write(m_path, 1));
        waitForLooks(2);
        QCOMPARE(m_tight->size() + m_gone->size(), 0);
        QVERIFY(m_watch->stop() != nullptr);
    }

    void lackOfSpaceIsReportedOnce()
    {
        startWithFile();
        waitForLooks(2);
        m_freeBytes = 4 * kMegabyte - 1;
        QTRY_COMPARE(m_tight->size(), 1);
        const int looks = m_looks;
        QTest::qWait(10 * kIntervalMs);
        QCOMPARE(m_looks.load(), looks);
        QCOMPARE(m_tight->size(), 1);
        QCOMPARE(m_gone->size(), 0);
    }

    void fileThatGrowsFastNeedsMoreSpace()
    {
        m_freeBytes = 20 * kMegabyte;
        startWithFile();
        // Some megabytes a second: 20 seconds of them do not fit.
        for (int megabytes = 0; m_tight->isEmpty() && megabytes < 200; ++megabytes) {
            QVERIFY(write(m_path, kMegabyte));
            QTest::qWait(20);
        }
        QCOMPARE(m_tight->size(), 1);
        QCOMPARE(m_gone->size(), 0);
    }

    void unknownSpaceIsNoLackOfIt()
    {
        m_freeBytes = -1;
        startWithFile();
        waitForLooks(10);
        QCOMPARE(m_tight->size(), 0);
    }

    void deletedFolderIsReportedOnce()
    {
        startWithFile();
        waitForLooks(2);
        QVERIFY(QTest::qWaitFor([this] { return QDir(m_root->filePath(QStringLiteral("videos"))).removeRecursively(); },
                                kRefusedMs));
        QTRY_COMPARE(m_gone->size(), 1);
        QTest::qWait(10 * kIntervalMs);
        QCOMPARE(m_gone->size(), 1);
        QCOMPARE(m_tight->size(), 0);
    }

    void renamedFolderIsReported()
    {
        startWithFile();
        waitForLooks(2);
        const QString folder = m_root->filePath(QStringLiteral("videos"));
        const QString renamed = m_root->filePath(QStringLiteral("older"));
        QVERIFY(QTest::qWaitFor([&] { return QDir().rename(folder, renamed); }, kRefusedMs));
        QTRY_COMPARE(m_gone->size(), 1);
    }

    /// What one look misses the next one may find.
    void fileThatIsAwayForOneLookIsNotReported()
    {
        const QString away = m_root->filePath(QStringLiteral("away.mp4"));
        // Called when a look has seen the file, or not.
        m_duringLook = [this, away](int look) {
            if (look == 2)
                QFile::rename(m_path, away);
            else if (look == 3)
                QFile::rename(away, m_path);
        };
        startWithFile();
        waitForLooks(8);
        QCOMPARE(m_gone->size(), 0);
    }

    void lookThatHangsIsOneOfItsRecordingOnly()
    {
        QSemaphore answers;
        m_duringLook = [&answers](int look) {
            if (look == 1)
                answers.acquire();
        };
        startWithFile();
        m_watch->start(m_path);
        waitForLooks(4);
        QVERIFY(QFile::remove(m_path));
        QTRY_COMPARE(m_gone->size(), 1);
        answers.release();
        m_watch.reset();
    }

    void fileThatIsLookedAtCanBeDeleted()
    {
        for (int number = 0; number < 50; ++number) {
            const QString path = m_root->filePath(QString::number(number));
            QVERIFY(write(path, 1));
            const auto file = platform::HeldFile::open(path);
            QVERIFY(file != nullptr);
            std::atomic<bool> hasLooked = false;
            const std::jthread looks([&](const std::stop_token& stop) {
                while (!stop.stop_requested())
                    hasLooked = file->bytes() >= 0;
            });
            while (!hasLooked)
                QThread::yieldCurrentThread();
            QVERIFY(QFile::remove(path));
        }
    }

    void stoppedWatchReportsNothing()
    {
        startWithFile();
        waitForLooks(2);
        QVERIFY(m_watch->stop() != nullptr);
        m_freeBytes = 0;
        QVERIFY(QFile::remove(m_path));
        QTest::qWait(10 * kIntervalMs);
        QCOMPARE(m_tight->size() + m_gone->size(), 0);
    }

    void nextRecordingIsWatchedAfresh()
    {
        startWithFile();
        QVERIFY(QFile::remove(m_path));
        QTRY_COMPARE(m_gone->size(), 1);
        startWithFile();
        waitForLooks(m_looks + 5);
        QCOMPARE(m_gone->size(), 1);
        QVERIFY(QFile::remove(m_path));
        QTRY_COMPARE(m_gone->size(), 2);
    }

private:
    void startWithFile()
    {
        QVERIFY(write(m_path, 1));
        const int before = m_looks;
        m_watch->start(m_path);
        waitForLooks(before + 1);
    }

    void waitForLooks(int count) { QTRY_VERIFY(m_looks >= count); }

    std::unique_ptr<QTemporaryDir> m_root;
    QString m_path;
    std::atomic<qint64> m_freeBytes;
    std::atomic<int> m_looks;
    /// On the other thread.
    std::function<void(int)> m_duringLook;
    std::unique_ptr<RecordingWatch> m_watch;
    std::unique_ptr<QSignalSpy> m_tight;
    std::unique_ptr<QSignalSpy> m_gone;
};

REGISTER_TEST(testrun::core<TestRecordingWatch>);
#include "test_recordingwatch.moc"
