// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/sclogger.h"
#include "files/scfilemanager.h"
#include "tests/support/filelibrary.h"
#include "tests/support/fulldisk.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

/// The list of files, and the log, on a disk that runs full.
class TestFullDisk : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        LibraryRefuge::clear();
        m_library = std::make_unique<SCFileManager>();
        for (int number = 0; number < 5; ++number)
            m_library->addFile(m_produced.add(QStringLiteral("%1.mp4").arg(number)), QStringLiteral("video"));
        m_before = filelibrary::text();
    }

    void cleanup() { m_library.reset(); }

    void saveLeavesTheOldListAndTheListInMemory_data()
    {
        QTest::addColumn<int>("bytes");
        for (const int bytes : {0, 1, 100, 500, 700})
            QTest::addRow("%d bytes", bytes) << bytes;
    }

    void saveLeavesTheOldListAndTheListInMemory()
    {
        QFETCH(const int, bytes);
        QVERIFY(bytes < m_before.size());
        const QString added = m_produced.add(QStringLiteral("added.mp4"));
        const QSignalSpy errors(m_library.get(), &SCFileManager::error);
        {
            const FullDisk full(static_cast<rlim_t>(bytes));
            m_library->addFile(added, QStringLiteral("video"));
        }
        QCOMPARE(errors.size(), 1);
        QCOMPARE(m_library->files().front().filepath, added);
        QCOMPARE(filelibrary::text(), m_before);
        QVERIFY(filelibrary::neighbours().isEmpty());
        QVERIFY(m_library->save());
        QCOMPARE(filelibrary::paths().size(), 6);
    }

    void damagedListIsNotMovedForOneThatCannotBeWritten()
    {
        m_library.reset();
        const QByteArray damaged = m_before.chopped(20);
        filelibrary::write(damaged);
        m_library = std::make_unique<SCFileManager>();
        {
            const FullDisk full(0);
            m_library->addFile(m_produced.add(QStringLiteral("added.mp4")), QStringLiteral("video"));
        }
        QCOMPARE(filelibrary::text(), damaged);
        QVERIFY(filelibrary::neighbours().isEmpty());
        QVERIFY(m_library->save());
        QCOMPARE(filelibrary::neighbours().size(), 1);
    }

    void loadThatCannotCleanFailsAndHasTheRightList()
    {
        QVERIFY(QFile::remove(m_library->files().front().filepath));
        {
            const MessageCapture log;
            const FullDisk full(0);
            QVERIFY(!m_library->load());
            const QString line = QStringLiteral("Could not open file for writing: ") + filelibrary::path();
            QCOMPARE(log.texts(QtDebugMsg).filter(line).size(), 1);
        }
        QCOMPARE(m_library->files().size(), 4);
        QCOMPARE(filelibrary::text(), m_before);
    }

    void logGoesOnOnceThereIsRoomAgain()
    {
        const QString path = m_folder.filePath(QStringLiteral("the.log"));
        QVERIFY(SCLogger::instance()->initialize(path));
        {
            const FullDisk full(0);
            SCLogger::info(QStringLiteral("on the full disk"));
        }
        SCLogger::info(QStringLiteral("with room again"));
        QFile log(path);
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().trimmed().endsWith("Info: with room again"));
    }

private:
    ProducedFiles m_produced;
    QTemporaryDir m_folder;
    std::unique_ptr<SCFileManager> m_library;
    QByteArray m_before;
};

REGISTER_TEST(windowtest::run<TestFullDisk>);

#include "test_fulldisk_x11.moc"
