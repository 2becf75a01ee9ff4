// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>

#include <memory>
#include <optional>

class QVideoWidget;

struct CameraFormat
{
    /// Empty when unknown.
    QSize resolution;
    /// Frames per second.
    float minimumFps = 0;
    float maximumFps = 0;
    /// A QVideoFrameFormat::PixelFormat.
    int pixelFormat = 0;

    bool operator==(const CameraFormat&) const = default;
};

/// A camera as the system lists it.
struct CameraDevice
{
    /// Unique while plugged in; empty for no camera.
    QByteArray id;
    QString description;
    bool isDefault = false;
    /// In the system's order.
    QList<CameraFormat> formats;
};

/// An opened camera and the session that carries its video to a widget. Functions that are not noexcept throw on
/// failure and may be called again. User-interface thread.
class Camera
{
public:
    Camera() = default;
    virtual ~Camera() = default;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    virtual CameraDevice device() const = 0;

    /// The format in use, if known.
    virtual std::optional<CameraFormat> format() const noexcept = 0;

    /// @param format one of the device's
    virtual void setFormat(const CameraFormat& format) = 0;

    virtual void beginSession(QVideoWidget* output) = 0;

    virtual bool isInSession() const noexcept = 0;

    /// Sets the output of the running session again.
    virtual void setVideoOutput(QVideoWidget* output) = 0;

    virtual void endSession() noexcept = 0;

    virtual bool isActive() const noexcept = 0;

    /// Throws what the system reports at once; later failures are only logged, and the camera may not be active.
    virtual void activate() = 0;

    virtual void deactivate() = 0;
};

class CameraSystem
{
public:
    CameraSystem() = default;
    virtual ~CameraSystem() = default;
    CameraSystem(const CameraSystem&) = delete;
    CameraSystem& operator=(const CameraSystem&) = delete;

    /// The cameras that are plugged in. Any thread, after a first call on the user-interface thread.
    virtual QList<CameraDevice> devices() const noexcept = 0;

    /// Without an id where there is no camera.
    virtual CameraDevice defaultDevice() const noexcept = 0;

    /// A camera that is not active yet; one that never becomes active for an empty id. Throws for a device that is
    /// gone. User-interface thread.
    virtual std::unique_ptr<Camera> createCamera(const CameraDevice& device) = 0;
};
