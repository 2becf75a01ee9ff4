// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/capture/capturearea.h"
#include "mainwindow/capture/enginecapture.h"
#include "mainwindow/capture/regionsize.h"
#include "mainwindow/capture/screenchoice.h"
#include "mainwindow/capture/sizefields.h"

#include <QObject>

class Activity;
class CaptureSelection;
class ObsWrapper;
class RegionOverlays;
class ScreenshotSession;

namespace Ui {
class SCMainWindow;
}

/// Turns tiles, ratio presets, typed sizes and the region's frame into the capture area. Logical pixels of the desktop.
/// User-interface thread.
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

    /// As a region.
    /// @return false unless idle
    bool chooseArea(const QRect& area);

    /// Moved onto the screens that a recording of it can show.
    QRect keptOnScreen(const QRect& area) const;

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

    /// The frame's bar may have moved.
    void screensSettled();

    /// Emitted before another region, or no region, is applied.
    void areaChosen();

    /// Emitted before the entry of the ratio box is applied.
    void presetChosen();

    /// A typed size. @param reason translated
    void sizeRefused(const QString& reason);

    /// Emitted during a countdown or recording, which goes on to its end.
    void frameClosed();

private:
    void connectControls();
    void connectRegion();
    void chooseRegion();
    void chooseWindow();
    void choosePreset(const QString& name);
    void framePreset(const QSize& size);
    void sizeRegion(const QSize& typed);
    SizeFields::Rules sizeRules();
    regionsize::Limits limitsOn(const CaptureScreen& screen);
    bool isRatioLocked() const;
    void takeRatio(const QSize& video);
    void switchScreen(bool on);
    void applyCaptureArea();
    bool resetRecordingArea();
    void keepVideoSize(const QRect& framed);
    /// The one that is captured: of a region, the one that holds most of it.
    CaptureScreen screen() const;
    bool recordsRegion() const;
    bool followsScreen() const;
    /// Than the one that is captured whole.
    bool hasOtherScreen() const;
    void captureWholeScreen();
    void applyWholeScreen();
    void followScreen();
    void onFullScreenTile();
    void onScreenChosen();
    void onScreensChanged();
    void onScreensSettled();
    bool isRegionOnNoScreen() const;
    void keepRegion();
    void fitRegion();
    void frameVisiblePart(const QRect& area);
    /// Of what is inside the frame, as far as it can be recorded; false where that is too little.
    bool storeVisiblePart(const QRect& framed);
    void frameGrownArea(const QRect& framed);
    QRect moveFrame(const QRect& area);
    QRect keptAtRatio(const QRect& framed);
    void storeRegion(const QRect& framed, bool isMoving);
    void onRegionSelected(const QRect& area);
    void onFrameChanged(bool isMoving, const QPoint& firstPixel, const QPoint& lastPixel);
    void onFrameClosed();
    void onLockToggled(bool locked);

    Ui::SCMainWindow& m_ui;
    CaptureSelection& m_selection;
    RegionOverlays& m_region;
    ScreenshotSession& m_screenshots;
    EngineCapture m_engine;
    const Activity& m_activity;
    ScreenChoice m_screens;
    SizeFields m_sizeFields;
    CaptureArea m_area;
    /// What is inside the frame, as it was moved or reported last.
    QRect m_framed;
    /// Of the video while the ratio is locked, width by height.
    double m_ratio = 1.0;
    /// Of the recording that was prepared, in physical pixels; empty without one.
    QSize m_preparedSize;
    /// Of the screen on which the area has that size.
    double m_preparedRatio = 1.0;
    /// Of the screen on which the frame has that size.
    double m_framedRatio = 1.0;
    /// Whether the area is a region, also while the screen is switched off.
    bool m_isRegion = false;
    /// By the engine, as one that it can capture.
    bool m_isScreenListed = false;
    bool m_isFrameClosed = false;
    /// Whether the frame is hidden until a screen is back.
    bool m_isFrameAway = false;
};
