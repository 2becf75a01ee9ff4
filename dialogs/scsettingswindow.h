// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>
#include <QString>

#include <functional>
#include <memory>

class FolderField;
class QAbstractButton;
class QButtonGroup;
class QSettings;

namespace Ui {
class SCSettingsWindow;
}

/// Edits formats, folders, hotkeys and pointer options. Save writes them, unless a folder was typed that cannot be
/// used; nothing can be changed until the disk has answered. A folder is written when chosen, also before a cancel.
/// Shown with dialogwindow::showOver(). User-interface thread.
class SCSettingsWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// @throw std::out_of_range for an unknown format in the settings
    explicit SCSettingsWindow(QWidget* parent);
    ~SCSettingsWindow() override;

protected:
    void closeEvent(QCloseEvent* event) override;

signals:
    void updateSettings();
    /// A folder has been written; other changes have not.
    void saveLocationChanged();

private slots:
    void onTabChanged(int index);
    void onCloseClicked();
    void onButtonBoxClicked(QAbstractButton* button);
    // Connected by name.
    void on_changeRecordingFileLocationBtn_clicked();
    void on_changeScreenshotFileLocationBtn_clicked();
    void onRecordingHotkeyChanged(int index);
    void onScreenshotHotkeyChanged(int index);

private:
    void setUpLook();
    void setUpTabs();
    void connectControls();
    void loadSettings();
    void showSettings();
    void fillRecordingHotkeys();
    void fillScreenshotHotkeys();
    void chooseFolder(FolderField& field, const QString& title, QLatin1String key);
    void saveAfterCheck();
    void setSaving(bool isSaving);
    void checkFolder(FolderField& field, QAbstractButton& tab, const std::function<void()>& next);
    void save();

    std::unique_ptr<Ui::SCSettingsWindow> m_ui;
    QButtonGroup* m_tabs;
    FolderField* m_recordingFolder;
    FolderField* m_screenshotFolder;
    std::unique_ptr<QSettings> m_settings;
    QString m_language;
    QString m_recordingHotkey;
    QString m_screenshotHotkey;
    QString m_recordingFormat;
    QString m_recordingSaveLocation;
    QString m_screenshotFormat;
    QString m_screenshotSaveLocation;
    bool m_showCursor = false;
    bool m_showHighlight = false;
    /// Save waits for the disk.
    bool m_isSaving = false;
};
