// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/camerasession.h"

#include "app/sclogger.h"
#include "overlays/cameraformats.h"

#include <QVideoWidget>

#include <algorithm>
#include <exception>

namespace {

const auto kInitializing = QStringLiteral("when initializing camera");
const auto kStarting = QStringLiteral("when starting camera");
const auto kStopping = QStringLiteral("when stopping camera");

/// A failure's two texts: with what the exception says, and where it says nothing.
struct Failure
{
    QString known;
    QString unknown;
};

Failure exceptionWhen(const QString& what)
{
    return {QStringLiteral("Exception %1: %2").arg(what, QStringLiteral("%1")),
            QStringLiteral("Unknown exception %1").arg(what)};
}

/// Does it, and logs what it throws.
///
/// @return whether it threw nothing
template <typename Work>
bool attempt(const Failure& failure, const Work& work)
{
    try {
        work();
        return true;
    } catch (const std::exception& exception) {
        SCLogger::error(failure.known.arg(QString::fromUtf8(exception.what())));
    } catch (...) {
        SCLogger::error(failure.unknown);
    }
    return false;
}

/// Puts width, height and frame rate into the text.
QString withFormat(const QString& text, const CameraFormat& format)
{
    return text.arg(format.resolution.width()).arg(format.resolution.height()).arg(format.maximumFps);
}

bool areSame(const QList<CameraDevice>& left, const QList<CameraDevice>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const CameraDevice& one, const CameraDevice& other) { return one.id == other.id; });
}

void logFormats(const CameraDevice& device)
{
    SCLogger::info(QStringLiteral("Available formats for camera %1:").arg(device.description));
    for (qsizetype index = 0; index < device.formats.size(); ++index) {
        const CameraFormat& format = device.formats.at(index);
        SCLogger::info(QStringLiteral("  Format %1: %2x%3 @ %4-%5 FPS, pixel format: %6")
                           .arg(index)
                           .arg(format.resolution.width())
                           .arg(format.resolution.height())
                           .arg(format.minimumFps)
                           .arg(format.maximumFps)
                           .arg(format.pixelFormat));
    }
}

} // namespace

CameraSession::CameraSession(CameraSystem& system, QVideoWidget& output) : m_system(system), m_output(output) {}

void CameraSession::checkDevices()
{
    const QList<CameraDevice> devices = m_system.devices();
    if (!devices.isEmpty() && areSame(devices, m_cameras)) {
        if (m_camera != nullptr && !m_camera->isActive())
            QMetaObject::invokeMethod(this, &CameraSession::restart, Qt::QueuedConnection);
        reportActive();
        return;
    }
    SCLogger::info(QStringLiteral("Found %1 camera devices").arg(devices.size()));
    m_cameras = devices;
    if (devices.isEmpty())
        onNoCamera();
    else
        QMetaObject::invokeMethod(this, &CameraSession::openFirst, Qt::QueuedConnection);
}

void CameraSession::openFirst()
{
    // A closed window opens its camera when it is shown.
    if (m_isClosed)
        stop();
    else
        open(0);
}

void CameraSession::onNoCamera()
{
    SCLogger::warning(QStringLiteral("No camera devices detected. Check camera connection and permissions."));
    startFallback();
    QMetaObject::invokeMethod(this, &CameraSession::loadingEnded, Qt::QueuedConnection);
}

void CameraSession::open(int index)
{
    if (index < 0 || index >= m_cameras.size()) {
        SCLogger::warning(
            QStringLiteral("Invalid camera index: %1 (available cameras: %2)").arg(index).arg(m_cameras.size()));
        return;
    }
    const CameraDevice device = m_cameras.at(index);
    SCLogger::info(QStringLiteral("Selecting camera at index %1: %2").arg(index).arg(device.description));
    stop();
    if (!attempt(exceptionWhen(kInitializing), [&] { create(device); })) {
        emit loadingEnded();
        return;
    }
    if (!attempt(exceptionWhen(kInitializing), [&] { startOrTryOthers(device); }))
        emit loadingEnded();
    reportActive();
    m_output.show();
    m_output.repaint();
}

void CameraSession::reportActive()
{
    if (isActive())
        emit loadingEnded();
}

void CameraSession::create(const CameraDevice& device)
{
    m_camera = m_system.createCamera(device);
    if (const auto format = cameraformats::best(device.formats)) {
        SCLogger::info(withFormat(QStringLiteral("Setting camera format: %1x%2 @ %3 FPS"), *format));
        m_camera->setFormat(*format);
    } else {
        SCLogger::warning(QStringLiteral("No suitable camera format found, will try alternative formats"));
    }
    m_camera->beginSession(&m_output);
}

void CameraSession::startOrTryOthers(const CameraDevice& device)
{
    try {
        start();
    } catch (...) {
        SCLogger::warning(QStringLiteral("Failed to start camera with selected format, trying alternatives"));
        tryOtherFormats(device);
    }
}

