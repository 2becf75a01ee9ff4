// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/audio/audiodevices.h"

#include "app/sclogger.h"
#include "engine/capture/captureplatform.h"

#include <utility>

namespace {

const char* nameOf(AudioPart part)
{
    switch (part) {
    case AudioPart::Microphone:
        return "microphone";
    case AudioPart::Desktop:
        return "speaker";
    case AudioPart::Server:
        break;
    }
    return "sound server";
}

void logLoss(AudioPart part)
{
    SCLogger::warning(QStringLiteral("The %1 has vanished").arg(QLatin1String(nameOf(part))));
}

void logReturn(AudioPart part)
{
    SCLogger::info(QStringLiteral("The %1 is back").arg(QLatin1String(nameOf(part))));
}

} // namespace

AudioDevices::AudioDevices(const CapturePlatform& platform, OutputChannels& channels, const EngineTimings& timings)
    : m_platform(platform)
    , m_microphone({platform.microphoneId, "Default Mic/Aux", "Mic/Aux", kMicrophoneChannel, AudioPart::Microphone},
                   channels)
    , m_desktop({platform.desktopAudioId, "Default Desktop Audio", "Desktop Audio", kDesktopChannel, AudioPart::Desktop,
                 platform.desktopAudioDelayNs},
                channels)
{
    m_levelTimer.setInterval(timings.levelInterval);
    connect(&m_levelTimer, &QTimer::timeout, this, &AudioDevices::onLevelTick);
    m_checkTimer.setInterval(timings.audioDevicesInterval);
    connect(&m_checkTimer, &QTimer::timeout, this, &AudioDevices::check);
    m_restoreTimer.setInterval(timings.audioRestoreInterval);
    connect(&m_restoreTimer, &QTimer::timeout, this, &AudioDevices::restoreSources);
    for (AudioDevice* const device : both()) {
        device->lossTimer().setSingleShot(true);
        device->lossTimer().setInterval(timings.audioLossDelay);
        connect(&device->lossTimer(), &QTimer::timeout, this, [this, device] { reportLoss(*device); });
    }
}

AudioDevices::~AudioDevices() = default;

void AudioDevices::create()
{
    openServer();
    for (AudioDevice* const device : both())
        device->create();
    stopListening();
    for (AudioDevice* const device : both())
        device->makeMeter();
    for (AudioDevice* const device : both())
        device->listen();
    for (AudioDevice* const device : both())
        device->attachMeter();
    for (AudioDevice* const device : both())
        device->connectChannel();
    m_levelTimer.start();
}

/// Before the plug-in connects: what that one misses is then noticed here, too.
void AudioDevices::openServer()
{
    if (m_server)
        return;
    if (m_platform.openAudioServer) {
        m_server = m_platform.openAudioServer();
        connect(m_server.get(), &AudioServer::changed, this, &AudioDevices::check);
    } else {
        m_checkTimer.start();
    }
}

void AudioDevices::stopListening()
{
    for (AudioDevice* const device : both())
        device->stopListening();
}

void AudioDevices::setMicrophone(bool enabled, const QString& deviceId)
{
    m_microphone.request(enabled, deviceId);
    if (!m_isServerLost && m_microphone.applyRequest())
        emit microphoneLevelsChanged(m_microphone.levels());
    checkSoon();
}

void AudioDevices::setDesktop(bool enabled, const QString& deviceId)
{
    m_desktop.request(enabled, deviceId);
    if (!m_isServerLost && m_desktop.applyRequest())
        emit desktopLevelsChanged(m_desktop.levels());
    checkSoon();
}

void AudioDevices::refreshDevices(AudioDevice& device)
{
    if (!m_isServerLost)
        device.refreshDevices();
}

void AudioDevices::onLevelTick()
{
    emit desktopLevelsChanged(m_desktop.levels());
    emit microphoneLevelsChanged(m_microphone.levels());
}

