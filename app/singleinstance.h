// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/instance_lock.h"
#include "platform/process/shared_segment.h"

#include <QString>

#include <chrono>
#include <optional>

/// Lets one instance run per user session: the first publishes its main window in a shared-memory segment, and a later
/// one brings that window to the front and ends (docs/single-instance.md). Main thread.
/// The segment holds, in native byte order, the native window handle (8 bytes, unsigned; 0 for none) and the process id
/// (8 bytes, signed). On X11 systems a lock proves that the first instance lives, and a second one, the gate, is held
/// during accesses to the segment; an instance that is stopped in it is passed by.
class SingleInstance
{
public:
    enum class Role
    {
        First,     ///< owns the segment
        Second,    ///< another instance runs; hand over to it and end
        Unguarded, ///< the segment can be neither attached nor created; runs all the same
    };

    /// Of each of the twenty attempts.
    static constexpr std::chrono::milliseconds kAttemptInterval{50};

    explicit SingleInstance(const QString& key = QStringLiteral("TolvaranKestranoSingleInstance"),
                            std::chrono::milliseconds attemptInterval = kAttemptInterval);
    ~SingleInstance();

    /// Takes two seconds at most. Call once.
    Role claim();

    /// Brings the first instance's window to the front; an invalid handle is logged.
    void handOver() const;

    /// For later instances. Ignored without a segment.
    void publish(quint64 windowHandle, qint64 processId);

    /// The segment, then the lock.
    void release();

    static QString gateName(const QString& key);

private:
    struct Block;

    /// None where another attempt is needed.
    std::optional<Role> claimOnce();
    Role roleAfterAllAttempts() const;
    Role conclude(Role role);
    /// Reads m_firstWindow; false without a segment.
    bool findFirstWindow();
    bool enterGate();
    void enterGateOrWaitItOut();

    unsigned long m_attemptIntervalMs;
    platform::SharedSegment m_segment;
    platform::InstanceLock m_lock;
    platform::InstanceLock::State m_lockState = platform::InstanceLock::State::Unavailable;
    platform::InstanceLock m_gate;
    quint64 m_firstWindow = 0;
};
