// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/mediafile.h"

#include <QSize>

#include <array>

struct Take;

/// Judges a recording of the test pattern and the test tone by its file alone, for each format the same way, whatever
/// recorded it. Each function reports what is wrong as a failure of the running test.
namespace formatjudge {

/// What a format's file holds.
struct Expected
{
    const char* name;
    const char* extension;
    const char* videoCodec; ///< Empty: no video of the screen.
    int videoId;
    const char* audioCodec; ///< Empty: no sound.
    int audioId;
    bool hasMarkerVideo; ///< The frame of 2x2 pixels that comes with the sound; FLAC's muxer leaves it out.
};

inline constexpr std::array<Expected, 7> kFormats{{{"MP4", "mp4", "h264", 27, "aac", 86018, false},
                                                   {"AVI", "avi", "mpeg4", 12, "mp3", 86017, false},
                                                   {"FLV", "flv", "flv1", 21, "mp3", 86017, false},
                                                   {"GIF", "gif", "gif", 97, "", 0, false},
                                                   {"MP3", "mp3", "", 0, "mp3", 86017, true},
                                                   {"AAC", "aac", "", 0, "aac", 86018, false},
                                                   {"FLAC", "flac", "", 0, "flac", 86028, false}}};

/// What a system may add to what the program does, in seconds.
struct Allowance
{
    /// How long a recording may take to begin after the engine was asked to start.
    double latestStart = 0.2;
    /// How far a frame may go beyond the request to stop.
    double latestEnd = 1.0;
    /// By how much the file's clock may differ from the screen's over half the recording.
    double clockDrift = 0.1;
    /// What the sound server holds of the test tone before it is heard, with a margin for a busy machine.
    double soundServer = 0.05;
    /// Share of the frames that may be torn in the middle of a block of the test pattern's number.
    double tornFrames = 0.0;
};

/// @param screen size of the recorded video in pixels.
void check(const Expected& expected, const MediaFile& file, const Take& take, const QSize& screen,
           const Allowance& allowance = {});

} // namespace formatjudge
