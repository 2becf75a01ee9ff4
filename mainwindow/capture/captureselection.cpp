// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/captureselection.h"

#include "app/settings.h"
#include "engine/output/recordingformat.h"
#include "mainwindow/outputoptions.h"
#include "ui_scmainwindow.h"

#include <QSettings>
#include <QSignalBlocker>

CaptureSelection::CaptureSelection(Ui::SCMainWindow& ui, OutputOptions& output, QSettings& settings)
    : m_ui(ui), m_output(output), m_settings(settings)
{
    connect(&m_output, &OutputOptions::formatChosen, this, &CaptureSelection::fitScreenToFormat);
    showMode();
}

void CaptureSelection::restore()
{
    m_isScreenOn = m_settings.value(settingskeys::kScreenSwitch).toBool();
    const QSignalBlocker blocker(m_ui.screenSwitch);
    m_ui.screenSwitch->setChecked(m_isScreenOn);
    if (!m_isScreenOn && recordsVideo())
        m_output.showFormat(static_cast<int>(RecordingFormat::Mp3));
    showMode();
    emit screenSwitched(m_isScreenOn);
}

bool CaptureSelection::recordsVideo() const
{
    return hasVideo(recordingFormatFromIndex(m_output.format()));
}

void CaptureSelection::choose(CaptureMode mode)
{
    setScreenOn(true);
    setMode(mode);
}

void CaptureSelection::switchScreen(bool on)
{
    // Also where the switch has shown something else than is in force, before restore().
    fitFormat(on);
    setScreenOn(on);
    setMode(on ? CaptureMode::FullScreen : m_mode);
}

void CaptureSelection::fitScreenToFormat()
{
    if (m_isScreenOn || !recordsVideo())
        return;
    setScreenOn(true);
    chooseFullScreenForFormat();
}

void CaptureSelection::chooseFullScreenForFormat()
{
    setMode(CaptureMode::FullScreen);
    emit screenSwitchedByFormat();
}

void CaptureSelection::beginRegion()
{
    m_remembered = {m_isScreenOn, m_output.format(), 0, m_mode};
    choose(CaptureMode::Region);
    m_remembered.formatMeanwhile = m_output.format();
}

void CaptureSelection::cancelRegion()
{
    // The window can be reached beside a selector on another screen.
    const bool isUntouched = m_output.format() == m_remembered.formatMeanwhile;
    if (m_isScreenOn != m_remembered.isScreenOn && !isUntouched) {
        chooseFullScreenForFormat();
        return;
    }
    if (m_isScreenOn != m_remembered.isScreenOn) {
        setScreenOn(m_remembered.isScreenOn);
        m_output.setFormat(m_remembered.format);
    }
    setMode(m_remembered.mode);
}

void CaptureSelection::setScreenOn(bool on)
{
    // An audio format chosen with the screen switched on is meant.
    if (on != m_isScreenOn)
        fitFormat(on);
    m_isScreenOn = on;
    {
        const QSignalBlocker blocker(m_ui.screenSwitch);
        m_ui.screenSwitch->setChecked(on);
    }
    m_settings.setValue(settingskeys::kScreenSwitch, on);
    emit screenSwitched(on);
}

void CaptureSelection::setMode(CaptureMode mode)
{
    m_mode = mode;
    showMode();
}

void CaptureSelection::fitFormat(bool screenOn)
{
    if (screenOn != recordsVideo())
        m_output.setFormat(static_cast<int>(screenOn ? RecordingFormat::Mp4 : RecordingFormat::Mp3));
}

void CaptureSelection::showMode()
{
    m_ui.fullScreenTile->setSelected(m_isScreenOn && m_mode == CaptureMode::FullScreen);
    m_ui.regionTile->setSelected(m_isScreenOn && m_mode == CaptureMode::Region);
    m_ui.windowTile->setSelected(m_isScreenOn && m_mode == CaptureMode::Window);
}
