// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "files/recordingrescue.h"
#include "platform/files/held_file.h"
#include "tests/support/fulldisk.h"
#include "tests/support/testrun.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using platform::HeldFile;

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// Files that are saved after their names have gone.
class TestRecordingRescue : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        m_target = m_root->filePath(QStringLiteral("default/folder/demo.mp4"));
    }

    void deletedFileIsSavedInAFolderThatIsMade()
    {
        RecordingRescue rescue;
        const QSignalSpy done(&rescue, &RecordingRescue::done);
        QVERIFY(rescue.begin(deletedFile("recorded"), m_target));
        QVERIFY(QFileInfo::exists(m_target));
        QTRY_COMPARE(done.size(), 1);
        QCOMPARE(done.at(0), (QVariantList{m_target, true}));
        QCOMPARE(contentOf(m_target), QByteArray("recorded"));
    }

    /// The output reports its end first, and writes its indexes and headers then.
    void fileIsCopiedWhenItIsClosed()
    {
        RecordingRescue rescue;
        const QSignalSpy done(&rescue, &RecordingRescue::done);
        const QString path = m_root->filePath(QStringLiteral("deleted"));
        QFile writer(path);
        QVERIFY(writer.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        writer.write("0 frames");
        QVERIFY(rescue.begin(HeldFile::open(path), m_target));
        QVERIFY(QFile::remove(path));
        QTest::qWait(200);
        QCOMPARE(done.size(), 0);
        writer.seek(0);
        writer.write("9 frames, index");
        writer.close();
        QTRY_COMPARE(done.size(), 1);
        QCOMPARE(done.at(0), (QVariantList{m_target, true}));
        QCOMPARE(contentOf(m_target), QByteArray("9 frames, index"));
    }

    void nothingIsReplaced()
    {
        RecordingRescue rescue;
        QVERIFY(rescue.begin(deletedFile("first"), m_target));
        QVERIFY(!rescue.begin(deletedFile("second"), m_target));
        const QSignalSpy done(&rescue, &RecordingRescue::done);
        QTRY_COMPARE(done.size(), 1);
        QCOMPARE(contentOf(m_target), QByteArray("first"));
    }

    void folderThatCannotBeMadeIsReportedAtOnce()
    {
        RecordingRescue rescue;
        const QSignalSpy done(&rescue, &RecordingRescue::done);
        QFile blocker(m_root->filePath(QStringLiteral("default")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        QVERIFY(!rescue.begin(deletedFile("recorded"), m_target));
        QCOMPARE(done.size(), 0);
    }

    void copyThatDoesNotFitStaysAsFarAsItGoes()
    {
        RecordingRescue rescue;
        const QSignalSpy done(&rescue, &RecordingRescue::done);
        const auto file = deletedFile(QByteArray(100'000, 'x'));
        const FullDisk disk(50'000);
        QVERIFY(rescue.begin(file, m_target));
        QTRY_COMPARE(done.size(), 1);
        QCOMPARE(done.at(0), (QVariantList{m_target, false}));
        QCOMPARE(contentOf(m_target), QByteArray(50'000, 'x'));
    }

    void copyOfNothingIsNoFile()
    {
        RecordingRescue rescue;
        const QSignalSpy done(&rescue, &RecordingRescue::done);
        // Reading fails.
        QVERIFY(rescue.begin(HeldFile::open(m_root->path()), m_target));
        QTRY_COMPARE(done.size(), 1);
        QCOMPARE(done.at(0), (QVariantList{m_target, false}));
        QVERIFY(!QFileInfo::exists(m_target));
    }

    void endOfTheProgramWaitsForTheCopy()
    {
        const QByteArray content(20'000'000, 'x');
        {
            RecordingRescue rescue;
            QVERIFY(rescue.begin(deletedFile(content), m_target));
        }
        QCOMPARE(contentOf(m_target), content);
    }

private:
    std::shared_ptr<HeldFile> deletedFile(const QByteArray& content)
    {
        const QString path = m_root->filePath(QStringLiteral("deleted"));
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(content);
        file.close();
        auto held = HeldFile::open(path);
        QFile::remove(path);
        return held;
    }

    std::unique_ptr<QTemporaryDir> m_root;
    QString m_target;
};

REGISTER_TEST(testrun::core<TestRecordingRescue>);
#include "test_recordingrescue_x11.moc"
