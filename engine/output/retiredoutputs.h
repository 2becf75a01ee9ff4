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
#include <memory>
#include <thread>

class ScreenVideo;

/// Deferred release: releases outputs when they and libobs have surely finished with their files. The only way they are
/// released (docs/stopping.md). User-interface thread, which waits only while a late output is stopped.
class RetiredOutputs
{
public:
    /// @param tap quiesces the streams while an output is stopped; must outlive this object
    explicit RetiredOutputs(StreamTap& tap, const DeferredRelease& times = DeferredRelease());
    /// Waits as long as DeferredRelease says; what has not ended even then is never released.
    ~RetiredOutputs();

    /// An output that was stopped or never ran; released when libobs has ended it.
    /// @param video what it records, kept until then; null for the engine's
    void add(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video);

    /// An output that ended by itself at endedNs, on libobs' clock; released after the delay.
    void addEnded(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video, std::uint64_t endedNs);

    /// An output that is still opening its file: stopped as soon as it runs, then as one that ended by itself.
    /// @param endedNs the end that another handler, connected until this returns, has noted; 0 for none
    void addStarting(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video,
                     const std::atomic<std::uint64_t>& endedNs);

    void releaseDue();

    /// Whether an output opens its file, runs or is being ended.
    bool isAnyBusy() const;

    /// Waits for ends that libobs has begun, of outputs that record the engine's video.
    /// @return whether one of those is still busy: the video must not be reset
    bool waitWhileEnding() const;

private:
    struct Retired
    {
        Retired(ObsOutputHandle taken, std::shared_ptr<ScreenVideo> recorded, std::uint64_t ended,
                std::chrono::nanoseconds releaseDelay, StreamTap& used);
        /// Opening its file, running or being ended.
        bool isBusy() const;
        bool isEnding() const;
        /// Null for the engine's.
        video_output* videoOutput() const;
        /// 0 or less when due.
        std::chrono::nanoseconds remaining(std::chrono::nanoseconds limit) const;

        /// Outlives the output.
        std::shared_ptr<ScreenVideo> video;
        ObsOutputHandle output;
        /// On libobs' clock; 0 before the end. Written by libobs' threads, read by the user-interface thread.
        std::atomic<std::uint64_t> endedNs;
        /// From the end to the release.
        std::chrono::nanoseconds delay;
        StreamTap& tap;
        /// Of the user interface.
        const std::thread::id thread = std::this_thread::get_id();
        ObsSignalConnection stopSignal;
    };

    static void onStopped(void* retired, calldata_t* stopSignal);
    Retired& add(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video, std::uint64_t endedNs,
                 std::chrono::nanoseconds delay);
    void poll();
    void stopRunning();
    void stop(Retired& retired);

    StreamTap& m_tap;
    const DeferredRelease m_times;
    /// A list: the stop handlers, on libobs' threads, keep pointers to its entries.
    std::list<Retired> m_outputs;
    QTimer m_timer;
};
