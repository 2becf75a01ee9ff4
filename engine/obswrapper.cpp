#include "engine/obswrapper.h"

#include "app/sclogger.h"
#include "engine/enginemodules.h"
#include "engine/obswrapper_p.h"
#include "engine/rowpacking.h"

#include <QDebug>
#include <QDir>
#include <QStandardPaths>

#include <graphics/vec2.h>
#include <utility>

#include <algorithm>

namespace {

constexpr uint32_t kSamplesPerSecond = 48000;
constexpr char kConfigFolder[] = "/obs-cfg";

void ignoreFader(void*, float) {}

template <typename Handle, typename Create>
void remake(Handle& handle, Create create)
{
    handle.reset();
    handle.reset(create(OBS_FADER_LOG));
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

} // namespace

ObsWrapper::MeterContext::MeterContext(MeterKind meterKind, ObsWrapper* owner, obs_volmeter_t* volmeter)
    : kind(meterKind), wrapper(owner), meter(volmeter)
{}

ObsWrapper::MeterContext::~MeterContext()
{
    // Waits for a callback that is running, so that none ever sees a context that has gone.
    obs_volmeter_remove_callback(meter, &MeterContext::onLevels, this);
}

void ObsWrapper::MeterContext::listen()
{
    obs_volmeter_add_callback(meter, &MeterContext::onLevels, this);
}

void ObsWrapper::MeterContext::onLevels(void* param, const float* magnitude, const float* peak, const float* inputPeak)
{
    const auto* context = static_cast<const MeterContext*>(param);
    if (!context || !context->wrapper)
        return;
    ObsWrapper& wrapper = *context->wrapper;
    Levels& levels = context->kind == MeterKind::Microphone ? wrapper.m_micLevels : wrapper.m_desktopLevels;
    std::copy_n(magnitude, kLevelChannels, levels.magnitude.begin());
    std::copy_n(peak, kLevelChannels, levels.peak.begin());
    std::copy_n(inputPeak, kLevelChannels, levels.inputPeak.begin());
}

ObsWrapper::ObsWrapper(CapturePlatform platform, const EngineTimings& timings)
    : m_platform(std::move(platform)), m_timings(timings)
{
    m_levelTimer.setInterval(m_timings.levelInterval);
    connect(&m_levelTimer, &QTimer::timeout, this, &ObsWrapper::onLevelTick);
    m_microphoneTimer.setInterval(m_timings.microphoneInterval);
    connect(&m_microphoneTimer, &QTimer::timeout, this, &ObsWrapper::followMicrophone);
}

ObsWrapper::~ObsWrapper()
{
    // Nobody is left to be told.
    m_endOwed = false;
    if (isOutputStarting())
        m_restingOutputs.keepStarting(std::move(m_output), m_endedByItselfNs);
    else if (m_output && m_recording)
        stopOutput(m_output.get(), false);
    m_progress.disconnect();
    // The handler empties its own record: the record must not go while one is inside.
    m_stopHandlers.waitUntilEmpty();
    // Released in its turn, after its encoders.
    letOutputRest(std::move(m_output));
}

ObsWrapper::ReleasedSources::~ReleasedSources()
{
    if (!obs_initialized())
        return;
    for (const uint32_t channel : {kVideoChannel, kDesktopChannel, kMicrophoneChannel}) {
        const ObsSourceHandle source(obs_get_output_source(channel));
        if (source && source.get() == made.at(channel))
            obs_set_output_source(channel, nullptr);
    }
    obs_wait_for_destroy_queue();
}

bool ObsWrapper::initialize(int width, int height, int fps)
{
    if (!obs_initialized() && !startEngine(width, height, fps))
        return false;
    if (!createOutputMode()) {
        qCritical() << "obs create output mode failed!";
        return false;
    }
    createAudioSources();
    createMeters();
    attachMeters();
    obs_set_output_source(kMicrophoneChannel, m_micSource.get());
    obs_set_output_source(kDesktopChannel, m_desktopSource.get());
    m_levelTimer.start();
    if (!m_platform.soundKeepsToItsDevices)
        m_microphoneTimer.start();
    m_ready = true;
    return true;
}

bool ObsWrapper::startEngine(int width, int height, int fps)
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
    const int result = resetVideo(width, height, width, height, fps);
    if (result != OBS_VIDEO_SUCCESS) {
        qCritical() << "obs reset video failed!with" << result;
        return false;
    }
    prepareProcessEnd();
    loadModules();
    return true;
}

void ObsWrapper::loadModules()
{
    const QStringList failed = loadEngineModules(m_platform, EngineFolders::besideExecutable());
    if (failed.isEmpty())
        qInfo() << "All OBS modules loaded successfully";
    else
        qCritical() << "Failed to load" << failed.size() << "OBS modules:";
    for (const QString& name : failed) {
        qCritical().noquote() << "  - Failed module:" << name;
        SCLogger::error(QStringLiteral("Failed to load OBS module: %1").arg(name));
    }
    for (const QString& sentence : missingEngineTypes(m_platform))
        SCLogger::error(sentence);
}

