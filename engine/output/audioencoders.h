// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/obshandles.h"

#include <array>

/// The AAC encoders beside the output: one for each of the six tracks, one for a stream and one for an archive. The
/// FFmpeg output encodes by itself and uses none of them. Destroyed last to first. User-interface thread.
class AudioEncoders
{
public:
    /// Makes all of them, replacing the last ones.
    ///
    /// @return false when one of the tracks has none; the debug log says which
    bool create();
    void setAudio(audio_t* audio);
    /// Releases them, last to first.
    void release();

private:
    static constexpr std::size_t kTracks = 6;
    static constexpr std::size_t kStream = kTracks;
    static constexpr std::size_t kArchive = kTracks + 1;

    std::array<ObsEncoderHandle, kTracks + 2> m_encoders;
};
