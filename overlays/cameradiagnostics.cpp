#include "overlays/cameradiagnostics.h"

#include "app/sclogger.h"
#include "overlays/camerasystem.h"

#include <QCoreApplication>
#include <QDir>

namespace {

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
