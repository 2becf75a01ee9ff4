// SPDX-License-Identifier: GPL-3.0-or-later
// The least that records a screen through libobs: the same core settings, scene, filter and file output that Kestrano
// uses, and nothing of Kestrano around them. tools/bench runs it beside the program, to separate what the program
// itself costs from what libobs costs.
//
//   bare_libobs --output PATH_WITHOUT_EXTENSION [--format mp4|avi|flv|gif] [--seconds N] [--area X,Y,WIDTH,HEIGHT]
//   bare_libobs --idle [--seconds N]
//
// Prints one line for each event, with CLOCK_MONOTONIC in nanoseconds: READY, STARTED, STOP_REQUESTED, STOPPED, and
// then FRAMES total lagged skipped, counted from the start of the recording. Idle it records nothing and shows nothing:
// READY, and the end.
#include "bench/areatext.h"
#include "tests/support/testpattern.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <obs-nix-platform.h>
#include <obs.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int kFramesPerSecond = 30;
constexpr int kGopFrames = 10 * kFramesPerSecond;
constexpr int kVideoBitrateKbit = 4 * 1024;
constexpr int kAudioBitrateKbit = 192;

struct Format
{
    const char* name;
    const char* videoEncoder;
    int videoEncoderId;
    const char* audioEncoder;
    int audioEncoderId;
};

constexpr std::array<Format, 4> kFormats{{{"mp4", "libx264", 27, "aac", 86018},
                                          {"avi", "mpeg4", 12, "libmp3lame", 86017},
                                          {"flv", "flv", 21, "libmp3lame", 86017},
                                          {"gif", "gif", 97, "none", 0}}};

void report(const char* event)
{
    std::printf("%s %lld\n", event, static_cast<long long>(monotonicNow()));
    std::fflush(stdout);
}

bool isNeeded(std::string_view module)
{
    constexpr std::array<std::string_view, 5> kNeeded{"obs-ffmpeg", "obs-filters", "obs-transitions", "linux-capture",
                                                      "linux-pulseaudio"};
    return std::find(kNeeded.begin(), kNeeded.end(), module) != kNeeded.end();
}

void openIfNeeded(void* /*context*/, const obs_module_info2* info)
{
    obs_module_t* module = nullptr;
    if (isNeeded(info->name) && obs_open_module(&module, info->bin_path, info->data_path) == MODULE_SUCCESS)
        obs_init_module(module);
}

bool resetVideo(const QSize& size)
{
    obs_video_info info{};
    info.graphics_module = "libobs-opengl";
    info.fps_num = kFramesPerSecond;
    info.fps_den = 1;
    info.base_width = info.output_width = static_cast<uint32_t>(size.width());
    info.base_height = info.output_height = static_cast<uint32_t>(size.height());
    info.output_format = VIDEO_FORMAT_I420;
    info.gpu_conversion = true;
    info.colorspace = VIDEO_CS_709;
    info.range = VIDEO_RANGE_FULL;
    info.scale_type = OBS_SCALE_BICUBIC;
    return obs_reset_video(&info) == OBS_VIDEO_SUCCESS;
}

bool startCore(const QSize& size)
{
    obs_set_nix_platform(OBS_NIX_PLATFORM_X11_EGL);
    if (!obs_startup("en-US", nullptr, nullptr))
        return false;
    const obs_audio_info audio{48000, SPEAKERS_STEREO};
    if (!obs_reset_audio(&audio) || !resetVideo(size))
        return false;
    obs_find_modules2(openIfNeeded, nullptr);
    obs_post_load_modules();
    return true;
}

/// The screen in physical pixels.
QRect screenRect()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return {QPoint(0, 0), screen->size() * screen->devicePixelRatio()};
}

/// The margins of an area of the screen, as the crop filter takes them.
OBSDataAutoRelease cropSettings(const QRect& area)
{
    OBSDataAutoRelease settings = obs_data_create();
    obs_data_set_bool(settings, "relative", true);
    obs_data_set_int(settings, "left", area.left());
    obs_data_set_int(settings, "top", area.top());
    obs_data_set_int(settings, "right", screenRect().right() - area.right());
    obs_data_set_int(settings, "bottom", screenRect().bottom() - area.bottom());
    return settings;
}

