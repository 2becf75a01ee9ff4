#include "platform/crash_report.h"

#include <QByteArray>
#include <QDir>
#include <QString>

// clang-format off: the second needs the first
#include <windows.h>
#include <dbghelp.h>
// clang-format on

#include <cstdlib>
#include <cwchar>
#include <exception>
#include <iterator>

namespace platform {

namespace {

/// Large but complete: the memory is what explains a crash that nobody can repeat.
constexpr auto kDumpType =
    static_cast<MINIDUMP_TYPE>(MiniDumpWithDataSegs | MiniDumpWithFullMemory | MiniDumpWithHandleData |
                               MiniDumpWithUnloadedModules | MiniDumpWithThreadInfo);
static_assert(kDumpType == 0x1027);

constexpr std::size_t kPathLength = 1024;

// Filled in at install, since a crashing program had better not ask for memory.
wchar_t g_pathPrefix[kPathLength];

HANDLE createReportFile()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    wchar_t path[kPathLength + 32];
    std::swprintf(path, std::size(path), L"%ls%04u-%02u-%02u_%02u-%02u-%02u.dmp", g_pathPrefix, now.wYear, now.wMonth,
                  now.wDay, now.wHour, now.wMinute, now.wSecond);
    return CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

LONG WINAPI onUnhandledException(EXCEPTION_POINTERS* exception)
{
    const HANDLE file = createReportFile();
    if (file == INVALID_HANDLE_VALUE)
        return EXCEPTION_CONTINUE_SEARCH;
    MINIDUMP_EXCEPTION_INFORMATION information{};
    information.ThreadId = GetCurrentThreadId();
    information.ExceptionPointers = exception;
    information.ClientPointers = FALSE;
    MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, kDumpType,
                      exception != nullptr ? &information : nullptr, nullptr, nullptr);
    CloseHandle(file);
    return EXCEPTION_CONTINUE_SEARCH;
}

/// An uncaught C++ exception does not reach the filter with this compiler's run time: it ends in std::terminate.
[[noreturn]] void onTerminate()
{
    onUnhandledException(nullptr);
    std::abort();
}

} // namespace

void installCrashReporter(const QString& folder, const QByteArray& /*program*/, std::chrono::seconds /*timeout*/)
{
    const QString prefix = QDir::toNativeSeparators(folder + QLatin1String("/crash_"));
    if (static_cast<std::size_t>(prefix.size()) >= kPathLength)
        return;
    g_pathPrefix[prefix.toWCharArray(g_pathPrefix)] = L'\0';
    SetUnhandledExceptionFilter(onUnhandledException);
    std::set_terminate(onTerminate);
}

} // namespace platform
