// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

#include <utility>

#include <memory>

class Activity;
class QAction;
class QMenu;
class QSettings;
class QWidget;
class SCTranslator;
class UpdateNotice;
struct Durations;

/// The main menu, made each time it opens, and what its entries do: the windows that they open over the main window,
/// the language, and pages in the browser. User-interface thread.
class MainMenu : public QObject
{
    Q_OBJECT

public:
    /// Starts the delay of the silent check for updates. Belongs to window; all else must outlive this object.
    MainMenu(QWidget* window, QSettings& settings, const Activity& activity, const Durations& durations);
    ~MainMenu() override;

    /// What a chosen language is loaded into, if anything.
    void setTranslator(std::shared_ptr<SCTranslator> translator) { m_translator = std::move(translator); }

    /// Opens the menu at the button's bottom-left corner and returns at once.
    void popUp(const QWidget& button);

    /// With a stored format that is none of the program's, a box says so instead.
    void openSettings();
    void openUpdateCheck();
    void openAbout();

    /// A position in the table of languages.
    void chooseLanguage(int position);

signals:
    void settingsSaved();
    /// A folder was chosen in the settings window, which stores it at once.
    void folderChosen();
    /// Stored and, with a translator, loaded and installed.
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
    /// The one that is open.
    QPointer<QMenu> m_menu;
};
