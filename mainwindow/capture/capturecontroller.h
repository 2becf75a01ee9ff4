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

    void chooseFullScreen();

    /// Before a countdown: cancels selections and fits the area to the present primary screen.
    void settleArea();

    /// Sets size, target and crop of the engine; false on failure.
    bool prepare();

    void showFrame();
    void onRecordingOver();

signals:
    /// Emitted during a recording, before the area is applied.
    void areaMoved();

    /// Emitted before the preset is applied.
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
    bool followsScreen() const;
    bool showsSize() const;
    void showSize(const QSize& size);
    QString target() const;
    CaptureScreen screenWithPixels() const;
    QSize videoSteps() const;
    void setCaptureTarget();
    void captureWholeScreen();
    void applyWholeScreen();
    QRect frameOnScreen(const QRect& area);
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
    CaptureArea m_area;
    bool m_engineRuns = false;
    /// Whether the engine lists the primary screen.
    bool m_targetFound = false;
    bool m_isFrameClosed = false;
};
