// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/settings.h"
#include "engine/obswrapper.h"
#include "mainwindow/activity.h"
#include "mainwindow/capture/capturecontroller.h"
#include "mainwindow/capture/captureselection.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/outputoptions.h"
#include "mainwindow/screenshotsession.h"
#include "ui_scmainwindow.h"

#include <QMainWindow>
#include <QSettings>

#include <memory>

/// The main window's form with what captures, and an engine that has not started.
class CaptureForm : public QMainWindow
{
public:
    CaptureForm()
    {
        m_ui.setupUi(this);
        m_output = std::make_unique<OutputOptions>(OutputOptions::recordings(m_ui), *m_settings, m_activity);
        m_region = new RegionOverlays(this);
        m_screenshots = new ScreenshotSession(this, *m_region, m_activity, 0);
        m_selection = std::make_unique<CaptureSelection>(m_ui, *m_output, *m_settings);
        m_capture =
            std::make_unique<CaptureController>(m_ui, *m_selection, *m_region, *m_screenshots, m_engine, m_activity);
        m_output->showStored();
        show();
    }

protected:
    static Activity::Facts nothingUnderWay()
    {
        return {[] { return RecordingState::Idle; },
                [] { return false; },
                [] { return false; },
                [] { return false; },
                [] { return false; },
                [] { return false; },
                [] { return true; }};
    }

    Activity m_activity{nothingUnderWay()};
    Notices m_notices;
    Ui::SCMainWindow m_ui{};
    ObsWrapper m_engine;
    std::unique_ptr<QSettings> m_settings = openSettings();
    std::unique_ptr<OutputOptions> m_output;
    std::unique_ptr<CaptureSelection> m_selection;
    std::unique_ptr<CaptureController> m_capture;
    RegionOverlays* m_region = nullptr;
    ScreenshotSession* m_screenshots = nullptr;
};
