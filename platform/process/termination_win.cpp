// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/termination.h"
#include "platform/system_failure.h"

#include <windows.h>

#include <mutex>

namespace platform {

namespace {

constexpr DWORD kOrderlyEndTimeoutMs = 5000;

std::mutex g_mutex;
/// Guarded by g_mutex: the main thread sets it, the system's console thread posts to it.
TerminationWatcher* g_watcher = nullptr;

void setWatcher(TerminationWatcher* watcher)
{
    const std::lock_guard locker(g_mutex);
    g_watcher = watcher;
}

/// What is posted to a watcher goes with it.
bool notifyWatcher()
{
    const std::lock_guard locker(g_mutex);
    return g_watcher != nullptr &&
           QMetaObject::invokeMethod(g_watcher, &TerminationWatcher::terminationRequested, Qt::QueuedConnection);
}

/// Called by the system on a thread of its own, which may still be in here when the handler has been taken off.
BOOL WINAPI onConsoleEvent(DWORD event)
{
    if (!notifyWatcher())
        return FALSE;
    // After a close, log-off or shutdown event the process ends as soon as this returns.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(kOrderlyEndTimeoutMs);
    return TRUE;
}

} // namespace

struct TerminationWatcher::Private
{};

TerminationWatcher::TerminationWatcher(QObject* parent) : QObject(parent), m_private(std::make_unique<Private>())
{
    setWatcher(this);
    // Without it a console's events end the program at once, as they do with every other.
    if (SetConsoleCtrlHandler(onConsoleEvent, TRUE) == 0)
        reportSystemFailure("SetConsoleCtrlHandler", GetLastError());
}

TerminationWatcher::~TerminationWatcher()
{
    // Fails when the handler could not be put there, which has been reported; without a watcher it does nothing.
    SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    setWatcher(nullptr);
}

} // namespace platform
