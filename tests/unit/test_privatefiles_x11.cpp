// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/sclogger.h"
#include "app/settings.h"
#include "files/filestore.h"
#include "platform/files/private_files.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

/// The permissions, as octal numbers say them.
int modeOf(const QString& path)
{
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 ? static_cast<int>(status.st_mode & 07777U) : -1;
}

void write(const QString& path, QFile::Permissions permissions)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.setPermissions(permissions));
}

constexpr QFile::Permissions kForEverybody =
    QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;

} // namespace

/// What other users of the computer can see of the program's own files.
class TestPrivateFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { umask(0); }

    void newFolderIsPrivateAndItsParentsAreAsUsual()
    {
        const QTemporaryDir root;
        QVERIFY(platform::makePrivateFolder(root.filePath("a/b/c")));
        QCOMPARE(modeOf(root.filePath("a/b/c")), 0700);
        QCOMPARE(modeOf(root.filePath("a/b")), 0777);
    }

    void folderThatIsThereIsTightenedWithItsFiles()
    {
        const QTemporaryDir root;
        const QTemporaryDir elsewhere;
        write(root.filePath("list"), kForEverybody);
        write(root.filePath(".hidden"), kForEverybody);
        write(elsewhere.filePath("linked"), kForEverybody);
        QVERIFY(QFile::link(elsewhere.filePath("linked"), root.filePath("link")));
        QVERIFY(QDir(root.path()).mkdir("below"));
        QVERIFY(
            QFile::setPermissions(root.path(), kForEverybody | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther));
        QVERIFY(platform::makePrivateFolder(root.path()));
        QCOMPARE(modeOf(root.path()), 0700);
        QCOMPARE(modeOf(root.filePath("list")), 0600);
        QCOMPARE(modeOf(root.filePath(".hidden")), 0600);
        QCOMPARE(modeOf(elsewhere.filePath("linked")), 0666);
        QCOMPARE(modeOf(root.filePath("below")), 0777);
    }

    void fileInThePlaceOfAFolderStays()
    {
        const QTemporaryDir root;
        write(root.filePath("file"), kForEverybody);
        QVERIFY(!platform::makePrivateFolder(root.filePath("file")));
        QCOMPARE(modeOf(root.filePath("file")), 0666);
        QVERIFY(!platform::makePrivateFolder(root.filePath("file/below")));
    }

    void logIsPrivate()
    {
        const QString path = SCLogger::defaultPath();
        QVERIFY(SCLogger::instance()->initialize(path));
        QCOMPARE(modeOf(path), 0600);
        QCOMPARE(modeOf(appidentity::logFolder()), 0700);
    }

    void settingsArePrivateBeforeTheyHoldAnything()
    {
        const auto settings = openSettings();
        const QString path = settings->fileName();
        QCOMPARE(modeOf(path), 0600);
        QCOMPARE(modeOf(QFileInfo(path).path()), 0700);
        settings->setValue("key", 1);
        settings->sync();
        QCOMPARE(modeOf(path), 0600);
        QCOMPARE(openSettings()->value("key").toInt(), 1);
    }

    void listOfFilesIsPrivate()
    {
        FileStore store;
        QVERIFY(store.save());
        QCOMPARE(modeOf(FileStore::path()), 0600);
        QCOMPARE(modeOf(appidentity::dataFolder()), 0700);
    }
};

REGISTER_TEST(testrun::core<TestPrivateFiles>);

#include "test_privatefiles_x11.moc"
