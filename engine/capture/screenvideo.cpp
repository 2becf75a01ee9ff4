// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/screenvideo.h"

#include "app/sclogger.h"
#include "engine/core/waituntil.h"

#include <media-io/video-frame.h>
#include <obs.h>
#include <util/platform.h>
#include <utility>

#include <chrono>
#include <future>
#include <system_error>
#include <vector>

// Of util/threading.h, which MinGW cannot compile.
extern "C" void os_set_thread_name(const char* name);

namespace {

constexpr char kName[] = "Kestrano screen";
/// Frames that may wait for the encoder, which is slow in its first second above 1920x1080: as many as libobs allows.
constexpr size_t kBufferedFrames = 6;
constexpr size_t kBufferedLargeFrames = 16;
constexpr int kLargePixels = 1920 * 1200;
/// Between two looks at whether anything is connected.
constexpr std::uint64_t kIdleNs = 10'000'000;

/// For the frame that is being made, in which a frame interval is the rule.
constexpr std::chrono::milliseconds kFrameLimit{250};

/// The videos that there are. Never destroyed: exit() may find their threads anywhere.
struct Videos
{
    std::mutex mutex;
    std::vector<ScreenVideo*> all;
    std::atomic<bool> areStopped{false};
};

Videos& videos()
{
    static auto& videos = *new Videos;
    return videos;
}

} // namespace

void ScreenVideo::stopForGood()
{
    videos().areStopped = true;
    const QDeadlineTimer deadline(kFrameLimit);
    // For good: what is being destroyed must not go on beside the destructors that exit() runs.
    videos().mutex.lock();
    for (ScreenVideo* const video : videos().all) {
        if (waitUntil([video] { return video->m_frameMutex.try_lock(); }, deadline))
            video->m_frameMutex.unlock();
    }
}

void ScreenVideo::Close::operator()(video_output* video) const
{
    video_output_close(video);
}

std::shared_ptr<ScreenVideo> ScreenVideo::open(std::unique_ptr<FrameSource> source, const QSize& size, int fps)
{
    video_output_info info{};
    info.name = kName;
    info.format = VIDEO_FORMAT_I420;
    info.fps_num = static_cast<uint32_t>(fps);
    info.fps_den = 1;
    info.width = static_cast<uint32_t>(size.width());
    info.height = static_cast<uint32_t>(size.height());
    info.cache_size = size.width() * size.height() > kLargePixels ? kBufferedLargeFrames : kBufferedFrames;
    info.colorspace = VIDEO_CS_709;
    info.range = VIDEO_RANGE_FULL;
    video_t* video = nullptr;
    if (video_output_open(&video, &info) != VIDEO_OUTPUT_SUCCESS)
        return nullptr;
    return {new ScreenVideo(std::move(source), Video(video)), &ScreenVideo::destroy};
}

ScreenVideo::ScreenVideo(std::unique_ptr<FrameSource> source, Video video)
    : m_source(std::move(source)), m_video(std::move(video)), m_thread(&ScreenVideo::run, this)
{
    const std::lock_guard lock(videos().mutex);
    videos().all.push_back(this);
}

ScreenVideo::~ScreenVideo()
{
    m_isStopping = true;
    m_thread.join();
    const std::lock_guard lock(videos().mutex);
    logLaggedFrames();
    std::erase(videos().all, this);
}

void ScreenVideo::destroy(ScreenVideo* video)
{
    std::packaged_task<void()> destruction([video] { delete video; });
    const std::future<void> end = destruction.get_future();
    try {
        std::thread(std::move(destruction)).detach();
        end.wait_for(kFrameLimit);
    } catch (const std::system_error&) {
        // Out of threads.
        delete video;
    }
}

void ScreenVideo::logLaggedFrames() const
{
    if (m_laggedFrames == 0)
        return;
    const double percent = 100.0 * static_cast<double>(m_laggedFrames) / static_cast<double>(m_frames);
    SCLogger::info(QStringLiteral("%1: Number of lagged frames due to rendering lag/stalls: %2 (%3%)")
                       .arg(QLatin1String(kName))
                       .arg(laggedFrames())
                       .arg(percent, 0, 'f', 1));
}

void ScreenVideo::setOrigin(const QPoint& origin)
{
    const std::lock_guard lock(m_mutex);
    m_request.origin = origin;
}

void ScreenVideo::setPointer(const FramePointer& pointer)
{
    const std::lock_guard lock(m_mutex);
    m_request.pointer = pointer;
}

bool ScreenVideo::isConnected() const
{
    return !m_isStopping && !m_isFinished && video_output_active(m_video.get());
}

void ScreenVideo::run()
{
    os_set_thread_name("screen video");
    while (!m_isStopping) {
        if (isConnected())
            makeFrames();
        else
            os_sleepto_ns(os_gettime_ns() + kIdleNs);
    }
}

void ScreenVideo::makeFrames()
{
    FramePace pace(video_output_get_frame_time(m_video.get()), os_gettime_ns());
    // Nothing can be repeated before the first frame.
    makeFrame(pace.take(pace.dueNs()));
    while (isConnected()) {
        os_sleepto_ns(pace.dueNs());
        makeFrame(pace.take(os_gettime_ns()));
    }
}

void ScreenVideo::makeFrame(const FramePace::Frame& due)
{
    const std::lock_guard lock(m_frameMutex);
    if (videos().areStopped)
        return;
    const auto missed = static_cast<std::uint64_t>(due.missed);
    m_frames += missed + 1;
    m_laggedFrames += missed;
    // First, with what the source still has: what is on the screen now is later than those moments.
    if (due.missed > 0)
        write(due.missed, due.timestampNs - missed * video_output_get_frame_time(m_video.get()));
    takeRequest();
    m_source->update(os_gettime_ns());
    // exit() has not waited for an update that took too long.
    if (!videos().areStopped)
        write(1, due.timestampNs);
}

/// @param count of frame intervals that it is shown for
void ScreenVideo::write(int count, std::uint64_t timestampNs)
{
    video_frame frame{};
    // Where every buffer waits for the encoder, libobs repeats the last one and counts it as skipped.
    if (!video_output_lock_frame(m_video.get(), &frame, count, timestampNs))
        return;
    I420View view{};
    for (int plane = 0; plane < 3; ++plane) {
        view.planes[plane] = frame.data[plane];
        view.stridesBytes[plane] = static_cast<int>(frame.linesize[plane]);
    }
    m_source->write(view);
    video_output_unlock_frame(m_video.get());
}

void ScreenVideo::takeRequest()
{
    Request request;
    {
        const std::lock_guard lock(m_mutex);
        request = std::exchange(m_request, {});
    }
    if (request.origin)
        m_source->setOrigin(*request.origin);
    if (request.pointer)
        m_source->setPointer(*request.pointer);
}
