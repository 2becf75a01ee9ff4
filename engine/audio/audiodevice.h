// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/audio/levelmeter.h"
#include "engine/core/obshandles.h"
#include "engine/core/outputchannels.h"
#include "engine/core/propertylist.h"

#include <QString>

/// What the microphone and the computer's audio differ in. All texts are string literals.
struct AudioDeviceKind
{
    const char* typeId;
    /// The source's name when it is made at start-up, and afterwards.
    const char* startName;
    const char* name;
    uint32_t channel;
};

/// The microphone, or what the computer plays: a source on its output channel, with a meter. User-interface thread.
class AudioDevice
{
public:
    /// @param channels must outlive this object
    AudioDevice(const AudioDeviceKind& kind, OutputChannels& channels) : m_kind(kind), m_channels(channels) {}

    /// Takes the source that is on the channel, or else makes one for the default device.
    void create();
    /// Puts the source on its channel.
    void connectChannel() { obs_set_output_source(m_kind.channel, m_source.get()); }

    /// Records a device, or none. Does nothing where the system lists no such devices.
    ///
    /// @return whether it is off now: its levels have become zero
    bool setDevice(bool enabled, const QString& deviceId);

    /// Reads the list of devices; where there are none, it holds exactly "No Device" and "default".
    void refreshDevices();
    const QStringList& names() const { return m_devices.names; }
    const QStringList& ids() const { return m_devices.values; }

    /// Whether the channel holds this device's source.
    bool isOn() const;
    /// Whether the system lists the device now.
    bool isListed() const;
    bool isMuted() const { return obs_source_muted(m_source.get()); }
    void setMuted(bool muted) { obs_source_set_muted(m_source.get(), muted); }
    /// Lets the source open its device again.
    void reopen();

    LevelMeter& meter() { return m_meter; }
    const LevelMeter& meter() const { return m_meter; }
    void attachMeter() { m_meter.attach(m_source.get()); }

private:
    ListEntries listDevices() const;
    ObsSourceHandle sourceOnChannel(const char* name, const QByteArray& deviceId);
    void switchOff();
    void switchOn(const QByteArray& deviceId);
    QString device() const;
    void updateDevice(const QString& device);

    const AudioDeviceKind m_kind;
    OutputChannels& m_channels;
    ObsSourceHandle m_source;
    LevelMeter m_meter;
    ListEntries m_devices;
};
