// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

/// When an output that is no longer used is released (see RetiredOutputs). Tests shorten what they wait for.
struct DeferredRelease
{
    /// From the end of an output to its release; the index of a long file on a slow disk takes seconds.
    std::chrono::milliseconds delay{10'000};
    /// The same where the engine's owner goes.
    std::chrono::milliseconds shortestDelay{1'000};
    /// How long a reset of the video waits for an output that libobs is ending, which takes milliseconds.
    std::chrono::milliseconds endLimit{3'000};
    /// How long the engine's owner waits for an output that has not ended.
    std::chrono::milliseconds busyLimit{5'000};
};

/// The engine's intervals and time limits; the defaults are the program's. Tests shorten what they wait for.
struct EngineTimings
{
    std::chrono::milliseconds levelInterval{16};
    /// Between two checks of the microphone, where the plug-ins do not keep to their devices.
    std::chrono::milliseconds microphoneInterval{1'000};
    /// For the scene to be drawn when rendering it is switched on.
    std::chrono::milliseconds sceneDrawnLimit{500};
    /// For the engine's first frame: tens of milliseconds, or some hundreds when shaders have to be compiled.
    std::chrono::milliseconds firstFrameLimit{1'000};
    /// For one pause or its end to take effect: a few tenths of a second, or resumeLimit for each stream.
    std::chrono::milliseconds pauseLimit{2'000};
    /// For video and audio to reach the end of a pause. A stream that takes longer does not move at all; the other one
    /// is not blocked for it.
    std::chrono::milliseconds resumeLimit{1'000};
    DeferredRelease release;
};
