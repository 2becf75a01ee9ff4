// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/qtcamerasystem.h"

#include "app/sclogger.h"

#include <QCamera>
#include <QCameraDevice>
#include <QCoreApplication>
#include <QDir>
#include <QMediaCaptureSession>
#include <QMediaDevices>
#include <QVideoWidget>

#include <algorithm>
#include <stdexcept>

namespace {

CameraFormat toFormat(const QCameraFormat& format)
{
    return {format.resolution(), format.minFrameRate(), format.maxFrameRate(), static_cast<int>(format.pixelFormat())};
}

CameraDevice toDevice(const QCameraDevice& device)
{
    CameraDevice result{device.id(), device.description(), device.isDefault(), {}};
    const QList<QCameraFormat> formats = device.videoFormats();
    for (const QCameraFormat& format : formats)
        result.formats.append(toFormat(format));
    return result;
}

void logFailure(QCamera::Error error, const QString& text)
{
    if (error != QCamera::NoError)
        SCLogger::error(QStringLiteral("The camera reports a failure: %1").arg(text));
}

class QtCamera : public Camera
{
public:
    explicit QtCamera(const QCameraDevice& device) : m_device(device), m_camera(device)
    {
        // A failure may be reported long after the start, when no exception can report it.
        QObject::connect(&m_camera, &QCamera::errorOccurred, &m_camera, &logFailure);
    }

    CameraDevice device() const override { return toDevice(m_device); }

    std::optional<CameraFormat> format() const noexcept override
    {
        const QCameraFormat format = m_camera.cameraFormat();
        if (format.isNull())
            return std::nullopt;
        return toFormat(format);
    }

    void setFormat(const CameraFormat& format) override
    {
        const QList<QCameraFormat> formats = m_device.videoFormats();
        const auto found = std::find_if(formats.begin(), formats.end(),
                                        [&](const QCameraFormat& known) { return toFormat(known) == format; });
        if (found == formats.end())
            throw std::invalid_argument("the camera has no such format");
        m_camera.setCameraFormat(*found);
    }

    void beginSession(QVideoWidget* output) override
    {
        m_session = std::make_unique<QMediaCaptureSession>();
        m_session->setCamera(&m_camera);
        m_session->setVideoOutput(output);
    }

    bool isInSession() const noexcept override { return m_session != nullptr; }

    void setVideoOutput(QVideoWidget* output) override { m_session->setVideoOutput(output); }

    void endSession() noexcept override
    {
        if (m_session == nullptr)
            return;
        m_session->setVideoOutput(nullptr);
        m_session->setCamera(nullptr);
        m_session.reset();
    }

    bool isActive() const noexcept override { return m_camera.isActive(); }

    void activate() override
    {
        QString failure;
        const auto watch = QObject::connect(&m_camera, &QCamera::errorOccurred, &m_camera,
                                            [&failure](QCamera::Error error, const QString& text) {
                                                if (error != QCamera::NoError)
                                                    failure = text.isEmpty() ? QStringLiteral("unknown error") : text;
                                            });
        m_camera.start();
        QObject::disconnect(watch);
        if (!failure.isEmpty())
            throw std::runtime_error(failure.toStdString());
    }

    void deactivate() override { m_camera.stop(); }

private:
    QCameraDevice m_device;
    QCamera m_camera;
    std::unique_ptr<QMediaCaptureSession> m_session;
};

void writePlugIns(const QString& libraryPath)
{
    SCLogger::info(QStringLiteral("  - %1").arg(libraryPath));
    const QDir folder(libraryPath + QLatin1String("/multimedia"));
    if (!folder.exists()) {
        SCLogger::warning(QStringLiteral("    * No multimedia directory in %1").arg(libraryPath));
        return;
    }
    SCLogger::info(QStringLiteral("    * multimedia plugins:"));
    const QStringList entries = folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QString& entry : entries)
        SCLogger::info(QStringLiteral("      - %1").arg(entry));
}

void writeDevice(const CameraDevice& device)
{
    SCLogger::info(QStringLiteral("Camera: %1").arg(device.description));
    SCLogger::info(QStringLiteral("  - ID: %1").arg(QString::fromUtf8(device.id)));
    SCLogger::info(QStringLiteral("  - Is default: %1").arg(QLatin1String(device.isDefault ? "Yes" : "No")));
    SCLogger::info(QStringLiteral("  - Supported formats: %1").arg(device.formats.size()));
    for (const CameraFormat& format : device.formats) {
        SCLogger::info(QStringLiteral("    * %1x%2 @ %3 FPS")
                           .arg(format.resolution.width())
                           .arg(format.resolution.height())
                           .arg(format.maximumFps));
    }
}

} // namespace

QList<CameraDevice> QtCameraSystem::devices() const noexcept
{
    QList<CameraDevice> result;
    const QList<QCameraDevice> devices = QMediaDevices::videoInputs();
    for (const QCameraDevice& device : devices)
        result.append(toDevice(device));
    return result;
}

CameraDevice QtCameraSystem::defaultDevice() const noexcept
{
    return toDevice(QMediaDevices::defaultVideoInput());
}

std::unique_ptr<Camera> QtCameraSystem::createCamera(const CameraDevice& device)
{
    if (device.id.isEmpty())
        return std::make_unique<QtCamera>(QCameraDevice());
    const QList<QCameraDevice> devices = QMediaDevices::videoInputs();
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [&](const QCameraDevice& known) { return known.id() == device.id; });
    if (found == devices.end())
        throw std::runtime_error("the camera is not there any more");
    return std::make_unique<QtCamera>(*found);
}

void writeCameraDiagnostics(const CameraSystem& cameras)
{
    SCLogger::info(QStringLiteral("Checking Qt Multimedia plugins..."));
    SCLogger::info(QStringLiteral("Qt version: %1").arg(QLatin1String(QT_VERSION_STR)));
    SCLogger::info(QStringLiteral("Qt plugin paths:"));
    const QStringList libraryPaths = QCoreApplication::libraryPaths();
    for (const QString& path : libraryPaths)
        writePlugIns(path);
    const QList<CameraDevice> devices = cameras.devices();
    if (devices.isEmpty())
        SCLogger::warning(QStringLiteral("QMediaDevices reports NO video input devices are available"));
    else
        SCLogger::info(QStringLiteral("QMediaDevices reports video input devices are available"));
    for (const CameraDevice& device : devices)
        writeDevice(device);
}
