// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/encoderprobe.h"

#include "engine/core/obshandles.h"

#include <QTest>

#include <media-io/video-frame.h>

#include <atomic>
#include <cstring>

namespace {

using VideoHandle = obshandles::Handle<video_t, video_output_close>;

/// More than libx264 buffers with any number of threads that a test machine has.
constexpr int kMaxFrames = 200;
/// The first frame, which is never late, is the one that the probe sees; among B-frames one comes up to two frames
/// later.
constexpr int kReorder = 2;
/// A frame takes milliseconds; an output must not be stopped while one is inside its encoder.
constexpr int kFrameTimeoutMs = 60'000;
/// Ample for the output's writing thread to take up a frame that the encoder returned. Too short a time makes the
/// measured delay too large, never too small.
constexpr int kWriterTimeoutMs = 100;

VideoHandle openVideo(const video_output_info& form)
{
    video_output_info info = form;
    info.name = "encoder probe";
    video_t* video = nullptr;
    return video_output_open(&video, &info) == VIDEO_OUTPUT_SUCCESS ? VideoHandle(video) : nullptr;
}

ObsOutputHandle createOutput(const FfmpegRequest& request, video_t* video)
{
    const ObsDataHandle settings = buildFfmpegSettings(RecordingFormat::Mp4, request);
    // A container that is written nowhere. What the encoder buffers does not depend on it.
    obs_data_set_string(settings.get(), "format_name", "null");
    obs_data_erase(settings.get(), "format_mime_type");
    obs_data_set_string(settings.get(), "url", "null");
    ObsOutputHandle output(obs_output_create("ffmpeg_output", "encoder_probe", settings.get(), nullptr));
    obs_output_set_media(output.get(), video, obs_get_audio());
    obs_output_set_mixers(output.get(), 0);
    return output;
}

/// Hands a frame, grey in I420 and a different grey each time, to the video output.
bool pushFrame(video_t* video, int number)
{
    const video_output_info* info = video_output_get_info(video);
    video_frame frame{};
    const auto timestamp = static_cast<uint64_t>(number + 1) * video_output_get_frame_time(video);
    if (!video_output_lock_frame(video, &frame, 1, timestamp))
        return false;
    std::memset(frame.data[0], number * 4 % 256, static_cast<size_t>(frame.linesize[0]) * info->height);
    for (int plane = 1; plane <= 2 && frame.data[plane]; ++plane)
        std::memset(frame.data[plane], 128, static_cast<size_t>(frame.linesize[plane]) * ((info->height + 1) / 2));
    video_output_unlock_frame(video);
    return true;
}

bool encodeFrame(video_t* video, int number)
{
    const uint32_t before = video_output_get_total_frames(video);
    return pushFrame(video, number) &&
           QTest::qWaitFor([=] { return video_output_get_total_frames(video) != before; }, kFrameTimeoutMs);
}

std::optional<int> framesBeforeTheFirst(obs_output_t* output, video_t* video)
{
    for (int number = 0; number <= kMaxFrames && encodeFrame(video, number); ++number) {
        if (obs_output_get_total_frames(output) == 0)
            return {};
        if (QTest::qWaitFor([output] { return obs_output_get_total_bytes(output) > 0; }, kWriterTimeoutMs))
            return number;
    }
    return {};
}

void noteFailure(void* failed, calldata_t*)
{
    *static_cast<std::atomic<bool>*>(failed) = true;
}

} // namespace

std::optional<int> measuredEncoderDelay(const FfmpegRequest& request, const video_output_info& form)
{
    const VideoHandle video = openVideo(form);
    const ObsOutputHandle output = createOutput(request, video.get());
    std::atomic<bool> failed{false};
    const ObsSignalConnection stop =
        connectSignal(obs_output_get_signal_handler(output.get()), "stop", &noteFailure, &failed);
    if (!obs_output_start(output.get()) ||
        !QTest::qWaitFor([&] { return failed || obs_output_active(output.get()); }, kFrameTimeoutMs) || failed)
        return {};
    const std::optional<int> frames = framesBeforeTheFirst(output.get(), video.get());
    obs_output_force_stop(output.get());
    // An output that is released while it ends is stopped a second time, and waits for an end that has passed.
    const bool ended = QTest::qWaitFor([&] { return !obs_output_active(output.get()); }, kFrameTimeoutMs);
    return frames && ended ? std::optional(*frames + kReorder) : std::nullopt;
}
