// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"

#include "app/appidentity.h"
#include "app/sclogger.h"
#include "app/settingsfile.h"
#include "app/settingstables.h"
#include "app/shownpath.h"
#include "platform/files/private_files.h"
#include "platform/process/settings_format.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QSettings::Format storeFormat()
{
    // Registering the format is process-wide and cannot be undone: once.
    static const QSettings::Format format = platform::settingsFormat(settingsfile::read, settingsfile::write);
    return format;
}

QString saveFolder(QStandardPaths::StandardLocation location)
{
    return QStandardPaths::writableLocation(location) + QLatin1String("/Kestrano");
}

/// Keeps what the next write to the store would replace.
void keepCopy(const QString& path)
{
    const QString copy = path + QLatin1String(".unreadable");
    QFile::remove(copy);
    QFile::copy(path, copy);
}

/// A store that is not there yet counts as readable, and so does the registry.
bool canBeRead(const QString& path)
{
    return !QFile::exists(path) || QFile(path).open(QIODevice::ReadOnly);
}

/// The registry is private. A store that is not there yet gets the permissions of the empty one.
void makePrivate(const QSettings& settings)
{
    if (settings.format() == QSettings::NativeFormat)
        return;
    platform::makePrivateFolder(QFileInfo(settings.fileName()).path());
    QFile store(settings.fileName());
    if (!store.exists())
        store.open(QIODevice::WriteOnly | QIODevice::NewOnly, platform::kPrivateFile);
}

void reportTrouble(const QSettings& settings)
{
    static bool reported = false;
    const QString trouble = settingsTrouble(settings);
    if (trouble.isEmpty() || reported)
        return;
    reported = true;
    SCLogger::warning(trouble);
}

} // namespace

std::unique_ptr<QSettings> openSettings()
{
    auto settings =
        std::make_unique<QSettings>(storeFormat(), QSettings::UserScope, QLatin1String(appidentity::kOrganizationName),
                                    QLatin1String(appidentity::kApplicationName));
    settings->setFallbacksEnabled(false);
    makePrivate(*settings);
    if (settings->status() == QSettings::FormatError)
        keepCopy(settings->fileName());
    reportTrouble(*settings);
    return settings;
}

QString settingsTrouble(const QSettings& settings)
{
    const QString path = shownPath(QDir::toNativeSeparators(settings.fileName()));
    if (settings.status() == QSettings::FormatError)
        return QStringLiteral("The settings in %1 cannot be understood; a copy is kept beside them, and the defaults "
                              "apply")
            .arg(path);
    if (!canBeRead(settings.fileName()))
        return QStringLiteral("The settings in %1 cannot be read; the defaults apply").arg(path);
    if (settings.status() == QSettings::AccessError || !settings.isWritable())
        return QStringLiteral("The settings in %1 cannot be written; changes last until the program ends").arg(path);
    return {};
}

std::map<QString, QVariant> defaultSettings()
{
    using namespace settingskeys;
    return {{kLanguage, settingstables::kLanguageCodes.at(0)},
            {kFirstRun, true},
            {kRecordingHotkey, QStringLiteral("F9")},
            {kScreenshotHotkey, QStringLiteral("F10")},
            {kScreenSwitch, true},
            {kSpeakerSwitch, true},
            {kMicSwitch, false},
            {kWebcamSwitch, false},
            {kRecordingFormat, settingstables::kRecordingFormats.at(0)},
            {kRecordingSaveLocation, saveFolder(QStandardPaths::MoviesLocation)},
            {kScreenshotFormat, settingstables::kScreenshotFormats.at(0)},
            {kScreenshotSaveLocation, saveFolder(QStandardPaths::PicturesLocation)},
            {kMouseSwitch, true},
            {kMouseShowCursor, true},
            {kMouseShowHighlight, true}};
}

void applyDefaultSettings(QSettings& settings)
{
    for (const auto& [key, value] : defaultSettings()) {
        if (!settings.contains(key))
            settings.setValue(key, value);
    }
}
