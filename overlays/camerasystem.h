#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>

#include <memory>
#include <optional>

class QVideoWidget;

/// One way in which a camera can deliver its picture.
struct CameraFormat
{
    /// In pixels; empty where the camera does not say.
    QSize resolution;
    /// Frames per second.
    float minimumFps = 0;
    float maximumFps = 0;
    /// The number of a QVideoFrameFormat::PixelFormat.
    int pixelFormat = 0;

    bool operator==(const CameraFormat&) const = default;
};

/// A camera as the system lists it.
struct CameraDevice
{
    /// Stays the camera's own while it is plugged in; empty for no camera at all.
    QByteArray id;
    /// What the system calls it, for people.
    QString description;
    bool isDefault = false;
    /// In the order in which the system lists them.
    QList<CameraFormat> formats;
};

/// One opened camera, and the session that carries its picture to a video widget. Whatever can fail does so with an
/// exception, and may be tried again. User-interface thread.
class Camera
{
public:
    Camera() = default;
    virtual ~Camera() = default;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    /// What it was made for.
    virtual CameraDevice device() const = 0;

    /// The format in use; nothing while none is settled.
    virtual std::optional<CameraFormat> format() const noexcept = 0;

    /// @param format one of the device's
    virtual void setFormat(const CameraFormat& format) = 0;

    /// Begins a session with this camera and that output, which shows nothing until the camera is active.
    virtual void beginSession(QVideoWidget* output) = 0;

    /// Whether a session was begun and has not ended.
    virtual bool isInSession() const noexcept = 0;

    /// Gives the session that was begun its output once more.
    virtual void setVideoOutput(QVideoWidget* output) = 0;

    /// Takes output and camera from the session, if there is one.
    virtual void endSession() noexcept = 0;

    virtual bool isActive() const noexcept = 0;

    /// Starts the camera, with the format that was set or with its own. An exception tells of what the system reports
    /// at once; what it reports later is in the log alone, and the camera may not be active then.
    virtual void activate() = 0;

    virtual void deactivate() = 0;
};

/// The system's cameras.
class CameraSystem
{
public:
    CameraSystem() = default;
    virtual ~CameraSystem() = default;
    CameraSystem(const CameraSystem&) = delete;
    CameraSystem& operator=(const CameraSystem&) = delete;

    /// What is plugged in now, in the system's order. Any thread, once the user-interface thread has asked.
    virtual QList<CameraDevice> devices() const noexcept = 0;

    /// What the system would choose; a device without an id where there is no camera.
    virtual CameraDevice defaultDevice() const noexcept = 0;

    /// A camera that is not active yet. For no device (an empty id) it is one that never becomes active; a device that
    /// has gone is an exception. User-interface thread.
    virtual std::unique_ptr<Camera> createCamera(const CameraDevice& device) = 0;
};