/// What is recorded: the monitor with a crop filter, in a scene behind a fade, and the desktop's sound.
class Scene
{
public:
    explicit Scene(const QRect& area);

    bool isComplete() const { return m_monitor && m_crop && m_transition && m_sound; }

private:
    OBSSourceAutoRelease m_monitor;
    OBSSourceAutoRelease m_crop;
    OBSSourceAutoRelease m_transition;
    OBSSourceAutoRelease m_sound;
    OBSSceneAutoRelease m_scene;
};

Scene::Scene(const QRect& area)
{
    const OBSDataAutoRelease monitor = obs_data_create();
    obs_data_set_int(monitor, "screen", 0);
    obs_data_set_bool(monitor, "show_cursor", true);
    m_monitor = obs_source_create("xshm_input", "monitor", monitor, nullptr);
    const OBSDataAutoRelease crop = cropSettings(area);
    m_crop = obs_source_create("crop_filter", "crop", crop, nullptr);
    m_transition = obs_source_create_private("fade_transition", "fade", nullptr);
    const OBSDataAutoRelease sound = obs_data_create();
    obs_data_set_string(sound, "device_id", "default");
    m_sound = obs_source_create("pulse_output_capture", "sound", sound, nullptr);
    m_scene = obs_scene_create("scene");
    if (!isComplete())
        return;
    obs_source_filter_add(m_monitor, m_crop);
    obs_scene_add(m_scene, m_monitor);
    obs_transition_set(m_transition, obs_scene_get_source(m_scene));
    obs_set_output_source(0, m_transition);
    obs_set_output_source(1, m_sound);
}

OBSDataAutoRelease outputSettings(const Format& format, const QString& path, const QSize& size)
{
    OBSDataAutoRelease settings = obs_data_create();
    const bool sound = format.audioEncoderId != 0;
    obs_data_set_string(settings, "url", qPrintable(path + QLatin1Char('.') + QLatin1String(format.name)));
    obs_data_set_string(settings, "format_name", format.name);
    obs_data_set_int(settings, "gop_size", kGopFrames);
    obs_data_set_int(settings, "video_bitrate", kVideoBitrateKbit);
    obs_data_set_string(settings, "video_encoder", format.videoEncoder);
    obs_data_set_int(settings, "video_encoder_id", format.videoEncoderId);
    obs_data_set_int(settings, "scale_width", size.width());
    obs_data_set_int(settings, "scale_height", size.height());
    obs_data_set_string(settings, "audio_encoder", format.audioEncoder);
    if (sound) {
        obs_data_set_int(settings, "audio_bitrate", kAudioBitrateKbit);
        obs_data_set_int(settings, "audio_encoder_id", format.audioEncoderId);
    }
    return settings;
}

/// The frame just as the core makes it: asked for nothing, libobs converts every frame of full range.
video_scale_info asMade(const QSize& size)
{
    video_scale_info form{};
    form.format = VIDEO_FORMAT_I420;
    form.width = static_cast<uint32_t>(size.width());
    form.height = static_cast<uint32_t>(size.height());
    form.range = VIDEO_RANGE_FULL;
    form.colorspace = VIDEO_CS_709;
    return form;
}

/// One recording from READY to STOPPED; ends the event loop when libobs says that the file is closed.
class Recording : public QObject
{
public:
    Recording(const Format& format, const QString& path, const QSize& size)
        : m_output(obs_output_create("ffmpeg_output", "recording", nullptr, nullptr))
    {
        const OBSDataAutoRelease settings = outputSettings(format, path, size);
        obs_output_set_mixer(m_output, 1);
        obs_output_set_media(m_output, obs_get_video(), obs_get_audio());
        obs_output_update(m_output, settings);
        const video_scale_info form = asMade(size);
        obs_output_set_video_conversion(m_output, &form);
        signal_handler_connect(obs_output_get_signal_handler(m_output), "stop", &Recording::onStopped, this);
    }

