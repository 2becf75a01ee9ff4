// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

#include <memory>

class Activity;
class Notices;
class QSettings;
class RecordingView;
class SCFileManager;

namespace messagebox {
struct Action;
}

namespace Ui {
class FilePage;
}

/// The list of files, its filters and actions. Owns the files' library. User-interface thread.
class FilePage : public QWidget
{
    Q_OBJECT

public:
    FilePage(const QSettings& settings, const Activity& activity, Notices& notices);
    ~FilePage() override;

    /// type is "video", "audio" or "screenshot". Shown after the next refresh.
    void addFile(const QString& path, const QString& type);

    /// Also keeps the entries of recordings that are moved.
    void follow(const RecordingView& view);

    /// This file cannot be deleted. It is new again when its recording is over.
    void setRecordedFile(const QString& path, const QString& type);

    /// Also shows the errors of the recording.
    void onRecordingOver();

    /// Fills the list and selects the newest file. One that is new leaves no filter that hides it.
    void showNewest();
    /// The same with the screenshot filter.
    void showScreenshots();

    /// What a message that the file is saved offers.
    QList<messagebox::Action> actionsOn(const QString& path);

    void retranslate();

private:
    void connectControls();
    void connectList();
    void fillView();
    void showCounts();
    void showState();
    QString filter() const;
    void uncoverNewFile();
    void deleteByKey();
    void onError(const QString& message);
    void onFileMissing(const QString& path);
    void openFolder();
    void onNotOpened(const QString& path);

    std::unique_ptr<Ui::FilePage> m_ui;
    const QSettings& m_settings;
    const Activity& m_activity;
    Notices& m_notices;
    SCFileManager* m_files;
    QString m_newType;
    QString m_recordedType;
    QStringList m_pendingErrors;
};
