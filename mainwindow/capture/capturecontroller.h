// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/capture/capturearea.h"

#include <QObject>

class Activity;
class CaptureSelection;
class ObsWrapper;
class RegionOverlays;
class ScreenshotSession;

namespace Ui {
class SCMainWindow;
}

/// What is captured: turns tiles, ratio presets and the region's frame into the capture area, and the area into size,
/// target and crop of the engine. User-interface thread.
class CaptureController : public QObject
{
    Q_OBJECT

public:
    CaptureController(Ui::SCMainWindow& ui, CaptureSelection& selection, RegionOverlays& region,
                      ScreenshotSession& screenshots, ObsWrapper& engine, const Activity& activity);

    /// At the primary screen's size, with its scene. A failure is logged.
    bool startEngine();

    const CaptureSelection& selection() const { return m_selection; }

    /// The area in logical pixels of the desktop.
    QRect area() const;

    void chooseFullScreen();

    /// For a recording that is about to be counted down: nothing is selected any more, and the area is one of the
    /// primary screen as it is now.
    void settleArea();

    /// Sets the engine to the area: size, target and crop. False when that failed.
    bool prepare();

    /// Of a region that is recorded.
    void showFrame();
    void onRecordingOver();

signals:
    /// The area follows its frame while a recording is under way; it is applied after this.
    void areaMoved();

    /// The user has chosen a ratio preset; it is applied after this.
    void presetChosen();

    /// The frame was closed while a recording is counted down, or runs and is recorded to its end.
    void frameClosed();

private:
    void chooseRegion();
    void chooseWindow();
    void choosePreset(const QString& name);
    void switchScreen(bool on);
    void applyCaptureArea();
    bool resetRecordingArea();
    bool followsScreen() const;
    bool showsSize(const CaptureScreen& screen) const;
    void showSize(const QSize& size);
    void setCaptureTarget();
    void captureWholeScreen();
    void applyWholeScreen();
    QRect frameOnScreen(const QRect& area);
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
    CaptureArea m_area;
    bool m_engineRuns = false;
    /// Whether the engine knows the primary screen.
    bool m_targetFound = false;
    bool m_isFrameClosed = false;
};
