// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/sourceswitches.h"

#include "app/settings.h"
#include "engine/obswrapper.h"
#include "mainwindow/audiodevicemenu.h"
#include "mainwindow/notices/notices.h"
#include "overlays/scswitchwidget.h"
#include "widgets/messagebox.h"
#include "widgets/volumecontrol.h"

#include <QPushButton>
#include <QSettings>
#include <QSignalBlocker>
#include <QWidget>

namespace {

/// The default device and the one that it means.
constexpr int kFewestMicrophones = 2;

void showWithoutAsking(SCSwitchWidget& control, bool on)
{
    const QSignalBlocker blocker(control);
    control.setChecked(on);
}

void prepareMeter(VolumeControl& meter, int channels, int audioChannels)
{
    meter.setChannelCount(channels);
    meter.setAudioChannelCount(audioChannels);
    meter.setFillFromMinimum(true);
}

qsizetype microphoneCount(SourcePort& sources)
{
    sources.refreshMicDevices();
    return sources.micDeviceNames().size();
}

QList<AudioDeviceEntry> entries(const QStringList& names, const QStringList& ids)
{
    QList<AudioDeviceEntry> devices;
    for (qsizetype position = 0; position < names.size(); ++position)
        devices.append({names.at(position), ids.value(position)});
    return devices;
}

QList<AudioDeviceEntry> speakers(SourcePort& sources)
{
    sources.refreshDesktopDevices();
    return entries(sources.desktopDeviceNames(), sources.desktopDeviceIds());
}

QList<AudioDeviceEntry> microphones(SourcePort& sources)
{
    sources.refreshMicDevices();
    return entries(sources.micDeviceNames(), sources.micDeviceIds());
}

} // namespace

SourceSwitches::SourceSwitches(const SourceRows& rows, SourcePort& sources, Notices& notices, QSettings& settings,
                               QWidget* window)
    : QObject(window)
    , m_rows(rows)
    , m_sources(sources)
    , m_notices(notices)
    , m_settings(settings)
    , m_window(*window)
    , m_speakerDevices(new AudioDeviceMenu(rows.speakerDevices, [&sources] { return speakers(sources); }))
    , m_micDevices(new AudioDeviceMenu(rows.micDevices, [&sources] { return microphones(sources); }))
{
    connect(&m_rows.speakerSwitch, &SCSwitchWidget::checkedChanged, this, &SourceSwitches::onSpeakerSwitched);
    connect(&m_rows.micSwitch, &SCSwitchWidget::checkedChanged, this, &SourceSwitches::onMicSwitched);
    connect(&m_rows.mouseSwitch, &SCSwitchWidget::checkedChanged, this, &SourceSwitches::onMouseSwitched);
    // A switch that is off keeps the choice for later.
    connect(m_speakerDevices, &AudioDeviceMenu::chosen, this,
            [this] { applySpeaker(m_rows.speakerSwitch.isChecked()); });
    connect(m_micDevices, &AudioDeviceMenu::chosen, this, [this] { applyMic(m_rows.micSwitch.isChecked()); });
    showWithoutAsking(m_rows.mouseSwitch, m_settings.value(settingskeys::kMouseSwitch).toBool());
}

void SourceSwitches::applyStored()
{
    m_rows.mouseSwitch.setChecked(m_settings.value(settingskeys::kMouseShowHighlight).toBool());
}

void SourceSwitches::attachEngine(ObsWrapper& engine)
{
    connect(&engine, &ObsWrapper::audioLost, this, &SourceSwitches::onAudioLost);
    connect(&engine, &ObsWrapper::audioReturned, this, &SourceSwitches::onAudioReturned);
    connect(&engine, &ObsWrapper::audioFellBack, this, &SourceSwitches::onAudioFellBack);
    connect(&engine, &ObsWrapper::audioReturnedToChosen, this, &SourceSwitches::onAudioReturnedToChosen);
    connect(&engine, &ObsWrapper::playerVolumeDataChange, &m_rows.speakerMeter, &VolumeControl::setLevels);
    connect(&engine, &ObsWrapper::micVolumeDataChange, &m_rows.micMeter, &VolumeControl::setLevels);
    prepareMeter(m_rows.speakerMeter, engine.desktopMeterChannels(), engine.audioOutputChannels());
    prepareMeter(m_rows.micMeter, engine.micMeterChannels(), engine.audioOutputChannels());
}

