// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/capture/capturearea.h"

#include <QString>

class CaptureDesktop;
class ObsWrapper;

/// The capture area as the engine takes it: the size of the video, the target and the crop. User-interface thread.
class EngineCapture
{
public:
    explicit EngineCapture(ObsWrapper& engine) : m_engine(engine) {}

    /// At the primary screen's size, with its scene and the default audio devices. Failures are logged.
    bool start();
    bool isRunning() const { return m_isRunning; }

    /// Screens come and go. Ignored until it runs.
    void refreshTargets();

    /// The present screens, and whether a recording can show parts of several.
    CaptureDesktop desktop() const;

    /// Of which the video's width and height are multiples.
    QSize videoSteps() const;

    /// The engine knows the screen's pixels, which Qt rounds.
    CaptureScreen withPixels(const CaptureScreen& screen) const;

    /// Of the video that records the area, in physical pixels.
    QSize videoSize(const CaptureArea& area, const CaptureScreen& screen) const;

    /// @return false if the engine does not list the screen, which is logged
    bool setTarget(const CaptureArea& area, const CaptureScreen& screen);

    /// False on failure, which is logged.
    bool resetVideo(const QSize& size);

    /// The scene of a recording without video is not rendered.
    void setSceneRendered(bool rendered);

private:
    QString target(const CaptureScreen& screen) const;

    ObsWrapper& m_engine;
    bool m_isRunning = false;
};
