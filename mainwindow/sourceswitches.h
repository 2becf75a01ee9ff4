// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class ObsWrapper;
class QSettings;
class SCSwitchWidget;
class SourcePort;
class VolumeControl;

/// The controls of the rows of sources; they belong to the form.
struct SourceRows
{
    SCSwitchWidget& speakerSwitch;
    VolumeControl& speakerMeter;
    SCSwitchWidget& micSwitch;
    VolumeControl& micMeter;
    SCSwitchWidget& mouseSwitch;
};

/// The switches for audio and pointer: each sets the engine, its meter and the settings. User-interface thread.
class SourceSwitches : public QObject
{
    Q_OBJECT

public:
    /// Belongs to window; all else must outlive this object.
    SourceSwitches(const SourceRows& rows, SourcePort& sources, QSettings& settings, QWidget* window);

    /// Sets the mouse switch to whether the pointer is to be highlighted.
    void applyStored();

    /// Feeds the meters from an engine that has started.
    void attachMeters(ObsWrapper& engine);

    /// Shows the stored switches and sets the engine to them. Nothing is stored and no box is shown.
    void restore();

private:
    void onSpeakerSwitched(bool on);
    void onMicSwitched(bool on);
    void onMouseSwitched(bool on);
    void applySpeaker(bool on);
    void applyMic(bool on);

    SourceRows m_rows;
    SourcePort& m_sources;
    QSettings& m_settings;
    QWidget& m_window;
};
