#include "platform/termination.h"

#include <windows.h>

#include <atomic>

namespace platform {

namespace {

constexpr DWORD kOrderlyEndTimeoutMs = 5000;

std::atomic<TerminationWatcher*> g_watcher = nullptr;

/// Called by the system on a thread of its own.
BOOL WINAPI onConsoleEvent(DWORD event)
{
    TerminationWatcher* const watcher = g_watcher;
    if (watcher == nullptr)
        return FALSE;
    QMetaObject::invokeMethod(watcher, &TerminationWatcher::terminationRequested, Qt::QueuedConnection);
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
    g_watcher = this;
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

TerminationWatcher::~TerminationWatcher()
{
    SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    g_watcher = nullptr;
}

} // namespace platform
