// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/waituntil.h"

#include <atomic>

/// Counts the callbacks that run on other threads, so that the object they use can outlast them.
///
/// Declare it before (so that it goes after) the connection through which the callbacks come: first no new one can
/// arrive, then the gate waits for those that are inside. Never destroy it from inside such a callback.
class CallbackGate
{
public:
    /// A callback's stay: make it first thing in the callback.
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

    CallbackGate() = default;
    ~CallbackGate() { waitUntilEmpty(); }
    CallbackGate(const CallbackGate&) = delete;
    CallbackGate& operator=(const CallbackGate&) = delete;

    /// Blocks until no callback is inside.
    void waitUntilEmpty() const
    {
        waitUntil([this] { return m_inside == 0; }, QDeadlineTimer(QDeadlineTimer::Forever));
    }

private:
    std::atomic<int> m_inside{0};
};
