// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

/// Of RetiredOutputs. Tests shorten them.
struct DeferredRelease
{
    /// From the end of an output; the index of a long file on a slow disk takes seconds.
    std::chrono::milliseconds delay{10'000};
    /// The same at the end of the engine.
    std::chrono::milliseconds shortestDelay{1'000};
    /// A reset of the video waits for an output that libobs is ending, which takes milliseconds.
    std::chrono::milliseconds endLimit{3'000};
    /// The end of the engine waits for an output that has not ended.
    std::chrono::milliseconds busyLimit{5'000};
};

/// Tests shorten them.
struct EngineTimings
{
    std::chrono::milliseconds levelInterval{16};
    /// Between two checks whether the audio devices are there, where no sound server reports that. Listing them keeps
    /// the user-interface thread busy.
    std::chrono::milliseconds audioDevicesInterval{2'000};
    /// From the loss of an audio device to its report: one that only moves is back at once.
    std::chrono::milliseconds audioLossDelay{2'000};
    /// From the return of a sound server to the first attempt to use it, and between two of them. libobs needs some
    /// milliseconds of it to destroy the old sources.
    std::chrono::milliseconds audioRestoreInterval{1'000};
    /// For the scene to be drawn after it was switched on.
    std::chrono::milliseconds sceneDrawnLimit{500};
    /// For the first frame: tens of milliseconds, some hundreds when shaders are compiled.
    std::chrono::milliseconds firstFrameLimit{1'000};
    /// For one pause or its end to take effect: some tenths of a second, or resumeLimit for each stream.
    std::chrono::milliseconds pauseLimit{2'000};
    /// For both streams to reach the end of a pause. One that takes longer does not move at all; the other one is not
    /// blocked for it.
    std::chrono::milliseconds resumeLimit{1'000};
    DeferredRelease release;
};
