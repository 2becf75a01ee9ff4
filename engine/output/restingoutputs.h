#pragma once

#include "engine/core/enginetimings.h"
#include "engine/core/obshandles.h"
#include "engine/output/captureprogress.h"

#include <QTimer>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>

/// The one way on which outputs are released: later, when they have surely done with their files and libobs with them.
///
/// libobs ends a stopped output on a thread of its own, after the stop has returned; one that is released before is
/// stopped a second time, and whoever releases it may wait for ever. An output that ends by itself says so and only
/// then closes its file; the index of a long file on a slow disk takes seconds. One that is still opening its file
/// ignores a stop. Belongs to the user-interface thread, which waits only while a late output is stopped.
class RestingOutputs
{
public:
    /// @param lines the lines that stand still while an output is stopped, connected or not; must outlive this object
    explicit RestingOutputs(CaptureProgress& lines, const DeferredRelease& times = DeferredRelease());
    /// Releases what is left. Whatever ended less than the shortest delay ago is waited for, and so is, up to the
    /// limit, whatever has not ended; what has not ended even then is never released.
    ~RestingOutputs();
    RestingOutputs(const RestingOutputs&) = delete;
    RestingOutputs& operator=(const RestingOutputs&) = delete;

    /// Takes over an output that was stopped or never ran; it is released when libobs has ended it.
    void keep(ObsOutputHandle output);

    /// Takes over an output that ended by itself and releases it when the delay since then is over, or later if libobs
    /// is still ending it.
    ///
    /// @param endedNs when it said so, on libobs' clock
    void keepEnded(ObsOutputHandle output, std::uint64_t endedNs);

    /// Takes over an output that is still opening its file. It is stopped as soon as it runs; then, or when it has
    /// failed to open the file, it rests as one that ended by itself.
    ///
    /// @param endedNs what another handler of its end, connected until this returns, has noted of it; 0 for nothing
    void keepStarting(ObsOutputHandle output, const std::atomic<std::uint64_t>& endedNs);

    /// Releases now what may be released.
    void releaseDue();

    /// Whether an output may still be opening its file or leaving the lines. The engine's video must not be reset then:
    /// the output would begin on a picture line, or leave one, that has gone.
    bool isAnyBusy() const;

    /// Waits, three seconds at most, for ends that libobs has begun, but for no output that is opening its file.
    ///
    /// @return isAnyBusy() afterwards
    bool waitWhileEnding() const;

private:
    struct Resting
    {
        Resting(ObsOutputHandle taken, std::uint64_t ended, std::chrono::nanoseconds rest, CaptureProgress& used);
        /// Whether it runs, is ended by libobs at this moment, or has not even begun.
        bool isBusy() const;
        bool isEnding() const;
        /// From now to its release; 0 or less when it is due.
        std::chrono::nanoseconds remaining(std::chrono::nanoseconds limit) const;

        ObsOutputHandle output;
        /// When it said that it has ended, on libobs' clock; 0 when it has not.
        std::atomic<std::uint64_t> endedNs;
        /// From the end to the release.
        std::chrono::nanoseconds delay;
        CaptureProgress& lines;
        ObsSignalConnection stopSignal;
    };

    static void onStopped(void* resting, calldata_t* stopSignal);
    Resting& add(ObsOutputHandle output, std::uint64_t endedNs, std::chrono::nanoseconds delay);
    void look();
    void stopWhatRuns();
    void stop(Resting& resting);

    CaptureProgress& m_lines;
    const DeferredRelease m_times;
    /// A list, so that the handlers of the ends find them where they were.
    std::list<Resting> m_resting;
    QTimer m_timer;
};
