// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/framesource.h"

#include <QMargins>
#include <QRect>
#include <QSize>

#include <cstdint>
#include <memory>

class QString;
class ScreenVideo;
struct CapturePlatform;

/// Whether a libobs of this version (obs_get_version()) gives an output the frames of a video that is not libobs' own:
/// 31.1.0 and 31.1.1 do not.
bool recordsOtherVideos(std::uint32_t libobsVersion);

/// Captures the desktop without libobs' scene, where the platform can: says whether it does, and opens the video of
/// each recording. User-interface thread.
class DirectCapture
{
public:
    /// @param platform must outlive this object
    explicit DirectCapture(const CapturePlatform& platform) : m_platform(platform) {}

    /// Finds out whether it works here. The log says why it does not; KESTRANO_CAPTURE=scene switches it off. Needs a
    /// started engine.
    void probe();

    /// What probe() has found out.
    bool works() const { return m_works; }

    /// Whether the present or the next recording is captured this way: it works here, a part of the desktop is
    /// captured, and the last open() has not failed.
    bool isUsed() const { return m_works && !m_screen.isEmpty() && !m_hasFailed; }

    /// Whether the last open() has failed.
    bool hasFailed() const { return m_hasFailed; }

    /// Of the captured screen; empty where the scene captures.
    QSize screenSize() const { return m_screen.size(); }

    /// Captures a screen without these margins, in physical pixels of the desktop; the open video follows. The size of
    /// a video stays: it begins at the left and top margins, or nearer where it would reach over the screen's far
    /// edges.
    /// @param screen where it is empty it is left to the scene
    void setTarget(const QRect& screen, const QMargins& crop);

    /// The open video follows.
    void setPointer(const FramePointer& pointer);

    /// Opens the video of a recording.
    /// @param size in physical pixels; an odd width or height grows by one more column or row of the screen
    /// @param showsScreen false for audio alone, with two by two black pixels
    /// @return null where the scene has to be used; the log says why
    std::shared_ptr<ScreenVideo> open(const QSize& size, int fps, bool showsScreen);

private:
    QString obstacle() const;
    QRect area() const;
    std::unique_ptr<FrameSource> openFrames(const QRect& area, bool showsScreen, QString& obstacle) const;

    const CapturePlatform& m_platform;
    bool m_works = false;
    bool m_hasFailed = false;
    QRect m_screen;
    QMargins m_crop;
    /// Of the video; even.
    QSize m_size;
    FramePointer m_pointer;
    std::weak_ptr<ScreenVideo> m_video;
};
