// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/enginetimings.h"
#include "engine/core/obshandles.h"
#include "engine/output/streamtap.h"

#include <QTimer>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>

/// Releases outputs when they have surely done with their files, and libobs with them: the only way they are released.
///
/// libobs ends a stopped output on a thread of its own; one that is released before that is stopped a second time, and
/// the release may wait for ever. An output that ends by itself says so before it closes its file, which can take
/// seconds. One that is still opening its file ignores a stop. User-interface thread, which waits only while a late
/// output is stopped.
class RetiredOutputs
{
public:
    /// @param tap quiesces the streams while an output is stopped, connected or not; must outlive this object
    explicit RetiredOutputs(StreamTap& tap, const DeferredRelease& times = DeferredRelease());
    /// Waits, as long as DeferredRelease says, and releases what is left; what has not ended even then is never
    /// released.
    ~RetiredOutputs();
    RetiredOutputs(const RetiredOutputs&) = delete;
    RetiredOutputs& operator=(const RetiredOutputs&) = delete;

    /// Takes over an output that was stopped or never ran; it is released when libobs has ended it.
    void add(ObsOutputHandle output);

    /// Takes over an output that ended by itself; it is released after the delay.
    ///
    /// @param endedNs when it said so, on libobs' clock
    void addEnded(ObsOutputHandle output, std::uint64_t endedNs);

    /// Takes over an output that is still opening its file. It is stopped as soon as it runs; then, or when it has
    /// failed to open the file, it is as one that ended by itself.
    ///
    /// @param endedNs what another handler of its end, connected until this returns, has noted of it; 0 for nothing
    void addStarting(ObsOutputHandle output, const std::atomic<std::uint64_t>& endedNs);

    /// Releases now what may be released.
    void releaseDue();

    /// Whether an output may still use libobs' video, which must not be reset then: it opens its file or is being
    /// ended.
    bool isAnyBusy() const;

    /// Waits for ends that libobs has begun, but for no output that is opening its file.
    ///
    /// @return isAnyBusy() afterwards
    bool waitWhileEnding() const;

private:
    struct Retired
    {
        Retired(ObsOutputHandle taken, std::uint64_t ended, std::chrono::nanoseconds releaseDelay, StreamTap& used);
        /// Whether it runs, is ended by libobs at this moment, or has not even begun.
        bool isBusy() const;
        bool isEnding() const;
        /// From now to its release; 0 or less when it is due.
        std::chrono::nanoseconds remaining(std::chrono::nanoseconds limit) const;

        ObsOutputHandle output;
        /// When it said that it has ended, on libobs' clock; 0 when it has not. Set on libobs' threads.
        std::atomic<std::uint64_t> endedNs;
        /// From the end to the release.
        std::chrono::nanoseconds delay;
        StreamTap& tap;
        ObsSignalConnection stopSignal;
    };

    static void onStopped(void* retired, calldata_t* stopSignal);
    Retired& add(ObsOutputHandle output, std::uint64_t endedNs, std::chrono::nanoseconds delay);
    void poll();
    void stopRunning();
    void stop(Retired& retired);

    StreamTap& m_tap;
    const DeferredRelease m_times;
    /// A list: the stop handlers keep pointers to its entries.
    std::list<Retired> m_outputs;
    QTimer m_timer;
};
