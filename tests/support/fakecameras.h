// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/camerasystem.h"

#include <QColor>
#include <QMutex>
#include <QStringList>

#include <functional>

/// Cameras that are not there, for a window that shows one: what is plugged in, what fails and what image is shown is
/// up to the test, and every call is written down. To show the webcam window with an image:
///
///     auto cameras = std::make_shared<FakeCameras>();
///     cameras->plugIn({FakeCameras::device("a", {FakeCameras::format(1280, 720, 30)})});
///     SCCameraWindow window(cameras);
///     window.show();
class FakeCameras : public CameraSystem
{
public:
    /// A camera whose id is its description.
    static CameraDevice device(const char* name, const QList<CameraFormat>& formats);
    static CameraFormat format(int width, int height, float maximumFps);

    /// The devices that are there from now on; the first one is the default.
    void plugIn(const QList<CameraDevice>& devices);

    /// What the cameras were asked to do: "create NAME", "format WxH", "session", "output", "activate", "deactivate",
    /// "end session", "destroy".
    QStringList calls;

    /// Called after each was written down; may throw what the camera is to throw.
    std::function<void(const QString& call)> onCall;

    /// Called whenever the devices are listed, on the thread that asks.
    std::function<void()> onListed;

    /// The format of a camera that was given none.
    std::optional<CameraFormat> ownFormat;

    /// How many cameras are open.
    int openCameras = 0;

    /// The camera that was opened last, while it is open, is active.
    bool isActive = false;

    /// The colour of the upper half of the image, whose lower half is white.
    QColor colour{0, 160, 80};

    QList<CameraDevice> devices() const noexcept override;
    CameraDevice defaultDevice() const noexcept override;
    std::unique_ptr<Camera> createCamera(const CameraDevice& device) override;

    void call(const QString& name);

private:
    mutable QMutex m_mutex;
    QList<CameraDevice> m_devices;
};
