// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

#include <utility>

#include <memory>

class Activity;
class Notices;
class QMenu;
class QSettings;
class QWidget;
class SCTranslator;
class UpdateNotice;
struct Durations;

/// The main menu, its dialogs, the language, the manual, and pages in the browser. User-interface thread.
class MainMenu : public QObject
{
    Q_OBJECT

public:
    /// Starts the delay of the silent update check. Belongs to window; all else must outlive this object.
    MainMenu(QWidget* window, QSettings& settings, const Activity& activity, Notices& notices,
             const Durations& durations);
    ~MainMenu() override;

    /// Loads a chosen language; may be null.
    void setTranslator(std::shared_ptr<SCTranslator> translator) { m_translator = std::move(translator); }

    void popUp(const QWidget& button);

    /// An unknown stored format shows a box instead.
    void openSettings();
    void openUpdateCheck();
    void openAbout();

    /// Opens the maker's page, once in a profile.
    void openFirstRunPage();

    /// A position in kLanguageCodes.
    void chooseLanguage(int position);

signals:
    void settingsSaved();
    /// Stored already, before the settings are saved.
    void folderChosen();
    void languageChosen();

private:
    QMenu* build();
    void addLanguages(QMenu& menu);
    void addHelp(QMenu& menu);
    void warnOfUnknownFormat();

    QWidget& m_window;
    QSettings& m_settings;
    const Activity& m_activity;
    std::shared_ptr<SCTranslator> m_translator;
    UpdateNotice* m_updateNotice;
    QPointer<QMenu> m_menu;
};
