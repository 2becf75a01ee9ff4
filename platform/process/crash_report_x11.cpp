// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/crash_report.h"

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QString>
#include <QTimeZone>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <execinfo.h>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::size_t kAlternateStackSize = std::size_t{128} * 1024;
constexpr std::string_view kReportName = "/crash_yyyy-MM-dd_HH-mm-ss.dmp";
constexpr std::size_t kStampLength = 19; // "yyyy-MM-dd_HH-mm-ss"

// Prepared at install: a signal handler may neither allocate nor lock, so it cannot ask the C library for local time.
std::array<char, PATH_MAX> g_path;
char* g_stamp = nullptr; ///< in g_path
std::array<char, 128> g_program;
std::array<char, kAlternateStackSize> g_alternateStack;
int64_t g_utcOffset = 0;
int64_t g_offsetChange = INT64_MAX; ///< from this moment on (seconds since 1970, UTC) g_nextUtcOffset holds
int64_t g_nextUtcOffset = 0;
// Handlers run on the thread that crashes. What stands above is constant after install, except the time in g_path,
// which the reporting thread alone writes.
std::atomic<unsigned> g_timeoutSeconds = 0;

std::atomic<pid_t> g_reportingThread = 0;
std::atomic<int> g_fatalSignal = 0;

// ---- At install -----------------------------------------------------------------------------------------------------

template <std::size_t Size>
bool keep(std::array<char, Size>& target, const QByteArray& text)
{
    if (static_cast<std::size_t>(text.size()) >= Size)
        return false;
    *std::copy(text.begin(), text.end(), target.begin()) = '\0';
    return true;
}

void keepUtcOffsets()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QTimeZone zone = QTimeZone::systemTimeZone();
    g_utcOffset = zone.offsetFromUtc(now);
    const QTimeZone::OffsetData next = zone.nextTransition(now);
    g_offsetChange = next.atUtc.isValid() ? next.atUtc.toSecsSinceEpoch() : INT64_MAX;
    g_nextUtcOffset = next.offsetFromUtc;
}

/// The first backtrace() loads a library, which a signal handler may not.
void warmUpBacktrace()
{
    std::array<void*, 2> frames{};
    backtrace(frames.data(), static_cast<int>(frames.size()));
}

// ---- In the handler -------------------------------------------------------------------------------------------------

struct Hex
{
    uintptr_t number;
};

/// The report's file, written unbuffered.
struct Report
{
    int file;

