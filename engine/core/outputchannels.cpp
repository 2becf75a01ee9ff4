// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/outputchannels.h"

#include "engine/core/obshandles.h"

OutputChannels::~OutputChannels()
{
    if (!obs_initialized())
        return;
    for (const uint32_t channel : {kVideoChannel, kDesktopChannel, kMicrophoneChannel}) {
        const ObsSourceHandle source(obs_get_output_source(channel));
        if (source && source.get() == m_made.at(channel))
            obs_set_output_source(channel, nullptr);
    }
    obs_wait_for_destroy_queue();
}

void OutputChannels::clear()
{
    for (const uint32_t channel : {kVideoChannel, kDesktopChannel, kMicrophoneChannel})
        obs_set_output_source(channel, nullptr);
}
