// SPDX-License-Identifier: GPL-3.0-or-later
#include "screenshot/scscreenshot.h"

#include "app/savefolder.h"
#include "app/settings.h"
#include "platform/files/disk_sync.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>

namespace {

const auto kTimePattern = QStringLiteral("yyyy-MM-dd_hh-mm-ss");
constexpr int kEncodersDefaultQuality = -1;

void makeFolder(const QDir& folder)
{
    if (!folder.exists())
        folder.mkpath(QStringLiteral("."));
}

/// On a full disk an older image stays.
bool write(const QPixmap& pixmap, const QString& path, const QByteArray& encoder)
{
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly) || !pixmap.save(&file, encoder.constData(), kEncodersDefaultQuality))
        return false;
    // commit() alone reports neither a failing flush nor a failing disk.
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
    if (QDir::isAbsolutePath(m_saveLocation))
        makeFolder(QDir(m_saveLocation));
}

QString SCScreenshot::usableFolder()
{
    const SaveFolder folder = usableSaveFolder(m_saveLocation, settingskeys::kScreenshotSaveLocation);
    if (folder.isReplaced)
        emit folderReplaced();
    return folder.path;
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
    // The setting may have changed.
    readSaveLocation();
    if (pixmap.isNull()) {
        emit error(tr("Cannot save empty screenshot"));
        return false;
    }
    const QString target = path.isEmpty() ? usableFolder() + u'/' + generateFileName() : path;
    makeFolder(QFileInfo(target).absoluteDir());
    if (!write(pixmap, target, format().toUpper().toLocal8Bit())) {
        emit error(tr("Failed to save screenshot to") + u' ' + target);
        return false;
    }
    m_lastSavedPath = target;
    emit screenshotSaved(target);
    return true;
}
