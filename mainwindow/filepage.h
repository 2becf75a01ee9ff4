// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

#include <memory>

class Activity;
class QSettings;
class SCFileManager;

namespace Ui {
class FilePage;
}

/// The page of the files that were made: the list, its filters and what is done with it. Owns the library of files.
/// User-interface thread.
class FilePage : public QWidget
{
    Q_OBJECT

public:
    /// @param settings the folders that the page's button opens
    FilePage(const QSettings& settings, const Activity& activity);
    ~FilePage() override;

    /// Enters a file that was begun or saved; type is "video", "audio" or "screenshot". The list shows it after the
    /// next refresh.
    void addFile(const QString& path, const QString& type);

    /// It cannot be deleted.
    void setRecordedFile(const QString& path);

    /// Also shows the errors that could not be shown meanwhile.
    void onRecordingOver();

    /// Fills the list and selects the newest file, for a page that comes into view.
    void showNewest();
    /// The same with the filter for screenshots.
    void showScreenshots();

    void retranslate();

private:
    void connectControls();
    void connectList();
    void fillView();
    void showCounts();
    void showState();
    QString filter() const;
    void onError(const QString& message);
    void openFolder();

    std::unique_ptr<Ui::FilePage> m_ui;
    const QSettings& m_settings;
    const Activity& m_activity;
    SCFileManager* m_files;
    QStringList m_pendingErrors;
};
