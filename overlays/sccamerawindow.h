// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/camerasession.h"
#include "widgets/framegeometry.h"
#include "widgets/keyboardwindow.h"

#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>

#include <memory>

class QLabel;
class QTimer;
class QVideoWidget;

/// Tests shorten them.
struct CameraTimings
{
    int deviceCheckMs = 2000;
    /// Of a timer that had to be created again.
    int lateDeviceCheckMs = 5000;
    // From the end of the diagnostics, the show event and the camera's start to a forced repaint of the video.
    int refreshAfterShowMs = 200;
    int refreshAfterShowEventMs = 100;
    int refreshAfterStartMs = 200;
};

/// The webcam's video in a small frameless window above the desktop, moved by the user, with pointer or arrow keys, and
/// resized at the camera's aspect ratio. A hidden window's camera may be activated again; close() releases it. Logical
/// pixels of the desktop.
class SCCameraWindow : public QWidget, public KeyboardWindow
{
    Q_OBJECT

public:
    /// With the machine's cameras.
    explicit SCCameraWindow(QWidget* parent = nullptr);
    explicit SCCameraWindow(std::shared_ptr<CameraSystem> cameras, QWidget* parent = nullptr,
                            const CameraTimings& timings = CameraTimings());
    ~SCCameraWindow() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

    bool offersKeyboard() const override { return isVisible(); }
    bool hasKeyboard() const override { return isActiveWindow(); }
    void takeKeyboard() override { activateWindow(); }

public slots:
    /// In the lower right corner of the primary screen, where the last drag began or where a key has moved it.
    void show();

    void onCameraSelected(int index) { m_session.open(index); }

signals:
    /// bottomRight is one past the last pixel.
    void windowGeometryChanged(QPoint topLeft, QPoint bottomRight);

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void buildContent();
    void connectSession();
    void startDeviceTimer(int intervalMs);
    void retranslate();
    void reportGeometry();
    void moveToStartPosition();
    void updateCursor(const QPoint& position);
    void runDiagnostics();
    void followUpDiagnostics();
    void scheduleRefresh(int delayMs);
    void refreshVideo();
    void fitToAspect(float aspect);

    /// Shared with the diagnostics on the global thread pool, which may outlive the window and only call devices().
    std::shared_ptr<CameraSystem> m_system;
    const CameraTimings m_timings;
    QPoint m_pressPoint;
    bool m_pressing = false;
    framegeometry::HitArea m_resizeEdge = framegeometry::HitArea::None;
    QRect m_startGeometry;
    QVideoWidget* m_videoWidget;
    CameraSession m_session;
    QPointer<QTimer> m_deviceTimer;
    QLabel* m_loadingLabel = nullptr;
    bool m_usesFallback = false;
};
