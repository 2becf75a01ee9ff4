// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/enginecore.h"

#include "engine/capture/captureplatform.h"
#include "engine/core/enginemodules.h"
#include "platform/process/gl_function.h"

#include <QDebug>
#include <QDir>
#include <QStandardPaths>

#include <obs.h>

namespace {

constexpr uint32_t kSamplesPerSecond = 48000;
constexpr char kConfigFolder[] = "/obs-cfg";

bool resetAudio()
{
    obs_audio_info audio{};
    audio.samples_per_sec = kSamplesPerSecond;
    audio.speakers = SPEAKERS_STEREO;
    return obs_reset_audio(&audio);
}

QString configPath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (!QDir(folder).exists())
        QDir().mkpath(folder);
    return folder + QLatin1String(kConfigFolder);
}

void addEnginePaths()
{
    const EngineFolders folders = EngineFolders::besideExecutable();
    obs_add_module_path(folders.plugins.toUtf8().constData(), folders.pluginData.toUtf8().constData());
    // Newer libraries call it deprecated, but have nothing else that adds a folder of core data.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    obs_add_data_path(folders.coreData.toUtf8().constData());
    QT_WARNING_POP
}

/// Whether libobs counts the padding in the rows of a surface.
bool countsRowPadding()
{
    constexpr uint32_t kWidth = 2;
    gs_stagesurf_t* const surface = gs_stagesurface_create(kWidth, 1, GS_R8);
    uint8_t* data = nullptr;
    uint32_t rowBytes = 0;
    const bool mapped = surface != nullptr && gs_stagesurface_map(surface, &data, &rowBytes);
    if (mapped)
        gs_stagesurface_unmap(surface);
    gs_stagesurface_destroy(surface);
    return !mapped || rowBytes != kWidth;
}

/// Sets GL_PACK_ALIGNMENT to 1 for the read-back of frames, after each reset of the video.
///
/// OpenGL pads each row to a multiple of 4 bytes, and libobs (29.0 at least) takes none of that into account: where
/// half the width of the video is no multiple of 4, each row of colours comes out shifted against the one above it.
void setPackAlignment()
{
    using PixelStore = void (*)(unsigned int name, int value);
    constexpr unsigned int kGlPackAlignment = 0x0D05;
    obs_enter_graphics();
    if (gs_get_context() != nullptr && gs_get_device_type() == GS_DEVICE_OPENGL && !countsRowPadding()) {
        if (const auto pixelStore = reinterpret_cast<PixelStore>(platform::glFunction("glPixelStorei")))
            pixelStore(kGlPackAlignment, 1);
    }
    obs_leave_graphics();
}

} // namespace

bool enginecore::startUp()
{
    const QString config = configPath();
    prepareLibobsStart();
    if (!obs_startup("en-US", config.toUtf8().constData(), nullptr)) {
        qCritical() << "obs_startup failed!";
        return false;
    }
    addEnginePaths();
    if (!resetAudio()) {
        qCritical() << "obs reset audio failed!";
        return false;
    }
    return true;
}

bool enginecore::hasVideo()
{
    obs_video_info video{};
    return obs_initialized() && obs_get_video_info(&video);
}

int enginecore::resetVideo(const CapturePlatform& platform, const QSize& source, const QSize& output, int fps)
{
    obs_video_info video{};
    video.graphics_module = platform.graphicsModule;
    video.fps_num = static_cast<uint32_t>(fps);
    video.fps_den = 1;
    video.base_width = static_cast<uint32_t>(source.width());
    video.base_height = static_cast<uint32_t>(source.height());
    video.output_width = static_cast<uint32_t>(output.width());
    video.output_height = static_cast<uint32_t>(output.height());
    video.output_format = VIDEO_FORMAT_I420;
    video.adapter = 0;
    video.gpu_conversion = true;
    video.colorspace = VIDEO_CS_709;
    video.range = VIDEO_RANGE_FULL;
    video.scale_type = OBS_SCALE_BICUBIC;
    const int result = obs_reset_video(&video);
    if (result == OBS_VIDEO_SUCCESS)
        setPackAlignment();
    return result;
}
