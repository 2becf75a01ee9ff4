#include "app/sclogger.h"
#include "engine/capturetargets.h"
#include "engine/obswrapper_p.h"
#include "engine/pointereffects.h"
#include "engine/waituntil.h"

#include <QGuiApplication>
#include <QRect>
#include <QScreen>

namespace {

constexpr char kSceneName[] = "CurrentDesktopCapture";
constexpr char kTransitionId[] = "fade_transition";
constexpr char kCropFilterId[] = "crop_filter";

constexpr char kFixedCircleColor[] = "0.0, 1.0, 0.5, 0.3";
constexpr char kLeftClickColor[] = "0.0, 0.0, 1.0, 0.7";
constexpr char kRightClickColor[] = "1.0, 0.0, 0.0, 0.7";

/// The name and value texts of a list property's items.
struct ListItems
{
    QStringList names;
    QStringList values;
};

QString itemValue(obs_property_t* list, size_t index, ListKind kind)
{
    if (kind == ListKind::Integer)
        return QString::number(obs_property_list_item_int(list, index));
    return QString::fromUtf8(obs_property_list_item_string(list, index));
}

ListItems readList(obs_properties_t* properties, const TargetList& list)
{
    ListItems items;
    obs_property_t* property = obs_properties_get(properties, list.key);
    const size_t count = property ? obs_property_list_item_count(property) : 0;
    for (size_t i = 0; i < count; ++i) {
        items.names << QString::fromUtf8(obs_property_list_item_name(property, i));
        items.values << itemValue(property, i, list.kind);
    }
    return items;
}

ListItems readDevices(const char* sourceId)
{
    if (!obs_initialized())
        return {};
    const ObsPropertiesHandle properties(obs_get_source_properties(sourceId));
    return readList(properties.get(), {kDeviceKey, ListKind::Text});
}

QString deviceOf(obs_source_t* source)
{
    const ObsDataHandle settings(obs_source_get_settings(source));
    return QString::fromUtf8(obs_data_get_string(settings.get(), kDeviceKey));
}

void setDevice(obs_source_t* source, const QString& device)
{
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_string(settings.get(), kDeviceKey, device.toUtf8().constData());
    obs_source_update(source, settings.get());
}

/// A source starts anew only on a device other than the one it has.
void takeDeviceUpAgain(obs_source_t* source)
{
    const QString device = deviceOf(source);
    // The default one counts as another each time: the source remembers by name which one it was.
    if (device != QLatin1String(kDefaultDevice))
        setDevice(source, QLatin1String(kNoDevice));
    setDevice(source, device);
}

void readDevicesInto(const char* sourceId, QStringList& names, QStringList& ids)
{
    ListItems items = readDevices(sourceId);
    if (items.names.isEmpty())
        items = {{QStringLiteral("No Device")}, {QLatin1String(kDefaultDevice)}};
    names = items.names;
    ids = items.values;
}

/// A name can be missing only together with the type itself.
const char* nameOfType(const char* id)
{
    const char* name = obs_source_get_display_name(id);
    return name ? name : id;
}

/// libobs makes an empty shell for a type it does not know or that could not be set up; that is no source to capture
/// with.
ObsSourceHandle onlyIfReal(ObsSourceHandle source)
{
    return source && !obs_obj_invalid(source.get()) ? std::move(source) : nullptr;
}

ObsSourceHandle findCropFilter(obs_source_t* capture)
{
    const char* name = nameOfType(kCropFilterId);
    ObsSourceHandle filter(obs_source_get_filter_by_name(capture, name));
    if (filter)
        return filter;
    filter.reset(obs_source_create(kCropFilterId, name, nullptr, nullptr));
    obs_source_filter_add(capture, filter.get());
    return filter;
}

/// Pictures that the engine has rendered, which counts one that it is late with as often as it hands it out.
std::int64_t renderedPictures()
{
    const std::int64_t handedOut = obs_get_total_frames();
    return handedOut - obs_get_lagged_frames();
}

void addToScene(void* source, obs_scene_t* scene)
{
    obs_scene_add(scene, static_cast<obs_source_t*>(source));
}

} // namespace

