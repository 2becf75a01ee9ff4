#include "engine/encoderdelay.h"

#include "app/sclogger.h"
#include "engine/obshandles.h"

#include <QElapsedTimer>
#include <QMutexLocker>
#include <QThread>

#include <media-io/video-frame.h>

#include <algorithm>
#include <cstring>

namespace {

/// libx264's defaults: a look-ahead of 40 pictures and, on top, up to 16 pictures for the order of B pictures.
constexpr int kX264LookAheadFrames = 40;
constexpr int kX264OrderFrames = 16;
/// What libobs's FFmpeg output asks of libx264, the preset "veryfast": a look-ahead of 10 pictures for the rates of
/// blocks, and 3 B pictures in a row.
constexpr int kX264VeryFastLookAhead = 10;
constexpr int kX264BFrames = 3;
/// FFmpeg's own encoders take a picture and give it out; two more if one of them ever reorders.
constexpr int kPlainEncoderFrames = 2;
/// Pictures leave libx264 in the order of decoding: among pyramids of B pictures, one comes up to two places later than
/// it is shown. The trial sees only the first picture, which is never late.
constexpr int kX264LatestPlace = 2;

/// An output that says that it failed to start has a few lines left to run.
constexpr int kFailureSettleMs = 50;
/// A picture takes milliseconds; an output must not be stopped while one is inside its encoder.
constexpr int kFrameLimitMs = 60000;

/// For what has to be waited for, cancelled or not.
const std::atomic<bool> kNotCancelled{false};
constexpr int kNoLimit = -1;

/// libx264 starts three threads for two processors; each holds one picture.
int x264ThreadFrames()
{
    return QThread::idealThreadCount() * 3 / 2 + 1;
}

/// Asks every millisecond until the condition holds or the time, if there is a limit to it, is over.
template <typename Condition>
bool waitFor(int limitMs, const std::atomic<bool>& cancelled, Condition condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (cancelled || timer.hasExpired(limitMs))
            return false;
        QThread::msleep(1);
    }
    return true;
}

ObsVideoLineHandle openLine(const video_output_info& form)
{
    video_output_info info = form;
    info.name = "encoder delay";
    video_t* line = nullptr;
    return video_output_open(&line, &info) == VIDEO_OUTPUT_SUCCESS ? ObsVideoLineHandle(line) : nullptr;
}

ObsOutputHandle createTrialOutput(RecordingFormat format, const FfmpegRequest& request, video_t* line)
{
    const ObsDataHandle settings = buildFfmpegSettings(format, request);
    // A container that is written nowhere. What the encoder holds back does not depend on it.
    obs_data_set_string(settings.get(), "format_name", "null");
    obs_data_erase(settings.get(), "format_mime_type");
    obs_data_set_string(settings.get(), "url", "null");
    ObsOutputHandle output(obs_output_create("ffmpeg_output", "encoder_delay_trial", settings.get(), nullptr));
    obs_output_set_media(output.get(), line, obs_get_audio());
    obs_output_set_mixers(output.get(), 0);
    return output;
}

/// Hands a picture, grey in I420 and a different grey each time, to the line.
bool pushFrame(video_t* line, int number)
{
    const video_output_info* info = video_output_get_info(line);
    video_frame frame{};
    const auto timestamp = static_cast<uint64_t>(number + 1) * video_output_get_frame_time(line);
    if (!video_output_lock_frame(line, &frame, 1, timestamp))
        return false;
    std::memset(frame.data[0], number * 4 % 256, static_cast<size_t>(frame.linesize[0]) * info->height);
    for (int plane = 1; plane <= 2 && frame.data[plane]; ++plane)
        std::memset(frame.data[plane], 128, static_cast<size_t>(frame.linesize[plane]) * ((info->height + 1) / 2));
    video_output_unlock_frame(line);
    return true;
}

void noteFailure(void* failed, calldata_t*)
{
    *static_cast<std::atomic<bool>*>(failed) = true;
}

/// What a trial saw.
enum class Seen
{
    FirstFrame,
    NoFrame,
    /// The output is not told of the line's pictures.
    DeafOutput
};

struct Sight
{
    Seen seen = Seen::NoFrame;
    int framesHeldBack = 0;
};

Sight watchFirstFrame(obs_output_t* output, video_t* line, int limit, const std::atomic<bool>& cancelled,
                      std::chrono::milliseconds writerLimit)
{
    const auto isOut = [output] { return obs_output_get_total_bytes(output) > 0; };
    for (int number = 0; number <= limit; ++number) {
        const uint32_t before = video_output_get_total_frames(line);
        const auto isEncoded = [line, before] { return video_output_get_total_frames(line) != before; };
        if (cancelled || !pushFrame(line, number) || !waitFor(kFrameLimitMs, kNotCancelled, isEncoded))
            return {};
        if (obs_output_get_total_frames(output) == 0)
            return {Seen::DeafOutput};
        if (waitFor(static_cast<int>(writerLimit.count()), cancelled, isOut))
            return {Seen::FirstFrame, number};
    }
    return {};
}

