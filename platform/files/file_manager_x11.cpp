// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_manager.h"

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

/// Also for a bus that is not there, for which no answer comes.
void openFolderUnlessShown(const QDBusPendingCall& call, const QString& path)
{
    if (!call.isError())
        return;
    qInfo() << "No file manager on the message bus, the folder is opened:" << call.error().message();
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

} // namespace

void revealInFileManager(const QString& path, std::chrono::milliseconds answerLimit)
{
    if (path.isEmpty())
        return;
    const QDBusPendingCall call =
        QDBusConnection::sessionBus().asyncCall(showItemsCall(path), static_cast<int>(answerLimit.count()));
    if (call.isFinished()) {
        openFolderUnlessShown(call, path);
        return;
    }
    auto* const watcher = new QDBusPendingCallWatcher(call, QCoreApplication::instance());
    const auto finish = [path](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        openFolderUnlessShown(*finished, path);
    };
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, QCoreApplication::instance(), finish);
}

QString shellPath(const QString& path)
{
    return path;
}

} // namespace platform
