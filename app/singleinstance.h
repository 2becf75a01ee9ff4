// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/instance_lock.h"
#include "platform/process/shared_segment.h"

#include <QString>

#include <chrono>
#include <optional>

/// Lets one instance of the program run per user session: the first publishes its main window in a shared-memory
/// segment, and a later one finds it there, brings that window to the front and ends.
///
/// The segment holds, in native byte order, the main window's native handle (8 bytes, unsigned; 0 while there is none)
/// and the process id (8 bytes, signed). It is all zero until the first instance has shown its window.
///
/// Windows removes a segment with the last process that holds it. Elsewhere it outlives an instance that is killed:
/// there a lock that the kernel drops with its holder proves that the first instance lives (platform::InstanceLock),
/// and a second one of that kind, the gate, is held while an instance looks at, makes, fills or releases the segment.
/// docs/single-instance.md has the cases.
class SingleInstance
{
public:
    enum class Role
    {
        First,     ///< owns the segment
        Second,    ///< another instance runs; hand over to it and end
        Unguarded, ///< the segment can be neither attached nor created; runs all the same
    };

    /// How long an attempt takes that met another instance in between; there are twenty.
    static constexpr std::chrono::milliseconds kAttemptInterval{50};

    explicit SingleInstance(const QString& key = QStringLiteral("TolvaranKestranoSingleInstance"),
                            std::chrono::milliseconds attemptInterval = kAttemptInterval);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Finds out which instance this is; takes two seconds at most, and hardly any time as a rule. Call once.
    Role claim();

    /// As the second instance: brings the first one's window to the front, or logs that it has published none.
    void handOver() const;

    /// As the first instance: publishes the main window for later ones. Does nothing without a segment.
    void publish(quint64 windowHandle, qint64 processId);

    /// Gives up the segment, then the lock.
    void release();

    /// The name of the gate of the segment with that key.
    static QString gateName(const QString& key);

private:
    struct Block;

    /// None where another attempt is needed.
    std::optional<Role> claimOnce();
    Role roleAfterAllAttempts() const;
    Role conclude(Role role);
    /// Leaves the published window in m_firstWindow; false where there is no segment.
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
