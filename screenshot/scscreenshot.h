// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPixmap>
#include <QString>

#include <memory>

class QSettings;

/// Saves images with folder and format from the settings and the time as name. User-interface thread.
class SCScreenshot : public QObject
{
    Q_OBJECT

public:
    /// Creates the folder of the settings, unless it is relative.
    explicit SCScreenshot(QObject* parent = nullptr);
    ~SCScreenshot() override;

    /// "Screenshot_", the local time to the second, and the extension. A later screenshot of the same second replaces
    /// the earlier one.
    QString generateFileName() const;

    /// In the format of the settings, whatever the extension. Creates missing folders.
    /// @param path if empty, a generated name in the folder of the settings
    /// @return false after error()
    bool saveScreenshot(const QPixmap& pixmap, const QString& path);

    /// Of the last file written.
    QString lastSavedPath() const { return m_lastSavedPath; }

signals:
    void screenshotCaptured(QPixmap screenshot);
    void screenshotSaved(QString path);
    /// Translated.
    void error(QString errorMessage);
    /// The folder of the settings cannot be used, and the default one is (usableSaveFolder()).
    void folderReplaced();

private:
    void readSaveLocation();
    QString usableFolder();
    QString format() const;

    QString m_saveLocation;
    QString m_lastSavedPath;
    std::unique_ptr<QSettings> m_settings;
};
