// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/audio/audiodevice.h"
#include "engine/core/enginetimings.h"

#include <QObject>
#include <QTimer>

struct CapturePlatform;

/// Microphone and desktop audio, with the timer of their levels. User-interface thread.
class AudioDevices : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object.
    AudioDevices(const CapturePlatform& platform, OutputChannels& channels, const EngineTimings& timings);

    /// Puts both default devices on their channels, with new meters.
    void create();

    AudioDevice& microphone() { return m_microphone; }
    AudioDevice& desktop() { return m_desktop; }
    const AudioDevice& microphone() const { return m_microphone; }
    const AudioDevice& desktop() const { return m_desktop; }

    void setMicrophone(bool enabled, const QString& deviceId);
    void setDesktop(bool enabled, const QString& deviceId);

    /// Before the sources are released.
    void releaseMeters();

signals:
    /// At every tick, the desktop's first; once when a device is switched off.
    void desktopLevelsChanged(const AudioLevels& levels);
    void microphoneLevelsChanged(const AudioLevels& levels);

private:
    void stopListening();
    void onLevelTick();
    void followMicrophone();

    const CapturePlatform& m_platform;
    AudioDevice m_microphone;
    AudioDevice m_desktop;
    QTimer m_levelTimer;
    QTimer m_microphoneTimer;
};
