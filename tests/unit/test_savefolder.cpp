// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/savefolder.h"
#include "app/sclogger.h"
#include "app/settings.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

const auto kKey = settingskeys::kRecordingSaveLocation;

/// Also hidden ones.
bool isEmpty(const QString& folder)
{
    return QDir(folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace

/// Where files go when the settings say something that cannot be.
class TestSaveFolder : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(SCLogger::instance()->initialize());
        m_workingFolder = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_root.path()));
    }

    void cleanupTestCase() { QVERIFY(QDir::setCurrent(m_workingFolder)); }

    // Windows has one for all tests of a prefix.
    void init() { removeDefaultFolder(); }
    void cleanup() { removeDefaultFolder(); }

    void chosenFolderIsMadeAndLeftAsItIs()
    {
        const QString folder = m_root.filePath(QStringLiteral("chosen/of this year"));
        const SaveFolder used = usableSaveFolder(folder, kKey);
        QCOMPARE(used.path, folder);
        QVERIFY(!used.isReplaced);
        QVERIFY(QFileInfo(folder).isDir());
        QVERIFY(isEmpty(folder));
        QVERIFY(!QFileInfo::exists(defaultSaveFolder(kKey)));
    }

    void folderThatCannotBeUsedMeansTheDefaultOne_data()
    {
        QTest::addColumn<QString>("stored");
        QFile blocker(m_root.filePath(QStringLiteral("blocker")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        QTest::newRow("empty") << QString();
        QTest::newRow("relative") << "videos/below";
        QTest::newRow("dot") << ".";
        QTest::newRow("root") << "/";
        QTest::newRow("root in disguise") << "/.";
        QTest::newRow("below a file") << blocker.fileName() + "/videos";
        QTest::newRow("a file") << blocker.fileName();
    }

    void folderThatCannotBeUsedMeansTheDefaultOne()
    {
        QFETCH(const QString, stored);
        const QStringList before = QDir().entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        const SaveFolder used = usableSaveFolder(stored, kKey);
        QCOMPARE(used.path, defaultSaveFolder(kKey));
        QVERIFY(used.isReplaced);
        QVERIFY(QFileInfo(used.path).isDir());
        QCOMPARE(QDir().entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
    }

    void eachSettingHasItsOwnDefault()
    {
        QVERIFY(defaultSaveFolder(kKey) != defaultSaveFolder(settingskeys::kScreenshotSaveLocation));
        QVERIFY(QDir::isAbsolutePath(defaultSaveFolder(kKey)));
    }

    void nothingReplacesADefaultFolderThatCannotBeUsed()
    {
        const QString folder = defaultSaveFolder(kKey);
        QVERIFY(QDir().mkpath(QFileInfo(folder).path()));
        QFile blocker(folder);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        for (const QString& stored : {folder, QString()}) {
            const SaveFolder used = usableSaveFolder(stored, kKey);
            QCOMPARE(used.path, folder);
            QVERIFY(!used.isReplaced);
        }
    }

    void spaceOfAFolderIsKnownAndThatOfNoneIsNot()
    {
        QVERIFY(freeBytesIn(m_root.path()) > 0);
        QVERIFY(freeBytesIn(m_root.filePath(QStringLiteral("nothing/here"))) < 0);
        QVERIFY(freeBytesIn(existingPartOf(m_root.filePath(QStringLiteral("nothing/here")))) > 0);
        QCOMPARE(existingPartOf(m_root.path()), m_root.path());
    }

    void folderIsCheckedWithoutLeavingATrace_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<SaveFolderFault>("fault");
        QVERIFY(QDir(m_root.path()).mkpath(QStringLiteral("there")));
        QFile blocker(m_root.filePath(QStringLiteral("in the way")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        QTest::newRow("there") << m_root.filePath(QStringLiteral("there")) << SaveFolderFault::None;
        QTest::newRow("to be made") << m_root.filePath(QStringLiteral("there/a/b/c")) << SaveFolderFault::None;
        QTest::newRow("empty") << QString() << SaveFolderFault::NotAbsolute;
        QTest::newRow("relative") << "a/b" << SaveFolderFault::NotAbsolute;
        QTest::newRow("root") << "/" << SaveFolderFault::Root;
        QTest::newRow("below a file") << blocker.fileName() + "/a" << SaveFolderFault::CannotBeMade;
        // There even root cannot.
        if (QFileInfo::exists(QStringLiteral("/proc/sys/kernel")))
            QTest::newRow("not to be written") << "/proc/sys/kernel" << SaveFolderFault::CannotBeWritten;
        QTest::newRow("too long") << m_root.filePath(QStringLiteral("there/a/") + QString(300, u'n'))
                                  << SaveFolderFault::CannotBeMade;
    }

    void folderIsCheckedWithoutLeavingATrace()
    {
        QFETCH(const QString, folder);
        QFETCH(const SaveFolderFault, fault);
        const QStringList before = contents();
        QCOMPARE(saveFolderFault(folder), fault);
        QCOMPARE(contents(), before);
    }

    void typedFolderIsTakenAsItIsMeant()
    {
        QCOMPARE(typedSaveFolder(QStringLiteral("  /videos//of/../this year/ ")), QStringLiteral("/videos/this year"));
        QCOMPARE(typedSaveFolder(QStringLiteral("~")), QDir::homePath());
        QCOMPARE(typedSaveFolder(QStringLiteral("~/Videos")), QDir::homePath() + QStringLiteral("/Videos"));
        QCOMPARE(typedSaveFolder(QStringLiteral("~else/Videos")), QStringLiteral("~else/Videos"));
        QCOMPARE(typedSaveFolder(QStringLiteral("  ")), QString());
    }

private:
    static void removeDefaultFolder()
    {
        QFile::remove(defaultSaveFolder(kKey));
        QDir(defaultSaveFolder(kKey)).removeRecursively();
    }

    QStringList contents() const
    {
        QStringList found;
        QDirIterator all(m_root.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext())
            found.append(all.next());
        found.sort();
        return found;
    }

    QTemporaryDir m_root;
    QString m_workingFolder;
};

REGISTER_TEST(testrun::core<TestSaveFolder>);
#include "test_savefolder.moc"
