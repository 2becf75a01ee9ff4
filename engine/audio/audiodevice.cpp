// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/audio/audiodevice.h"

#include "engine/ports.h"

#include <utility>

#include <algorithm>

namespace {

constexpr char kDeviceKey[] = "device_id";
constexpr char kNoDevice[] = "disabled";

void ignoreFader(void*, float) {}

} // namespace

void AudioDevice::create()
{
    m_source = sourceOnChannel(m_kind.startName, kDefaultAudioDevice.data());
}

ObsSourceHandle AudioDevice::sourceOnChannel(const char* name, const QByteArray& deviceId)
{
    ObsSourceHandle source(obs_get_output_source(m_kind.channel));
    if (source)
        return source;
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_string(settings.get(), kDeviceKey, deviceId.constData());
    source.reset(obs_source_create(m_kind.typeId, name, settings.get(), nullptr));
    obs_source_set_sync_offset(source.get(), m_kind.delayNs);
    m_channels.noteMade(m_kind.channel, source.get());
    return source;
}

void AudioDevice::request(bool enabled, const QString& deviceId)
{
    // One that is only switched on or off is not chosen.
    if (enabled == isWanted() || deviceId != kDefaultAudioDevice)
        m_replaced.clear();
    m_request = enabled ? deviceId.toUtf8() : QByteArray(kNoDevice);
    // It may have to wait, and a device that comes back meanwhile is not to be heard.
    if (*m_request == kNoDevice)
        setMuted(true);
}

bool AudioDevice::applyRequest()
{
    if (!m_request || !hasDevices())
        return false;
    const QByteArray wanted = *std::exchange(m_request, std::nullopt);
    m_saved.reset();
    const bool off = wanted == kNoDevice;
    if (off)
        switchOff();
    else
        switchOn(wanted);
    return off;
}

void AudioDevice::switchOff()
{
    obs_set_output_source(m_kind.channel, nullptr);
    // The source stays and may go on capturing.
    silenceMeter();
    m_isLost = false;
}

void AudioDevice::silenceMeter()
{
    obs_volmeter_detach_source(m_meter.get());
    m_levels = AudioLevels();
}

void AudioDevice::switchOn(const QByteArray& deviceId)
{
    ObsSourceHandle source = sourceOnChannel(m_kind.name, deviceId);
    obs_set_output_source(m_kind.channel, source.get());
    const ObsDataHandle settings(obs_source_get_settings(source.get()));
    if (deviceId != obs_data_get_string(settings.get(), kDeviceKey)) {
        // It is not lost with the last one.
        m_isLost = false;
        m_lossTimer.stop();
        obs_data_set_string(settings.get(), kDeviceKey, deviceId.constData());
        obs_source_update(source.get(), settings.get());
    }
    m_source.swap(source);
    if (!m_isLost)
        setMuted(false);
    attachMeter();
}

ListEntries AudioDevice::listDevices() const
{
    if (!obs_initialized())
        return {};
    const ObsPropertiesHandle properties(obs_get_source_properties(m_kind.typeId));
    return readList(properties.get(), {kDeviceKey, ListKind::Text});
}

void AudioDevice::refreshDevices()
{
    m_devices = listDevices();
    if (m_devices.names.isEmpty())
        m_devices = {{QStringLiteral("No Device")}, {kDefaultAudioDevice}};
}

bool AudioDevice::isOn() const
{
    if (!obs_initialized())
        return false;
    const ObsSourceHandle source(obs_get_output_source(m_kind.channel));
    return source && source == m_source;
}

bool AudioDevice::isWanted() const
{
    if (m_request)
        return *m_request != kNoDevice;
    return m_saved ? m_wasOn : isOn();
}

bool AudioDevice::isListed() const
{
    return m_source && listDevices().values.contains(device());
}

void AudioDevice::setLost(bool lost)
{
    m_isLost = lost;
    if (lost)
        silenceMeter();
    else
        attachMeter();
}