    bool start()
    {
        m_firstFrame = obs_get_total_frames();
        m_firstLagged = obs_get_lagged_frames();
        m_firstSkipped = video_output_get_skipped_frames(obs_get_video());
        if (!obs_output_start(m_output))
            return false;
        report("STARTED");
        return true;
    }

    void stop()
    {
        report("STOP_REQUESTED");
        obs_output_stop(m_output);
        report("STOPPED");
    }

    void reportFrames() const
    {
        std::printf("FRAMES %u %u %u\n", obs_get_total_frames() - m_firstFrame, obs_get_lagged_frames() - m_firstLagged,
                    video_output_get_skipped_frames(obs_get_video()) - m_firstSkipped);
    }

private:
    static void onStopped(void* context, calldata_t* /*data*/)
    {
        QMetaObject::invokeMethod(static_cast<Recording*>(context), &QCoreApplication::quit, Qt::QueuedConnection);
    }

    OBSOutputAutoRelease m_output;
    uint32_t m_firstFrame = 0;
    uint32_t m_firstLagged = 0;
    uint32_t m_firstSkipped = 0;
};

int idle(int milliseconds)
{
    if (!startCore(screenRect().size())) {
        std::fputs("bare_libobs: the libobs core did not start\n", stderr);
        return EXIT_FAILURE;
    }
    report("READY");
    QTimer::singleShot(milliseconds, qApp, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

int record(const Format& format, const QString& path, const QRect& area, int milliseconds)
{
    if (!startCore(area.size())) {
        std::fputs("bare_libobs: the libobs core did not start\n", stderr);
        return EXIT_FAILURE;
    }
    const Scene scene(area);
    if (!scene.isComplete()) {
        std::fputs("bare_libobs: a source, a filter or a transition is missing\n", stderr);
        return EXIT_FAILURE;
    }
    Recording recording(format, path, area.size());
    report("READY");
    // The scene has its first frames before the recording starts, as it has in the program after its countdown.
    constexpr int kSettleMs = 1000;
    QTimer::singleShot(kSettleMs, &recording, [&recording, milliseconds] {
        if (!recording.start())
            QCoreApplication::exit(EXIT_FAILURE);
        QTimer::singleShot(milliseconds, &recording, &Recording::stop);
    });
    const int result = QCoreApplication::exec();
    recording.reportFrames();
    return result;
}

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption output(QStringLiteral("output"), QStringLiteral("File, without its extension."),
                                    QStringLiteral("path"));
    const QCommandLineOption format(QStringLiteral("format"), QStringLiteral("mp4, avi, flv or gif."),
                                    QStringLiteral("format"), QStringLiteral("mp4"));
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("Length of the recording."),
                                     QStringLiteral("seconds"), QStringLiteral("10"));
    const QCommandLineOption area(QStringLiteral("area"), QStringLiteral("What of the screen is recorded."),
                                  QStringLiteral("x,y,width,height"), textFromArea(screenRect()));
    const QCommandLineOption nothing(QStringLiteral("idle"), QStringLiteral("Records nothing."));
    parser.addHelpOption();
    parser.addOptions({output, format, seconds, area, nothing});
    parser.process(application);
    const int milliseconds = static_cast<int>(parser.value(seconds).toDouble() * 1000);
    const auto found = std::find_if(kFormats.begin(), kFormats.end(), [&](const Format& candidate) {
        return parser.value(format) == QLatin1String(candidate.name);
    });
    if (!parser.isSet(nothing) && (found == kFormats.end() || !parser.isSet(output))) {
        std::fputs("bare_libobs: --output and a known --format are wanted\n", stderr);
        return EXIT_FAILURE;
    }
    const int result = parser.isSet(nothing)
                           ? idle(milliseconds)
                           : record(*found, parser.value(output), areaFromText(parser.value(area)), milliseconds);
    // libobs stays up to the end of the process, as it does in the program; only what has been said must be out.
    std::fflush(stdout);
    std::_Exit(result);
}
