// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/audio/levelmeter.h"

#include <algorithm>

namespace {

void ignoreFader(void*, float) {}

} // namespace

void LevelMeter::make()
{
    m_fader.reset();
    m_fader.reset(obs_fader_create(OBS_FADER_LOG));
    m_meter.reset();
    m_meter.reset(obs_volmeter_create(OBS_FADER_LOG));
}

void LevelMeter::listen()
{
    obs_fader_add_callback(m_fader.get(), ignoreFader, nullptr);
    obs_volmeter_add_callback(m_meter.get(), &LevelMeter::onLevels, this);
    m_listening = true;
}

void LevelMeter::stopListening()
{
    if (m_listening)
        obs_volmeter_remove_callback(m_meter.get(), &LevelMeter::onLevels, this);
    m_listening = false;
}

void LevelMeter::attach(obs_source_t* source)
{
    if (!m_meter)
        return;
    obs_fader_attach_source(m_fader.get(), source);
    obs_volmeter_attach_source(m_meter.get(), source);
}

void LevelMeter::detach()
{
    obs_volmeter_detach_source(m_meter.get());
    m_levels = AudioLevels();
}

void LevelMeter::release()
{
    m_meter.reset();
    m_fader.reset();
}

void LevelMeter::onLevels(void* meter, const float* magnitude, const float* peak, const float* inputPeak)
{
    if (!meter)
        return;
    AudioLevels& levels = static_cast<LevelMeter*>(meter)->m_levels;
    std::copy_n(magnitude, AudioLevels::kChannels, levels.magnitude.begin());
    std::copy_n(peak, AudioLevels::kChannels, levels.peak.begin());
    std::copy_n(inputPeak, AudioLevels::kChannels, levels.inputPeak.begin());
}
