// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bench/measurement.h"

#include <array>

// Each recorder is in a source of its own: programrecorder.cpp, libobsrecorder.cpp, ffmpegrecorder.cpp,
// simplescreenrecorder.cpp.

/// The program, through its hotkey.
Measurement measureProgram(const Job& job);
/// The same, with frames through libobs' scene.
Measurement measureProgramWithScene(const Job& job);
/// libobs with the same scene and nothing around it.
Measurement measureBareLibobs(const Job& job);
/// FFmpeg's own capture of the X screen, with the same encoders.
Measurement measureX11Grab(const Job& job);
/// SimpleScreenRecorder with the same encoders, started and stopped through its command line and standard input.
Measurement measureSimpleScreenRecorder(const Job& job);

/// The program with its window on the screen, its engine started and nothing recorded yet.
IdleMeasurement measureIdleProgram(int seconds);
/// libobs with nothing on its channels.
IdleMeasurement measureIdleLibobs(int seconds);

/// Frames a second at which FFmpeg encodes a synthetic video of 1280x720 with the encoder's settings: how fast the
/// machine is at this moment.
double encoderFramesPerSecond();

struct Recorder
{
    const char* name;
    Measurement (*measure)(const Job& job);
    /// A program of others that it needs; null where it needs none.
    const char* tool;
};

inline constexpr std::array<Recorder, 5> kRecorders{
    {{"kestrano", &measureProgram, nullptr},
     {"kestrano-scene", &measureProgramWithScene, nullptr},
     {"bare-libobs", &measureBareLibobs, nullptr},
     {"x11grab", &measureX11Grab, "ffmpeg"},
     {"simplescreenrecorder", &measureSimpleScreenRecorder, "simplescreenrecorder"}}};