int ObsWrapper::setupScene(int captureType)
{
    if (!obs_initialized())
        return -1;
    for (const uint32_t channel : {kVideoChannel, kDesktopChannel, kMicrophoneChannel})
        obs_set_output_source(channel, nullptr);
    if (!createTransition())
        return -1;
    if (!createScene())
        return -2;
    obs_set_output_source(kVideoChannel, m_transition.get());
    obs_transition_set(m_transition.get(), obs_scene_get_source(m_scene.get()));
    return createCaptureSource(captureType) ? 0 : -3;
}

void ObsWrapper::setSceneRendered(bool rendered)
{
    if (!m_transition || rendered == isSceneRendered())
        return;
    if (rendered) {
        obs_set_output_source(kVideoChannel, m_transition.get());
        waitUntilSceneIsDrawn();
    } else if (isRecording()) {
        SCLogger::warning(QStringLiteral("The scene stays: a recording runs"));
    } else {
        obs_set_output_source(kVideoChannel, nullptr);
    }
}

bool ObsWrapper::isSceneRendered() const
{
    if (!m_transition)
        return false;
    const ObsSourceHandle shown(obs_get_output_source(kVideoChannel));
    return shown == m_transition;
}

void ObsWrapper::waitUntilSceneIsDrawn() const
{
    const QDeadlineTimer deadline(m_timings.sceneDrawnLimit);
    waitUntil([this] { return !m_videoCapture || obs_source_get_width(m_videoCapture.get()) != 0; }, deadline);
    const std::int64_t before = renderedPictures();
    waitUntil([&] { return renderedPictures() - before >= m_platform.picturesUntilDrawn; }, deadline);
}

bool ObsWrapper::createTransition()
{
    m_transition.reset();
    const char* id = nullptr;
    for (size_t i = 0; obs_enum_transition_types(i, &id); ++i) {
        if (obs_is_source_configurable(id))
            continue;
        ObsSourceHandle transition(obs_source_create_private(id, obs_source_get_display_name(id), nullptr));
        if (transition && qstrcmp(id, kTransitionId) == 0)
            m_transition = std::move(transition);
    }
    m_releasedSources.made.at(kVideoChannel) = m_transition.get();
    return m_transition != nullptr;
}

bool ObsWrapper::createScene()
{
    m_scene.reset();
    m_scene.reset(obs_scene_create(kSceneName));
    return m_scene != nullptr;
}

bool ObsWrapper::createCaptureSource(int captureType)
{
    const CaptureSourceKind& kind = captureKind(captureType != kCaptureMonitor);
    m_videoCapture.reset();
    m_videoCapture = onlyIfReal(ObsSourceHandle(obs_source_create(kind.sourceId, kind.sourceName, nullptr, nullptr)));
    if (!m_videoCapture)
        return false;
    obs_scene_atomic_update(m_scene.get(), addToScene, m_videoCapture.get());
    // Before the filter that crops: what comes later is applied later.
    pointereffects::addTo(m_videoCapture.get());
    return true;
}

const CaptureSourceKind& ObsWrapper::captureKind(bool window) const
{
    return window ? m_platform.window : m_platform.monitor;
}

void ObsWrapper::refreshCaptureTargets(bool window)
{
    m_captureTargetNames.clear();
    m_captureTargetValues.clear();
    if (!m_videoCapture)
        return;
    const CaptureSourceKind& kind = captureKind(window);
    const ObsPropertiesHandle properties(obs_source_properties(m_videoCapture.get()));
    m_targets = kind.targets;
    if (kind.secondChoice.key && !obs_properties_get(properties.get(), kind.targets.key))
        m_targets = kind.secondChoice;
    const ListItems items = readList(properties.get(), m_targets);
    m_captureTargetNames = items.names;
    m_captureTargetValues = items.values;
}