void AudioDevice::setMuted(bool muted)
{
    if (m_source)
        obs_source_set_muted(m_source.get(), muted);
}

bool AudioDevice::canFallBack() const
{
    return m_source && device() != kDefaultAudioDevice && listDevices().values.contains(kDefaultAudioDevice);
}

void AudioDevice::fallBack()
{
    const QString chosen = device();
    request(true, kDefaultAudioDevice);
    applyRequest();
    m_replaced = chosen;
}

void AudioDevice::returnToChosen()
{
    const QString chosen = m_replaced;
    request(true, chosen);
    applyRequest();
}

void AudioDevice::reopenIfMoved(const AudioServer& server)
{
    const auto heard = server.heardBy(QString::fromUtf8(obs_source_get_name(m_source.get())));
    if (!heard)
        return;
    // Once: the default device may be of the other kind because somebody has chosen that.
    if (std::exchange(m_hearsItsDevice, *heard == m_kind.part) && !m_hearsItsDevice)
        reopen();
}

void AudioDevice::releaseSource()
{
    if (!m_source)
        return;
    m_wasOn = isOn();
    m_saved.reset(obs_save_source(m_source.get()));
    if (m_wasOn)
        obs_set_output_source(m_kind.channel, nullptr);
    obs_fader_detach_source(m_fader.get());
    silenceMeter();
    m_source.reset();
}

void AudioDevice::restoreSource()
{
    const bool isOnAgain = m_saved && m_wasOn && isWanted();
    const ObsDataHandle saved = std::move(m_saved);
    if (!isOnAgain)
        return;
    m_source.reset(obs_load_source(saved.get()));
    m_channels.noteMade(m_kind.channel, m_source.get());
    connectChannel();
    attachMeter();
}

/// A source opens its device only when that is another one than before.
void AudioDevice::reopen()
{
    const QString current = device();
    // The default one counts as another each time: the source remembers by name which one it was.
    if (current != kDefaultAudioDevice)
        updateDevice(QLatin1String(kNoDevice));
    updateDevice(current);
}

QString AudioDevice::device() const
{
    const ObsDataHandle settings(obs_source_get_settings(m_source.get()));
    return QString::fromUtf8(obs_data_get_string(settings.get(), kDeviceKey));
}

void AudioDevice::updateDevice(const QString& device)
{
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_string(settings.get(), kDeviceKey, device.toUtf8().constData());
    obs_source_update(m_source.get(), settings.get());
}

void AudioDevice::makeMeter()
{
    // One after the other: the last one goes first.
    m_fader.reset();
    m_fader.reset(obs_fader_create(OBS_FADER_LOG));
    m_meter.reset();
    m_meter.reset(obs_volmeter_create(OBS_FADER_LOG));
}

void AudioDevice::listen()
{
    obs_fader_add_callback(m_fader.get(), ignoreFader, nullptr);
    obs_volmeter_add_callback(m_meter.get(), &AudioDevice::onLevels, this);
    m_listening = true;
}

void AudioDevice::stopListening()
{
    if (m_listening)
        obs_volmeter_remove_callback(m_meter.get(), &AudioDevice::onLevels, this);
    m_listening = false;
}

void AudioDevice::attachMeter()
{
    if (!m_meter || !m_source)
        return;
    obs_fader_attach_source(m_fader.get(), m_source.get());
    obs_volmeter_attach_source(m_meter.get(), m_source.get());
}

void AudioDevice::releaseMeter()
{
    m_meter.reset();
    m_fader.reset();
}

void AudioDevice::onLevels(void* device, const float* magnitude, const float* peak, const float* inputPeak)
{
    AudioLevels& levels = static_cast<AudioDevice*>(device)->m_levels;
    std::copy_n(magnitude, AudioLevels::kChannels, levels.magnitude.begin());
    std::copy_n(peak, AudioLevels::kChannels, levels.peak.begin());
    std::copy_n(inputPeak, AudioLevels::kChannels, levels.inputPeak.begin());
}
