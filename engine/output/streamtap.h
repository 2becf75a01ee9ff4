// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/pausesync.h"
#include "engine/output/streamgate.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>

struct audio_data;
struct video_data;
struct video_output;

/// Raw callbacks on both streams ahead of a running output: follow by time stamps how much has reached it, and block
/// the streams.
///
/// Connect before the output starts. While it is connected to the engine's video that cannot be reset.
/// connect() and disconnect() belong to one thread; the rest may be called from any.
class StreamTap
{
public:
    /// @param resumeLimit how long video and audio wait for each other at the end of a pause
    explicit StreamTap(std::chrono::milliseconds resumeLimit) : m_sync(resumeLimit) {}
    ~StreamTap();
    StreamTap(const StreamTap&) = delete;
    StreamTap& operator=(const StreamTap&) = delete;

    /// Connects, again when connected already, to a video and the audio of a mixer. Needs a running engine.
    ///
    /// @param video must outlive the connection; null means the engine's
    void connect(std::size_t mixerIndex, video_output* video);
    /// No callback runs any more when it returns.
    void disconnect();
    bool isConnected() const { return m_connected; }
    /// @param video null means the engine's
    bool isConnectedTo(const video_output* video) const { return m_connected && m_video == video; }

    /// Waits until a frame has come since connect().
    bool waitForFrame(std::chrono::milliseconds limit) const;

    /// Takes a moment as the mark, unless one was taken since connect().
    void mark(std::uint64_t momentNs);
    bool isMarked() const { return m_markNs != kNoMark; }
    /// How many frames taken at or after the mark the output has surely been given; 0 without a mark.
    int framesSinceMark() const;
    /// Nanoseconds of audio after the mark that the output has surely been given; negative while audio from before the
    /// mark is on its way, 0 without a mark.
    std::int64_t audioSinceMarkNs() const;

    /// When a pause or its end, requested of libobs at the given moment, takes effect: one or two frames later, for
    /// audio as well.
    std::uint64_t pauseEffectNs(std::uint64_t nowNs) const;
    PauseSync& pauseSync() { return m_sync; }

    /// Blocks a stream until a Quiesce has gone or disconnect(): it has reached the end, and what follows shall not get
    /// into the file while the other one is on its way.
    void blockVideo();
    void blockAudio();
    /// Whether both streams wait: the output is in no callback of theirs.
    bool isBlocked();

    /// Blocks both streams while it lives: the stock output frees its encoders inside its stop without waiting for a
    /// callback that may be encoding with them.
    ///
    /// Waits up to a second for each; one that does not move by then is in no callback either, as far as can be known.
    class Quiesce
    {
    public:
        /// @param video false leaves the video alone, which is not the one of the output that is stopped
        explicit Quiesce(StreamTap& tap, bool video = true);
        ~Quiesce();
        Quiesce(const Quiesce&) = delete;
        Quiesce& operator=(const Quiesce&) = delete;

    private:
        StreamTap& m_tap;
        const bool m_blocksVideo;
    };

private:
    static constexpr std::uint64_t kNoMark = std::numeric_limits<std::uint64_t>::max();

    void unblock();
    static void onFrame(void* param, video_data* frame);
    static void onAudio(void* param, std::size_t mixerIndex, audio_data* audio);

    StreamGate m_videoGate;
    StreamGate m_audioGate;
    PauseSync m_sync;
    std::atomic<bool> m_videoIsBlocked{false};
    std::atomic<bool> m_audioIsBlocked{false};
    std::atomic<bool> m_connected{false};
    std::size_t m_mixerIndex = 0;
    /// Null for the engine's.
    std::atomic<video_output*> m_video{nullptr};
    /// Where libobs keeps the latest frame, and when that was taken. Video thread only.
    const std::uint8_t* m_frame = nullptr;
    std::uint64_t m_frameNs = 0;
    /// The time stamp of the last frame, repeated ones included.
    std::atomic<std::uint64_t> m_videoNs{0};
    std::atomic<std::uint64_t> m_markNs{kNoMark};
    std::atomic<bool> m_hasFrame{false};
    std::atomic<int> m_framesSinceMark{0};
    std::atomic<std::uint64_t> m_audioNs{0};
};
