// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/framepace.h"
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
/// range. Frames are made while a callback or a running output is connected to it; all have to be disconnected before
/// it goes. User-interface thread, unless said otherwise.
class ScreenVideo
{
public:
    /// Its destruction waits for the frame that is being made, but not long: while a client grabs the X server it goes
    /// on without the caller. The log says how many frames were repeated, as libobs' log does of its video.
    /// @param size of the frames in physical pixels; even
    /// @return null when libobs cannot make it
    static std::shared_ptr<ScreenVideo> open(std::unique_ptr<FrameSource> source, const QSize& size, int fps);
    ScreenVideo(const ScreenVideo&) = delete;
    ScreenVideo& operator=(const ScreenVideo&) = delete;

    /// For exit(), which runs while the threads do: none begins another frame or hands one over, and no destruction
    /// ends. Waits for frames that are being made, but not long: the X server may never answer.
    static void stopForGood();

    video_output* video() const { return m_video.get(); }

    /// From the next frame on.
    void setOrigin(const QPoint& origin);
    void setPointer(const FramePointer& pointer);

    /// Makes no frame any more: libobs counts those that nobody takes as skipped.
    void finish() { m_isFinished = true; }
    bool isFinished() const { return m_isFinished; }

    /// Frames that repeat an earlier one in place of one that was not made in time. Any thread.
    std::uint64_t laggedFrames() const { return m_laggedFrames; }

private:
    struct Close
    {
        void operator()(video_output* video) const;
    };
    using Video = std::unique_ptr<video_output, Close>;

    /// For the next frame.
    struct Request
    {
        std::optional<QPoint> origin;
        std::optional<FramePointer> pointer;
    };

    ScreenVideo(std::unique_ptr<FrameSource> source, Video video);
    ~ScreenVideo();
    static void destroy(ScreenVideo* video);
    void run();
    void makeFrames();
    void makeFrame(const FramePace::Frame& due);
    void write(int count, std::uint64_t timestampNs);
    void takeRequest();
    void logLaggedFrames() const;
    bool isConnected() const;

    /// Used by the thread alone.
    const std::unique_ptr<FrameSource> m_source;
    const Video m_video;
    /// Locked while a frame is made.
    std::mutex m_frameMutex;
    std::mutex m_mutex;
    /// Guarded by m_mutex.
    Request m_request;
    std::atomic<bool> m_isStopping{false};
    std::atomic<bool> m_isFinished{false};
    std::atomic<std::uint64_t> m_frames{0};
    std::atomic<std::uint64_t> m_laggedFrames{0};
    std::thread m_thread;
};
