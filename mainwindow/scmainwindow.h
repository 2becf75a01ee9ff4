// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/activity.h"
#include "mainwindow/durations.h"

#include <QMainWindow>

#include <memory>

class CameraSystem;
class CaptureController;
class CaptureSelection;
class FilePage;
class Hotkeys;
class MainMenu;
class Notices;
class ObsWrapper;
class OutputOptions;
class QSettings;
class RecordingView;
class RegionOverlays;
class SCTranslator;
class ScreenshotSession;
class SourceSwitches;
class WebcamSwitch;

namespace Ui {
class SCMainWindow;
}

/// Builds and wires what works on recordings and screenshots. Closing it during a recording, and the end of the user's
/// session, finish the file first.
class SCMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Also writes missing settings, registers the hotkeys and, at a profile's first run, opens the maker's page.
    explicit SCMainWindow(const Durations& durations = {});

    /// With another engine and other cameras, for tests.
    SCMainWindow(std::unique_ptr<ObsWrapper> engine, std::shared_ptr<CameraSystem> cameras,
                 const Durations& durations = {});
    ~SCMainWindow() override;

    void setTranslator(std::shared_ptr<SCTranslator> translator);

    /// Starts the engine, once, after the window is painted. On failure the window stays usable.
    void initializeCapture();

signals:
    /// A recording begins, or a screenshot is saved. type is "video", "audio" or "screenshot".
    void fileProduced(const QString& path, const QString& type);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool nativeEvent(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    Activity::Facts activityFacts();
    void makeFrame();
    void makeCapture(const Durations& durations);
    void makeRecording(const Durations& durations);
    void makeSources(std::shared_ptr<CameraSystem> cameras);
    void makePages();
    void connectScreenshots();
    void makeMenu(const Durations& durations);
    void makeHotkeys();
    void showStoredSettings();

    void onStateChanged(RecordingState state);
    void onScreenshotSaved(const QString& path);
    void onLanguageChosen();
    void onSettingsSaved();
    void showHotkey();
    void retranslate();

    Activity m_activity;
    std::unique_ptr<Ui::SCMainWindow> m_ui;
    std::unique_ptr<ObsWrapper> m_obs;
    std::unique_ptr<QSettings> m_settings;
    Notices* m_notices;
    std::unique_ptr<OutputOptions> m_recordingOptions;
    std::unique_ptr<OutputOptions> m_screenshotOptions;
    std::unique_ptr<CaptureSelection> m_selection;
    std::unique_ptr<CaptureController> m_capture;
    std::unique_ptr<RecordingView> m_view;
    RegionOverlays* m_region = nullptr;
    ScreenshotSession* m_screenshots = nullptr;
    SourceSwitches* m_switches = nullptr;
    WebcamSwitch* m_webcam = nullptr;
    FilePage* m_filePage = nullptr;
    MainMenu* m_menu = nullptr;
    Hotkeys* m_hotkeys = nullptr;
};
