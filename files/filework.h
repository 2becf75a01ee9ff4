// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <mutex>

/// Lets one thread call off what another one does with a file.
class FileWork
{
public:
    /// When this returns, no change() runs, and none will. It does not wait for anything else.
    void cancel()
    {
        m_isCancelled = true;
        const std::lock_guard lock(m_changing);
    }
    bool isCancelled() const { return m_isCancelled; }

    /// Calls a short function, unless cancelled.
    /// @return whether it was called
    template <typename Function>
    bool change(Function function)
    {
        const std::lock_guard lock(m_changing);
        if (m_isCancelled)
            return false;
        function();
        return true;
    }

private:
    std::atomic<bool> m_isCancelled = false;
    std::mutex m_changing;
};
