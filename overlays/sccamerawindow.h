#pragma once

#include "overlays/camerasession.h"
#include "widgets/framegeometry.h"

#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>

#include <memory>

class QLabel;
class QTimer;
class QVideoWidget;

/// The times of the webcam window; the defaults are the program's. Tests shorten what they wait for.
struct CameraTimings
{
    /// Between two checks for cameras that were plugged in or out.
    int deviceCheckMs = 2000;
    /// The same where the timer had to be made again.
    int lateDeviceCheckMs = 5000;
    // Until the video widget is made to paint again: after the diagnostics, the show event and the camera's start.
    int refreshAfterShowMs = 200;
    int refreshAfterShowEventMs = 100;
    int refreshAfterStartMs = 200;
};

/// The webcam's picture, floating above the desktop so that it is recorded with it: a small frameless window that the
/// user moves by dragging, and resizes by its edges and corners at the camera's ratio.
///
/// A hidden window's camera may come back to life; close() releases it. All coordinates are logical pixels of the
/// desktop.
class SCCameraWindow : public QWidget
{
    Q_OBJECT

public:
    /// Over the machine's own cameras.
    explicit SCCameraWindow(QWidget* parent = nullptr);
    explicit SCCameraWindow(std::shared_ptr<CameraSystem> cameras, QWidget* parent = nullptr,
                            const CameraTimings& timings = CameraTimings());
    ~SCCameraWindow() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    /// Shows the window in the lower right corner of the primary screen or, once the user has dragged it, where the
    /// last drag began.
    void show();

    /// Opens that camera of the list as the system gave it last; an index that is not in it is logged and ignored.
    void onCameraSelected(int index) { m_session.open(index); }

signals:
    /// The window was moved or resized. The second corner is one past the last pixel, right and below.
    void windowGeometryChanged(QPoint topLeft, QPoint bottomRight);

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
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
    void placeOnScreen();
    void showCursorAt(const QPoint& place);
    void runDiagnostics();
    void followUpDiagnostics();
    void scheduleRefresh(int delayMs);
    void refreshPicture();
    void fitToAspect(float aspect);

    /// Shared with the job that writes about the cameras, which may outlive the window.
    std::shared_ptr<CameraSystem> m_system;
    const CameraTimings m_timings;
    /// Where the pointer went down, globally.
    QPoint m_pressPoint;
    bool m_pressing = false;
    framegeometry::HitArea m_resizeEdge = framegeometry::HitArea::None;
    /// Where the window was then.
    QRect m_startGeometry;
    QVideoWidget* m_videoWidget;
    CameraSession m_session;
    QPointer<QTimer> m_deviceTimer;
    QLabel* m_loadingLabel = nullptr;
    /// Whether the picture, if any, is that of the system's default camera.
    bool m_usesFallback = false;
};
