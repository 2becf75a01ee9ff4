#include "platform/explorer_arguments.h"
#include "platform/file_manager.h"

#include <QDebug>
#include <QProcess>

#include <windows.h>

#include <array>

namespace platform {

namespace {

/// By its whole path, since a bare name would be looked for beside the program and in the working folder first.
QString explorerProgram()
{
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT length = GetSystemWindowsDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    if (length == 0 || length >= folder.size())
        return QStringLiteral("explorer");
    return QString::fromWCharArray(folder.data(), static_cast<int>(length)) + QStringLiteral("\\explorer.exe");
}

} // namespace

void revealInFileManager(const QString& path)
{
    const std::optional<QString> arguments = explorerArguments(path);
    if (!arguments) {
        qWarning() << "Not the path of a file, not shown in the file manager:" << path;
        return;
    }
    QProcess explorer;
    explorer.setProgram(explorerProgram());
    explorer.setNativeArguments(*arguments);
    if (!explorer.startDetached())
        qWarning() << "Explorer could not be started:" << explorer.errorString();
}

} // namespace platform
