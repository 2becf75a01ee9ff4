#pragma once

#include "mainwindow/activity.h"
#include "mainwindow/capture/capturearea.h"
#include "mainwindow/durations.h"
#include "mainwindow/obsrecorder.h"
#include "mainwindow/obssources.h"
#include "mainwindow/recording/recordingsession.h"
#include "mainwindow/recording/recordingstage.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

class CameraSystem;
class FilePage;
class Hotkeys;
class MainMenu;
class ObsWrapper;
class QComboBox;
class QLineEdit;
class QSettings;
class RecordingClock;
class RegionOverlays;
class SCCountdownWidget;
class SCFullscreenToolbar;
class SCTranslator;
class ScreenshotSession;
class SourceSwitches;
class UpdateNotice;
class WebcamSwitch;

namespace Ui {
class SCMainWindow;
}

/// The program's one top-level window. It owns the engine and everything that works on a recording, and wires them:
/// what is captured is in CaptureArea, how a recording goes in RecordingSession, whose stage it is.
///
/// Closing it while a recording runs finishes the file first, and so does the end of the user's session.
class SCMainWindow : public QMainWindow, private RecordingStage
{
    Q_OBJECT

public:
    /// Builds the window, fills in missing settings, takes the hotkeys and, on a profile's first run, opens the maker's
    /// page. The engine stands still until initializeCapture().
    explicit SCMainWindow(const Durations& durations = {});

    /// The same window over an engine that the caller has made, for one that captures by another table than the running
    /// system's.
    explicit SCMainWindow(std::unique_ptr<ObsWrapper> engine, const Durations& durations = {});

    /// The same with other cameras than the machine's.
    SCMainWindow(std::unique_ptr<ObsWrapper> engine, std::shared_ptr<CameraSystem> cameras,
                 const Durations& durations = {});
    ~SCMainWindow() override;

    /// Shares the application's translator with the window, which reloads it when the user chooses another language.
    void setTranslator(std::shared_ptr<SCTranslator> translator);

