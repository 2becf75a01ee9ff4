// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/enginetimings.h"
#include "engine/core/obshandles.h"
#include "engine/core/outputchannels.h"

class CaptureSource;
class QSize;
struct CapturePlatform;

/// The scene that holds the capture source, behind the fade transition on libobs' video channel. User-interface thread.
class CaptureScene
{
public:
    /// All of them must outlive this object.
    CaptureScene(CaptureSource& capture, OutputChannels& channels, const CapturePlatform& platform,
                 const EngineTimings& timings)
        : m_capture(capture), m_channels(channels), m_platform(platform), m_timings(timings)
    {}

    /// Builds transition, scene and capture source and clears all channels; only the video's is filled again.
    ///
    /// @return 0; -1 no fade transition; -2 no scene; -3 the capture source could not be made
    int setUp(bool window);

    /// Puts the scene on the video channel, and waits until it shows the screen as it is now; or takes it off.
    void setRendered(bool rendered);
    bool isRendered() const;

    /// Stretches the captured frame over the whole output.
    void stretchOver(const QSize& output);

private:
    bool createTransition();
    bool createScene();
    void waitUntilDrawn() const;

    CaptureSource& m_capture;
    OutputChannels& m_channels;
    const CapturePlatform& m_platform;
    const EngineTimings& m_timings;
    ObsSourceHandle m_transition;
    ObsSceneHandle m_scene;
};
