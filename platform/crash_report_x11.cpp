#include "platform/crash_report.h"
#include "platform/signal_safe_writer.h"

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QString>
#include <QTimeZone>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::array kFatalSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};
constexpr std::size_t kAlternateStackSize = std::size_t{128} * 1024;
constexpr int kMaximumFrames = 128;
constexpr int kClockChanges = 16;
/// Room for what makes a path of the prefix: "yyyy-MM-dd_HH-mm-ss.dmp".
constexpr std::size_t kStampSize = 32;

/// From this moment on (seconds since 1970, UTC) local time is ahead of UTC by so many seconds.
struct ClockChange
{
    int64_t from;
    int offset;
};

// What the handler needs, made ready at install: in a signal handler there is no allocating, no locking and no asking
// the library for the local time.
std::array<char, PATH_MAX - kStampSize> g_pathPrefix;
std::array<char, 128> g_program;
std::array<ClockChange, kClockChanges> g_clockChanges;
std::array<char, kAlternateStackSize> g_alternateStack;
std::atomic<pid_t> g_reportingThread = 0;
std::atomic<int> g_fatalSignal = 0;
std::atomic<unsigned> g_timeoutSeconds = 0;

pid_t currentThread()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

// ---- Made ready at install ------------------------------------------------------------------------------------------

template <std::size_t Size>
bool keep(std::array<char, Size>& place, const QByteArray& text)
{
    if (static_cast<std::size_t>(text.size()) >= Size)
        return false;
    std::copy(text.begin(), text.end(), place.begin());
    place.at(static_cast<std::size_t>(text.size())) = '\0';
    return true;
}

/// The offset of local time now, and how it changes in the years to come.
void keepClockChanges()
{
    const QTimeZone zone = QTimeZone::systemTimeZone();
    QDateTime moment = QDateTime::currentDateTimeUtc();
    g_clockChanges.fill({INT64_MIN, zone.offsetFromUtc(moment)});
    for (std::size_t index = 1; index < g_clockChanges.size() && zone.hasTransitions(); ++index) {
        const QTimeZone::OffsetData next = zone.nextTransition(moment);
        if (!next.atUtc.isValid())
            return;
        std::fill(g_clockChanges.begin() + static_cast<std::ptrdiff_t>(index), g_clockChanges.end(),
                  ClockChange{next.atUtc.toSecsSinceEpoch(), next.offsetFromUtc});
        moment = next.atUtc;
    }
}

/// Walking the stack for the first time loads a library, which a signal handler may not.
void warmUpBacktrace()
{
    std::array<void*, 2> frames{};
    backtrace(frames.data(), static_cast<int>(frames.size()));
}

// ---- In the handler -------------------------------------------------------------------------------------------------

CivilTime localTime()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    int offset = 0;
    for (const ClockChange& change : g_clockChanges) {
        if (change.from <= now.tv_sec)
            offset = change.offset;
    }
    return civilTime(now.tv_sec + offset);
}

std::string_view signalName(int number)
{
    switch (number) {
    case SIGSEGV:
        return "SIGSEGV (invalid memory access)";
    case SIGBUS:
        return "SIGBUS (memory that is not there)";
    case SIGILL:
        return "SIGILL (invalid instruction)";
    case SIGFPE:
        return "SIGFPE (arithmetic fault)";
    default:
        return "SIGABRT (aborted)";
    }
}

