// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/framestages.h"

#include "bench/figures.h"
#include "bench/recordertools.h"
#include "engine/capture/x11/x11frames.h"
#include "tests/recording/recordinghelpers.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryFile>

#include <media-io/video-frame.h>
#include <obs.h>
#include <util/platform.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace {

constexpr int kFrames = 60;

/// libobs without anything in it; a video output needs no more.
class Core
{
public:
    Core()
    {
        base_set_log_handler([](int, const char*, va_list, void*) {}, nullptr);
        m_isUp = obs_startup("en-US", nullptr, nullptr);
    }
    ~Core() { obs_shutdown(); }
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    bool isUp() const { return m_isUp; }

private:
    bool m_isUp = false;
};

/// A video output whose frames nobody uses.
class Video
{
public:
    explicit Video(const QSize& size);
    ~Video();
    Video(const Video&) = delete;
    Video& operator=(const Video&) = delete;

    /// False where every buffer is still waiting.
    bool lock(video_frame& frame);
    void unlock() { video_output_unlock_frame(m_video); }

private:
    static void takeFrame(void* /*param*/, video_data* /*frame*/) {}

    video_t* m_video = nullptr;
};

Video::Video(const QSize& size)
{
    video_output_info info{};
    info.name = "bench";
    info.format = VIDEO_FORMAT_I420;
    info.fps_num = kRecordedFps;
    info.fps_den = 1;
    info.width = static_cast<uint32_t>(size.width());
    info.height = static_cast<uint32_t>(size.height());
    info.cache_size = 6;
    info.colorspace = VIDEO_CS_709;
    info.range = VIDEO_RANGE_FULL;
    if (video_output_open(&m_video, &info) == VIDEO_OUTPUT_SUCCESS)
        video_output_connect(m_video, nullptr, &Video::takeFrame, this);
}

Video::~Video()
{
    video_output_disconnect(m_video, &Video::takeFrame, this);
    video_output_close(m_video);
}

bool Video::lock(video_frame& frame)
{
    return m_video && video_output_lock_frame(m_video, &frame, 1, os_gettime_ns());
}

I420View viewOf(const video_frame& frame)
{
    I420View view{};
    for (int plane = 0; plane < 3; ++plane) {
        view.planes[plane] = frame.data[plane];
        view.stridesBytes[plane] = static_cast<int>(frame.linesize[plane]);
    }
    return view;
}

void append(QFile& file, const I420View& frame, const QSize& size)
{
    for (int plane = 0; plane < 3; ++plane) {
        const QSize planeSize = plane == 0 ? size : size / 2;
        for (int row = 0; row < planeSize.height(); ++row)
            file.write(reinterpret_cast<const char*>(frame.planes[plane]) +
                           static_cast<std::ptrdiff_t>(row) * frame.stridesBytes[plane],
                       planeSize.width());
    }
}

/// Grabs, converts and hands over; keeps the frames for the encoder.
bool measureFrames(FrameSource& source, QFile& frames, const QSize& size, FrameStages& stages)
{
    Video video(size);
    std::vector<double> grab;
    std::vector<double> convert;
    std::vector<double> handOver;
    for (std::vector<double>* const times : {&grab, &convert, &handOver})
        times->reserve(kFrames);
    const uint64_t begin = os_gettime_ns();
    for (uint64_t number = 0; number < kFrames; ++number) {
        os_sleepto_ns(begin + number * 1'000'000'000 / kRecordedFps);
        grab.push_back(millisecondsOf([&source] { source.update(os_gettime_ns()); }));
        video_frame frame{};
        bool isLocked = false;
        const double lockMs = millisecondsOf([&] { isLocked = video.lock(frame); });
        if (!isLocked)
            continue;
        const I420View view = viewOf(frame);
        convert.push_back(millisecondsOf([&] { source.write(view); }));
        append(frames, view, size);
        handOver.push_back(lockMs + millisecondsOf([&video] { video.unlock(); }));
    }
    stages.grabMs = middleOf(grab);
    stages.convertMs = middleOf(convert);
    stages.handOverMs = middleOf(handOver);
    return !handOver.empty() && frames.flush();
}

/// Draws the pointer again and again into a frame that holds everything else already.
double blendMs(FrameSource& source, const QSize& size)
{
    const auto pixels = static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height());
    std::vector<std::uint8_t> buffer(pixels * 3 / 2);
    const I420View frame{{buffer.data(), buffer.data() + pixels, buffer.data() + pixels * 5 / 4},
                         {size.width(), size.width() / 2, size.width() / 2}};
    const FramePointer pointer{true, {EffectColor{0.0F, 1.0F, 0.5F, 0.3F}, {}, {}}, 1.0F};
    return middleOfRuns(kFrames, [&] {
        source.setPointer(pointer);
        source.update(os_gettime_ns());
        return millisecondsOf([&] { source.write(frame); });
    });
}

/// Processor time of FFmpeg for the first frames; negative when it fails.
double processorMs(const QString& frames, const QSize& size, int count, const QStringList& encoder)
{
    QProcess process;
    const QString videoSize = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("ffmpeg"),
                  QStringList{"-nostdin", "-benchmark", "-f", "rawvideo", "-pix_fmt", "yuvj420p", "-video_size",
                              videoSize, "-framerate", QString::number(kRecordedFps), "-i", frames, "-frames:v",
                              QString::number(count)} +
                      encoder + QStringList{"-f", "null", "-"});
    process.waitForFinished(kToolTimeoutMs);
    static const QRegularExpression times(QStringLiteral("bench: utime=([0-9.]+)s stime=([0-9.]+)s"));
    const QRegularExpressionMatch match = times.match(QString::fromLocal8Bit(process.readAll()));
    return match.hasMatch() ? 1000 * (match.captured(1).toDouble() + match.captured(2).toDouble()) : -1;
}

/// Without what FFmpeg takes to start, and to read the frames; negative when it cannot be measured.
double encodeMs(const QFile& frames, const QSize& size)
{
    constexpr int kFirst = 10;
    const int count = static_cast<int>(frames.size() / (qint64{size.width()} * size.height() * 3 / 2));
    const auto ms = [&](int frameCount, const QStringList& encoder) {
        return processorMs(frames.fileName(), size, frameCount, encoder);
    };
    const QStringList none{"-c:v", "wrapped_avframe"};
    const std::array<double, 4> times{ms(count, videoEncoderArguments()), ms(kFirst, videoEncoderArguments()),
                                      ms(count, none), ms(kFirst, none)};
    if (count <= kFirst || *std::min_element(times.begin(), times.end()) < 0)
        return -1;
    return std::max(0.0, (times[0] - times[1] - times[2] + times[3]) / (count - kFirst));
}

} // namespace

FrameStages measureFrameStages(const Job& job)
{
    FrameStages stages;
    const Core core;
    const QSize size = job.area().size();
    const std::unique_ptr<FrameSource> source = X11Frames::open(job.area(), stages.failure);
    if (!source)
        return stages;
    pointTo(job.area().center());
    source->setPointer({false, {}, 1.0F});
    QTemporaryFile frames(job.folder + QLatin1String("/frames"));
    if (!core.isUp() || !frames.open() || !measureFrames(*source, frames, size, stages)) {
        stages.failure = QStringLiteral("libobs does not take the frames, or they cannot be kept");
        return stages;
    }
    stages.blendMs = blendMs(*source, size);
    stages.encodeMs = encodeMs(frames, size);
    return stages;
}
