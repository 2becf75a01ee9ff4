// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/standins.h"

#include <QJsonDocument>
#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QStandardPaths>

#include <util/platform.h>

namespace {

struct Record
{
    QMutex mutex;
    QStringList events;
    QMap<QString, QJsonObject> settings;
    QJsonObject outputSettings;
    obs_output_t* output = nullptr;
    std::vector<std::uint64_t> encodedFrames;
    qsizetype capturedFrames = 0;
};

Record& record()
{
    static Record instance;
    return instance;
}

void note(const QString& event)
{
    const QMutexLocker locker(&record().mutex);
    record().events << event;
}

void noteSettings(const char* typeId, obs_data_t* settings)
{
    const QMutexLocker locker(&record().mutex);
    record().settings[QLatin1String(typeId)] = standins::toJson(settings);
}

/// What the stand-in of a source knows of itself.
struct Source
{
    const char* typeId;
    obs_source_t* source;
};

const char* typeIdOf(obs_source_t* source)
{
    return obs_source_get_id(source);
}

void* createSource(obs_data_t* settings, obs_source_t* source)
{
    const char* id = typeIdOf(source);
    note(QStringLiteral("create %1 as %2").arg(QLatin1String(id), QString::fromUtf8(obs_source_get_name(source))));
    noteSettings(id, settings);
    return new Source{id, source};
}

void* createCapture(obs_data_t* settings, obs_source_t* source)
{
    return standins::behaviour().captureFails ? nullptr : createSource(settings, source);
}

void destroySource(void* data)
{
    const auto* source = static_cast<Source*>(data);
    note(QStringLiteral("destroy %1").arg(QLatin1String(source->typeId)));
    delete source;
}

void updateSource(void* data, obs_data_t* settings)
{
    const auto* source = static_cast<Source*>(data);
    note(QStringLiteral("update %1").arg(QLatin1String(source->typeId)));
    noteSettings(source->typeId, settings);
}

void captureFrame(void* data, float)
{
    if (!obs_source_showing(static_cast<Source*>(data)->source))
        return;
    const QMutexLocker locker(&record().mutex);
    ++record().capturedFrames;
}

uint32_t captureWidth(void*)
{
    return 640;
}

uint32_t captureHeight(void*)
{
    return 480;
}

obs_properties_t* listProperties(const char* key, const std::vector<standins::ListEntry>& entries)
{
    obs_properties_t* properties = obs_properties_create();
    obs_property_t* list = obs_properties_add_list(properties, key, key, OBS_COMBO_TYPE_LIST, OBS_COMBO_FORMAT_STRING);
    for (const standins::ListEntry& entry : entries)
        obs_property_list_add_string(list, entry.name, entry.value);
    return properties;
}

obs_properties_t* microphoneProperties(void*)
{
    return listProperties("device_id", standins::behaviour().microphones);
}

obs_properties_t* speakerProperties(void*)
{
    return listProperties("device_id", standins::behaviour().speakers);
}

obs_properties_t* windowProperties(void*)
{
    return listProperties("window", standins::behaviour().windows);
}

obs_properties_t* monitorProperties(void*)
{
    if (!standins::behaviour().monitorsAsIntegers)
        return listProperties("monitor_id", standins::behaviour().monitors);
    obs_properties_t* properties = obs_properties_create();
    obs_property_t* list =
        obs_properties_add_list(properties, "monitor", "monitor", OBS_COMBO_TYPE_LIST, OBS_COMBO_FORMAT_INT);
    long long number = 0;
    for (const standins::ListEntry& entry : standins::behaviour().monitors)
        obs_property_list_add_int(list, entry.name, number++);
    return properties;
}

obs_source_info sourceInfo(const char* id, obs_source_type type, uint32_t flags)
{
    obs_source_info info{};
    info.id = id;
    info.type = type;
    info.output_flags = flags;
    info.create = createSource;
    info.destroy = destroySource;
    info.update = updateSource;
    return info;
}

void registerCapture(const char* id, const char* (*name)(void*), obs_properties_t* (*properties)(void*))
{
    obs_source_info info = sourceInfo(id, OBS_SOURCE_TYPE_INPUT, OBS_SOURCE_VIDEO);
    info.get_name = name;
    info.create = createCapture;
    info.get_properties = properties;
    info.video_tick = captureFrame;
    info.get_width = captureWidth;
    info.get_height = captureHeight;
    info.video_render = [](void*, gs_effect_t*) {};
    obs_register_source(&info);
}

void registerAudio(const char* id, const char* (*name)(void*), obs_properties_t* (*properties)(void*))
{
    obs_source_info info = sourceInfo(id, OBS_SOURCE_TYPE_INPUT, OBS_SOURCE_AUDIO);
    info.get_name = name;
    info.get_properties = properties;
    obs_register_source(&info);
}

void registerCropFilter()
{
    obs_source_info info = sourceInfo("crop_filter", OBS_SOURCE_TYPE_FILTER, OBS_SOURCE_VIDEO);
    info.get_name = [](void*) { return "Crop/Pad"; };
    info.video_render = [](void* data, gs_effect_t*) {
        obs_source_skip_video_filter(static_cast<Source*>(data)->source);
    };
    obs_register_source(&info);
}

bool renderNoAudio(void*, uint64_t*, obs_source_audio_mix*, uint32_t, size_t, size_t)
{
    return false;
}

void registerTransition(const char* id, const char* (*name)(void*), bool configurable)
{
    obs_source_info info = sourceInfo(id, OBS_SOURCE_TYPE_TRANSITION, 0);
    info.get_name = name;
    info.update = nullptr;
    info.video_render = [](void*, gs_effect_t*) {};
    info.audio_render = renderNoAudio;
    if (configurable)
        info.get_properties = [](void*) { return obs_properties_create(); };
    obs_register_source(&info);
}

void* createOutput(obs_data_t* settings, obs_output_t* output)
{
    note(QStringLiteral("create output"));
    const QMutexLocker locker(&record().mutex);
    record().output = output;
    record().encodedFrames.clear();
    record().outputSettings = standins::toJson(settings);
    return output;
}

void destroyOutput(void* data)
{
    note(QStringLiteral("destroy output"));
    const QMutexLocker locker(&record().mutex);
    if (record().output == data)
        record().output = nullptr;
}

bool startOutput(void* data)
{
    auto* output = static_cast<obs_output_t*>(data);
    note(QStringLiteral("start output"));
    const standins::Behaviour& behaviour = standins::behaviour();
    if (behaviour.duringStart)
        behaviour.duringStart(output);
    if (behaviour.outputError)
        obs_output_set_last_error(output, behaviour.outputError);
    return behaviour.outputStarts && (behaviour.duringStart || obs_output_begin_data_capture(output, 0));
}

void stopOutput(void* data, uint64_t ts)
{
    // libobs passes no time only when it forces the stop.
    note(ts == 0 ? QStringLiteral("force stop output") : QStringLiteral("stop output"));
    if (standins::behaviour().duringStop)
        standins::behaviour().duringStop();
    obs_output_end_data_capture(static_cast<obs_output_t*>(data));
}

void updateOutput(void*, obs_data_t* settings)
{
    note(QStringLiteral("update output"));
    const QMutexLocker locker(&record().mutex);
    record().outputSettings = standins::toJson(settings);
}

void encodeFrame(void*, video_data* frame)
{
    os_sleep_ms(static_cast<uint32_t>(standins::behaviour().encodeMs));
    const QMutexLocker locker(&record().mutex);
    record().encodedFrames.push_back(frame->timestamp);
}

uint64_t bytesWritten(void*)
{
    const auto& count = standins::behaviour().bytesWritten;
    return count ? count() : 0;
}

void registerAudioEncoder()
{
    static int encoder = 0;
    obs_encoder_info info{};
    info.id = "ffmpeg_aac";
    info.type = OBS_ENCODER_AUDIO;
    info.codec = "aac";
    info.get_name = [](void*) { return "AAC"; };
    info.create = [](obs_data_t*, obs_encoder_t*) -> void* { return &encoder; };
    info.destroy = [](void*) {};
    info.encode = [](void*, encoder_frame*, encoder_packet*, bool* received) {
        *received = false;
        return true;
    };
    info.get_frame_size = [](void*) -> size_t { return 1024; };
    obs_register_encoder(&info);
}

} // namespace

