// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/obsspy.h"

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>

#include <obs-module.h>
#include <obs.h>
#include <utility>

#include <atomic>
#include <dlfcn.h>

namespace {

struct Notes
{
    QMutex mutex;
    QStringList calls;
    QStringList failing;
    int stopConnections = 0;
    std::function<void()> beforeStopConnection;
    std::function<void()> afterStopConnection;
    std::atomic<int> outputsReleasedWhileActive{0};
};

Notes& notes()
{
    static Notes instance;
    return instance;
}

bool fails(const char* function)
{
    const QMutexLocker locker(&notes().mutex);
    return notes().failing.contains(QLatin1String(function));
}

template <typename Function>
Function* real(const char* name, Function*)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Marks a call that the library may answer with further calls of its own; those are not the program's.
struct Inside
{
    Inside() { ++depth; }
    ~Inside() { --depth; }
    static thread_local int depth;
};

thread_local int Inside::depth = 0;

bool isProgramsThread()
{
    const QCoreApplication* application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

/// What is to be called around this connection to "stop".
std::pair<std::function<void()>, std::function<void()>> callsAroundStopConnection()
{
    const QMutexLocker locker(&notes().mutex);
    if (++notes().stopConnections != 2)
        return {};
    return {notes().beforeStopConnection, notes().afterStopConnection};
}

void callIfThere(const std::function<void()>& function)
{
    if (function)
        function();
}

/// Leaves out what the library calls by itself.
void note(const char* function, const QString& what = QString())
{
    if (Inside::depth > 0 || !isProgramsThread())
        return;
    const QMutexLocker locker(&notes().mutex);
    notes().calls << (what.isEmpty() ? QLatin1String(function) : QLatin1String(function) + QLatin1Char(' ') + what);
}

} // namespace

#define REAL(function) real(#function, &(function))

namespace obsspy {

QStringList calls()
{
    const QMutexLocker locker(&notes().mutex);
    return notes().calls;
}

void clear()
{
    const QMutexLocker locker(&notes().mutex);
    notes().calls.clear();
}

void failAt(const QString& function)
{
    const QMutexLocker locker(&notes().mutex);
    notes().failing << function;
}

void failNowhere()
{
    const QMutexLocker locker(&notes().mutex);
    notes().failing.clear();
}

int outputsReleasedWhileActive()
{
    return notes().outputsReleasedWhileActive;
}

void aroundSecondStopConnection(std::function<void()> before, std::function<void()> after)
{
    const QMutexLocker locker(&notes().mutex);
    notes().stopConnections = 0;
    notes().beforeStopConnection = std::move(before);
    notes().afterStopConnection = std::move(after);
}

} // namespace obsspy

extern "C" {

bool obs_startup(const char* locale, const char* config, profiler_name_store_t* store)
{
    note("obs_startup", QStringLiteral("%1 %2").arg(QLatin1String(locale), QString::fromUtf8(config)));
    const Inside inside;
    return !fails("obs_startup") && REAL(obs_startup)(locale, config, store);
}

void obs_add_module_path(const char* bin, const char* data)
{
    note("obs_add_module_path", QString::fromUtf8(bin) + QLatin1Char(' ') + QString::fromUtf8(data));
    const Inside inside;
    REAL(obs_add_module_path)(bin, data);
}

void obs_add_data_path(const char* path)
{
    note("obs_add_data_path", QString::fromUtf8(path));
    const Inside inside;
    REAL(obs_add_data_path)(path);
}

bool obs_reset_audio(const obs_audio_info* info)
{
    note("obs_reset_audio", QStringLiteral("%1 %2").arg(info->samples_per_sec).arg(info->speakers));
    const Inside inside;
    return !fails("obs_reset_audio") && REAL(obs_reset_audio)(info);
}

int obs_reset_video(obs_video_info* info)
{
    note("obs_reset_video", QStringLiteral("%1 %2/%3 %4x%5 to %6x%7 format %8 adapter %9")
                                    .arg(QLatin1String(info->graphics_module))
                                    .arg(info->fps_num)
                                    .arg(info->fps_den)
                                    .arg(info->base_width)
                                    .arg(info->base_height)
                                    .arg(info->output_width)
                                    .arg(info->output_height)
                                    .arg(info->output_format)
                                    .arg(info->adapter) +
                                QStringLiteral(" gpu %1 space %2 range %3 scale %4")
                                    .arg(info->gpu_conversion)
                                    .arg(info->colorspace)
                                    .arg(info->range)
                                    .arg(info->scale_type));
    const Inside inside;
    return fails("obs_reset_video") ? OBS_VIDEO_INVALID_PARAM : REAL(obs_reset_video)(info);
}

void obs_find_modules2(obs_find_module_callback2_t callback, void* param)
{
    note("obs_find_modules2");
    REAL(obs_find_modules2)(callback, param);
}

bool obs_init_module(obs_module_t* module)
{
    note("obs_init_module", QLatin1String(obs_get_module_file_name(module)));
    return !fails("obs_init_module") && REAL(obs_init_module)(module);
}

void obs_load_all_modules2(obs_module_failure_info* failures)
{
    note("obs_load_all_modules2");
    // The distribution's folder holds plug-ins that end this process; those of an empty path fail in a known way
    // instead.
    static const char kFailed[] = "broken-plugin";
    failures->failed_modules = static_cast<char**>(bzalloc(2 * sizeof(char*) + sizeof(kFailed)));
    auto* name = reinterpret_cast<char*>(failures->failed_modules + 2);
    memcpy(name, kFailed, sizeof(kFailed));
    failures->failed_modules[0] = name;
    failures->count = 1;
}

void obs_module_failure_info_free(obs_module_failure_info* failures)
{
    note("obs_module_failure_info_free", QString::number(failures->count));
    REAL(obs_module_failure_info_free)(failures);
}

void obs_post_load_modules(void)
{
    note("obs_post_load_modules");
    const Inside inside;
    REAL(obs_post_load_modules)();
}

obs_output_t* obs_output_create(const char* id, const char* name, obs_data_t* settings, obs_data_t* hotkeys)
{
    note("obs_output_create", QStringLiteral("%1 %2").arg(QLatin1String(id), QLatin1String(name)));
    const Inside inside;
    return fails("obs_output_create") ? nullptr : REAL(obs_output_create)(id, name, settings, hotkeys);
}

bool obs_output_can_pause(const obs_output_t* output)
{
    return !fails("obs_output_can_pause") && REAL(obs_output_can_pause)(output);
}

bool obs_output_pause(obs_output_t* output, bool pause)
{
    // The library ends a pause with every stop, whether there is one or not.
    if (pause || obs_output_paused(output))
        note("obs_output_pause", QString::number(int(pause)));
    const Inside inside;
    return !fails("obs_output_pause") && REAL(obs_output_pause)(output, pause);
}

obs_encoder_t* obs_audio_encoder_create(const char* id, const char* name, obs_data_t* settings, size_t mixer,
                                        obs_data_t* hotkeys)
{
    const QString failing = QStringLiteral("obs_audio_encoder_create ") + QLatin1String(name);
    note("obs_audio_encoder_create", QStringLiteral("%1 %2 %3").arg(QLatin1String(id), QLatin1String(name)).arg(mixer));
    const Inside inside;
    return fails(failing.toLatin1().constData()) ? nullptr
                                                 : REAL(obs_audio_encoder_create)(id, name, settings, mixer, hotkeys);
}

void obs_encoder_set_audio(obs_encoder_t* encoder, audio_t* audio)
{
    note("obs_encoder_set_audio", QLatin1String(obs_encoder_get_name(encoder)) +
                                      QLatin1String(audio == obs_get_audio() ? "" : " of another line"));
    REAL(obs_encoder_set_audio)(encoder, audio);
}

obs_source_t* obs_source_create(const char* id, const char* name, obs_data_t* settings, obs_data_t* hotkeys)
{
    note("obs_source_create", QStringLiteral("%1 %2").arg(QLatin1String(id), QLatin1String(name)));
    return REAL(obs_source_create)(id, name, settings, hotkeys);
}

obs_scene_t* obs_scene_create(const char* name)
{
    note("obs_scene_create", QLatin1String(name));
    const Inside inside;
    return fails("obs_scene_create") ? nullptr : REAL(obs_scene_create)(name);
}

obs_source_t* obs_get_output_source(uint32_t channel)
{
    note("obs_get_output_source", QString::number(channel));
    return REAL(obs_get_output_source)(channel);
}

void obs_set_output_source(uint32_t channel, obs_source_t* source)
{
    const char* name = source ? obs_source_get_name(source) : "nothing";
    note("obs_set_output_source", QStringLiteral("%1 %2").arg(channel).arg(QLatin1String(name)));
    const Inside inside;
    REAL(obs_set_output_source)(channel, source);
}

obs_fader_t* obs_fader_create(obs_fader_type type)
{
    note("obs_fader_create", QString::number(type));
    return REAL(obs_fader_create)(type);
}

obs_volmeter_t* obs_volmeter_create(obs_fader_type type)
{
    note("obs_volmeter_create", QString::number(type));
    return REAL(obs_volmeter_create)(type);
}

bool obs_fader_attach_source(obs_fader_t* fader, obs_source_t* source)
{
    note("obs_fader_attach_source", QLatin1String(obs_source_get_name(source)));
    return REAL(obs_fader_attach_source)(fader, source);
}

bool obs_volmeter_attach_source(obs_volmeter_t* meter, obs_source_t* source)
{
    note("obs_volmeter_attach_source", QLatin1String(obs_source_get_name(source)));
    return REAL(obs_volmeter_attach_source)(meter, source);
}

void obs_fader_add_callback(obs_fader_t* fader, obs_fader_changed_t callback, void* param)
{
    note("obs_fader_add_callback");
    REAL(obs_fader_add_callback)(fader, callback, param);
}

void obs_volmeter_add_callback(obs_volmeter_t* meter, obs_volmeter_updated_t callback, void* param)
{
    note("obs_volmeter_add_callback");
    REAL(obs_volmeter_add_callback)(meter, callback, param);
}

void obs_volmeter_remove_callback(obs_volmeter_t* meter, obs_volmeter_updated_t callback, void* param)
{
    note("obs_volmeter_remove_callback");
    REAL(obs_volmeter_remove_callback)(meter, callback, param);
}

void obs_volmeter_destroy(obs_volmeter_t* meter)
{
    note("obs_volmeter_destroy");
    const Inside inside;
    REAL(obs_volmeter_destroy)(meter);
}

void obs_fader_destroy(obs_fader_t* fader)
{
    note("obs_fader_destroy");
    const Inside inside;
    REAL(obs_fader_destroy)(fader);
}

void obs_encoder_release(obs_encoder_t* encoder)
{
    note("obs_encoder_release", QLatin1String(obs_encoder_get_name(encoder)));
    const Inside inside;
    REAL(obs_encoder_release)(encoder);
}

void obs_output_release(obs_output_t* output)
{
    note("obs_output_release", QLatin1String(obs_output_get_name(output)));
    if (obs_output_active(output))
        ++notes().outputsReleasedWhileActive;
    const Inside inside;
    REAL(obs_output_release)(output);
}

void obs_scene_release(obs_scene_t* scene)
{
    note("obs_scene_release");
    const Inside inside;
    REAL(obs_scene_release)(scene);
}

void obs_source_release(obs_source_t* source)
{
    if (source)
        note("obs_source_release", QLatin1String(obs_source_get_name(source)));
    const Inside inside;
    REAL(obs_source_release)(source);
}

bool obs_output_start(obs_output_t* output)
{
    note("obs_output_start");
    return REAL(obs_output_start)(output);
}

void obs_output_set_mixer(obs_output_t* output, size_t mixer)
{
    note("obs_output_set_mixer", QString::number(mixer));
    REAL(obs_output_set_mixer)(output, mixer);
}

void obs_output_update(obs_output_t* output, obs_data_t* settings)
{
    note("obs_output_update");
    REAL(obs_output_update)(output, settings);
}

void obs_add_raw_video_callback(const video_scale_info* form, void (*callback)(void*, video_data*), void* param)
{
    note("obs_add_raw_video_callback");
    REAL(obs_add_raw_video_callback)(form, callback, param);
}

void signal_handler_connect_ref(signal_handler_t* handler, const char* signal, signal_callback_t callback, void* data)
{
    if (qstrcmp(signal, "stop") != 0 || !isProgramsThread()) {
        REAL(signal_handler_connect_ref)(handler, signal, callback, data);
        return;
    }
    note("signal_handler_connect_ref", QLatin1String(signal));
    const auto [before, after] = callsAroundStopConnection();
    callIfThere(before);
    REAL(signal_handler_connect_ref)(handler, signal, callback, data);
    callIfThere(after);
}

void signal_handler_disconnect(signal_handler_t* handler, const char* signal, signal_callback_t callback, void* data)
{
    if (qstrcmp(signal, "stop") == 0)
        note("signal_handler_disconnect", QLatin1String(signal));
    REAL(signal_handler_disconnect)(handler, signal, callback, data);
}
}
