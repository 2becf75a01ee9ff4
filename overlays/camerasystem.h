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

struct CameraDevice
{
    /// Unique while plugged in; empty for no camera.
    QByteArray id;
    QString description;
    bool isDefault = false;
    QList<CameraFormat> formats;
};

/// An opened camera and its session with a video widget. Functions that are not noexcept throw on failure and may be
/// called again. User-interface thread.
class Camera
{
public:
    virtual ~Camera() = default;

    virtual CameraDevice device() const = 0;

    virtual std::optional<CameraFormat> format() const noexcept = 0;

    /// One of the device's.
    virtual void setFormat(const CameraFormat& format) = 0;

    virtual void beginSession(QVideoWidget* output) = 0;

    virtual bool isInSession() const noexcept = 0;

    virtual void setVideoOutput(QVideoWidget* output) = 0;

    virtual void endSession() noexcept = 0;

    virtual bool isActive() const noexcept = 0;

    /// Throws what the system reports at once; later failures are only logged.
    virtual void activate() = 0;

    virtual void deactivate() = 0;
};

class CameraSystem
{
public:
    virtual ~CameraSystem() = default;

    /// Any thread, after a first call on the user-interface thread.
    virtual QList<CameraDevice> devices() const noexcept = 0;

    /// Without an id where there is no camera.
    virtual CameraDevice defaultDevice() const noexcept = 0;

    /// Not active yet; never active for an empty id. Throws for a device that is gone. User-interface thread.
    virtual std::unique_ptr<Camera> createCamera(const CameraDevice& device) = 0;
};
