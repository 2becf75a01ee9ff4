// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system_failure.h"
#include "platform/windowing/desktop_notification.h"

#include <QCoreApplication>
#include <QDBusAbstractInterface>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QSet>
#include <QVariantMap>

#include <functional>

namespace platform {

namespace {

/// What Qt needs a class for: the signals on the bus.
class NotificationService : public QDBusAbstractInterface
{
    Q_OBJECT

public:
    explicit NotificationService(QObject* parent)
        : QDBusAbstractInterface(QStringLiteral("org.freedesktop.Notifications"),
                                 QStringLiteral("/org/freedesktop/Notifications"), "org.freedesktop.Notifications",
                                 QDBusConnection::sessionBus(), parent)
    {}

signals:
    /// Named as on the bus, where all programs receive it for all messages.
    void ActionInvoked(uint id, const QString& key);
};

struct Message
{
    QString title;
    QString text;
};

QDBusMessage portalCall(const Message& message)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Notification"), QStringLiteral("AddNotification"));
    call.setArguments({QStringLiteral("notice"),
                       QVariantMap{{QStringLiteral("title"), message.title}, {QStringLiteral("body"), message.text}}});
    return call;
}

} // namespace

class DesktopNotifier::Private : public QObject
{
public:
    explicit Private(DesktopNotifier& notifier) : m_notifier(notifier) {}

    void show(const Message& message)
    {
        if (!QDBusConnection::sessionBus().isConnected()) {
            reportFailure(QStringLiteral("No message of the desktop: the session has no message bus"));
            return;
        }
        const QDBusPendingCall asked = service().asyncCall(QStringLiteral("GetCapabilities"));
        whenAnswered(asked, [this, message](const QDBusPendingCall& call) {
            const QDBusPendingReply<QStringList> capabilities = call;
            if (capabilities.isError())
                showByPortal(message);
            else
                showByService(message, capabilities.value().contains(QLatin1String("body-markup")));
        });
    }

private:
    using Answered = std::function<void(const QDBusPendingCall&)>;

    NotificationService& service()
    {
        if (m_service == nullptr) {
            m_service = new NotificationService(this);
            connect(m_service, &NotificationService::ActionInvoked, this, &Private::onActionInvoked);
        }
        return *m_service;
    }

    void whenAnswered(const QDBusPendingCall& call, const Answered& answered)
    {
        auto* const watcher = new QDBusPendingCallWatcher(call, this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [answered](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            answered(*finished);
        });
    }

    void showByService(const Message& message, bool takesMarkup)
    {
        const QString body = takesMarkup ? message.text.toHtmlEscaped() : message.text;
        // A click on the message is the action "default". -1: as long as the desktop shows such messages.
        const QStringList actions{QStringLiteral("default"), message.title};
        const QDBusPendingCall sent =
            service().asyncCall(QStringLiteral("Notify"), QCoreApplication::applicationName(), 0U, QString(),
                                message.title, body, actions, QVariantMap(), -1);
        whenAnswered(sent, [this, message](const QDBusPendingCall& call) {
            const QDBusPendingReply<uint> id = call;
            if (id.isError())
                showByPortal(message);
            else
                m_ids.insert(id.value());
        });
    }

    void showByPortal(const Message& message)
    {
        whenAnswered(QDBusConnection::sessionBus().asyncCall(portalCall(message)), [](const QDBusPendingCall& call) {
            if (call.isError())
                reportFailure(QStringLiteral("No message of the desktop: %1").arg(call.error().message()));
        });
    }

    void onActionInvoked(uint id)
    {
        if (m_ids.remove(id))
            emit m_notifier.activated();
    }

    DesktopNotifier& m_notifier;
    NotificationService* m_service = nullptr;
    QSet<uint> m_ids;
};

DesktopNotifier::DesktopNotifier(QObject* parent) : QObject(parent), m_private(std::make_unique<Private>(*this)) {}

DesktopNotifier::~DesktopNotifier() = default;

void DesktopNotifier::show(const QString& title, const QString& text)
{
    m_private->show({title, text});
}

} // namespace platform

#include "desktop_notification_x11.moc"
