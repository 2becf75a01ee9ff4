// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/desktopservices.h"

#include "app/sclogger.h"
#include "app/shownpath.h"
#include "platform/files/file_manager.h"
#include "platform/files/file_opening.h"

#include <QDesktopServices>
#include <QPointer>
#include <QUrl>

namespace {

/// How much of an address the log repeats.
constexpr int kLongestLogged = 200;

bool isWebAddress(const QUrl& url)
{
    const QString scheme = url.scheme();
    return url.isValid() && !url.host().isEmpty() &&
           (scheme == QLatin1String("https") || scheme == QLatin1String("http"));
}

void logNotOpened(const QString& path)
{
    SCLogger::warning(QStringLiteral("The system could not open it: \"%1\"").arg(shownPath(path)));
}

} // namespace

bool openFile(const QString& path)
{
    const bool opened = QDesktopServices::openUrl(QUrl::fromLocalFile(platform::shellPath(path)));
    if (!opened)
        logNotOpened(path);
    return opened;
}

void openFile(const QString& path, const QObject& context, const std::function<void()>& notOpened)
{
    const auto onFailed = [path, notOpened, caller = QPointer<const QObject>(&context)] {
        logNotOpened(path);
        if (!caller.isNull())
            notOpened();
    };
    // Qt's own call to xdg-open succeeds with its start.
    if (!platform::openWatched(path, onFailed) && !openFile(path))
        notOpened();
}

bool openWebPage(const QString& address)
{
    const QUrl url(address);
    if (!isWebAddress(url)) {
        SCLogger::warning(QStringLiteral("Not opened, since it is no address of a web page: \"%1\"")
                              .arg(address.left(kLongestLogged)));
        return false;
    }
    const bool opened = QDesktopServices::openUrl(url);
    if (!opened)
        SCLogger::warning(
            QStringLiteral("The system could not open the web page: \"%1\"").arg(address.left(kLongestLogged)));
    return opened;
}
