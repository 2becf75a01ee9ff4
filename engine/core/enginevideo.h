// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>

struct CapturePlatform;

/// libobs' own video. Where nobody takes its frames it may be reduced to the least that libobs makes: it is cleared at
/// every frame, whether the scene is rendered or not. User-interface thread.
class EngineVideo
{
public:
    struct Settings
    {
        QSize source;
        QSize output;
        int fps = 0;
    };

    /// @param platform must outlive this object
    explicit EngineVideo(const CapturePlatform& platform) : m_platform(platform) {}

    /// @param reduced with sizes that libobs takes, makes the video as small as can be
    /// @return 0, or libobs' negative code
    int reset(const Settings& asked, bool reduced);

    /// Resets it to what was asked for last; before the first reset(), to what it is.
    int setReduced(bool reduced);
    bool isReduced() const { return m_isReduced; }

    /// As it was asked for.
    QSize outputSize() const { return m_asked.output; }

private:
    const CapturePlatform& m_platform;
    Settings m_asked;
    bool m_isReduced = false;
};
