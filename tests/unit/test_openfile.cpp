// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_manager.h"
#include "tests/support/addresses.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"
#include "widgets/desktopservices.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// Files and folders that are handed to the system.
class TestOpenFile : public QObject
{
    Q_OBJECT

private slots:
    void fileIsOpenedWhateverItsPathHolds_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "a.mp4";
        QTest::newRow("blanks") << "my demo 1.mp4";
        QTest::newRow("what an address gives a meaning to") << "100%25 #1 & 50%.mp4";
        QTest::newRow("Japanese") << QStringLiteral("録画.mp4");
    }

    void fileIsOpenedWhateverItsPathHolds()
    {
        QFETCH(const QString, name);
        const QTemporaryDir folder;
        const OpenedAddresses system({"file"});
        QVERIFY(openFile(folder.filePath(name)));
        QCOMPARE(system.files(), QStringList{folder.filePath(name)});
    }

    /// What a system's other programs can make nothing of is handed over by another name of the same file.
    void fileWithALongPathIsOpened()
    {
        const QTemporaryDir root;
        const QString folder = root.path() + QStringLiteral("/Aufnahmen aus dem Übungsraum").repeated(10);
        QVERIFY(folder.size() > 260);
        QVERIFY(QDir().mkpath(folder));
        QFile file(folder + QStringLiteral("/demo.mp4"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("what is in it");
        file.close();
        const OpenedAddresses system({"file"});
        QVERIFY(openFile(file.fileName()));
        QCOMPARE(system.opened().size(), 1);
        QFile same(system.files().constFirst());
        QVERIFY(same.open(QIODevice::ReadOnly));
        QCOMPARE(same.readAll(), QByteArray("what is in it"));
        QCOMPARE(QDir::fromNativeSeparators(platform::shellPath(file.fileName())), same.fileName());
    }

    void whatCannotBeOpenedIsReportedToTheCaller()
    {
        const OpenedAddresses system({"file"});
        QVERIFY(!openFile(QString()));
        QVERIFY(system.opened().isEmpty());
    }
};

REGISTER_TEST(testrun::gui<TestOpenFile>);

#include "test_openfile.moc"
