// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bench/measurement.h"

#include <array>

// Each recorder is in a source of its own: programrecorder.cpp, libobsrecorder.cpp, ffmpegrecorder.cpp.

/// The program, through its hotkey.
Measurement measureProgram(const Job& job);
/// The same, with frames through libobs' scene.
Measurement measureProgramWithScene(const Job& job);
/// libobs with the same scene and nothing around it.
Measurement measureBareLibobs(const Job& job);
/// FFmpeg's own capture of the X screen, with the same encoders.
Measurement measureX11Grab(const Job& job);

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
};

inline constexpr std::array<Recorder, 4> kRecorders{{{"kestrano", &measureProgram},
                                                     {"kestrano-scene", &measureProgramWithScene},
                                                     {"bare-libobs", &measureBareLibobs},
                                                     {"x11grab", &measureX11Grab}}};
