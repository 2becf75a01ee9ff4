// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/audio/audioserver.h"
#include "engine/core/obshandles.h"
#include "engine/core/outputchannels.h"
#include "engine/core/propertylist.h"

#include <QString>
#include <QTimer>

#include <array>
#include <optional>

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
    AudioPart part;
    /// What it delivers is recorded so much later.
    int64_t delayNs = 0;
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

    /// For applyRequest(). What is to be off is silent at once.
    void request(bool enabled, const QString& deviceId);
    /// Does what was last requested, once. Where the system lists no such devices, the request stays.
    /// @return whether it is off now, with zero levels
    bool applyRequest();

    /// An empty list becomes "No Device" and "default".
    void refreshDevices();
    const QStringList& names() const { return m_devices.names; }
    const QStringList& ids() const { return m_devices.values; }

    AudioPart part() const { return m_kind.part; }
    /// On the channel, or to be as soon as that is possible.
    bool isWanted() const;
    /// Whether the system lists any.
    bool hasDevices() const { return !listDevices().names.isEmpty(); }
    /// Listed by the system now.
    bool isListed() const;
    /// Set by setLost(), until it is switched off.
    bool isLost() const { return m_isLost; }
    /// A lost one has no levels.
    void setLost(bool lost);
    /// From its loss until that is reported.
    QTimer& lossTimer() { return m_lossTimer; }
    void setMuted(bool muted);
    /// Another one was chosen, and the default one is listed.
    bool canFallBack() const;
    /// Goes on with the default one, audible, until another one is requested, or the same one again without being
    /// switched on or off.
    void fallBack();
    /// The one that was chosen before fallBack() is listed again.
    bool canReturn() const { return !m_replaced.isEmpty() && listDevices().values.contains(m_replaced); }
    void returnToChosen();
    void reopen();
    /// Reopens it where the server has moved it from a microphone to what the computer plays, or the other way round.
    void reopenIfMoved(const AudioServer& server);

    /// Destroys the source, as soon as libobs does not need it any more; its device, volume and filters are kept.
    void releaseSource();
    /// Makes another one like it, where that is on.
    void restoreSource();
    /// Zero levels until the meter is attached.
    void silenceMeter();

    /// In place of the last ones; not while listening.
    void makeMeter();
    void listen();
    /// Waits for a running callback.
    void stopListening();
    /// Ignored before makeMeter(), and without a source.
    void attachMeter();
    void releaseMeter();
    /// 0 before makeMeter().
    int meterChannels() const { return m_meter ? obs_volmeter_get_nr_channels(m_meter.get()) : 0; }
    const AudioLevels& levels() const { return m_levels; }

private:
    ListEntries listDevices() const;
    ObsSourceHandle sourceOnChannel(const char* name, const QByteArray& deviceId);
    /// Whether this source is on the channel.
    bool isOn() const;
    void switchOff();
    void switchOn(const QByteArray& deviceId);
    QString device() const;
    void updateDevice(const QString& device);
    static void onLevels(void* device, const float* magnitude, const float* peak, const float* inputPeak);

    const AudioDeviceKind m_kind;
    OutputChannels& m_channels;
    ObsSourceHandle m_source;
    /// In place of the source, between releaseSource() and restoreSource().
    ObsDataHandle m_saved;
    bool m_wasOn = false;
    /// Until it is applied.
    std::optional<QByteArray> m_request;
    /// By the default one; empty where none was.
    QString m_replaced;
    bool m_isLost = false;
    QTimer m_lossTimer;
    /// Of the right kind.
    bool m_hearsItsDevice = false;
    ObsFaderHandle m_fader;
    ObsVolmeterHandle m_meter;
    bool m_listening = false;
    /// Written by the thread that delivers the source's audio, between listen() and stopListening(), and zeroed by
    /// silenceMeter() once the source is detached; read by the user-interface thread. No lock: a reader may see a mix
    /// of two updates.
    AudioLevels m_levels;
    ListEntries m_devices;
};