void ObsWrapper::createAudioSources()
{
    m_micSource = sourceOnChannel(kMicrophoneChannel, m_platform.microphoneId, "Default Mic/Aux", kDefaultDevice);
    m_desktopSource =
        sourceOnChannel(kDesktopChannel, m_platform.desktopAudioId, "Default Desktop Audio", kDefaultDevice);
}

void ObsWrapper::createMeters()
{
    // They take their callbacks off the meters that are about to go.
    m_micContext.reset();
    m_desktopContext.reset();
    remake(m_micFader, obs_fader_create);
    remake(m_micMeter, obs_volmeter_create);
    remake(m_desktopFader, obs_fader_create);
    remake(m_desktopMeter, obs_volmeter_create);
    m_micContext = std::make_shared<MeterContext>(MeterKind::Microphone, this, m_micMeter.get());
    m_desktopContext = std::make_shared<MeterContext>(MeterKind::Desktop, this, m_desktopMeter.get());
}

void ObsWrapper::attachMeters()
{
    obs_fader_add_callback(m_micFader.get(), ignoreFader, nullptr);
    m_micContext->listen();
    obs_fader_add_callback(m_desktopFader.get(), ignoreFader, nullptr);
    m_desktopContext->listen();
    obs_fader_attach_source(m_micFader.get(), m_micSource.get());
    obs_volmeter_attach_source(m_micMeter.get(), m_micSource.get());
    obs_fader_attach_source(m_desktopFader.get(), m_desktopSource.get());
    obs_volmeter_attach_source(m_desktopMeter.get(), m_desktopSource.get());
}

void ObsWrapper::onLevelTick()
{
    emitLevels(MeterKind::Desktop);
    emitLevels(MeterKind::Microphone);
}

void ObsWrapper::emitLevels(MeterKind kind)
{
    if (kind == MeterKind::Microphone)
        emit micVolumeDataChange(m_micLevels.magnitude.data(), m_micLevels.peak.data(), m_micLevels.inputPeak.data());
    else
        emit playerVolumeDataChange(m_desktopLevels.magnitude.data(), m_desktopLevels.peak.data(),
                                    m_desktopLevels.inputPeak.data());
}

int ObsWrapper::resetVideo(int srcWidth, int srcHeight, int outputWidth, int outputHeight, int fps)
{
    qDebug() << "reset video with srcWidth" << srcWidth << "srcHeight" << srcHeight << "outPutWidth" << outputWidth
             << "outOutHeight" << outputHeight << "fps" << fps;
    obs_video_info video{};
    video.graphics_module = m_platform.graphicsModule;
    video.fps_num = static_cast<uint32_t>(fps);
    video.fps_den = 1;
    video.base_width = static_cast<uint32_t>(srcWidth);
    video.base_height = static_cast<uint32_t>(srcHeight);
    video.output_width = static_cast<uint32_t>(outputWidth);
    video.output_height = static_cast<uint32_t>(outputHeight);
    video.output_format = VIDEO_FORMAT_I420;
    video.adapter = 0;
    video.gpu_conversion = true;
    video.colorspace = VIDEO_CS_709;
    video.range = VIDEO_RANGE_FULL;
    video.scale_type = OBS_SCALE_BICUBIC;

    if (!obs_initialized())
        qDebug() << "obs not initialized!";
    if (m_restingOutputs.waitWhileEnding())
        return OBS_VIDEO_CURRENTLY_ACTIVE;
    // A recording that ended by itself may have left this behind; libobs counts it as activity.
    if (!isRecording())
        m_progress.disconnect();
    const int result = obs_reset_video(&video);
    if (result != OBS_VIDEO_SUCCESS)
        return result;
    packPictureRows();
    // The picture line is another one now.
    if (m_output)
        giveOutputTheLines();
    stretchCaptureOverOutput(outputWidth, outputHeight);
    return OBS_VIDEO_SUCCESS;
}

void ObsWrapper::stretchCaptureOverOutput(int outputWidth, int outputHeight)
{
    if (!m_scene || !m_videoCapture)
        return;
    obs_sceneitem_t* item = obs_scene_find_source(m_scene.get(), obs_source_get_name(m_videoCapture.get()));
    if (!item)
        return;
    vec2 position{};
    vec2 bounds{};
    vec2_set(&bounds, static_cast<float>(outputWidth), static_cast<float>(outputHeight));
    obs_sceneitem_set_pos(item, &position);
    obs_sceneitem_set_alignment(item, OBS_ALIGN_LEFT | OBS_ALIGN_TOP);
    obs_sceneitem_set_bounds_type(item, OBS_BOUNDS_STRETCH);
    obs_sceneitem_set_bounds(item, &bounds);
}

int ObsWrapper::micMeterChannels() const
{
    return m_micMeter ? obs_volmeter_get_nr_channels(m_micMeter.get()) : 0;
}

int ObsWrapper::desktopMeterChannels() const
{
    return m_desktopMeter ? obs_volmeter_get_nr_channels(m_desktopMeter.get()) : 0;
}

int ObsWrapper::audioOutputChannels() const
{
    return obs_initialized() ? static_cast<int>(audio_output_get_channels(obs_get_audio())) : 0;
}
