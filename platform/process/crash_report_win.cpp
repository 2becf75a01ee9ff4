// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/windows_path.h"
#include "platform/process/crash_report.h"
#include "platform/system_failure.h"

#include <QByteArray>
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

/// The longest path that the system takes, with its closing zero.
constexpr std::size_t kPathLength = 32768;
/// The time, the extension and the closing zero.
constexpr std::size_t kStampLength = std::size(L"2024-05-01_13-07-09.dmp");
/// What the filter needs of a stack that has run out; the report itself is written on another.
constexpr ULONG kFilterStackBytes = 64 * 1024;

// Filled in at install up to the time, since a crashing program had better not ask for memory, nor have so much of it
// on its stack, which may be what has run out. Of two threads that crash at once the second finds the file taken.
wchar_t g_path[kPathLength];
std::size_t g_prefixLength = 0;

/// Where there can be no file there is no report, and nothing is reported: the program is no longer to be trusted with
/// that.
HANDLE createReportFile()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::swprintf(g_path + g_prefixLength, kPathLength - g_prefixLength, L"%04u-%02u-%02u_%02u-%02u-%02u.dmp",
                  now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond);
    return CreateFileW(g_path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// @param threadId of the thread that crashed
void writeReport(EXCEPTION_POINTERS* exception, DWORD threadId)
{
    const HANDLE file = createReportFile();
    if (file == INVALID_HANDLE_VALUE)
        return;
    MINIDUMP_EXCEPTION_INFORMATION information{};
    information.ThreadId = threadId;
    information.ExceptionPointers = exception;
    information.ClientPointers = FALSE;
    MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, kDumpType,
                      exception != nullptr ? &information : nullptr, nullptr, nullptr);
    CloseHandle(file);
}

/// A thread that waits for the one crash whose report cannot be written where it happens: that of a stack that has run
/// out. Made at install, since a thread that begins may wait for what the crashing one holds.
struct ReportWriter
{
    HANDLE thread = nullptr;
    HANDLE wanted = nullptr;
    // Set by the thread that crashes, read by the writer after the event.
    EXCEPTION_POINTERS* exception = nullptr;
    DWORD crashedThreadId = 0;
};
ReportWriter g_writer;

DWORD WINAPI writeReportWhenWanted(void* /*parameter*/)
{
    if (WaitForSingleObject(g_writer.wanted, INFINITE) == WAIT_OBJECT_0)
        writeReport(g_writer.exception, g_writer.crashedThreadId);
    return 0;
}

void makeReportWriter()
{
    g_writer.wanted = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (g_writer.wanted == nullptr) {
        reportSystemFailure("CreateEvent", GetLastError());
        return;
    }
    g_writer.thread = CreateThread(nullptr, 0, &writeReportWhenWanted, nullptr, 0, nullptr);
    if (g_writer.thread == nullptr)
        reportSystemFailure("CreateThread", GetLastError());
}

LONG WINAPI onUnhandledException(EXCEPTION_POINTERS* exception)
{
    const bool stackHasRunOut =
        exception != nullptr && exception->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW;
    if (!stackHasRunOut || g_writer.thread == nullptr) {
        writeReport(exception, GetCurrentThreadId());
        return EXCEPTION_CONTINUE_SEARCH;
    }
    g_writer.exception = exception;
    g_writer.crashedThreadId = GetCurrentThreadId();
    SetEvent(g_writer.wanted);
    WaitForSingleObject(g_writer.thread, INFINITE);
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
    const QString prefix = extendedWindowsPath(folder + QLatin1String("/crash_"));
    if (static_cast<std::size_t>(prefix.size()) + kStampLength > kPathLength) {
        reportFailure(QStringLiteral("No crash will be reported, since the folder's path is too long: %1").arg(folder));
        return;
    }
    g_prefixLength = static_cast<std::size_t>(prefix.toWCharArray(g_path));
    if (g_writer.thread == nullptr)
        makeReportWriter();
    ULONG stackBytes = kFilterStackBytes;
    if (SetThreadStackGuarantee(&stackBytes) == 0)
        reportSystemFailure("SetThreadStackGuarantee", GetLastError());
    SetUnhandledExceptionFilter(onUnhandledException);
    std::set_terminate(onTerminate);
}

} // namespace platform
