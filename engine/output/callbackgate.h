// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/waituntil.h"

#include <atomic>

/// Counts callbacks on other threads, so their object can outlast them. Declare it before the connection through which
/// they come: first no new one arrives, then the gate waits for those inside. Any thread; never destroy it from such a
/// callback.
class CallbackGate
{
public:
    /// First thing in a callback.
    class Pass
    {
    public:
        explicit Pass(CallbackGate& gate) : m_gate(gate) { ++m_gate.m_inside; }
        ~Pass() { --m_gate.m_inside; }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        CallbackGate& m_gate;
    };

    ~CallbackGate() { waitUntilEmpty(); }

    void waitUntilEmpty() const
    {
        waitUntil([this] { return m_inside == 0; }, QDeadlineTimer(QDeadlineTimer::Forever));
    }

private:
    std::atomic<int> m_inside{0};
};
