// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/fakecameras.h"

#include <QImage>
#include <QMutexLocker>
#include <QPainter>
#include <QPointer>
#include <QTimer>
#include <QVideoFrame>
#include <QVideoSink>
#include <QVideoWidget>

#include <cstring>

namespace {

QVideoFrame frameOf(const QImage& image)
{
    const QImage pixels = image.convertToFormat(QImage::Format_ARGB32);
    QVideoFrame frame(QVideoFrameFormat(pixels.size(), QVideoFrameFormat::Format_BGRA8888));
    frame.map(QVideoFrame::WriteOnly);
    for (int row = 0; row < pixels.height(); ++row) {
        std::memcpy(frame.bits(0) + static_cast<qsizetype>(row) * frame.bytesPerLine(0), pixels.constScanLine(row),
                    static_cast<std::size_t>(pixels.bytesPerLine()));
    }
    frame.unmap();
    return frame;
}

QImage imageFor(const QSize& size, const QColor& colour)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter(&image).fillRect(0, 0, size.width(), size.height() / 2, colour);
    return image;
}

/// Delivers one frame again and again: a video widget that was resized may show the next frame only.
class FakeCamera : public Camera
{
public:
    FakeCamera(FakeCameras& cameras, const CameraDevice& device) : m_cameras(cameras), m_device(device)
    {
        constexpr int kFrameIntervalMs = 100;
        m_frameTimer.setInterval(kFrameIntervalMs);
        QObject::connect(&m_frameTimer, &QTimer::timeout, [this] { deliverFrame(); });
        ++m_cameras.openCameras;
        m_cameras.isActive = false;
    }

    ~FakeCamera() override
    {
        --m_cameras.openCameras;
        m_cameras.isActive = false;
        m_cameras.calls << QStringLiteral("destroy");
    }

    CameraDevice device() const override { return m_device; }

    std::optional<CameraFormat> format() const noexcept override { return m_format ? m_format : m_cameras.ownFormat; }

    void setFormat(const CameraFormat& format) override
    {
        const QSize size = format.resolution;
        m_cameras.call(QStringLiteral("format %1x%2").arg(size.width()).arg(size.height()));
        m_format = format;
    }

    void beginSession(QVideoWidget* output) override
    {
        m_cameras.call(QStringLiteral("session"));
        m_inSession = true;
        m_output = output;
    }

    bool isInSession() const noexcept override { return m_inSession; }

    void setVideoOutput(QVideoWidget* output) override
    {
        m_cameras.call(QStringLiteral("output"));
        m_output = output;
    }

    void endSession() noexcept override
    {
        m_cameras.calls << QStringLiteral("end session");
        m_inSession = false;
        m_output = nullptr;
    }

    bool isActive() const noexcept override { return m_active; }

    void activate() override
    {
        m_cameras.call(QStringLiteral("activate"));
        setActive(!m_device.id.isEmpty());
        if (!m_active || m_output == nullptr)
            return;
        const QSize size = format() ? format()->resolution : QSize();
        if (size.isEmpty())
            return;
        m_frame = frameOf(imageFor(size, m_cameras.colour));
        deliverFrame();
        m_frameTimer.start();
    }

    void deactivate() override
    {
        m_cameras.call(QStringLiteral("deactivate"));
        setActive(false);
    }

private:
    void deliverFrame()
    {
        if (m_output != nullptr)
            m_output->videoSink()->setVideoFrame(m_frame);
    }

    void setActive(bool active)
    {
        if (!active)
            m_frameTimer.stop();
        m_active = active;
        m_cameras.isActive = active;
    }

    FakeCameras& m_cameras;
    CameraDevice m_device;
    std::optional<CameraFormat> m_format;
    bool m_inSession = false;
    QPointer<QVideoWidget> m_output;
    QVideoFrame m_frame;
    QTimer m_frameTimer;
    bool m_active = false;
};

} // namespace

CameraDevice FakeCameras::device(const char* name, const QList<CameraFormat>& formats)
{
    return {name, QLatin1String(name), false, formats};
}

CameraFormat FakeCameras::format(int width, int height, float maximumFps)
{
    return {QSize(width, height), 5, maximumFps, 17};
}

void FakeCameras::plugIn(const QList<CameraDevice>& devices)
{
    const QMutexLocker locker(&m_mutex);
    m_devices = devices;
    if (!m_devices.isEmpty())
        m_devices.front().isDefault = true;
}

QList<CameraDevice> FakeCameras::devices() const noexcept
{
    if (onListed)
        onListed();
    const QMutexLocker locker(&m_mutex);
    return m_devices;
}

CameraDevice FakeCameras::defaultDevice() const noexcept
{
    return devices().value(0);
}

std::unique_ptr<Camera> FakeCameras::createCamera(const CameraDevice& device)
{
    call(QStringLiteral("create %1").arg(device.description));
    return std::make_unique<FakeCamera>(*this, device);
}

void FakeCameras::call(const QString& name)
{
    calls << name;
    if (onCall)
        onCall(name);
}