bool ObsWrapper::setCaptureTarget(const char* target, int captureType, bool, int left, int right, int top, int bottom)
{
    const qsizetype index = m_captureTargetNames.indexOf(QString::fromUtf8(target));
    if (index < 0 || !m_videoCapture)
        return false;
    selectTarget(captureType != kCaptureMonitor, index);
    tellPointerEffects(captureType != kCaptureMonitor, m_captureTargetNames.at(index));
    updateCrop(left, right, top, bottom);
    return true;
}

void ObsWrapper::selectTarget(bool window, qsizetype index)
{
    const CaptureSourceKind& kind = captureKind(window);
    // The list in hand may be of the other kind; its second choice then says nothing about this one.
    const bool second = kind.secondChoice.key && qstrcmp(kind.secondChoice.key, m_targets.key) == 0;
    const TargetList& list = second ? kind.secondChoice : kind.targets;
    const QString& value = (kind.selectedByName ? m_captureTargetNames : m_captureTargetValues).at(index);
    const ObsDataHandle settings(obs_source_get_settings(m_videoCapture.get()));
    if (list.kind == ListKind::Integer)
        obs_data_set_int(settings.get(), list.key, value.toLongLong());
    else
        obs_data_set_string(settings.get(), list.key, value.toUtf8().constData());
    if (kind.methodKey)
        obs_data_set_int(settings.get(), kind.methodKey, kind.method);
}

void ObsWrapper::tellPointerEffects(bool window, const QString& target)
{
    // Where a window lies on the desktop is not known here.
    const auto origin = window ? std::nullopt : std::optional(captureTargetGeometry(target).topLeft());
    const QScreen* const screen = QGuiApplication::primaryScreen();
    pointereffects::setMonitor(m_videoCapture.get(), origin, screen ? screen->devicePixelRatio() : 1.0);
}

void ObsWrapper::updateCrop(int left, int right, int top, int bottom)
{
    const ObsSourceHandle filter = findCropFilter(m_videoCapture.get());
    const ObsDataHandle crop(obs_data_create());
    obs_data_set_bool(crop.get(), "relative", true);
    obs_data_set_int(crop.get(), "left", left);
    obs_data_set_int(crop.get(), "top", top);
    obs_data_set_int(crop.get(), "right", right);
    obs_data_set_int(crop.get(), "bottom", bottom);
    obs_data_set_int(crop.get(), "cx", 0);
    obs_data_set_int(crop.get(), "cy", 0);
    obs_source_update(filter.get(), crop.get());
    // It draws the whole picture into a texture first, whatever it crops: without a graphics card that is more than a
    // third of what a recording of the screen costs.
    obs_source_set_enabled(filter.get(), left != 0 || right != 0 || top != 0 || bottom != 0);
}

void ObsWrapper::setCaptureCursor(bool show)
{
    if (!m_videoCapture)
        return;
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_bool(settings.get(), m_platform.cursorKey, show);
    obs_source_update(m_videoCapture.get(), settings.get());
}

void ObsWrapper::setCursorEffects(bool show)
{
    if (!m_videoCapture)
        return;
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_bool(settings.get(), "show_fixed_circle", show);
    obs_data_set_string(settings.get(), "fixed_circle_color", kFixedCircleColor);
    obs_data_set_bool(settings.get(), "show_left_click", show);
    obs_data_set_string(settings.get(), "left_click_color", kLeftClickColor);
    obs_data_set_bool(settings.get(), "show_right_click", show);
    obs_data_set_string(settings.get(), "right_click_color", kRightClickColor);
    obs_source_update(m_videoCapture.get(), settings.get());
}

ObsWrapper::AudioDevice ObsWrapper::microphone()
{
    return {MeterKind::Microphone, m_platform.microphoneId, "Mic/Aux",        kMicrophoneChannel,
            m_micSource,           m_micFader.get(),        m_micMeter.get(), m_micLevels};
}

