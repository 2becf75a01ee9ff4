// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/camerasystem.h"

#include <QObject>

/// The camera of the webcam window: finds and opens it, chooses the format and tries others when that fails. Failures
/// are only logged. User-interface thread.
class CameraSession : public QObject
{
    Q_OBJECT

public:
    /// Shows the video in output. Both outlive the session.
    CameraSession(CameraSystem& system, QVideoWidget& output);

    /// Call regularly. Opens the first camera of a changed list, starts a camera that has stopped, and tries the
    /// system's default where none is listed.
    void checkDevices();

    /// Opens a camera of the list; any other index is only logged.
    void open(int index);

    /// Opens the first camera, and from then on those that are plugged in.
    void resume();

    /// Deactivates the camera. The next checkDevices() activates it again.
    void suspend();

    /// Releases the camera. Until resume() only the system's default is opened.
    void close();

    bool isActive() const { return m_camera != nullptr && m_camera->isActive(); }

    /// The video's width by its height; 1 while there is none.
    float aspect() const;

signals:
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
