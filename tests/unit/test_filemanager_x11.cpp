// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_manager.h"
#include "tests/support/addresses.h"
#include "tests/support/messagebus.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <chrono>

namespace {

const auto kService = QStringLiteral("org.freedesktop.FileManager1");
const auto kPath = QStringLiteral("/org/freedesktop/FileManager1");

/// What a file manager offers on the bus.
class StandInFileManager : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    /// On a connection of its own, as another program's.
    StandInFileManager() : m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "file-manager"))
    {
        m_connection.registerObject(kPath, this, QDBusConnection::ExportAllSlots);
        m_registered = m_connection.registerService(kService);
    }
    ~StandInFileManager() override
    {
        m_connection.unregisterService(kService);
        QDBusConnection::disconnectFromBus(QStringLiteral("file-manager"));
    }

    bool isRegistered() const { return m_registered; }

    bool refuses = false;
    bool keepsSilent = false;
    QList<QStringList> shown;
    QStringList startUpIds;

public slots:
    void ShowItems(const QStringList& addresses, const QString& startUpId)
    {
        shown.append(addresses);
        startUpIds.append(startUpId);
        if (refuses)
            sendErrorReply(QDBusError::Failed, QStringLiteral("not today"));
        if (keepsSilent)
            setDelayedReply(true);
    }

private:
    QDBusConnection m_connection;
    bool m_registered = false;
};

} // namespace

/// Showing a file in the file manager, before a stand-in that answers on the message bus.
class TestFileManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(QDBusConnection::sessionBus().isConnected(), "no dbus-daemon?"); }

    void fileManagerIsAskedToShowTheFile_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("address");
        QTest::newRow("plain") << "/videos/a.mp4"
                               << "file:///videos/a.mp4";
        QTest::newRow("blanks") << "/my videos/a b.mp4"
                                << "file:///my%20videos/a%20b.mp4";
        QTest::newRow("percent signs") << "/100%/%20.mp4"
                                       << "file:///100%25/%2520.mp4";
        QTest::newRow("quotes") << "/\"a\"/'b'.mp4"
                                << "file:///%22a%22/'b'.mp4";
        QTest::newRow("line break") << "/a\nb.mp4"
                                    << "file:///a%0Ab.mp4";
        QTest::newRow("leading dashes") << "/--help/-rf.mp4"
                                        << "file:///--help/-rf.mp4";
        QTest::newRow("hash and question mark") << "/a#b?c.mp4"
                                                << "file:///a%23b%3Fc.mp4";
        QTest::newRow("shell") << "/$(id);`id`&.mp4"
                               << "file:///$(id);%60id%60&.mp4";
        QTest::newRow("Japanese") << u"/\u9332.mp4"_qs << "file:///%E9%8C%B2.mp4";
    }

    void fileManagerIsAskedToShowTheFile()
    {
        QFETCH(const QString, path);
        QFETCH(const QString, address);
        StandInFileManager fileManager;
        QVERIFY(fileManager.isRegistered());
        const OpenedAddresses opener({"file"});
        platform::revealInFileManager(path);
        QTRY_COMPARE(fileManager.shown.size(), 1);
        QCOMPARE(fileManager.shown.front(), QStringList{address});
        QCOMPARE(fileManager.startUpIds.front(), QString());
        QCOMPARE(QUrl(address).toLocalFile(), path);
        QTRY_VERIFY(!isAnswerAwaited());
        QVERIFY(opener.opened().isEmpty());
    }

    void folderIsOpenedWhereThereIsNoFileManagerOnTheBus()
    {
        const OpenedAddresses opener({"file"});
        platform::revealInFileManager(QStringLiteral("/my videos/100%/-a.mp4"));
        QTRY_COMPARE(opener.opened(), QList<QUrl>{QUrl::fromLocalFile(QStringLiteral("/my videos/100%"))});
    }

    void folderIsOpenedWhereTheFileManagerRefuses()
    {
        StandInFileManager fileManager;
        fileManager.refuses = true;
        const OpenedAddresses opener({"file"});
        platform::revealInFileManager(QStringLiteral("/videos/a.mp4"));
        QTRY_COMPARE(opener.opened(), QList<QUrl>{QUrl::fromLocalFile(QStringLiteral("/videos"))});
        QCOMPARE(fileManager.shown.size(), 1);
    }

    void fileManagerThatKeepsSilentHoldsNobodyUp()
    {
        StandInFileManager fileManager;
        fileManager.keepsSilent = true;
        const OpenedAddresses opener({"file"});
        platform::revealInFileManager(QStringLiteral("/videos/a.mp4"), std::chrono::milliseconds(300));
        // Whoever waited for the answer would have seen the time run out.
        QVERIFY(isAnswerAwaited());
        QVERIFY(opener.opened().isEmpty());
        QTRY_COMPARE(fileManager.shown.size(), 1);
        QTRY_COMPARE(opener.opened(), QList<QUrl>{QUrl::fromLocalFile(QStringLiteral("/videos"))});
    }

    void fileManagerHasTenSecondsToAnswer() { QCOMPARE(platform::kFileManagerAnswerLimit, std::chrono::seconds(10)); }

    void emptyPathIsNothing()
    {
        StandInFileManager fileManager;
        const OpenedAddresses opener({"file"});
        platform::revealInFileManager({});
        QVERIFY(!isAnswerAwaited());
        // What had been sent would arrive before this.
        platform::revealInFileManager(QStringLiteral("/videos/b.mp4"));
        QTRY_VERIFY(!fileManager.shown.isEmpty());
        QCOMPARE(fileManager.shown, QList<QStringList>{{"file:///videos/b.mp4"}});
        QTRY_VERIFY(!isAnswerAwaited());
        QVERIFY(opener.opened().isEmpty());
    }

private:
    static bool isAnswerAwaited()
    {
        return !QCoreApplication::instance()->findChildren<QDBusPendingCallWatcher*>().isEmpty();
    }
};

static int run(int argc, char* argv[])
{
    const MessageBus bus;
    return testrun::gui<TestFileManager>(argc, argv);
}

REGISTER_TEST(run);

#include "test_filemanager_x11.moc"
