// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

struct CapturePlatform;

/// libobs' own video, with no more pixels and frames than are needed: it is cleared at every frame, whether the scene
/// is rendered or not. User-interface thread.
class EngineVideo
{
public:
    enum class Need
    {
        Frames, ///< Somebody takes them.
        Pace,   ///< libobs computes the pauses of every recording with its frame interval.
        Nothing ///< Nothing is recorded.
    };

    struct Settings
    {
        QSize source;
        QSize output;
        int fps = 0;
    };

    /// @param platform must outlive this object
    explicit EngineVideo(const CapturePlatform& platform) : m_platform(platform) {}

    /// @param asked that is refused where libobs refuses it, however little is needed
    /// @return 0, or libobs' negative code
    int reset(const Settings& asked, Need need);

    /// Resets it to what was asked for last; before the first reset(), to what it is.
    int setNeed(Need need);
    Need need() const { return m_need; }

    /// As it was asked for.
    QSize outputSize() const { return m_asked.output; }

private:
    const CapturePlatform& m_platform;
    Settings m_asked;
    Need m_need = Need::Frames;
};