ObsWrapper::AudioDevice ObsWrapper::desktopAudio()
{
    return {MeterKind::Desktop, m_platform.desktopAudioId, "Desktop Audio",      kDesktopChannel,
            m_desktopSource,    m_desktopFader.get(),      m_desktopMeter.get(), m_desktopLevels};
}

void ObsWrapper::setMicDevice(bool enabled, const QString& deviceId)
{
    setAudioDevice(microphone(), enabled, deviceId);
}

void ObsWrapper::setDesktopAudioDevice(bool enabled, const QString& deviceId)
{
    setAudioDevice(desktopAudio(), enabled, deviceId);
}

void ObsWrapper::setAudioDevice(const AudioDevice& device, bool enabled, const QString& deviceId)
{
    if (readDevices(device.typeId).names.isEmpty())
        return;
    const QByteArray wanted = enabled ? deviceId.toUtf8() : QByteArray(kNoDevice);
    if (wanted == kNoDevice)
        switchOff(device);
    else
        putOnChannel(device, wanted);
}

void ObsWrapper::switchOff(const AudioDevice& device)
{
    obs_set_output_source(device.channel, nullptr);
    // The source stays and may go on capturing: without this its levels would be written over the zeros.
    obs_volmeter_detach_source(device.meter);
    device.levels = Levels();
    emitLevels(device.kind);
}

/// The source on the channel, or a new one for the device.
ObsSourceHandle ObsWrapper::sourceOnChannel(uint32_t channel, const char* typeId, const char* name,
                                            const QByteArray& deviceId)
{
    ObsSourceHandle source(obs_get_output_source(channel));
    if (source)
        return source;
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_string(settings.get(), kDeviceKey, deviceId.constData());
    source.reset(obs_source_create(typeId, name, settings.get(), nullptr));
    m_releasedSources.made.at(channel) = source.get();
    return source;
}

void ObsWrapper::putOnChannel(const AudioDevice& device, const QByteArray& deviceId)
{
    ObsSourceHandle source = sourceOnChannel(device.channel, device.typeId, device.sourceName, deviceId);
    obs_set_output_source(device.channel, source.get());
    const ObsDataHandle settings(obs_source_get_settings(source.get()));
    if (deviceId != obs_data_get_string(settings.get(), kDeviceKey)) {
        obs_data_set_string(settings.get(), kDeviceKey, deviceId.constData());
        obs_source_update(source.get(), settings.get());
    }
    // The meter shows what is recorded: the source that is on the channel now.
    if (device.meter) {
        obs_fader_attach_source(device.fader, source.get());
        obs_volmeter_attach_source(device.meter, source.get());
    }
    device.source = std::move(source);
}

void ObsWrapper::followMicrophone()
{
    const ObsSourceHandle microphone(obs_get_output_source(kMicrophoneChannel));
    if (!microphone || microphone != m_micSource)
        return;
    const bool isThere = readDevices(m_platform.microphoneId).values.contains(deviceOf(microphone.get()));
    const bool wasThere = !obs_source_muted(microphone.get());
    if (isThere == wasThere)
        return;
    if (isThere) {
        SCLogger::info(QStringLiteral("The microphone is back"));
        takeDeviceUpAgain(microphone.get());
        // While there was no microphone the server took the computer's own sound for one, and everything that listened
        // to that has just been moved to the microphone.
        const ObsSourceHandle desktop(obs_get_output_source(kDesktopChannel));
        if (desktop && desktop == m_desktopSource)
            takeDeviceUpAgain(desktop.get());
    } else {
        // Moved to the sound of the computer, which would be in the file twice.
        SCLogger::warning(QStringLiteral("The microphone has vanished"));
    }
    obs_source_set_muted(microphone.get(), !isThere);
}

void ObsWrapper::refreshMicDevices()
{
    readDevicesInto(m_platform.microphoneId, m_micDeviceNames, m_micDeviceIds);
}

void ObsWrapper::refreshDesktopDevices()
{
    readDevicesInto(m_platform.desktopAudioId, m_desktopDeviceNames, m_desktopDeviceIds);
}
