// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/enginecore.h"

#include "app/sclogger.h"
#include "engine/capture/captureplatform.h"
#include "platform/files/private_files.h"
#include "platform/process/gl_function.h"

#include <QCoreApplication>
#include <QDebug>
#include <QStandardPaths>
#include <QStringList>

#include <obs.h>

#include <limits>

namespace {

constexpr uint32_t kSamplesPerSecond = 48000;
constexpr char kConfigFolder[] = "/obs-cfg";
constexpr char kPluginFolder[] = "/obs-plugins/64bit";

/// libobs' files lie in a folder beside the executable. Absolute, with "/".
QByteArray engineFolder(const char* name)
{
    return (QCoreApplication::applicationDirPath() + QLatin1String("/obs-data") + QLatin1String(name)).toUtf8();
}

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
    platform::makePrivateFolder(folder);
    return folder + QLatin1String(kConfigFolder);
}

void addEnginePaths()
{
    obs_add_module_path(engineFolder(kPluginFolder), engineFolder("/data/obs-plugins/%module%"));
    // Newer libraries call it deprecated, but have nothing else that adds a folder of core data.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    obs_add_data_path(engineFolder("/data/libobs/"));
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

struct FolderSearch
{
    QByteArray folder;
    QStringList failed;
};

void openIfInFolder(void* param, const obs_module_info2* found)
{
    auto& search = *static_cast<FolderSearch*>(param);
    if (!QByteArray(found->bin_path).startsWith(search.folder))
        return;
    obs_module_t* module = nullptr;
    const int code = obs_open_module(&module, found->bin_path, found->data_path);
    if (code != MODULE_SUCCESS || !obs_init_module(module))
        search.failed << QString::fromUtf8(found->name);
}

QStringList loadFrom(const QByteArray& folder)
{
    FolderSearch search{folder + '/', {}};
    obs_find_modules2(openIfInFolder, &search);
    obs_post_load_modules();
    return search.failed;
}

QStringList loadAll()
{
    obs_module_failure_info failures{};
    obs_load_all_modules2(&failures);
    QStringList failed;
    for (size_t i = 0; i < failures.count; ++i)
        failed << QString::fromUtf8(failures.failed_modules[i]);
    obs_module_failure_info_free(&failures);
    return failed;
}

bool isRegistered(const NeededType& type)
{
    switch (type.registry) {
    case NeededType::Registry::Source:
        return obs_source_get_display_name(type.id) != nullptr;
    case NeededType::Registry::Output:
        return obs_output_get_display_name(type.id) != nullptr;
    case NeededType::Registry::Encoder:
        return obs_encoder_get_display_name(type.id) != nullptr;
    }
    return false;
}

QStringList failedModules(const CapturePlatform& platform)
{
    QStringList failed =
        platform.moduleLoading == ModuleLoading::All ? loadAll() : loadFrom(engineFolder(kPluginFolder));
    for (const char* name : platform.neededModules) {
        if (!obs_get_module(name) && !failed.contains(QLatin1String(name)))
            failed << QLatin1String(name);
    }
    return failed;
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

bool enginecore::mayHold(const QSize& size)
{
    using GetInteger = void (*)(unsigned int name, int* value);
    constexpr unsigned int kGlMaxTextureSize = 0x0D33;
    if (!obs_initialized())
        return true;
    int longest = std::numeric_limits<int>::max();
    obs_enter_graphics();
    if (gs_get_context() != nullptr && gs_get_device_type() == GS_DEVICE_OPENGL) {
        if (const auto getInteger = reinterpret_cast<GetInteger>(platform::glFunction("glGetIntegerv")))
            getInteger(kGlMaxTextureSize, &longest);
    }
    obs_leave_graphics();
    return size.width() <= longest && size.height() <= longest;
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

void enginecore::loadModules(const CapturePlatform& platform)
{
    const QStringList failed = failedModules(platform);
    if (failed.isEmpty())
        qInfo() << "All OBS modules loaded successfully";
    else
        qCritical() << "Failed to load" << failed.size() << "OBS modules:";
    for (const QString& name : failed) {
        qCritical().noquote() << "  - Failed module:" << name;
        SCLogger::error(QStringLiteral("Failed to load OBS module: %1").arg(name));
    }
    for (const NeededType& type : platform.neededTypes) {
        if (!isRegistered(type))
            SCLogger::error(QStringLiteral("The engine has no \"%1\": %2")
                                .arg(QLatin1String(type.id), QLatin1String(type.consequence)));
    }
}
