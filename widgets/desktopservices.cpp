// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/desktopservices.h"

#include "app/sclogger.h"
#include "app/shownpath.h"
#include "platform/files/file_manager.h"

#include <QDesktopServices>
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

} // namespace

bool openFile(const QString& path)
{
    const bool opened = QDesktopServices::openUrl(QUrl::fromLocalFile(platform::shellPath(path)));
    if (!opened)
        SCLogger::warning(QStringLiteral("The system could not open it: \"%1\"").arg(shownPath(path)));
    return opened;
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
