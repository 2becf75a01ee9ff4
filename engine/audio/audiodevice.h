// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/obshandles.h"
#include "engine/core/outputchannels.h"
#include "engine/core/propertylist.h"

#include <QString>

#include <array>

/// In dB, one entry per channel.
struct AudioLevels
{
    /// libobs' maximum.
    static constexpr int kChannels = 8;

    std::array<float, kChannels> magnitude{};
    std::array<float, kChannels> peak{};
    std::array<float, kChannels> inputPeak{};
};

/// All texts are string literals.
struct AudioDeviceKind
{
    const char* typeId;
    /// At start-up, and afterwards.
    const char* startName;
    const char* name;
    uint32_t channel;
};

/// The microphone or the desktop audio: a source on its output channel, with a volume meter and its fader.
/// User-interface thread.
class AudioDevice
{
public:
    /// @param channels must outlive this object
    AudioDevice(const AudioDeviceKind& kind, OutputChannels& channels) : m_kind(kind), m_channels(channels) {}
    ~AudioDevice() { stopListening(); }
    Q_DISABLE_COPY_MOVE(AudioDevice)

    /// Takes the source on the channel, or makes one for the default device.
    void create();
    void connectChannel() { obs_set_output_source(m_kind.channel, m_source.get()); }

    /// Ignored where the system lists no such devices.
    /// @return whether it is off now, with zero levels
    bool setDevice(bool enabled, const QString& deviceId);

    /// An empty list becomes "No Device" and "default".
    void refreshDevices();
    const QStringList& names() const { return m_devices.names; }
    const QStringList& ids() const { return m_devices.values; }

    /// Whether this source is on the channel.
    bool isOn() const;
    /// Listed by the system now.
    bool isListed() const;
    bool isMuted() const { return obs_source_muted(m_source.get()); }
    void setMuted(bool muted) { obs_source_set_muted(m_source.get(), muted); }
    void reopen();

    /// In place of the last ones; not while listening.
    void makeMeter();
    void listen();
    /// Waits for a running callback.
    void stopListening();
    /// Ignored before makeMeter().
    void attachMeter();
    void releaseMeter();
    /// 0 before makeMeter().
    int meterChannels() const { return m_meter ? obs_volmeter_get_nr_channels(m_meter.get()) : 0; }
    const AudioLevels& levels() const { return m_levels; }

private:
    ListEntries listDevices() const;
    ObsSourceHandle sourceOnChannel(const char* name, const QByteArray& deviceId);
    void switchOff();
    void switchOn(const QByteArray& deviceId);
    QString device() const;
    void updateDevice(const QString& device);
    static void onLevels(void* device, const float* magnitude, const float* peak, const float* inputPeak);

    const AudioDeviceKind m_kind;
    OutputChannels& m_channels;
    ObsSourceHandle m_source;
    ObsFaderHandle m_fader;
    ObsVolmeterHandle m_meter;
    bool m_listening = false;
    /// Written by the thread that delivers the source's audio, between listen() and stopListening(), and zeroed by
    /// switchOff() once the source is detached; read by the user-interface thread. No lock: a reader may see a mix of
    /// two updates.
    AudioLevels m_levels;
    ListEntries m_devices;
};
