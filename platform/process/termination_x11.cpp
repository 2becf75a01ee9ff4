// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/termination.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP, SIGQUIT};

/// Set on the main thread, read by the signal handler on any; -1 while nobody listens.
std::atomic<int> g_writeEnd = -1;

/// Runs in signal context: wakes the event loop and does nothing else.
void onSignal(int)
{
    const int savedError = errno;
    const char byte = 0;
    // A full pipe already wakes the event loop.
    [[maybe_unused]] const ssize_t count = write(g_writeEnd, &byte, 1);
    errno = savedError;
}

void handleSignals(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    // Back to the default after the first: a program that hangs can still be ended from the terminal.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int number : kSignals) {
        struct sigaction current = {};
        sigaction(number, nullptr, &current);
        // Started with nohup, the program is to outlive its terminal.
        if (current.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

} // namespace

struct TerminationWatcher::Private
{
    std::array<int, 2> pipe = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
};

TerminationWatcher::TerminationWatcher(QObject* parent) : QObject(parent), m_private(std::make_unique<Private>())
{
    if (pipe2(m_private->pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_private->notifier = std::make_unique<QSocketNotifier>(m_private->pipe[0], QSocketNotifier::Read);
    connect(m_private->notifier.get(), &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> bytes{};
        if (read(m_private->pipe[0], bytes.data(), bytes.size()) > 0)
            emit terminationRequested();
    });
    g_writeEnd = m_private->pipe[1];
    handleSignals(onSignal);
}

TerminationWatcher::~TerminationWatcher()
{
    if (!m_private->notifier)
        return;
    handleSignals(SIG_DFL);
    g_writeEnd = -1;
    m_private->notifier.reset();
    close(m_private->pipe[0]);
    close(m_private->pipe[1]);
}

} // namespace platform
