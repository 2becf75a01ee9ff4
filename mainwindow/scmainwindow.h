#pragma once

#include "mainwindow/capturearea.h"
#include "mainwindow/obsrecorder.h"
#include "mainwindow/recordingsession.h"
#include "mainwindow/recordingstage.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

class ObsWrapper;
class QSettings;
class QTimer;
class SCCountdownWidget;
class SCTranslator;

namespace Ui {
class SCMainWindow;
}

namespace platform {
class GlobalHotkey;
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
    SCMainWindow();

    /// The same window over an engine that the caller has made, for one that captures by another table than the running
    /// system's.
    explicit SCMainWindow(std::unique_ptr<ObsWrapper> engine);
    ~SCMainWindow() override;

    /// Shares the application's translator with the window, which reloads it when the user chooses another language.
    void setTranslator(std::shared_ptr<SCTranslator> translator);

    /// Starts the capture engine at the primary screen's size. Start-up calls it once, when the window has been
    /// painted, since the engine takes its time. On failure the window stays usable; a recording then ends with a line
    /// in the log.
    void initializeCapture();

signals:
    /// A recording has begun to be written to path; type is "video" or "audio".
    void fileProduced(const QString& path, const QString& type);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setUpFrame();
    void applyStoredSettings();
    void showStoredFormat();
    void connectControls();
    void connectSession();
    void registerRecordingHotkey();
    void onHotkeyAvailabilityChanged(bool available, const QString& reason);
    void showHotkey();
    void openFirstRunPage();

    void setUpScene();
    void restoreSwitches();
    void applyCaptureArea();
    bool areaFollowsScreen() const;
    bool resetRecordingArea();
    void setCaptureTarget(const CaptureMargins& margins);

    void onChangeLocationClicked();
    void onFormatChosen(int index);
    void onStateChanged(RecordingState state);
    void showRecordStatus(int status);
    void retranslate();

    void minimiseWindow() override;
    void restoreWindow() override;
    void countDown(int from) override;
    void cancelCountdown() override;
    bool prepareCapture() override;
    RecordingChoices choices() const override;
    void setExcludedFromCapture(bool excluded) override;
    void setClockRunning(bool running) override;
    QDateTime now() const override;

    std::unique_ptr<Ui::SCMainWindow> m_ui;
    std::unique_ptr<ObsWrapper> m_obs;
    CaptureArea m_captureArea;
    std::unique_ptr<QSettings> m_settings;
    std::shared_ptr<SCTranslator> m_translator;
    ObsRecorder m_recorder;
    RecordingSession m_session;
    platform::GlobalHotkey* m_recordingHotkey = nullptr;
    /// Empty when none could be taken.
    QString m_hotkeyInForce;
    QTimer* m_recordingClock = nullptr;
    QPointer<SCCountdownWidget> m_countdown;
    /// Whether the engine knew the primary screen when it was last told to capture it.
    bool m_targetFound = false;
    int m_shownStatus;
    bool m_closeRequested = false;
};