int createReportFile(const CivilTime& now)
{
    SignalSafeWriter path(-1);
    path.text(g_pathPrefix.data()).time(now, "_", "-").text(".dmp");
    return open(path.buffer(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
}

void writeHead(SignalSafeWriter& report, const CivilTime& now, int number, const siginfo_t& information)
{
    report.text("Crash report of ").text(g_program.data()).text("\nTime: ").time(now, " ", ":");
    report.text("\nSignal: ").decimal(number).text(" ").text(signalName(number));
    report.text("\nCode: ").decimal(information.si_code);
    if (information.si_code <= 0)
        report.text("\nSent by process: ").decimal(information.si_pid);
    else
        report.text("\nAddress: ").hexadecimal(reinterpret_cast<uintptr_t>(information.si_addr));
    report.text("\nProcess: ").decimal(getpid()).text("\nThread: ").decimal(currentThread()).text("\n");
}

/// As read(), and again where a signal cut it short.
template <std::size_t Size>
ssize_t readSome(int file, std::array<char, Size>& place)
{
    ssize_t count = -1;
    do
        count = read(file, place.data(), place.size());
    while (count < 0 && errno == EINTR);
    return count;
}

/// Copies a small file of the kernel's into the report.
void copyFile(SignalSafeWriter& report, const char* path)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return;
    std::array<char, 1024> part{};
    for (ssize_t count = 0; (count = readSome(file, part)) > 0;)
        report.text({part.data(), static_cast<std::size_t>(count)});
    close(file);
}

/// A line with the thread's id and name; without the name if it has ended since it was listed.
void writeThread(SignalSafeWriter& report, std::string_view id)
{
    SignalSafeWriter path(-1);
    path.text("/proc/self/task/").text(id).text("/comm");
    report.text("  ").text(id).text(" ");
    // The kernel gives at most 16 bytes, a line end included.
    std::array<char, 32> name{};
    const int file = open(path.buffer(), O_RDONLY | O_CLOEXEC);
    const ssize_t count = file < 0 ? 0 : readSome(file, name);
    if (file >= 0)
        close(file);
    const std::string_view text(name.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    report.text(text.substr(0, text.find('\n'))).text("\n");
}

/// How the kernel lays out an entry of a folder. The C library has the same structure under its own name, but its
/// readdir() allocates.
struct FolderEntry
{
    uint64_t inode;
    int64_t offset;
    uint16_t length;
    uint8_t type;
    char name[1];
};

void writeThreads(SignalSafeWriter& report)
{
    report.text("\nThreads:\n");
    const int folder = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    alignas(FolderEntry) std::array<char, 4096> entries{};
    for (long size = 0; (size = syscall(SYS_getdents64, folder, entries.data(), entries.size())) > 0;) {
        for (long position = 0; position < size;) {
            const char* const start = entries.data() + position;
            uint16_t length = 0;
            std::memcpy(&length, start + offsetof(FolderEntry, length), sizeof(length));
            const char* const name = start + offsetof(FolderEntry, name);
            if (name[0] != '.')
                writeThread(report, name);
            position += length;
        }
    }
    close(folder);
}

void writeStack(SignalSafeWriter& report, int file)
{
    report.text("\nCall stack of the thread that crashed:\n").flush();
    std::array<void*, kMaximumFrames> frames{};
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    // First without names: with the loaded objects these will do, if asking the loader for names should hang because
    // the program crashed, or another thread stands, inside it.
    for (int frame = 0; frame < count; ++frame)
        report.text("  ")
            .hexadecimal(reinterpret_cast<uintptr_t>(frames.at(static_cast<std::size_t>(frame))))
            .text("\n");
    report.text("\nThe same with names:\n").flush();
    backtrace_symbols_fd(frames.data(), count, file);
}

void writeReport(int number, const siginfo_t& information)
{
    const CivilTime now = localTime();
    const int file = createReportFile(now);
    if (file < 0)
        return;
    SignalSafeWriter report(file);
    writeHead(report, now, number, information);
    writeThreads(report);
    report.text("\nLoaded objects:\n");
    copyFile(report, "/proc/self/maps");
    // Last, since walking a broken stack may be the end.
    writeStack(report, file);
    report.text("\nEnd of report\n").flush();
    close(file);
}

void restoreDefault(int number)
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
}

/// Ends the process by the signal it crashed with, where its report does not come to an end.
void endWithoutReport()
{
    const int number = g_fatalSignal;
    restoreDefault(number);
    sigset_t fatal = {};
    sigemptyset(&fatal);
    sigaddset(&fatal, number);
    // The thread that reports holds it back, and any thread may be the one that the alarm interrupts.
    pthread_sigmask(SIG_UNBLOCK, &fatal, nullptr);
    raise(number);
}

void startReportTimeout(int fatalSignal)
{
    g_fatalSignal = fatalSignal;
    struct sigaction action = {};
    action.sa_handler = [](int /*number*/) { endWithoutReport(); };
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t timeout = {};
    sigemptyset(&timeout);
    sigaddset(&timeout, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &timeout, nullptr);
    alarm(g_timeoutSeconds);
}

void onFatalSignal(int number, siginfo_t* information, void* /*context*/)
{
    pid_t reporting = 0;
    if (g_reportingThread.compare_exchange_strong(reporting, currentThread())) {
        startReportTimeout(number);
        writeReport(number, *information);
        alarm(0);
    } else if (reporting == currentThread()) {
        // Writing the report went wrong in its turn.
        endWithoutReport();
    } else {
        // Another thread is writing its report; the process ends with it.
        for (;;)
            pause();
    }
    // Held back while this handler runs: the default action follows as soon as it returns, on the stack that crashed.
    restoreDefault(number);
    raise(number);
}

void handleFatalSignals()
{
    stack_t stack = {};
    stack.ss_sp = g_alternateStack.data();
    stack.ss_size = g_alternateStack.size();
    sigaltstack(&stack, nullptr);

    struct sigaction action = {};
    action.sa_sigaction = onFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (const int number : kFatalSignals)
        sigaction(number, &action, nullptr);
}

} // namespace

void installCrashReporter(const QString& folder, const QByteArray& program, std::chrono::seconds timeout)
{
    g_timeoutSeconds = static_cast<unsigned>(timeout.count());
    if (!keep(g_pathPrefix, QFile::encodeName(folder) + "/crash_") || !keep(g_program, program))
        return;
    keepClockChanges();
    warmUpBacktrace();
    handleFatalSignals();
}

} // namespace platform
