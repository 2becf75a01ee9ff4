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

/// What the switches for sound and pointer do: each tells the engine, its meter and the settings, which hold what the
/// switches show.
class SourceSwitches : public QObject
{
    Q_OBJECT

public:
    /// All but the last must outlive this object, which belongs to window. Message boxes belong to window as well.
    SourceSwitches(const SourceRows& rows, SourcePort& sources, QSettings& settings, QWidget* window);

    /// Sets the mouse switch to whether the pointer is to be highlighted, as the settings say.
    void applyStored();

    /// Feeds the meters from an engine that has started, and readies them for its channels.
    void attachMeters(ObsWrapper& engine);

    /// Shows the stored switches and tells the engine each state, whether or not it differs from the engine's own: a
    /// device shown as off is off. Nothing is written and no box is shown.
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
