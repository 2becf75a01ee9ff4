#include "platform/explorer_arguments.h"
#include "platform/file_manager.h"
#include "platform/shell_path.h"
#include "platform/system_failure.h"

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
    if (length == 0)
        reportSystemFailure("GetSystemWindowsDirectory", GetLastError());
    if (length == 0 || length >= folder.size())
        return QStringLiteral("explorer");
    return QString::fromWCharArray(folder.data(), static_cast<int>(length)) + QStringLiteral("\\explorer.exe");
}

} // namespace

void revealInFileManager(const QString& path, std::chrono::milliseconds /*answerLimit*/)
{
    const std::optional<QString> arguments = explorerArguments(shellPath(path));
    if (!arguments) {
        reportFailure(QStringLiteral("Not the path of a file, not shown in the file manager: %1").arg(path));
        return;
    }
    QProcess explorer;
    explorer.setProgram(explorerProgram());
    explorer.setNativeArguments(*arguments);
    if (!explorer.startDetached())
        reportFailure(QStringLiteral("Explorer could not be started: %1").arg(explorer.errorString()));
}

} // namespace platform
