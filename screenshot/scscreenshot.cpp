#include "screenshot/scscreenshot.h"

#include "app/settings.h"
#include "platform/files/disk_sync.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>

namespace {

/// Without a mark for the half of the day, "hh" counts to 23.
const auto kTimePattern = QStringLiteral("yyyy-MM-dd_hh-mm-ss");
constexpr int kEncodersDefaultQuality = -1;

void makeFolder(const QDir& folder)
{
    if (!folder.exists())
        folder.mkpath(QStringLiteral("."));
}

/// All of it or nothing: a disk that fills leaves no half of a picture, nor takes an older one away.
bool write(const QPixmap& pixmap, const QString& path, const QByteArray& encoder)
{
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly) || !pixmap.save(&file, encoder.constData(), kEncodersDefaultQuality))
        return false;
    // The commit by itself would notice neither that the buffer cannot be written out nor that the disk refuses it.
    return file.flush() && platform::syncToDisk(file.handle()) && file.commit();
}

} // namespace

SCScreenshot::SCScreenshot(QObject* parent) : QObject(parent), m_settings(openSettings())
{
    readSaveLocation();
}

SCScreenshot::~SCScreenshot() = default;

void SCScreenshot::readSaveLocation()
{
    m_saveLocation = m_settings->value(settingskeys::kScreenshotSaveLocation).toString();
    makeFolder(QDir(m_saveLocation));
}

QString SCScreenshot::format() const
{
    return m_settings->value(settingskeys::kScreenshotFormat).toString().toLower();
}

QString SCScreenshot::generateFileName() const
{
    return QStringLiteral("Screenshot_%1.%2").arg(QDateTime::currentDateTime().toString(kTimePattern), format());
}

bool SCScreenshot::saveScreenshot(const QPixmap& pixmap, const QString& path)
{
    // The folder may have been chosen anew since the last shot.
    readSaveLocation();
    if (pixmap.isNull()) {
        emit error(tr("Cannot save empty screenshot"));
        return false;
    }
    const QString target = path.isEmpty() ? m_saveLocation + u'/' + generateFileName() : path;
    makeFolder(QFileInfo(target).absoluteDir());
    if (!write(pixmap, target, format().toUpper().toLocal8Bit())) {
        emit error(tr("Failed to save screenshot to") + u' ' + target);
        return false;
    }
    m_lastSavedPath = target;
    emit screenshotSaved(target);
    return true;
}
