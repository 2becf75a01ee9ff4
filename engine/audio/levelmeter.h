// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/obshandles.h"

#include <array>

/// Levels of an audio device in dB, one entry per channel.
struct AudioLevels
{
    /// libobs' highest number of audio channels.
    static constexpr int kChannels = 8;

    std::array<float, kChannels> magnitude{};
    std::array<float, kChannels> peak{};
    std::array<float, kChannels> inputPeak{};
};

/// The volume meter of one audio device, with its fader. User-interface thread; libobs' audio thread writes the levels
/// between listen() and stopListening(), without a lock: a reader may see a mix of two updates.
class LevelMeter
{
public:
    LevelMeter() = default;
    ~LevelMeter() { stopListening(); }
    LevelMeter(const LevelMeter&) = delete;
    LevelMeter& operator=(const LevelMeter&) = delete;

    /// Makes fader and meter, one after the other in place of the last ones. Not while listening.
    void make();
    void listen();
    /// Waits for a callback that is running.
    void stopListening();

    /// Shows this source from now on. Does nothing before make().
    void attach(obs_source_t* source);
    /// Shows nothing: all levels are zero, whatever the source goes on to do.
    void detach();

    /// 0 before make().
    int channels() const { return m_meter ? obs_volmeter_get_nr_channels(m_meter.get()) : 0; }
    const AudioLevels& levels() const { return m_levels; }

    /// Destroys meter and fader.
    void release();

private:
    static void onLevels(void* meter, const float* magnitude, const float* peak, const float* inputPeak);

    ObsFaderHandle m_fader;
    ObsVolmeterHandle m_meter;
    AudioLevels m_levels;
    bool m_listening = false;
};
