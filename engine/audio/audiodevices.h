// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/audio/audiodevice.h"
#include "engine/core/enginetimings.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <memory>

struct CapturePlatform;

/// Microphone and desktop audio, with the timer of their levels. What is lost is silent until it is back, also a sound
/// server that is restarted. User-interface thread.
class AudioDevices : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object.
    AudioDevices(const CapturePlatform& platform, OutputChannels& channels, const EngineTimings& timings);
    ~AudioDevices() override;

    /// Puts both default devices on their channels, with new meters.
    void create();

    AudioDevice& microphone() { return m_microphone; }
    AudioDevice& desktop() { return m_desktop; }
    const AudioDevice& microphone() const { return m_microphone; }
    const AudioDevice& desktop() const { return m_desktop; }

    void setMicrophone(bool enabled, const QString& deviceId);
    void setDesktop(bool enabled, const QString& deviceId);

    /// Asks the system, but not while its server is lost, which would keep the caller waiting: the last list stays.
    void refreshDevices(AudioDevice& device);

    /// Before the sources are released.
    void releaseMeters();

signals:
    /// At every tick, the desktop's first; once when a device is switched off.
    void desktopLevelsChanged(const AudioLevels& levels);
    void microphoneLevelsChanged(const AudioLevels& levels);

    /// Only what is wanted, and before it is back; a device once it has been away for a while. A lost server is not
    /// reported for each device, too.
    void lost(AudioPart part);
    void returned(AudioPart part);
    /// A chosen device has been away for a while, and the default one takes its place until it is back.
    void fellBack(AudioPart part);
    void returnedToChosen(AudioPart part);

private:
    std::array<AudioDevice*, 2> both() { return {&m_microphone, &m_desktop}; }
    bool isAnyWanted() const { return m_microphone.isWanted() || m_desktop.isWanted(); }
    void stopListening();
    void onLevelTick();
    void openServer();
    void checkSoon();
    void check();
    void loseServer();
    void findServer();
    void restoreSources();
    void follow(AudioDevice& device);
    void miss(AudioDevice& device);
    void lose(AudioDevice& device);
    void reportLoss(AudioDevice& device);
    void fallBack(AudioDevice& device);
    void returnToChosen(AudioDevice& device);
    void takeUp(AudioDevice& device);

    const CapturePlatform& m_platform;
    AudioDevice m_microphone;
    AudioDevice m_desktop;
    QTimer m_levelTimer;
    QTimer m_checkTimer;
    QTimer m_restoreTimer;
    /// Null where sources keep their devices.
    std::unique_ptr<AudioServer> m_server;
    bool m_isServerLost = false;
    bool m_isLossReported = false;
};
