// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

namespace platform {

/// A window of this program that frames are without.
struct ExcludedWindow
{
    std::uint32_t id = 0;
    /// How far the part reaches into the window from its edges, in physical pixels; all of the window where it is 0.
    int borderPx = 0;

    bool operator==(const ExcludedWindow&) const = default;
};

/// The windows that setExcludedFromFrames() has entered, for those who grab frames. X11 only. Any thread.
class ExcludedWindows
{
public:
    /// Those of this program. Used by threads that may outlive everything else.
    static ExcludedWindows& ofProgram();

    /// In place of an entry with the same id.
    void insert(const ExcludedWindow& window);
    void remove(std::uint32_t id);
    std::vector<ExcludedWindow> all() const;

private:
    mutable std::mutex m_mutex;
    std::map<std::uint32_t, ExcludedWindow> m_windows;
};

} // namespace platform
