// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/desktop_notification.h"
#include "tests/support/messagebus.h"
#include "tests/support/notificationserver.h"
#include "tests/support/reportedfailures.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QDBusConnection>
#include <QSignalSpy>
#include <QTest>

using platform::DesktopNotifier;

namespace {

const auto kPortal = QStringLiteral("org.freedesktop.portal.Desktop");

/// What a desktop offers to programs that do not see its own service.
class Portal : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Notification")

public:
    Portal() : m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "portal"))
    {
        m_connection.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                                    QDBusConnection::ExportAllSlots);
        m_registered = m_connection.registerService(kPortal);
    }
    ~Portal() override
    {
        m_connection.unregisterService(kPortal);
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    }

    bool isRegistered() const { return m_registered; }

    QVariantMap message;

public slots:
    void AddNotification(const QString& /*id*/, const QVariantMap& notification) { message = notification; }
    void RemoveNotification(const QString& /*id*/) { message.clear(); }

private:
    QDBusConnection m_connection;
    bool m_registered = false;
};

} // namespace

/// Messages of the desktop, before stand-ins that answer on the message bus.
class TestDesktopNotification : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(QDBusConnection::sessionBus().isConnected(), "no dbus-daemon?"); }

    void serviceShowsTheMessage()
    {
        const NotificationServer server;
        QVERIFY(server.isRegistered());
        DesktopNotifier notifier(nullptr);
        notifier.show(QStringLiteral("Title"), QStringLiteral("a < b & c"));
        QTRY_COMPARE(server.messages().size(), 1);
        const NotificationServer::Message& message = server.messages().constFirst();
        QCOMPARE(message.program, QCoreApplication::applicationName());
        QCOMPARE(message.title, QStringLiteral("Title"));
        QCOMPARE(message.text, QStringLiteral("a < b & c"));
        QCOMPARE(message.actions.value(0), QStringLiteral("default"));
        QVERIFY(!message.actions.value(1).isEmpty());
    }

    void textIsNoMarkupWhereTheServiceTakesSuch()
    {
        const NotificationServer server({QStringLiteral("body"), QStringLiteral("body-markup")});
        DesktopNotifier notifier(nullptr);
        notifier.show(QStringLiteral("Title"), QStringLiteral("<b>a</b> & c"));
        QTRY_COMPARE(server.messages().size(), 1);
        QCOMPARE(server.messages().constFirst().text, QStringLiteral("&lt;b&gt;a&lt;/b&gt; &amp; c"));
    }

    void clickIsReportedForOwnMessagesAlone()
    {
        NotificationServer server;
        DesktopNotifier other(nullptr);
        other.show(QStringLiteral("Title"), QStringLiteral("of another"));
        QTRY_COMPARE(server.messages().size(), 1);
        DesktopNotifier notifier(nullptr);
        const QSignalSpy activated(&notifier, &DesktopNotifier::activated);
        const QSignalSpy othersActivated(&other, &DesktopNotifier::activated);
        notifier.show(QStringLiteral("Title"), QStringLiteral("own"));
        QTRY_COMPARE(server.messages().size(), 2);
        server.click(1);
        QTRY_COMPARE(othersActivated.size(), 1);
        QCOMPARE(activated.size(), 0);
        server.click(2);
        QTRY_COMPARE(activated.size(), 1);
        QCOMPARE(othersActivated.size(), 1);
    }

    void portalShowsTheMessageWhereThereIsNoService()
    {
        const Portal portal;
        QVERIFY(portal.isRegistered());
        const ReportedFailures failures;
        DesktopNotifier notifier(nullptr);
        notifier.show(QStringLiteral("Title"), QStringLiteral("<text>"));
        QTRY_VERIFY(!portal.message.isEmpty());
        QCOMPARE(portal.message.value(QStringLiteral("title")).toString(), QStringLiteral("Title"));
        QCOMPARE(portal.message.value(QStringLiteral("body")).toString(), QStringLiteral("<text>"));
        QCOMPARE(failures.sentences(), QStringList());
    }

    void messagesAreClosed()
    {
        NotificationServer server;
        DesktopNotifier notifier(nullptr);
        const QSignalSpy activated(&notifier, &DesktopNotifier::activated);
        notifier.closeAll();
        notifier.show(QStringLiteral("Title"), QStringLiteral("one"));
        notifier.show(QStringLiteral("Title"), QStringLiteral("two"));
        const auto clickAndLook = [&] {
            server.click(2);
            return activated.size() == 1;
        };
        QTRY_VERIFY(clickAndLook());
        notifier.closeAll();
        // The other one has gone with the click.
        QTRY_COMPARE(server.closed(), QList<uint>{1});
        notifier.show(QStringLiteral("Title"), QStringLiteral("three"));
        QTRY_COMPARE(server.messages().size(), 3);
    }

    /// Whenever the service answers.
    void messageThatIsBeingSentIsClosedAsWell()
    {
        const NotificationServer server;
        DesktopNotifier notifier(nullptr);
        notifier.show(QStringLiteral("Title"), QStringLiteral("not sent"));
        notifier.closeAll();
        notifier.show(QStringLiteral("Title"), QStringLiteral("one"));
        QTRY_COMPARE(server.messages().size(), 1);
        notifier.closeAll();
        QTRY_COMPARE(server.closed(), QList<uint>{1});
        QCOMPARE(server.messages().constFirst().text, QStringLiteral("one"));
    }

    void messageInThePortalIsRemoved()
    {
        const Portal portal;
        DesktopNotifier notifier(nullptr);
        notifier.show(QStringLiteral("Title"), QStringLiteral("text"));
        QTRY_VERIFY(!portal.message.isEmpty());
        notifier.closeAll();
        QTRY_VERIFY(portal.message.isEmpty());
    }

    void desktopWithoutMessagesIsReported()
    {
        const ReportedFailures failures;
        DesktopNotifier notifier(nullptr);
        notifier.show(QStringLiteral("Title"), QStringLiteral("text"));
        QTRY_COMPARE(failures.sentences().size(), 1);
        QVERIFY(failures.sentences().constFirst().startsWith(QLatin1String("No message of the desktop: ")));
    }
};

static int run(int argc, char* argv[])
{
    const MessageBus bus;
    return testrun::gui<TestDesktopNotification>(argc, argv);
}

REGISTER_TEST(run);

#include "test_desktopnotification_x11.moc"
