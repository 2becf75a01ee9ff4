// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ports.h"
#include "mainwindow/durations.h"
#include "mainwindow/recording/recordingsession.h"
#include "mainwindow/recording/recordingstage.h"
#include "platform/process/display_loss.h"
#include "platform/windowing/capture_exclusion.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class Activity;
class CaptureController;
class FloatingNotice;
class Notices;
class OutputOptions;
class QSettings;
class QWidget;
class RecordingKeeper;
class RegionOverlays;
class SCCountdownWidget;
class SCFullscreenToolbar;
struct Notice;

namespace Ui {
class SCMainWindow;
}

/// The stage of a recording session: the main window, which is minimised meanwhile, record button, countdown, floating
/// bar and region frame. User-interface thread.
class RecordingView : public QObject, public RecordingStage
{
    Q_OBJECT

public:
    /// @param setExcluded for tests
    RecordingView(QWidget& window, Ui::SCMainWindow& ui, CaptureController& capture, RegionOverlays& region,
                  OutputOptions& output, RecorderPort& recorder, const QSettings& settings, const Activity& activity,
                  Notices& notices, const Durations& durations,
                  std::function<bool(QWidget&, bool)> setExcluded = &platform::setExcludedFromCapture);
    ~RecordingView() override;

    RecordingSession& session() { return m_session; }
    const RecordingSession& session() const { return m_session; }

    /// Recording and not paused: the window stays minimised.
    bool isActive() const { return m_status == recordstatus::kStarted; }
    void minimiseWhileActive();

    /// For the floating bar; empty where there is none.
    void setPauseKey(const QString& key);

    /// Beside the floating bar; ignored when that is not shown.
    void showNotice(const Notice& notice);

    void restoreWindow() override;
    void hideOverlays() override;
    void showButton();

signals:
    /// As RecordingKeeper says it.
    void fileMoved(const QString& from, const QString& to);
    void fileSaved(const QString& path);

private:
    void connectRegion();
    void makeKeeper(Notices& notices);
    void onButtonClicked();
    void showStatus(int status);
    void focusButton();
    void showElapsed(const QString& text);
    void showOverlays();
    void positionBar();
    SCFullscreenToolbar& toolbar();
    FloatingNotice& notice();
    void excludeNotice();

    void minimiseWindow() override;
    bool isWindowMinimised() const override;
    void countDown(int from) override;
    void cancelCountdown() override;
    bool prepareCapture() override;
    RecordingChoices choices() const override;
    void setExcludedFromCapture(bool excluded) override;

    QWidget& m_window;
    Ui::SCMainWindow& m_ui;
    CaptureController& m_capture;
    RegionOverlays& m_region;
    OutputOptions& m_output;
    const RecorderPort& m_recorder;
    const QSettings& m_settings;
    const Activity& m_activity;
    Durations m_durations;
    std::function<bool(QWidget&, bool)> m_setExcluded;
    RecordingSession m_session;
    std::unique_ptr<RecordingKeeper> m_keeper;
    const platform::DisplayLossAction m_onDisplayLoss{[this] { m_session.finishWithoutStage(); }};
    QPointer<SCCountdownWidget> m_countdown;
    std::unique_ptr<SCFullscreenToolbar> m_toolbar;
    std::unique_ptr<FloatingNotice> m_notice;
    bool m_isExcluding = false;
    /// Whether the system keeps the bar out of the video at any position.
    bool m_isBarExcluded = false;
    bool m_isNoticeExcluded = false;
    QString m_pauseKey;
    int m_status = recordstatus::kEnded;
};