void CameraSession::restart()
{
    if (!attempt(exceptionWhen(kStarting), [this] { start(); }))
        emit loadingEnded();
}

/// Throws what the other formats throw.
void CameraSession::start()
{
    if (m_camera == nullptr) {
        SCLogger::warning(QStringLiteral("Cannot start camera: camera is null"));
    } else {
        // The window may be closed, and the camera be gone, while it starts.
        const CameraDevice device = m_camera->device();
        if (!attempt(exceptionWhen(kStarting), [this] { activate(); }))
            tryOtherFormats(device);
    }
    emit loadingEnded();
}

void CameraSession::activate()
{
    if (m_camera->isInSession()) {
        m_camera->setVideoOutput(&m_output);
        m_output.setVisible(true);
        m_output.repaint();
    }
    m_camera->activate();
    SCLogger::info(QStringLiteral("Camera started successfully"));
    reportFormat();
    emit started();
}

void CameraSession::reportFormat()
{
    const std::optional<CameraFormat> format = m_camera->format();
    if (!format || format->resolution.isEmpty()) {
        SCLogger::warning(QStringLiteral("Camera format is null or resolution is not valid"));
        return;
    }
    SCLogger::info(withFormat(QStringLiteral("Active camera format: %1x%2 @ %3 FPS"), *format));
    emit aspectChanged(aspect());
}

void CameraSession::tryOtherFormats(const CameraDevice& device)
{
    SCLogger::info(QStringLiteral("Trying alternative camera formats..."));
    if (m_camera == nullptr) {
        SCLogger::warning(QStringLiteral("Cannot try alternative formats: camera is null"));
        return;
    }
    if (device.formats.isEmpty()) {
        SCLogger::warning(QStringLiteral("No video formats available for this camera"));
        return;
    }
    logFormats(device);
    if (const auto format = cameraformats::common(device.formats)) {
        SCLogger::info(withFormat(QStringLiteral("Trying preferred format: %1x%2 @ %3 FPS"), *format));
        m_camera->setFormat(*format);
        m_camera->activate();
        return;
    }
    const QList<CameraFormat> formats = cameraformats::smallestFirst(device.formats);
    if (std::any_of(formats.begin(), formats.end(), [this](const CameraFormat& format) { return tryFormat(format); }))
        return;
    SCLogger::warning(QStringLiteral("All camera formats failed, trying with default format"));
    attempt({QStringLiteral("Failed to start camera with default format: %1"),
             QStringLiteral("Unknown exception when starting camera with default format")},
            [this] { m_camera->activate(); });
}

bool CameraSession::tryFormat(const CameraFormat& format)
{
    SCLogger::info(withFormat(QStringLiteral("Trying format: %1x%2 @ %3 FPS"), format));
    try {
        m_camera->setFormat(format);
        m_camera->activate();
        return true;
    } catch (...) {
        SCLogger::warning(QStringLiteral("Failed to use format: %1x%2")
                              .arg(format.resolution.width())
                              .arg(format.resolution.height()));
        return false;
    }
}

void CameraSession::startFallback()
{
    SCLogger::info(QStringLiteral("Attempting to use fallback camera..."));
    m_camera.reset();
    attempt({QStringLiteral("Failed to initialize fallback camera: %1"),
             QStringLiteral("Unknown exception when initializing fallback camera")},
            [this] {
                m_camera = m_system.createCamera(m_system.defaultDevice());
                m_camera->beginSession(&m_output);
                m_camera->activate();
                SCLogger::info(QStringLiteral("Fallback camera started"));
                emit fallbackStarted();
            });
}

void CameraSession::stop()
{
    SCLogger::info(QStringLiteral("Stopping camera"));
    if (m_camera == nullptr)
        return;
    if (!m_camera->isActive()) {
        SCLogger::info(QStringLiteral("Camera already stopped"));
    } else {
        attempt(exceptionWhen(kStopping), [this] {
            m_camera->deactivate();
            SCLogger::info(QStringLiteral("Camera stopped successfully"));
        });
    }
    m_camera->endSession();
    m_camera.reset();
}

void CameraSession::resume()
{
    m_isClosed = false;
    if (m_cameras.isEmpty())
        return;
    SCLogger::info(QStringLiteral("Selecting first available camera after window show"));
    open(0);
}

void CameraSession::suspend()
{
    if (!isActive())
        return;
    SCLogger::info(QStringLiteral("Stopping camera when window is hidden"));
    attempt(exceptionWhen(kStopping), [this] { m_camera->deactivate(); });
}

void CameraSession::close()
{
    m_isClosed = true;
    stop();
}

float CameraSession::aspect() const
{
    const std::optional<CameraFormat> format = m_camera != nullptr ? m_camera->format() : std::nullopt;
    if (!format || format->resolution.isEmpty())
        return 1.0F;
    return static_cast<float>(format->resolution.width()) / static_cast<float>(format->resolution.height());
}
