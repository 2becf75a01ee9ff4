#pragma once

#include <QObject>
#include <QPixmap>
#include <QString>

#include <memory>

class QSettings;

/// Turns a grabbed picture into a file: folder and format come from the settings, the name from the clock. It shows
/// nothing; what went wrong is told by error(). User-interface thread.
class SCScreenshot : public QObject
{
    Q_OBJECT

public:
    /// Makes the folder of the settings if it is not there.
    explicit SCScreenshot(QObject* parent = nullptr);
    ~SCScreenshot() override;

    /// "Screenshot_", the local date and time to the second, and the format as extension: no folder. Two shots within a
    /// second get the same name, and the later one stays.
    QString generateFileName() const;

    /// Writes the picture in the format of the settings, whatever the path's extension is; returns when it is written.
    ///
    /// @param path where to; when empty, the folder of the settings and a generated name. Missing folders are made.
    /// @return whether the file was written; else error() has told why.
    bool saveScreenshot(const QPixmap& pixmap, const QString& path);

    /// The full path of the last file written; empty before the first one.
    QString lastSavedPath() const { return m_lastSavedPath; }

signals:
    /// For listeners that want the picture itself.
    void screenshotCaptured(QPixmap screenshot);

    void screenshotSaved(QString path);

    /// Nothing was written; the text is for the user.
    void error(QString errorMessage);

private:
    void readSaveLocation();
    QString format() const;

    QString m_saveLocation;
    QString m_lastSavedPath;
    std::unique_ptr<QSettings> m_settings;
};
