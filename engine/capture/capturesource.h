// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/captureplatform.h"
#include "engine/core/obshandles.h"
#include "engine/core/propertylist.h"

#include <QMargins>
#include <QStringList>

/// The source that captures a monitor or a window, with its targets, its crop and its pointer. Does nothing while the
/// source was not created. User-interface thread.
class CaptureSource
{
public:
    /// @param platform must outlive this object
    explicit CaptureSource(const CapturePlatform& platform) : m_platform(platform) {}

    /// Creates the source, replacing the last one, and adds it to the scene.
    ///
    /// @return false when libobs cannot set it up
    bool create(bool window, obs_scene_t* scene);

    obs_source_t* get() const { return m_source.get(); }

    /// Reads the list of windows or of monitors.
    void refreshTargets(bool window);
    const QStringList& targetNames() const { return m_targetNames; }
    const QStringList& targetValues() const { return m_targetValues; }

    /// Chooses a target by its name, which takes effect at the source's next update, and cuts the margins off.
    ///
    /// @return false, and nothing changed, when it is not in the list
    bool setTarget(bool window, const QString& name, const QMargins& crop);

    void setCursor(bool show);
    void setCursorEffects(bool show);

private:
    const CaptureSourceKind& kind(bool window) const { return window ? m_platform.window : m_platform.monitor; }
    void selectTarget(bool window, qsizetype index);
    void placePointerEffects(bool window, const QString& target);
    void setCrop(const QMargins& crop);

    const CapturePlatform& m_platform;
    ObsSourceHandle m_source;
    /// The list that the targets were read from last.
    PropertyList m_targets;
    QStringList m_targetNames;
    QStringList m_targetValues;
};
