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

#include <utility>

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

/// The portal has one message of the program, by this name.
const auto kPortalId = QStringLiteral("notice");

QDBusPendingCall callPortal(const QString& method, const QVariantList& arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
                                                       QStringLiteral("/org/freedesktop/portal/desktop"),
                                                       QStringLiteral("org.freedesktop.portal.Notification"), method);
    call.setArguments(arguments);
    return QDBusConnection::sessionBus().asyncCall(call);
}

QDBusPendingCall addToPortal(const Message& message)
{
    const QVariantMap content{{QStringLiteral("title"), message.title}, {QStringLiteral("body"), message.text}};
    return callPortal(QStringLiteral("AddNotification"), {kPortalId, content});
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
        whenAnswered(asked, [this, message, series = m_series](const QDBusPendingCall& call) {
            if (series != m_series)
                return;
            const QDBusPendingReply<QStringList> capabilities = call;
            if (capabilities.isError())
                showByPortal(message);
            else
                showByService(message, capabilities.value().contains(QLatin1String("body-markup")));
        });
    }

    void closeAll()
    {
        ++m_series;
        for (const uint id : std::as_const(m_ids))
            close(id);
        m_ids.clear();
        if (m_isInPortal)
            callPortal(QStringLiteral("RemoveNotification"), {kPortalId});
        m_isInPortal = false;
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
        whenAnswered(sent, [this, message, series = m_series](const QDBusPendingCall& call) {
            const QDBusPendingReply<uint> id = call;
            if (!id.isError() && series == m_series)
                m_ids.insert(id.value());
            else if (!id.isError())
                close(id.value());
            else if (series == m_series)
                showByPortal(message);
        });
    }

    void close(uint id) { service().asyncCall(QStringLiteral("CloseNotification"), id); }

    void showByPortal(const Message& message)
    {
        m_isInPortal = true;
        whenAnswered(addToPortal(message), [](const QDBusPendingCall& call) {
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
    bool m_isInPortal = false;
    /// Counts closeAll(), which may come before an answer.
    int m_series = 0;
};

DesktopNotifier::DesktopNotifier(QObject* parent) : QObject(parent), m_private(std::make_unique<Private>(*this)) {}

DesktopNotifier::~DesktopNotifier() = default;

void DesktopNotifier::show(const QString& title, const QString& text)
{
    m_private->show({title, text});
}

void DesktopNotifier::closeAll()
{
    m_private->closeAll();
}

} // namespace platform

#include "desktop_notification_x11.moc"
