// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/audio/audiodevices.h"

#include "app/sclogger.h"
#include "engine/capture/captureplatform.h"

AudioDevices::AudioDevices(const CapturePlatform& platform, OutputChannels& channels, const EngineTimings& timings)
    : m_platform(platform)
    , m_microphone({platform.microphoneId, "Default Mic/Aux", "Mic/Aux", kMicrophoneChannel}, channels)
    , m_desktop({platform.desktopAudioId, "Default Desktop Audio", "Desktop Audio", kDesktopChannel}, channels)
{
    m_levelTimer.setInterval(timings.levelInterval);
    connect(&m_levelTimer, &QTimer::timeout, this, &AudioDevices::onLevelTick);
    m_microphoneTimer.setInterval(timings.microphoneInterval);
    connect(&m_microphoneTimer, &QTimer::timeout, this, &AudioDevices::followMicrophone);
}

void AudioDevices::create()
{
    for (AudioDevice* const device : {&m_microphone, &m_desktop})
        device->create();
    stopListening();
    for (AudioDevice* const device : {&m_microphone, &m_desktop})
        device->makeMeter();
    for (AudioDevice* const device : {&m_microphone, &m_desktop})
        device->listen();
    for (AudioDevice* const device : {&m_microphone, &m_desktop})
        device->attachMeter();
    for (AudioDevice* const device : {&m_microphone, &m_desktop})
        device->connectChannel();
    m_levelTimer.start();
    if (!m_platform.audioKeepsItsDevices)
        m_microphoneTimer.start();
}

void AudioDevices::stopListening()
{
    for (AudioDevice* const device : {&m_microphone, &m_desktop})
        device->stopListening();
}

void AudioDevices::setMicrophone(bool enabled, const QString& deviceId)
{
    if (m_microphone.setDevice(enabled, deviceId))
        emit microphoneLevelsChanged(m_microphone.levels());
}

void AudioDevices::setDesktop(bool enabled, const QString& deviceId)
{
    if (m_desktop.setDevice(enabled, deviceId))
        emit desktopLevelsChanged(m_desktop.levels());
}

void AudioDevices::onLevelTick()
{
    emit desktopLevelsChanged(m_desktop.levels());
    emit microphoneLevelsChanged(m_microphone.levels());
}

/// PulseAudio moves a stream whose microphone vanishes to the monitor of the computer's audio.
void AudioDevices::followMicrophone()
{
    if (!m_microphone.isOn())
        return;
    const bool isThere = m_microphone.isListed();
    if (isThere == !m_microphone.isMuted())
        return;
    if (isThere) {
        SCLogger::info(QStringLiteral("The microphone is back"));
        m_microphone.reopen();
        // While there was no microphone the server took the computer's audio for one, and all that listened to that has
        // just been moved to the microphone.
        if (m_desktop.isOn())
            m_desktop.reopen();
    } else {
        SCLogger::warning(QStringLiteral("The microphone has vanished"));
    }
    m_microphone.setMuted(!isThere);
}

void AudioDevices::releaseMeters()
{
    stopListening();
    m_desktop.releaseMeter();
    m_microphone.releaseMeter();
}
