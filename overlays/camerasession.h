// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/camerasystem.h"

#include <QObject>

/// Finds and opens the camera of the webcam window, and tries other formats when one fails. Failures are only logged.
/// User-interface thread.
class CameraSession : public QObject
{
    Q_OBJECT

public:
    /// Both outlive the session.
    CameraSession(CameraSystem& system, QVideoWidget& output);

    /// Call regularly. Opens the first camera of a changed list, starts one that has stopped, and tries the system's
    /// default where none is listed.
    void checkDevices();

    /// Any other index than the list's is only logged.
    void open(int index);

    /// Opens the first camera, and those plugged in later.
    void resume();

    /// The next checkDevices() activates the camera again.
    void suspend();

    /// Releases the camera; until resume() only the default one is opened.
    void close();

    bool isActive() const { return m_camera != nullptr && m_camera->isActive(); }

    /// Width by height; 1 without a video.
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