namespace standins {

Behaviour& behaviour()
{
    static Behaviour instance;
    return instance;
}

QStringList events()
{
    const QMutexLocker locker(&record().mutex);
    return record().events;
}

void clearEvents()
{
    const QMutexLocker locker(&record().mutex);
    record().events.clear();
}

qsizetype countOf(const QString& event)
{
    return events().count(event);
}

QJsonObject lastSettings(const QString& typeId)
{
    const QMutexLocker locker(&record().mutex);
    return record().settings.value(typeId);
}

QJsonObject lastOutputSettings()
{
    const QMutexLocker locker(&record().mutex);
    return record().outputSettings;
}

obs_output_t* currentOutput()
{
    const QMutexLocker locker(&record().mutex);
    return record().output;
}

std::vector<std::uint64_t> encodedFrames()
{
    const QMutexLocker locker(&record().mutex);
    return record().encodedFrames;
}

qsizetype capturedFrames()
{
    const QMutexLocker locker(&record().mutex);
    return record().capturedFrames;
}

QJsonObject toJson(obs_data_t* settings)
{
    return QJsonDocument::fromJson(obs_data_get_json(settings)).object();
}

bool startCore()
{
    prepareLibobsStart();
    const QByteArray config = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation).toUtf8();
    obs_audio_info audio{48000, SPEAKERS_STEREO};
    obs_video_info video{};
    video.graphics_module = platform().graphicsModule;
    video.fps_num = 30;
    video.fps_den = 1;
    video.base_width = video.output_width = 320;
    video.base_height = video.output_height = 240;
    video.output_format = VIDEO_FORMAT_I420;
    video.gpu_conversion = true;
    video.colorspace = VIDEO_CS_709;
    video.range = VIDEO_RANGE_FULL;
    const bool started = obs_startup("en-US", config.constData(), nullptr) && obs_reset_audio(&audio) &&
                         obs_reset_video(&video) == OBS_VIDEO_SUCCESS;
    prepareProcessEnd();
    return started;
}

