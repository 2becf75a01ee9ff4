// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

/// What shows a desktop's messages: a service on the session's bus, on a connection of its own, as another program's.
class NotificationServer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Message
    {
        QString program;
        QString title;
        QString text;
        QStringList actions;
    };

    explicit NotificationServer(const QStringList& capabilities = {QStringLiteral("body")})
        : m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName()))
        , m_capabilities(capabilities)
    {
        m_connection.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                                    QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        m_registered = m_connection.registerService(service());
    }
    ~NotificationServer() override
    {
        m_connection.unregisterService(service());
        QDBusConnection::disconnectFromBus(connectionName());
    }

    bool isRegistered() const { return m_registered; }

    /// The first one's id is 1.
    const QList<Message>& messages() const { return m_messages; }

    const QList<uint>& closed() const { return m_closed; }

    /// As a click on a message of that id does.
    void click(uint id) { emit ActionInvoked(id, QStringLiteral("default")); }

public slots:
    QStringList GetCapabilities() { return m_capabilities; }

    uint Notify(const QString& program, uint /*replacesId*/, const QString& /*icon*/, const QString& title,
                const QString& text, const QStringList& actions, const QVariantMap& /*hints*/, int /*timeoutMs*/)
    {
        m_messages.append({program, title, text, actions});
        return static_cast<uint>(m_messages.size());
    }

    void CloseNotification(uint id) { m_closed.append(id); }

signals:
    void ActionInvoked(uint id, const QString& key);

private:
    static QString connectionName() { return QStringLiteral("notification-server"); }
    static QString service() { return QStringLiteral("org.freedesktop.Notifications"); }

    QDBusConnection m_connection;
    QStringList m_capabilities;
    QList<Message> m_messages;
    QList<uint> m_closed;
    bool m_registered = false;
};
