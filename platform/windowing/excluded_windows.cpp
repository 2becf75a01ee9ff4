// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/excluded_windows.h"

namespace platform {

ExcludedWindows& ExcludedWindows::ofProgram()
{
    // Never destroyed: a thread may look at it while the process ends.
    static auto* const windows = new ExcludedWindows;
    return *windows;
}

void ExcludedWindows::insert(const ExcludedWindow& window)
{
    const std::lock_guard lock(m_mutex);
    m_windows.insert_or_assign(window.id, window);
}

void ExcludedWindows::remove(std::uint32_t id)
{
    const std::lock_guard lock(m_mutex);
    m_windows.erase(id);
}

std::vector<ExcludedWindow> ExcludedWindows::all() const
{
    std::vector<ExcludedWindow> windows;
    const std::lock_guard lock(m_mutex);
    for (const auto& [id, window] : m_windows)
        windows.push_back(window);
    return windows;
}

} // namespace platform
