// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/framesource.h"

#include <QSize>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

struct video_output;

/// A video output beside libobs' own, with frames that the program makes on a thread of its own: I420, Rec. 709, full
/// range. Frames are made while somebody listens to the output (video_output_connect(), or an output that it was handed
/// to), and what listens has to be disconnected before this object goes.
///
/// User-interface thread, unless said otherwise.
class ScreenVideo
{
public:
    /// @param size of the frames in physical pixels; even
    /// @return null when libobs cannot make it
    static std::unique_ptr<ScreenVideo> open(std::unique_ptr<FrameSource> source, const QSize& size, int fps);
    /// Waits for the frame that is being made.
    ~ScreenVideo();
    ScreenVideo(const ScreenVideo&) = delete;
    ScreenVideo& operator=(const ScreenVideo&) = delete;

    video_output* video() const { return m_video.get(); }

    /// From the next frame on.
    void setOrigin(const QPoint& origin);
    void setPointer(const FramePointer& pointer);

    /// Frames that repeat one that was made too late. Any thread.
    std::uint64_t laggedFrames() const { return m_laggedFrames; }

private:
    struct Close
    {
        void operator()(video_output* video) const;
    };
    using Video = std::unique_ptr<video_output, Close>;

    /// What the frames shall be from the next one on.
    struct Request
    {
        std::optional<QPoint> origin;
        std::optional<FramePointer> pointer;
    };

    ScreenVideo(std::unique_ptr<FrameSource> source, Video video);
    void run();
    void makeFrames();
    void makeFrame(int count, std::uint64_t timestampNs);
    void takeRequest();
    bool isWatched() const;

    /// Used by the thread alone.
    const std::unique_ptr<FrameSource> m_source;
    const Video m_video;
    std::mutex m_mutex;
    /// Guarded by m_mutex.
    Request m_request;
    std::atomic<bool> m_isStopping{false};
    std::atomic<std::uint64_t> m_laggedFrames{0};
    std::thread m_thread;
};
