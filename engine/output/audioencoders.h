// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/obshandles.h"

#include <array>

/// AAC encoders of six tracks, a stream and an archive, for outputs that take encoded packets. The FFmpeg output,
/// having encoders of its own, does not use them. User-interface thread.
class AudioEncoders
{
public:
    /// Replaces the last ones.
    /// @return false without an encoder for a track; the debug log says which
    bool create();
    void setAudio(audio_t* audio);
    /// Last to first.
    void release();

private:
    static constexpr std::size_t kTracks = 6;
    static constexpr std::size_t kStream = kTracks;
    static constexpr std::size_t kArchive = kTracks + 1;

    std::array<ObsEncoderHandle, kTracks + 2> m_encoders;
};
