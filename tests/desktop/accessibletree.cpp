// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/accessibletree.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QEventLoop>
#include <QList>
#include <QThread>

#include <memory>

namespace {

const auto kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
const auto kRoot = QStringLiteral("/org/a11y/atspi/accessible/root");
const auto kConnection = QStringLiteral("screen-reader");

/// Where an object is on the bus.
struct Reference
{
    QString service;
    QString path;
};

/// Asks from a thread of its own: who answers may be this process.
class Questions
{
public:
    explicit Questions(const QDBusConnection& bus) : m_bus(bus) {}

    AccessibleObject describe(const Reference& reference) const
    {
        AccessibleObject object;
        object.name = property(reference, QStringLiteral("Name")).toString();
        object.role = call(reference, QStringLiteral("GetRoleName")).toString();
        const auto states = qdbus_cast<QList<uint>>(call(reference, QStringLiteral("GetState")));
        for (qsizetype word = 0; word < states.size(); ++word)
            object.states |= uint64_t{states.at(word)} << (32 * word);
        return object;
    }

    /// @param reference of the registry, a program or something that is shown
    AccessibleObject read(const Reference& reference, int depth = 0) const
    {
        AccessibleObject object = describe(reference);
        constexpr int kWindows = 2;
        if (depth >= kWindows && !object.is(AccessibleObject::Showing))
            return object;
        for (const Reference& child : children(reference)) {
            AccessibleObject shown = read(child, depth + 1);
            if (depth + 1 < kWindows || shown.is(AccessibleObject::Showing))
                object.children.push_back(std::move(shown));
        }
        return object;
    }

private:
    QVariant call(const Reference& reference, const QString& method) const
    {
        const auto question = QDBusMessage::createMethodCall(reference.service, reference.path, kAccessible, method);
        return m_bus.call(question).arguments().value(0);
    }

    QVariant property(const Reference& reference, const QString& name) const
    {
        auto question =
            QDBusMessage::createMethodCall(reference.service, reference.path,
                                           QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        question << kAccessible << name;
        return m_bus.call(question).arguments().value(0).value<QDBusVariant>().variant();
    }

    QList<Reference> children(const Reference& reference) const
    {
        QList<Reference> found;
        const QVariant answer = call(reference, QStringLiteral("GetChildren"));
        if (!answer.canConvert<QDBusArgument>())
            return found;
        const auto list = answer.value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QDBusObjectPath path;
            Reference child;
            list.beginStructure();
            list >> child.service >> path;
            list.endStructure();
            child.path = path.path();
            found.append(child);
        }
        list.endArray();
        return found;
    }

    QDBusConnection m_bus;
};

} // namespace

void visitAccessible(const AccessibleObject& object, const std::function<void(const AccessibleObject&)>& visit)
{
    for (const AccessibleObject& child : object.children) {
        visit(child);
        visitAccessible(child, visit);
    }
}

ScreenReader::ScreenReader() : m_bus(connectToBus()) {}

ScreenReader::~ScreenReader()
{
    QDBusConnection::disconnectFromBus(kConnection);
}

QDBusConnection ScreenReader::connectToBus()
{
    const auto question =
        QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                       QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
    const QDBusMessage answer = QDBusConnection::sessionBus().call(question);
    return QDBusConnection::connectToBus(answer.arguments().value(0).toString(), kConnection);
}

AccessibleObject ScreenReader::read() const
{
    AccessibleObject root;
    const std::unique_ptr<QThread> thread(QThread::create([this, &root] {
        root = Questions(m_bus).read({QStringLiteral("org.a11y.atspi.Registry"), kRoot});
    }));
    QEventLoop loop;
    QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec();
    thread->wait();
    return root;
}