    /// Starts the capture engine at the primary screen's size. Start-up calls it once, when the window has been
    /// painted, since the engine takes its time. On failure the window stays usable; a recording then ends with a line
    /// in the log.
    void initializeCapture();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// A recording has begun to be written to path, or a screenshot has been; type is "video", "audio" or
    /// "screenshot".
    void fileProduced(const QString& path, const QString& type);

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool nativeEvent(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    // The shell: scmainwindow.cpp.
    Activity::Facts activityFacts();
    void setUpFrame();
    void setUpIcons();
    void showPictures();
    void setUpMenu();
    void setUpBoxes();
    void setUpSources();
    void applyStoredSettings();
    void showStoredFormat(QComboBox& box, QLatin1String key, int (*positionOf)(const QString&));
    void showFolder(QLineEdit& field, const QString& folder);
    void connectControls();
    void connectPages();
    void connectSession();
    void connectTiles();
    void setUpHotkeys();
    void showHotkey();
    void openFirstRunPage();
    void onMenuClicked();
    void onLanguageChosen(int position);
    void openLogFolder();
    void chooseFolder(QLineEdit& field, const QString& title, QLatin1String key);
    void onChangeLocationClicked();
    void onChangeScreenshotLocationClicked();
    void onFormatChosen(int index);
    void storeFormat(int index);
    void onScreenshotFormatChosen(int index);
    void retranslate();

    // What is captured: scmainwindow_capture.cpp.
    void setUpScene();
    void restoreSwitches();
    void applyCaptureArea();
    bool areaFollowsScreen() const;
    bool resetRecordingArea();
    void setCaptureTarget();
    void captureWholeScreen();
    void chooseFullScreen();
    void bringAreaUpToDate();
    bool fieldsTellTheSize(const CaptureScreen& screen) const;
    QRect frameRegion(const QRect& area);
    void setMode(CaptureMode mode);
    void showMode();
    void setScreenOn(bool on);
    void fitFormatToScreen(bool on);
    void setFormat(int index);
    void recordScreenForPicture();
    void onScreenSwitched(bool on);
    void onFullScreenChosen();
    void onRegionChosen();
    void onWindowChosen();
    void onRatioChosen(const QString& name);
    void onRegionSelected(const QRect& area);
    void onSelectionCancelled();
    void storeRegion(const QRect& framed, bool isMoving);
    void onFrameChanged(bool isMoving, const QPoint& firstPixel, const QPoint& lastPixel);
    void onFrameConcealed(bool concealed);
    void onFrameClosed();
    void onSizeLockToggled(bool locked);

    // The pages.
    void setUpFilePage();
    void onPageChosen(int index);
    void connectScreenshots();
    void onScreenshotSaved(const QString& path);

    // The windows that the menu opens: scmainwindow_dialogs.cpp.
    void armUpdateCheck();
    void connectDialogs();
    void openSettingsWindow();
    void tellOfUnknownFormat();
    void onSettingsUpdated();
    void showStoredFolders();
    void onUpdateCheckRequested();
    void onAboutRequested();

    // The recording: scmainwindow_recording.cpp.
    void onStateChanged(RecordingState state);
    void showRecordStatus(int status);
    void showRecordButton(int status);
    void onRecordRequested();
    bool recordsPicture() const;
    void showOverlays();
    void placeBar();
    void showElapsed(const QString& text);
    void onBarToggled(bool record);
    SCFullscreenToolbar& toolbar();
    void setRecordingActive(bool active);
    void minimiseWhileRecording();

    void minimiseWindow() override;
    bool isWindowMinimised() const override;
    void restoreWindow() override;
    void hideOverlays() override;
    void countDown(int from) override;
    void cancelCountdown() override;
    bool prepareCapture() override;
    RecordingChoices choices() const override;
    void setExcludedFromCapture(bool excluded) override;
    void setClockRunning(bool running) override;
    void setClockPaused(bool paused) override;
    QDateTime now() const override;

    Durations m_durations;
    Activity m_activity;
    std::unique_ptr<Ui::SCMainWindow> m_ui;
    std::unique_ptr<ObsWrapper> m_obs;
    CaptureArea m_captureArea;
    RegionOverlays* m_region;
    ScreenshotSession* m_screenshots;
    std::unique_ptr<QSettings> m_settings;
    std::shared_ptr<SCTranslator> m_translator;
    ObsSources m_sources;
    ObsRecorder m_recorder;
    RecordingSession m_session;
    SourceSwitches* m_switches = nullptr;
    WebcamSwitch* m_webcam = nullptr;
    MainMenu* m_menu = nullptr;
    UpdateNotice* m_updateNotice = nullptr;
    Hotkeys* m_hotkeys = nullptr;
    FilePage* m_filePage = nullptr;
    RecordingClock* m_recordingClock = nullptr;
    QPointer<SCCountdownWidget> m_countdown;
    /// Made when it is first needed.
    std::unique_ptr<SCFullscreenToolbar> m_toolbar;
    /// Whether the engine runs, so that it can be told what to capture.
    bool m_engineRuns = false;
    /// Whether the engine knew the primary screen when it was last told to capture it.
    bool m_targetFound = false;
    /// Whether the system keeps the floating bar out of the picture wherever it is.
    bool m_barExcluded = false;
    int m_shownStatus;
    /// What a selection of a region that is given up goes back to.
    struct Chosen
    {
        bool screenOn = true;
        int format = 0;
        /// What the selection has set in its place.
        int formatMeanwhile = 0;
        CaptureMode mode = CaptureMode::FullScreen;
    };
    Chosen m_beforeSelection;
    /// Whether the picture is recorded, as the screen switch says once it has been restored.
    bool m_screenOn = true;
    /// A recording runs and is not paused.
    bool m_recordingActive = false;
    /// The region's frame was closed while it could not be given up.
    bool m_frameGivenUp = false;
};
