// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

/// Lets the video and the audio of a paused output resume at the same moment.
///
/// libobs shares one pause_data between audio and video, and whichever stream reaches the end of the pause first ends
/// it for the other as well, which then lets in up to some tenths of a second too much, adding up over the pauses. So
/// the early stream waits: audio until the video has arrived, then video until the audio has passed.
///
/// schedule(), cancel() and waitUntilDone() from any thread, the other two from their streams.
class PauseSync
{
public:
    /// @param limit how long one stream waits for the other
    explicit PauseSync(std::chrono::milliseconds limit) : m_limit(limit) {}

    /// Takes a moment that neither stream has reached, on the clock of their time stamps.
    void schedule(std::uint64_t momentNs);
    /// Unblocks whoever waits.
    void cancel();

    /// From the video stream, before the output is given the frame.
    void videoArrives(std::uint64_t timestampNs);
    /// From the audio stream, after the output was given the block: libobs calls the listeners of its audio from the
    /// last to the first.
    void audioHasPassed(std::uint64_t beginNs, std::uint64_t endNs);

    /// Waits until both streams have passed the moment, or it was cancelled. At once when there is none.
    ///
    /// @return false when it did not happen within the time
    bool waitUntilDone(std::chrono::milliseconds limit);

private:
    static constexpr std::uint64_t kNone = 0;

    const std::chrono::milliseconds m_limit;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Guarded by m_mutex.
    std::uint64_t m_momentNs = kNone;
    bool m_videoArrived = false;
    bool m_audioPassed = false;
};
