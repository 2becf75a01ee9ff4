#include "platform/file_manager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDebug>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace platform {

namespace {

constexpr int kAnswerMs = 10000;

void openFolderOf(const QString& path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

QDBusMessage showItemsCall(const QString& path)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    // Addresses of files, encoded, and the id of the start-up that they belong to: none.
    const QString address = QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
    call.setArguments({QStringList{address}, QString()});
    return call;
}

} // namespace

void revealInFileManager(const QString& path)
{
    if (path.isEmpty())
        return;
    const QDBusPendingCall call = QDBusConnection::sessionBus().asyncCall(showItemsCall(path), kAnswerMs);
    auto* const watcher = new QDBusPendingCallWatcher(call, QCoreApplication::instance());
    const auto finish = [path](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        if (!finished->isError())
            return;
        qInfo() << "No file manager on the message bus, the folder is opened:" << finished->error().message();
        openFolderOf(path);
    };
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, QCoreApplication::instance(), finish);
}

} // namespace platform