    Report& operator<<(std::string_view text)
    {
        while (!text.empty()) {
            const ssize_t count = write(file, text.data(), text.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                break;
            text.remove_prefix(static_cast<std::size_t>(count));
        }
        return *this;
    }
    Report& operator<<(int number) { return digits(number, 10); }
    Report& operator<<(Hex hex) { return (*this << "0x").digits(hex.number, 16); }

private:
    template <typename Number>
    Report& digits(Number number, int base)
    {
        std::array<char, 24> text{};
        const char* const end = std::to_chars(text.begin(), text.end(), number, base).ptr;
        return *this << std::string_view(text.data(), static_cast<std::size_t>(end - text.data()));
    }
};

char* writeDigits(char* target, unsigned number, int count)
{
    for (char* digit = target + count; digit != target; number /= 10)
        *--digit = static_cast<char>('0' + number % 10);
    return target + count;
}

/// Writes the local time into the file name.
void stampPath()
{
    using namespace std::chrono;
    const int64_t now = std::time(nullptr);
    const sys_seconds local{seconds(now + (now < g_offsetChange ? g_utcOffset : g_nextUtcOffset))};
    const year_month_day date(floor<days>(local));
    const hh_mm_ss time(local - floor<days>(local));
    char* end = writeDigits(g_stamp, static_cast<unsigned>(static_cast<int>(date.year())), 4);
    for (const unsigned part :
         {static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
          static_cast<unsigned>(time.hours().count()), static_cast<unsigned>(time.minutes().count()),
          static_cast<unsigned>(time.seconds().count())})
        end = writeDigits(end + 1, part, 2);
}

void writeHead(Report& report, int number, const siginfo_t& information)
{
    report << "Crash report of " << g_program.data() << "\nTime: " << std::string_view(g_stamp, kStampLength);
    report << "\nSignal: " << number << " SIG" << sigabbrev_np(number) << " (" << sigdescr_np(number) << ")";
    report << "\nCode: " << information.si_code;
    if (information.si_code <= 0)
        report << "\nSent by process: " << information.si_pid;
    else
        report << "\nAddress: " << Hex{reinterpret_cast<uintptr_t>(information.si_addr)};
    report << "\nProcess: " << getpid() << "\nThread: " << gettid() << "\n";
}

/// Copies a file of the kernel's into the report; nothing where there is none.
bool copyFile(Report& report, int folder, const char* path)
{
    const int file = openat(folder, path, O_RDONLY | O_CLOEXEC);
    std::array<char, 1024> part{};
    bool isCopied = false;
    for (ssize_t count = 0; (count = read(file, part.data(), part.size())) > 0; isCopied = true)
        report << std::string_view(part.data(), static_cast<std::size_t>(count));
    close(file);
    return isCopied;
}

/// A line with the thread's id and name.
void writeThread(Report& report, int threads, const char* id)
{
    report << "  " << id << " ";
    const int thread = openat(threads, id, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    // A thread may end meanwhile.
    if (!copyFile(report, thread, "comm"))
        report << "\n";
    close(thread);
}

void writeThreads(Report& report)
{
    report << "\nThreads:\n";
    const int threads = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    // readdir() allocates.
    alignas(dirent64) std::array<char, 4096> entries{};
    for (ssize_t size = 0; (size = getdents64(threads, entries.data(), entries.size())) > 0;) {
        const dirent64* entry = nullptr;
        for (ssize_t offset = 0; offset < size; offset += entry->d_reclen) {
            entry = reinterpret_cast<const dirent64*>(entries.data() + offset);
            if (entry->d_name[0] != '.')
                writeThread(report, threads, entry->d_name);
        }
    }
    close(threads);
}

void writeStack(Report& report)
{
    report << "\nCall stack of the thread that crashed:\n";
    std::array<void*, 128> frames{};
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    // First without names: the dynamic loader, which has the names, may be what crashed.
    for (int frame = 0; frame < count; ++frame)
        report << "  " << Hex{reinterpret_cast<uintptr_t>(frames.at(static_cast<std::size_t>(frame)))} << "\n";
    report << "\nThe same with names:\n";
    backtrace_symbols_fd(frames.data(), count, report.file);
}

void writeReport(int number, const siginfo_t& information)
{
    stampPath();
    Report report{open(g_path.data(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR)};
    if (report.file < 0)
        return;
    writeHead(report, number, information);
    writeThreads(report);
    report << "\nLoaded objects:\n";
    copyFile(report, AT_FDCWD, "/proc/self/maps");
    // Last, since walking a broken stack may crash again.
    writeStack(report);
    report << "\nEnd of report\n";
    close(report.file);
}

/// Ends the process by the signal it crashed with, where its report does not come to an end.
void endWithoutReport()
{
    const int number = g_fatalSignal;
    std::signal(number, SIG_DFL);
    sigset_t fatal = {};
    sigemptyset(&fatal);
    sigaddset(&fatal, number);
    // Blocked in the thread that reports; SIGALRM may interrupt any thread.
    pthread_sigmask(SIG_UNBLOCK, &fatal, nullptr);
    raise(number);
}

void onFatalSignal(int number, siginfo_t* information, void* /*context*/)
{
    pid_t reporting = 0;
    if (g_reportingThread.compare_exchange_strong(reporting, gettid())) {
        g_fatalSignal = number;
        std::signal(SIGALRM, [](int /*number*/) { endWithoutReport(); });
        // The program may have been started with the signal blocked.
        sigset_t timeout = {};
        sigemptyset(&timeout);
        sigaddset(&timeout, SIGALRM);
        pthread_sigmask(SIG_UNBLOCK, &timeout, nullptr);
        alarm(g_timeoutSeconds);
        writeReport(number, *information);
        alarm(0);
    } else if (reporting == gettid()) {
        endWithoutReport(); // writing the report has crashed
    } else {
        for (;;) // another thread is writing its report; the process ends with it
            pause();
    }
    // Blocked until this handler returns, so the default action follows on the stack that crashed.
    std::signal(number, SIG_DFL);
    raise(number);
}

void handleSignals()
{
    stack_t stack = {};
    stack.ss_sp = g_alternateStack.data();
    stack.ss_size = g_alternateStack.size();
    sigaltstack(&stack, nullptr);

    struct sigaction action = {};
    action.sa_sigaction = onFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (const int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT})
        sigaction(number, &action, nullptr);
}

} // namespace

void installCrashReporter(const QString& folder, const QByteArray& program, std::chrono::seconds timeout)
{
    const QByteArray path = QFile::encodeName(folder) + kReportName.data();
    if (!keep(g_path, path) || !keep(g_program, program))
        return;
    g_stamp = g_path.data() + path.lastIndexOf("yyyy");
    g_timeoutSeconds = static_cast<unsigned>(timeout.count());
    keepUtcOffsets();
    warmUpBacktrace();
    handleSignals();
}

} // namespace platform
