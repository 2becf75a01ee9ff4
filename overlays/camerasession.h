#pragma once

#include "overlays/camerasystem.h"

#include <QObject>

/// The camera of the webcam window: opens the first camera that the system lists, chooses the format, tries others when
/// that fails, and follows cameras that are plugged in and out. Every step is logged; failures are only logged.
/// User-interface thread.
class CameraSession : public QObject
{
    Q_OBJECT

public:
    /// Shows the video in output. Both outlive the session.
    CameraSession(CameraSystem& system, QVideoWidget& output);

    /// Compares the system's cameras with those known and opens the first one of a new list. A camera of the same list
    /// that has stopped is started again, and without any camera the system's default is tried. Call regularly.
    void checkDevices();

    /// Opens that camera of the known list; another index is logged and ignored.
    void open(int index);

    /// Opens the first camera, if there is one, and from now on those that are plugged in.
    void resume();

    /// Deactivates the camera. The next checkDevices() activates it again.
    void suspend();

    /// Releases the camera. Until resume() no other one is opened but the system's default.
    void close();

    bool isActive() const { return m_camera != nullptr && m_camera->isActive(); }

    /// The video's width by its height; 1 while there is none.
    float aspect() const;

signals:
    /// The camera has started with a known resolution.
    void aspectChanged(float aspect);
    void started();
    /// A camera is active or has failed.
    void loadingEnded();
    void fallbackStarted();

private:
    void openFirst();
    void onNoCamera();
    void create(const CameraDevice& device);
    void reportActive();
    void startOrTryOthers(const CameraDevice& device);
    void restart();
    void start();
    void activate();
    void reportFormat();
    void tryOtherFormats(const CameraDevice& device);
    bool tryFormat(const CameraFormat& format);
    void startFallback();
    void stop();

    CameraSystem& m_system;
    QVideoWidget& m_output;
    QList<CameraDevice> m_cameras;
    std::unique_ptr<Camera> m_camera;
    bool m_isClosed = false;
};