/// Once all is switched: who switches one thing on and off at once has lost nothing in between.
void AudioDevices::checkSoon()
{
    if (m_server)
        QMetaObject::invokeMethod(this, &AudioDevices::check, Qt::QueuedConnection);
}

void AudioDevices::check()
{
    if (m_server && !m_server->isRunning()) {
        loseServer();
    } else if (m_isServerLost) {
        findServer();
    } else {
        for (AudioDevice* const device : both())
            follow(*device);
    }
}

void AudioDevices::loseServer()
{
    m_isServerLost = true;
    m_restoreTimer.stop();
    for (AudioDevice* const device : both())
        device->silenceMeter();
    if (m_isLossReported || !isAnyWanted())
        return;
    m_isLossReported = true;
    logLoss(AudioPart::Server);
    emit lost(AudioPart::Server);
}

/// The plug-in keeps the connection to the lost server until its last source has gone. It waits for ever for a server
/// that dies while it connects: it is not called before the server has run for a while.
void AudioDevices::findServer()
{
    if (m_restoreTimer.isActive())
        return;
    for (AudioDevice* const device : both())
        device->releaseSource();
    m_restoreTimer.start();
}

void AudioDevices::restoreSources()
{
    // Lists are empty over the lost connection, and as long as the server has not found its devices.
    if (!m_desktop.hasDevices() && !m_microphone.hasDevices())
        return;
    m_restoreTimer.stop();
    for (AudioDevice* const device : both())
        device->restoreSource();
    m_isServerLost = false;
    if (std::exchange(m_isLossReported, false) && isAnyWanted()) {
        logReturn(AudioPart::Server);
        emit returned(AudioPart::Server);
    }
    check();
}

void AudioDevices::follow(AudioDevice& device)
{
    device.applyRequest();
    if (!device.isWanted())
        return;
    if (device.canReturn())
        returnToChosen(device);
    else if (!device.isListed())
        miss(device);
    else if (device.isLost())
        takeUp(device);
    else if (m_server)
        device.reopenIfMoved(*m_server);
}

void AudioDevices::miss(AudioDevice& device)
{
    if (!device.isLost())
        lose(device);
    else if (!device.lossTimer().isActive() && device.canFallBack())
        fallBack(device);
}

/// A server moves who listens to a microphone that vanishes to what the computer plays, and back with everybody else.
void AudioDevices::lose(AudioDevice& device)
{
    if (m_server)
        device.setMuted(true);
    device.setLost(true);
    device.lossTimer().start();
}

void AudioDevices::reportLoss(AudioDevice& device)
{
    if (!device.isLost())
        return;
    // It may be back with the server, and nobody cares while it is switched off.
    if (m_isServerLost || !device.isWanted()) {
        device.lossTimer().start();
        return;
    }
    // The next check would be too late.
    if (device.canFallBack() && device.isListed()) {
        takeUp(device);
        return;
    }
    if (device.canFallBack()) {
        fallBack(device);
        return;
    }
    logLoss(device.part());
    emit lost(device.part());
}

void AudioDevices::fallBack(AudioDevice& device)
{
    SCLogger::warning(QStringLiteral("The chosen %1 has vanished: the default one is used")
                          .arg(QLatin1String(nameOf(device.part()))));
    device.fallBack();
    emit fellBack(device.part());
}

void AudioDevices::returnToChosen(AudioDevice& device)
{
    SCLogger::info(QStringLiteral("The chosen %1 is back").arg(QLatin1String(nameOf(device.part()))));
    device.returnToChosen();
    emit returnedToChosen(device.part());
}

void AudioDevices::takeUp(AudioDevice& device)
{
    if (m_server)
        device.reopen();
    device.setMuted(false);
    device.setLost(false);
    if (device.lossTimer().isActive()) {
        device.lossTimer().stop();
        return;
    }
    logReturn(device.part());
    emit returned(device.part());
}

void AudioDevices::releaseMeters()
{
    stopListening();
    m_desktop.releaseMeter();
    m_microphone.releaseMeter();
}
