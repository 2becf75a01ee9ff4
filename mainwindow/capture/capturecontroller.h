// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/capture/capturearea.h"
#include "mainwindow/capture/screenchoice.h"

#include <QObject>

class Activity;
class CaptureDesktop;
class CaptureSelection;
class ObsWrapper;
class RegionOverlays;
class ScreenshotSession;

namespace Ui {
class SCMainWindow;
}

/// Turns tiles, ratio presets and the region's frame into the capture area, and the area into size, target and crop of
/// the engine. Logical pixels of the desktop. User-interface thread.
class CaptureController : public QObject
{
    Q_OBJECT

public:
    CaptureController(Ui::SCMainWindow& ui, CaptureSelection& selection, RegionOverlays& region,
                      ScreenshotSession& screenshots, ObsWrapper& engine, const Activity& activity);

    /// At the primary screen's size. Failures are logged.
    bool startEngine();

    const CaptureSelection& selection() const { return m_selection; }

    QRect area() const;

    /// Of the video that records the area, in physical pixels.
    QSize videoSize() const;

    /// The chosen screen.
    void chooseFullScreen();

    /// Before a countdown: cancels selections and fits the area to the present screens.
    void settleArea();

    /// Sets size, target and crop of the engine; false on failure.
    bool prepare();

    /// That of a region, unless it is shown or the screen is switched off.
    void showFrame();
    void onRecordingOver();

signals:
    /// Emitted during a recording, before the area is applied.
    void areaMoved();

    /// Emitted before the entry of the ratio box is applied.
    void presetChosen();

    /// Emitted during a countdown or recording, which goes on to its end.
    void frameClosed();

private:
    void chooseRegion();
    void chooseWindow();
    void choosePreset(const QString& name);
    void switchScreen(bool on);
    void applyCaptureArea();
    bool resetRecordingArea();
    void keepVideoSize(const QRect& framed);
    CaptureDesktop desktop() const;
    /// The one that is captured: of a region, the one that holds most of it.
    CaptureScreen screen() const;
    bool recordsRegion() const;
    bool followsScreen() const;
    /// Than the one that is captured whole.
    bool hasOtherScreen() const;
    bool showsSize() const;
    void showSize(const QSize& size);
    QString target() const;
    CaptureScreen screenWithPixels() const;
    QSize videoSteps() const;
    void setCaptureTarget();
    void captureWholeScreen();
    void applyWholeScreen();
    void followScreen();
    void onFullScreenTile();
    void onScreenChosen();
    void onScreensChanged();
    void frameVisiblePart(const QRect& area);
    QRect keptOnScreen(const QRect& area) const;
    /// Of what is inside the frame, as far as it can be recorded; false where that is too little.
    bool storeVisiblePart(const QRect& framed);
    void frameGrownArea(const QRect& framed);
    void storeRegion(const QRect& framed, bool isMoving);
    void onRegionSelected(const QRect& area);
    void onFrameChanged(bool isMoving, const QPoint& firstPixel, const QPoint& lastPixel);
    void onFrameClosed();
    void onLockToggled(bool locked);

    Ui::SCMainWindow& m_ui;
    CaptureSelection& m_selection;
    RegionOverlays& m_region;
    ScreenshotSession& m_screenshots;
    ObsWrapper& m_engine;
    const Activity& m_activity;
    ScreenChoice m_screens;
    CaptureArea m_area;
    /// Of the recording that was prepared, in physical pixels; empty without one.
    QSize m_preparedSize;
    /// Of the screen on which the area has that size.
    double m_preparedRatio = 1.0;
    /// Of the screen on which the frame has that size.
    double m_framedRatio = 1.0;
    bool m_engineRuns = false;
    /// Whether the area is a region, also while the screen is switched off.
    bool m_isRegion = false;
    /// Whether the engine lists the captured screen.
    bool m_targetFound = false;
    bool m_isFrameClosed = false;
};
