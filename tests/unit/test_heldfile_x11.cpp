// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/held_file.h"
#include "tests/support/fulldisk.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using platform::HeldFile;

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Several blocks of a copy, the last one not full.
QByteArray anyContent()
{
    QByteArray content(3'000'001, Qt::Uninitialized);
    for (char& byte : content)
        byte = static_cast<char>(QRandomGenerator::global()->generate());
    return content;
}

} // namespace

/// A file that outlives its name.
class TestHeldFile : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        m_path = m_root->filePath(QStringLiteral("videos/demo.mp4"));
        QVERIFY(QDir().mkpath(m_root->filePath(QStringLiteral("videos"))));
        m_writer = std::make_unique<QFile>(m_path);
        QVERIFY(m_writer->open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        m_file = HeldFile::open(m_path);
        QVERIFY(m_file != nullptr);
    }

    void nothingIsHeldWhereThereIsNoFile()
    {
        QVERIFY(HeldFile::open(m_root->filePath(QStringLiteral("none.mp4"))) == nullptr);
    }

    void growingFileIsInItsPlace()
    {
        QVERIFY(m_file->isInPlace());
        QCOMPARE(m_file->bytes(), 0);
        m_writer->write("recorded");
        QCOMPARE(m_file->bytes(), 8);
        QCOMPARE(m_file->currentPath(), m_path);
    }

    void deletedFileCanStillBeCopied()
    {
        const QByteArray content = anyContent();
        QVERIFY(QDir(m_root->filePath(QStringLiteral("videos"))).removeRecursively());
        m_writer->write(content);
        m_writer.reset();
        QVERIFY(!m_file->isInPlace());
        QCOMPARE(m_file->currentPath(), QString());
        const QString copy = m_root->filePath(QStringLiteral("copy.mp4"));
        QString error;
        QVERIFY2(m_file->copyTo(copy, error), qPrintable(error));
        QCOMPARE(contentOf(copy), content);
    }

    void fileUnderTheSameNameAgainIsNoCopy()
    {
        QVERIFY(QFile::remove(m_path));
        QFile other(m_path);
        QVERIFY(other.open(QIODevice::WriteOnly));
        QVERIFY(!m_file->isInPlace());
        QCOMPARE(m_file->currentPath(), QString());
    }

    void movedFileIsFound()
    {
        QVERIFY(QDir().rename(m_root->filePath(QStringLiteral("videos")), m_root->filePath(QStringLiteral("older"))));
        QVERIFY(!m_file->isInPlace());
        QCOMPARE(m_file->currentPath(), m_root->filePath(QStringLiteral("older/demo.mp4")));
    }

    void fileInTheTrashIsNowhere_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("of the user") << "share/Trash/files/demo.mp4";
        QTest::newRow("of the user, with its folder") << "share/Trash/files/videos/demo.mp4";
        QTest::newRow("of the disk") << ".Trash-1000/files/demo.mp4";
        QTest::newRow("of the disk, shared") << ".Trash/1000/files/demo.mp4";
        QTest::newRow("of a server") << "videos/.nfs000000000031a2b500000001";
    }

    void fileInTheTrashIsNowhere()
    {
        QFETCH(const QString, name);
        m_writer->write("recorded");
        const QString trash = m_root->filePath(name);
        QVERIFY(QDir().mkpath(QFileInfo(trash).path()));
        QVERIFY(QFile::rename(m_path, trash));
        QVERIFY(!m_file->isInPlace());
        QVERIFY(!m_file->isDeleted());
        QCOMPARE(m_file->currentPath(), QString());
        QString error;
        QVERIFY2(m_file->copyTo(m_root->filePath(QStringLiteral("copy.mp4")), error), qPrintable(error));
    }

    void deletedFileIsKnownAsSuch()
    {
        QVERIFY(!m_file->isDeleted());
        QVERIFY(QFile::remove(m_path));
        QVERIFY(m_file->isDeleted());
    }

    void fileThatIsOpenForWritingIsWrittenTo()
    {
        QVERIFY(m_file->isWrittenTo());
        m_writer->close();
        QVERIFY(!m_file->isWrittenTo());
    }

    void copyThatDoesNotFitIsNotWhole()
    {
        const QByteArray content = anyContent();
        m_writer->write(content);
        const QString copy = m_root->filePath(QStringLiteral("copy.mp4"));
        QString error;
        {
            const FullDisk disk(2'000'000);
            QVERIFY(!m_file->copyTo(copy, error));
        }
        QVERIFY(!error.isEmpty());
        const QByteArray copied = contentOf(copy);
        QVERIFY(!copied.isEmpty() && content.startsWith(copied));
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
    QString m_path;
    std::unique_ptr<QFile> m_writer;
    std::shared_ptr<HeldFile> m_file;
};

REGISTER_TEST(testrun::core<TestHeldFile>);
#include "test_heldfile_x11.moc"
