// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system_failure.h"
#include "platform/windowing/capture_exclusion.h"

#include <QOperatingSystemVersion>
#include <QWidget>

#include <windows.h>

namespace platform {

namespace {

/// Windows 10 2004, the first that knows WDA_EXCLUDEFROMCAPTURE; those before take it for WDA_MONITOR.
constexpr int kFirstBuild = 19041;

class WindowAffinity : public DisplayAffinity
{
public:
    explicit WindowAffinity(HWND window) : m_window(window) {}

    bool set(quint32 affinity) override
    {
        if (SetWindowDisplayAffinity(m_window, affinity) != 0)
            return true;
        reportSystemFailure("SetWindowDisplayAffinity", GetLastError());
        return false;
    }

    std::optional<quint32> get() const override
    {
        DWORD affinity = kEverywhere;
        if (GetWindowDisplayAffinity(m_window, &affinity) != 0)
            return affinity;
        reportSystemFailure("GetWindowDisplayAffinity", GetLastError());
        return std::nullopt;
    }

private:
    HWND m_window;
};

bool findOut()
{
    const QOperatingSystemVersion first(QOperatingSystemVersion::Windows, 10, 0, kFirstBuild);
    const QOperatingSystemVersion running = QOperatingSystemVersion::current();
    if (running >= first)
        return true;
    reportFailure(QStringLiteral("Windows %1.%2.%3 cannot leave a window out of captures")
                      .arg(running.majorVersion())
                      .arg(running.minorVersion())
                      .arg(running.microVersion()));
    return false;
}

bool knowsExclusion()
{
    static const bool knows = findOut();
    return knows;
}

} // namespace

bool setExcludedFromCapture(QWidget& window, bool excluded)
{
    WindowAffinity affinity(reinterpret_cast<HWND>(window.winId()));
    return applyExclusion(affinity, knowsExclusion(), excluded);
}

} // namespace platform