void registerSources()
{
    registerCapture(
        "monitor_capture", [](void*) { return "Display Capture"; }, monitorProperties);
    registerCapture(
        "window_capture", [](void*) { return "Window Capture"; }, windowProperties);
    registerAudio(
        "wasapi_input_capture", [](void*) { return "Audio Input"; }, microphoneProperties);
    registerAudio(
        "wasapi_output_capture", [](void*) { return "Audio Output"; }, speakerProperties);
    registerCropFilter();
}

void registerOtherTransitions()
{
    registerTransition(
        "cut_transition", [](void*) { return "Cut"; }, false);
    registerTransition(
        "wipe_transition", [](void*) { return "Wipe"; }, true);
}

void registerFadeTransition()
{
    if (!obs_source_get_display_name("fade_transition"))
        registerTransition(
            "fade_transition", [](void*) { return "Fade"; }, false);
}

void registerOutputs()
{
    obs_output_info info{};
    info.id = "ffmpeg_output";
    info.flags = OBS_OUTPUT_AV | OBS_OUTPUT_CAN_PAUSE;
    info.get_name = [](void*) { return "FFmpeg Output"; };
    info.create = createOutput;
    info.destroy = destroyOutput;
    info.start = startOutput;
    info.stop = stopOutput;
    info.raw_video = encodeFrame;
    info.raw_audio = [](void*, audio_data*) {};
    info.update = updateOutput;
    info.get_total_bytes = bytesWritten;
    obs_register_output(&info);
    registerAudioEncoder();
}

CapturePlatform platform()
{
    CapturePlatform table = CapturePlatform::windows();
    table.graphicsModule = CapturePlatform::current().graphicsModule;
    return table;
}

} // namespace standins
