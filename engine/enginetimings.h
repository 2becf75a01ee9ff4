#pragma once

#include <chrono>

/// How long an output is kept that nobody needs any more (see RestingOutputs). Tests shorten what they wait for.
struct RestTimes
{
    /// From the end of an output to its release; the index of a long file on a slow disk takes seconds.
    std::chrono::milliseconds rest{10'000};
    /// The same where the engine's owner goes.
    std::chrono::milliseconds shortestRest{1'000};
    /// How long the engine's owner waits for an output that has not ended.
    std::chrono::milliseconds busyLimit{5'000};
};

/// The durations of the engine that a user can notice; the defaults are the program's. Tests shorten what they wait
/// for.
struct EngineTimings
{
    std::chrono::milliseconds levelInterval{16};
    /// Between two looks for the microphone, where the plug-ins do not keep to their devices.
    std::chrono::milliseconds microphoneInterval{1'000};
    /// For the scene to be drawn when rendering it is switched on.
    std::chrono::milliseconds sceneDrawnLimit{500};
    /// Opening a file and its encoders takes tens of milliseconds; an output that needs longer is not waited for.
    std::chrono::milliseconds outputStartLimit{3'000};
    /// For video and audio to meet at the end of a pause; a stream that has not come by then does not move at all, and
    /// the other one is not held up for it.
    std::chrono::milliseconds resumeLimit{1'000};
    RestTimes rest;
};
