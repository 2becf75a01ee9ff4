#include "widgets/openfile.h"

#include "app/sclogger.h"
#include "platform/files/file_manager.h"

#include <QDesktopServices>
#include <QUrl>

bool openFile(const QString& path)
{
    const bool opened = QDesktopServices::openUrl(QUrl::fromLocalFile(platform::shellPath(path)));
    if (!opened)
        SCLogger::warning(QStringLiteral("The system could not open it: \"%1\"").arg(path));
    return opened;
}
