// SPDX-License-Identifier: GPL-3.0-or-later
// Installs the crash handler as the program does, says where the report will be, and crashes as asked.
//
// Usage: kestrano_test_crasher WAY [SECONDS THAT A REPORT MAY TAKE]
// With KESTRANO_TEST_CRASH_FOLDER set the report goes there instead.

#include "app/appidentity.h"
#include "app/crashhandler.h"
#include "platform/process/crash_report.h"

#include <QStandardPaths>
#include <QString>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

volatile int g_zero = 0;
/// Deeper than any stack.
volatile int g_deepest = 1'000'000'000;
volatile int g_sink = 0;

[[gnu::no_sanitize_undefined]] void writeToNowhere()
{
    auto* volatile nowhere = reinterpret_cast<volatile int*>(0x10);
    *nowhere = 1;
}

[[gnu::no_sanitize_undefined]] void divideByZero()
{
    g_sink = 1000 / g_zero;
}

[[noreturn]] void throwOutOfEverything()
{
    throw std::runtime_error("nobody catches this");
}

void inNamedThread()
{
    const std::unique_ptr<QThread> thread(QThread::create(writeToNowhere));
    thread->setObjectName(QStringLiteral("crashing-one"));
    thread->start();
    thread->wait();
}

[[gnu::noinline]] int recurse(int depth)
{
    volatile char frame[4096] = {};
    frame[depth % 4096] = static_cast<char>(depth);
    return depth < g_deepest ? recurse(depth + 1) + frame[0] : 0;
}

using Ways = std::map<std::string, std::function<void()>>;

const Ways& ways()
{
    static const Ways table{{"segv", writeToNowhere},
                            {"abort", [] { std::abort(); }},
                            {"fpe", divideByZero},
                            {"ill", [] { std::raise(SIGILL); }},
                            {"throw", throwOutOfEverything},
                            {"thread", inNamedThread},
                            {"overflow", [] { g_sink = recurse(0); }},
                            {"none", [] {}}};
    return table;
}

} // namespace

/// Has a name in the call stack of the report.
extern "C" [[gnu::noinline]] void kestrano_test_crash_here(const char* way)
{
    ways().at(way)();
    g_sink = 1; // no tail call: this function stays in the stack
}

int main(int argc, char* argv[])
{
    if (argc < 2)
        return 2;
    QStandardPaths::setTestModeEnabled(true);
    appidentity::apply();
    installCrashHandler();
    // Not an argument, which would reach main() in whatever letters the system has for old programs.
    const QString elsewhere = qEnvironmentVariable("KESTRANO_TEST_CRASH_FOLDER");
    if (!elsewhere.isEmpty())
        platform::installCrashReporter(elsewhere, "Kestrano");
    if (argc > 2)
        platform::installCrashReporter(crashFolder(), "Kestrano", std::chrono::seconds(std::atoi(argv[2])));
    std::printf("%s\n", qPrintable(crashFolder()));
    std::fflush(stdout);
    kestrano_test_crash_here(argv[1]);
    return 0;
}
