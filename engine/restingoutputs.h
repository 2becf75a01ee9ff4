#pragma once

#include "engine/captureprogress.h"
#include "engine/enginetimings.h"
#include "engine/obshandles.h"

#include <QTimer>

#include <atomic>
#include <cstdint>
#include <list>

/// Keeps outputs that nobody needs any more until they have surely done with their files.
///
/// One that ends by itself says so and only then closes its file, on a thread that libobs does not wait for; the index
/// of a long file on a slow disk takes seconds. One that is still opening its file does so on a thread of its own as
/// well, and no stop reaches it yet. Released before, either would go from under its thread. Belongs to the
/// user-interface thread, which is made to wait only while a late output is stopped.
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

    /// Takes an output over and releases it when the delay since its end is over, or later if libobs is still ending it
    /// then.
    ///
    /// @param endedNs when it said that it has ended, on libobs' clock
    void keep(ObsOutputHandle output, std::uint64_t endedNs);

    /// Takes over an output that is still opening its file. It is stopped as soon as it runs; then, or when it has
    /// failed to open the file, it rests like the others.
    ///
    /// @param endedNs what another handler of its end, connected until this returns, has noted of it; 0 for nothing
    void keepStarting(ObsOutputHandle output, const std::atomic<std::uint64_t>& endedNs);

    /// Whether an output may still be opening its file or leaving the lines. The engine's video must not be reset then:
    /// the output would begin on a picture line, or leave one, that has gone.
    bool isAnyBusy() const;

private:
    struct Resting
    {
        Resting(ObsOutputHandle taken, std::uint64_t ended, CaptureProgress& used);
        /// Whether it runs, is ended by libobs at this moment, or has not even begun.
        bool isBusy() const;
        bool isReleaseDue(std::chrono::nanoseconds delay) const;

        ObsOutputHandle output;
        /// When it said that it has ended, on libobs' clock; 0 when it has not.
        std::atomic<std::uint64_t> endedNs;
        CaptureProgress& lines;
        ObsSignalConnection stopSignal;
    };

    static void onStopped(void* resting, calldata_t* stopSignal);
    void look();
    void stopWhatRuns();
    void stop(Resting& resting);
    void waitUntilNoneIsBusy();

    CaptureProgress& m_lines;
    const DeferredRelease m_times;
    /// A list, so that the handlers of the ends find them where they were.
    std::list<Resting> m_resting;
    QTimer m_timer;
};
