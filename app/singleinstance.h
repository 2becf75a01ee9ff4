#pragma once

#include "platform/instance_lock.h"
#include "platform/shared_segment.h"

#include <QString>

#include <chrono>
#include <optional>

/// Lets one copy of the program run per user session: the first publishes its main window in a shared-memory segment,
/// and a later one finds it there, brings that window to the front and ends.
///
/// The segment holds, in native byte order, the main window's native handle (8 bytes, unsigned; 0 while there is none)
/// and the process id (8 bytes, signed). It is all zero until the first copy has shown its window.
///
/// Windows removes a segment with the last process that holds it. Elsewhere it outlives a copy that is killed, so a
/// segment alone does not prove that its maker lives; a lock that the kernel drops with its holder does
/// (platform::InstanceLock). It is taken before the segment is made, held for life, and released after the segment is
/// given up.
///
/// A second lock of that kind, the gate, is held for the moment in which a copy looks at, makes, fills or gives up the
/// segment. One that is killed in there leaves nothing shut behind it, as the segment's own lock on those systems would
/// be (platform::SharedSegment). One that is stopped in there is waited for, for a short while, and then passed by.
///
/// What that comes to:
///
/// - Lock free, segment there: its maker is dead, whether or not it had stored its process id. The segment is attached,
///   detached, which removes it, and created anew. Only the holder of the lock does so, so of a dozen simultaneous
///   starts one makes the segment and the others find the lock taken.
/// - Lock held, segment there: another copy runs or starts; this one is the second.
/// - Lock held, and no segment, or one with the id of a process that is gone: the other copy was stopped before it
///   could make the segment anew. It is tried again for a short while; then the other copy counts as one that has not
///   published its window. A window of a dead copy is never handed over to: its handle may be another program's by now.
/// - Lock free, the key never used, and yet a segment is there when it is to be made: a stranger's, since the system's
///   own keys have 16 bits of a file's number in them. The key is given another number (platform::SharedSegment). The
///   same where the segment that stays cannot be a living copy's.
/// - Killed between lock and segment: the lock went with it, there is no segment, the next copy is the first.
/// - The first copy ends while another starts: the other finds either lock and segment, and hands over to a window that
///   is about to go, or neither, and becomes the first.
/// - Created by somebody else between attach and create, where there is no lock: attached again, and this copy is the
///   second.
/// - Lock free, and the segment stays however often it is attached and detached: its maker runs, but could not lock
///   (below), or somebody removed its lock file; being attached, it keeps the segment. This copy is the second.
/// - Another user's segment: it may neither be attached nor made, and this copy runs unguarded. It gives the lock back,
///   so that a second start of this user runs unguarded as well instead of waiting for a segment that never comes.
/// - The locks cannot be made: the segment alone decides, as on Windows.
class SingleInstance
{
public:
    enum class Role
    {
        First,     ///< owns the segment
        Second,    ///< another copy runs; hand over to it and end
        Unguarded, ///< the segment can be neither attached nor created; runs all the same
    };

    /// How long an attempt to claim the segment takes that met another instance in between; there are twenty.
    static constexpr std::chrono::milliseconds kAttemptInterval{50};

    explicit SingleInstance(const QString& key = QStringLiteral("TolvaranKestranoSingleInstance"),
                            std::chrono::milliseconds attemptInterval = kAttemptInterval);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Finds out which copy this is; takes two seconds at most, and hardly any time as a rule. Logs the making of the
    /// segment, or what kept it from being made. Call once.
    Role claim();

    /// As the second copy: brings the first copy's window to the front, or logs that it has published none.
    void handOver() const;

    /// As the first copy: publishes the main window for later copies. Does nothing without a segment.
    void publish(quint64 windowHandle, qint64 processId);

    /// Gives up the segment, then the lock.
    void release();

    /// The name of the lock (platform::InstanceLock) that is the gate to the segment of that key.
    static QString gateName(const QString& key);

private:
    struct Block;
    enum class Result
    {
        Again,
        First,
        Second,
        Exists, ///< the segment could not be made, since it is there
        Unguarded
    };

    /// What a look at another copy's segment showed.
    struct OtherCopy
    {
        quint64 window = 0;
        /// Its process has ended, or the segment is no copy's.
        bool isGone = false;
    };

    /// How one attempt to claim the segment ended, and the copy that it met.
    struct Attempt
    {
        Result result = Result::Again;
        OtherCopy met;
    };

    Attempt claimOnce();
    Attempt secondOnceItLives();
    Attempt replaceStaleSegment();
    Attempt createUnderAnotherNumber();
    Attempt create();
    Attempt meetItsMaker();
    std::optional<OtherCopy> lookAtOtherCopy();
    Role conclude(const Attempt& attempt);
    bool enterGate();
    void enterGateOrWaitItOut();

    unsigned long m_attemptIntervalMs;
    platform::SharedSegment m_segment;
    platform::InstanceLock m_lock;
    platform::InstanceLock m_gate;
    quint64 m_firstWindow = 0;
};
