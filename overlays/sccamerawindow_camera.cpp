// The webcam window's camera: which one, in which format, and what is tried when it fails.

#include "app/sclogger.h"
#include "overlays/cameraformats.h"
#include "overlays/sccamerawindow.h"

#include <QLabel>
#include <QVideoWidget>

#include <algorithm>
#include <exception>

namespace {

constexpr int kLeastWidthPx = 200;

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

/// Puts width, height and frame rate into the text's three places.
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

void SCCameraWindow::checkDevices()
{
    const QList<CameraDevice> devices = m_system->devices();
    if (!devices.isEmpty() && areSame(devices, m_cameras)) {
        if (m_camera != nullptr && !m_camera->isActive())
            QMetaObject::invokeMethod(this, &SCCameraWindow::restartCamera, Qt::QueuedConnection);
        endLoading();
        return;
    }
    SCLogger::info(QStringLiteral("Found %1 camera devices").arg(devices.size()));
    m_cameras = devices;
    if (devices.isEmpty())
        onNoCamera();
    else
        QMetaObject::invokeMethod(this, &SCCameraWindow::openFirstCamera, Qt::QueuedConnection);
}

void SCCameraWindow::openFirstCamera()
{
    // The list is looked at all the time. A closed window opens a camera when it is shown, and needs no fallback's.
    if (m_isClosed)
        stopCamera();
    else
        onCameraSelected(0);
}

void SCCameraWindow::onNoCamera()
{
    SCLogger::warning(QStringLiteral("No camera devices detected. Check camera connection and permissions."));
    startFallbackCamera();
    QMetaObject::invokeMethod(m_loadingLabel, &QWidget::hide, Qt::QueuedConnection);
}

void SCCameraWindow::onCameraSelected(int index)
{
    if (index < 0 || index >= m_cameras.size()) {
        SCLogger::warning(
            QStringLiteral("Invalid camera index: %1 (available cameras: %2)").arg(index).arg(m_cameras.size()));
        return;
    }
    const CameraDevice device = m_cameras.at(index);
    SCLogger::info(QStringLiteral("Selecting camera at index %1: %2").arg(index).arg(device.description));
    stopCamera();
    if (!attempt(exceptionWhen(kInitializing), [&] { createCamera(device); })) {
        m_loadingLabel->hide();
        return;
    }
    // The other formats may fail as well.
    if (!attempt(exceptionWhen(kInitializing), [&] { startOrTryOthers(device); }))
        m_loadingLabel->hide();
    endLoading();
    m_videoWidget->show();
    m_videoWidget->repaint();
}

void SCCameraWindow::endLoading()
{
    if (m_camera != nullptr && m_camera->isActive())
        m_loadingLabel->hide();
}

void SCCameraWindow::createCamera(const CameraDevice& device)
{
    m_camera = m_system->createCamera(device);
    if (const auto format = cameraformats::best(device.formats)) {
        SCLogger::info(withFormat(QStringLiteral("Setting camera format: %1x%2 @ %3 FPS"), *format));
        m_camera->setFormat(*format);
    } else {
        SCLogger::warning(QStringLiteral("No suitable camera format found, will try alternative formats"));
    }
    m_camera->beginSession(m_videoWidget);
}

void SCCameraWindow::startOrTryOthers(const CameraDevice& device)
{
    try {
        startCamera();
    } catch (...) {
        SCLogger::warning(QStringLiteral("Failed to start camera with selected format, trying alternatives"));
        tryOtherFormats(device);
    }
}

void SCCameraWindow::restartCamera()
{
    if (!attempt(exceptionWhen(kStarting), [this] { startCamera(); }))
        m_loadingLabel->hide();
}

/// Throws what the other formats throw.
void SCCameraWindow::startCamera()
{
    if (m_camera == nullptr) {
        SCLogger::warning(QStringLiteral("Cannot start camera: camera is null"));
    } else {
        // The window may be closed, and the camera be gone, while it starts.
        const CameraDevice device = m_camera->device();
        if (!attempt(exceptionWhen(kStarting), [this] { activateCamera(); }))
            tryOtherFormats(device);
    }
    m_loadingLabel->hide();
}

void SCCameraWindow::activateCamera()
{
    if (m_camera->isInSession()) {
        m_camera->setVideoOutput(m_videoWidget);
        m_videoWidget->setVisible(true);
        m_videoWidget->repaint();
    }
    m_camera->activate();
    SCLogger::info(QStringLiteral("Camera started successfully"));
    fitToFormat();
    scheduleRefresh(m_timings.refreshAfterStartMs);
}

void SCCameraWindow::fitToFormat()
{
    const std::optional<CameraFormat> format = m_camera->format();
    if (!format || format->resolution.isEmpty()) {
        SCLogger::warning(QStringLiteral("Camera format is null or resolution is not valid"));
        return;
    }
    SCLogger::info(withFormat(QStringLiteral("Active camera format: %1x%2 @ %3 FPS"), *format));
    const float ratio = aspect();
    setMinimumSize(kLeastWidthPx, static_cast<int>(kLeastWidthPx / ratio));
    resize(width(), static_cast<int>(static_cast<float>(width()) / ratio));
}

void SCCameraWindow::tryOtherFormats(const CameraDevice& device)
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

bool SCCameraWindow::tryFormat(const CameraFormat& format)
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

void SCCameraWindow::startFallbackCamera()
{
    SCLogger::info(QStringLiteral("Attempting to use fallback camera..."));
    m_camera.reset();
    attempt({QStringLiteral("Failed to initialize fallback camera: %1"),
             QStringLiteral("Unknown exception when initializing fallback camera")},
            [this] {
                m_camera = m_system->createCamera(m_system->defaultDevice());
                m_camera->beginSession(m_videoWidget);
                m_camera->activate();
                SCLogger::info(QStringLiteral("Fallback camera started"));
                m_usesFallback = true;
                retranslate();
            });
}

void SCCameraWindow::stopCamera()
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

void SCCameraWindow::deactivateCamera()
{
    attempt(exceptionWhen(kStopping), [this] { m_camera->deactivate(); });
}

/// The picture's width by its height; 1 while there is none.
float SCCameraWindow::aspect() const
{
    const std::optional<CameraFormat> format = m_camera != nullptr ? m_camera->format() : std::nullopt;
    if (!format || format->resolution.isEmpty())
        return 1.0F;
    return static_cast<float>(format->resolution.width()) / static_cast<float>(format->resolution.height());
}