void SourceSwitches::restore()
{
    const bool speaker = m_settings.value(settingskeys::kSpeakerSwitch).toBool();
    const bool mic = m_settings.value(settingskeys::kMicSwitch).toBool();
    const bool mouse = m_settings.value(settingskeys::kMouseSwitch).toBool();
    showWithoutAsking(m_rows.speakerSwitch, speaker);
    showWithoutAsking(m_rows.micSwitch, mic);
    showWithoutAsking(m_rows.mouseSwitch, mouse);
    applySpeaker(speaker);
    applyMic(mic);
    m_sources.setCaptureCursor(mouse);
}

void SourceSwitches::onAudioLost(AudioPart part)
{
    switch (part) {
    case AudioPart::Server:
        m_notices.post({tr("The sound server does not answer: there is no sound until it is back.")});
        break;
    case AudioPart::Microphone:
        m_notices.post({tr("There is no microphone: your voice is missing until it is back.")});
        break;
    case AudioPart::Desktop:
        m_notices.post({tr("There is no speaker: what the computer plays is missing until it is back.")});
        break;
    }
}

void SourceSwitches::onAudioReturned(AudioPart part)
{
    switch (part) {
    case AudioPart::Server:
        m_notices.post({tr("The sound server is back, and with it the sound.")});
        break;
    case AudioPart::Microphone:
        m_notices.post({tr("The microphone is back.")});
        break;
    case AudioPart::Desktop:
        m_notices.post({tr("The speaker is back.")});
        break;
    }
}

void SourceSwitches::onAudioFellBack(AudioPart part)
{
    if (part == AudioPart::Microphone)
        m_notices.post({tr("%1 is gone: the default microphone is used.").arg(m_micDevices->fallBack())});
    else
        m_notices.post({tr("%1 is gone: the sound of the default speaker is used.").arg(m_speakerDevices->fallBack())});
}

void SourceSwitches::onAudioReturnedToChosen(AudioPart part)
{
    (part == AudioPart::Microphone ? m_micDevices : m_speakerDevices)->returnToChosen();
    onAudioReturned(part);
}

void SourceSwitches::onSpeakerSwitched(bool on)
{
    applySpeaker(on);
    m_settings.setValue(settingskeys::kSpeakerSwitch, on);
}

void SourceSwitches::onMicSwitched(bool on)
{
    if (on && microphoneCount(m_sources) < kFewestMicrophones) {
        messagebox::warning(&m_window, tr("Warning"), tr("No microphone device found!"));
        // A switch that is on without a device would promise audio that is not recorded.
        m_rows.micSwitch.setChecked(false);
        return;
    }
    applyMic(on);
    m_settings.setValue(settingskeys::kMicSwitch, on);
}

void SourceSwitches::onMouseSwitched(bool on)
{
    m_sources.setCaptureCursor(on);
    if (on)
        m_settings.setValue(settingskeys::kMouseShowCursor, true);
    m_settings.setValue(settingskeys::kMouseShowHighlight, on);
    m_settings.setValue(settingskeys::kMouseSwitch, on);
}

void SourceSwitches::applySpeaker(bool on)
{
    m_sources.setDesktopAudioDevice(on, m_speakerDevices->deviceId());
    m_rows.speakerMeter.resetLevels();
    m_rows.speakerMeter.setActive(on);
}

void SourceSwitches::applyMic(bool on)
{
    m_sources.setMicDevice(on, m_micDevices->deviceId());
    m_rows.micMeter.resetLevels();
    m_rows.micMeter.setActive(on);
}
