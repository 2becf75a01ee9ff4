// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/captureplatform.h"
#include "engine/capture/framesource.h"
#include "engine/core/obshandles.h"
#include "engine/core/propertylist.h"

#include <QMargins>
#include <QSize>
#include <QStringList>

#include <optional>

/// The source that captures a monitor or a window, with its targets, its crop and its pointer. Does nothing while the
/// source was not created. User-interface thread.
class CaptureSource
{
public:
    /// @param platform must outlive this object
    explicit CaptureSource(const CapturePlatform& platform) : m_platform(platform) {}

    /// Whether the source is closed until it is opened, where its kind can be: it captures nothing then, opens no
    /// display and shares no memory. Before create().
    void setClosable(bool closable)
    {
        m_isOpen = !closable;
        m_isClosable = closable;
    }
    void setOpen(bool open);
    bool isOpen() const { return m_isOpen; }

    /// Creates the source, replacing the last one, and adds it to the scene.
    ///
    /// @return false when libobs cannot set it up
    bool create(bool window, obs_scene_t* scene);

    obs_source_t* get() const { return m_source.get(); }

    /// Reads the list of windows or of monitors.
    void refreshTargets(bool window);
    const QStringList& targetNames() const { return m_targetNames; }
    const QStringList& targetValues() const { return m_targetValues; }

    /// Chooses a target by its name, which takes effect at the source's next update, and cuts the margins off. Where
    /// what is left nearly has the size of libobs' video they change to leave exactly that (exactpixels::cropTo()).
    /// @return false, and nothing changed, when it is not in the list
    bool setTarget(bool window, const QString& name, const QMargins& crop);

    /// Call after each reset of libobs' video.
    void videoWasReset();

    void setCursor(bool show);
    void setCursorEffects(bool show);
    /// What setCursor() and setCursorEffects() have chosen.
    FramePointer pointer() const;

private:
    const CaptureSourceKind& kind(bool window) const { return window ? m_platform.window : m_platform.monitor; }
    void selectTarget(bool window, qsizetype index);
    void writeTarget();
    void update(obs_data_t* settings);
    bool isClosed() const { return !m_isOpen && m_kind && m_kind->noTarget; }
    void placePointerEffects(bool window, const QString& target);
    void setCrop(const QMargins& crop);
    QMargins exactCrop() const;

    const CapturePlatform& m_platform;
    ObsSourceHandle m_source;
    bool m_isClosable = false;
    bool m_isOpen = true;
    /// That of the source.
    const CaptureSourceKind* m_kind = nullptr;
    /// The setting that selects the target, and its value.
    PropertyList m_chosenList;
    QString m_chosenValue;
    /// The list that the targets were read from last.
    PropertyList m_targets;
    QStringList m_targetNames;
    QStringList m_targetValues;
    /// As it was asked for; empty before a target was chosen.
    std::optional<QMargins> m_crop;
    /// Of the captured monitor; empty where that is not known.
    QSize m_screenSize;
};
