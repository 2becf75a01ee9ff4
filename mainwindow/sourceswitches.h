// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

enum class AudioPart;
class AudioDeviceMenu;
class Notices;
class ObsWrapper;
class QPushButton;
class QSettings;
class SCSwitchWidget;
class SourcePort;
class VolumeControl;

struct SourceRows
{
    SCSwitchWidget& speakerSwitch;
    QPushButton& speakerDevices;
    VolumeControl& speakerMeter;
    SCSwitchWidget& micSwitch;
    QPushButton& micDevices;
    VolumeControl& micMeter;
    SCSwitchWidget& mouseSwitch;
};

/// The switches for audio and pointer set the engine, the meters and the settings, and the menus of the audio devices
/// the engine. Audio that is lost, or back, is reported to the user. User-interface thread.
class SourceSwitches : public QObject
{
    Q_OBJECT

public:
    /// Belongs to window; all else must outlive this object.
    SourceSwitches(const SourceRows& rows, SourcePort& sources, Notices& notices, QSettings& settings, QWidget* window);

    /// The mouse switch shows whether the pointer is to be highlighted.
    void applyStored();

    /// After the start of the engine: shows its levels and reports its losses.
    void attachEngine(ObsWrapper& engine);

    /// Shows and applies the stored switches, without storing or asking.
    void restore();

    void onAudioLost(AudioPart part);
    void onAudioReturned(AudioPart part);
    void onAudioFellBack(AudioPart part);
    void onAudioReturnedToChosen(AudioPart part);

private:
    void onSpeakerSwitched(bool on);
    void onMicSwitched(bool on);
    void onMouseSwitched(bool on);
    void applySpeaker(bool on);
    void applyMic(bool on);

    SourceRows m_rows;
    SourcePort& m_sources;
    Notices& m_notices;
    QSettings& m_settings;
    QWidget& m_window;
    AudioDeviceMenu* const m_speakerDevices;
    AudioDeviceMenu* const m_micDevices;
};