std::optional<int> framesThatMustFollow(const Sight& sight, int heightPx)
{
    switch (sight.seen) {
    case Seen::FirstFrame:
        return sight.framesHeldBack + kX264LatestPlace;
    case Seen::DeafOutput:
        return computedEncoderDelay(heightPx, QThread::idealThreadCount());
    case Seen::NoFrame:
        break;
    }
    return {};
}

} // namespace

int encoderDelayBound(RecordingFormat format)
{
    if (!hasVideo(format))
        return 0;
    return format == RecordingFormat::Mp4 ? kX264LookAheadFrames + kX264OrderFrames + x264ThreadFrames()
                                          : kPlainEncoderFrames;
}

/// As x264_validate_parameters() and x264_encoder_open() have it: the look-ahead, as many pictures again as decide
/// about the next one, and one in each further thread. There are three threads to two processors, two rows of blocks to
/// each.
int computedEncoderDelay(int heightPx, int processors)
{
    constexpr int kBlockPx = 16;
    constexpr int kMostThreads = 128;
    const int rows = (heightPx + kBlockPx - 1) / kBlockPx;
    const int threads = std::clamp(std::min(processors * 3 / 2, rows / 2), 1, kMostThreads);
    const int decision = kX264BFrames + 1;
    return kX264VeryFastLookAhead + decision + threads + kX264LatestPlace;
}

std::optional<int> runEncoderTrial(RecordingFormat format, const FfmpegRequest& request, const video_output_info& form,
                                   const std::atomic<bool>& cancelled, std::chrono::milliseconds writerLimit)
{
    const ObsVideoLineHandle line = openLine(form);
    if (!line)
        return {};
    const ObsOutputHandle output = createTrialOutput(format, request, line.get());
    if (!output)
        return {};
    std::atomic<bool> failed{false};
    const ObsSignalConnection stop(obs_output_get_signal_handler(output.get()), "stop", &noteFailure, &failed);
    if (!obs_output_start(output.get()))
        return {};
    // Never given up: libobs cannot let go of an output that is starting.
    waitFor(kNoLimit, kNotCancelled, [&] { return failed || obs_output_active(output.get()); });
    if (failed) {
        QThread::msleep(kFailureSettleMs);
        return {};
    }
    const Sight sight = watchFirstFrame(output.get(), line.get(), encoderDelayBound(format), cancelled, writerLimit);
    obs_output_force_stop(output.get());
    // An output that is let go of while it still ends is stopped a second time, and waits for an end that has passed.
    waitFor(kNoLimit, kNotCancelled, [&] { return !obs_output_active(output.get()); });
    return framesThatMustFollow(sight, request.heightPx);
}

EncoderDelay::EncoderDelay() = default;

EncoderDelay::~EncoderDelay()
{
    cancel();
}

bool EncoderDelay::cancel()
{
    const bool wasRunning = m_thread && m_thread->isRunning();
    m_cancelled = true;
    if (m_thread)
        m_thread->wait();
    m_thread.reset();
    m_cancelled = false;
    return wasRunning;
}

void EncoderDelay::measure(RecordingFormat format, const FfmpegRequest& request, const video_output_info& line)
{
    const bool busy = m_thread && m_thread->isRunning();
    if (format != RecordingFormat::Mp4 || busy || isMeasured(format, request))
        return;
    m_thread.reset(QThread::create([this, format, request, line] {
        if (const auto frames = runEncoderTrial(format, request, line, m_cancelled))
            keep({format, request.widthPx, request.heightPx, *frames});
    }));
    m_thread->start(QThread::LowPriority);
}

int EncoderDelay::frames(RecordingFormat format, const FfmpegRequest& request) const
{
    return find(format, request).value_or(encoderDelayBound(format));
}

bool EncoderDelay::isMeasured(RecordingFormat format, const FfmpegRequest& request) const
{
    return find(format, request).has_value();
}

std::optional<int> EncoderDelay::find(RecordingFormat format, const FfmpegRequest& request) const
{
    const QMutexLocker locker(&m_mutex);
    std::optional<int> fewest;
    for (const Finding& finding : m_findings) {
        const bool covers =
            finding.format == format && finding.widthPx >= request.widthPx && finding.heightPx >= request.heightPx;
        if (covers && finding.frames < fewest.value_or(finding.frames + 1))
            fewest = finding.frames;
    }
    return fewest;
}

void EncoderDelay::keep(const Finding& finding)
{
    const QString sentence = QStringLiteral("The %1 encoder holds back %2 pictures at %3x%4");
    SCLogger::debug(sentence.arg(recordingFormatName(finding.format))
                        .arg(finding.frames)
                        .arg(finding.widthPx)
                        .arg(finding.heightPx));
    const QMutexLocker locker(&m_mutex);
    m_findings.push_back(finding);
}
