// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/mainmenu.h"

#include "app/sclogger.h"
#include "app/sctranslator.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "app/webaddresses.h"
#include "dialogs/dialogwindow.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scsettingswindow.h"
#include "dialogs/scupgradewindow.h"
#include "mainwindow/activity.h"
#include "mainwindow/helpkey.h"
#include "mainwindow/menustyle.h"
#include "mainwindow/updatenotice.h"
#include "widgets/desktopservices.h"
#include "widgets/messagebox.h"

#include <QAction>
#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonObject>
#include <QMenu>

#include <stdexcept>

namespace {

/// The menu's texts are the main window's.
QString text(const char* source)
{
    return QCoreApplication::translate("SCMainWindow", source);
}

QMenu* addSubmenu(QMenu& menu, const char* title)
{
    QMenu* const submenu = menu.addMenu(text(title));
    submenu->setStyleSheet(menuStyleSheet());
    return submenu;
}

} // namespace

MainMenu::MainMenu(QWidget* window, QSettings& settings, const Activity& activity, Notices& notices,
                   const Durations& durations)
    : QObject(window)
    , m_window(*window)
    , m_settings(settings)
    , m_activity(activity)
    , m_updateNotice(new UpdateNotice(window, activity, durations))
{
    new HelpKey(this, notices, settings);
}

MainMenu::~MainMenu()
{
    delete m_menu;
}

void MainMenu::popUp(const QWidget& button)
{
    delete m_menu;
    m_menu = build();
    // Deferred: the chosen entry, which the menu owns, is carried out after the menu has hidden.
    connect(m_menu, &QMenu::aboutToHide, m_menu, &QObject::deleteLater);
    m_menu->popup(button.mapToGlobal(QPoint(0, button.height())));
}

QMenu* MainMenu::build()
{
    auto* const menu = new QMenu;
    menu->setObjectName(QStringLiteral("mainMenu"));
    menu->setStyleSheet(menuStyleSheet());
    menu->addAction(text("Settings"), this, &MainMenu::openSettings)->setEnabled(m_activity.isIdle());
    addLanguages(*menu);
    menu->addSeparator();
    menu->addAction(text("Check for Updates"), this, &MainMenu::openUpdateCheck);
    addHelp(*menu);
    menu->addAction(text("About"), this, &MainMenu::openAbout);
    return menu;
}

void MainMenu::addLanguages(QMenu& menu)
{
    QMenu* const languages = addSubmenu(menu, "Language");
    const QString current = m_settings.value(settingskeys::kLanguage).toString();
    for (const auto& [position, name] : settingstables::kLanguageMenuNames) {
        QAction* const entry = languages->addAction(name);
        entry->setCheckable(true);
        entry->setChecked(settingstables::kLanguageCodes.at(position) == current);
        connect(entry, &QAction::triggered, this, [this, chosen = position] { chooseLanguage(chosen); });
    }
}

void MainMenu::addHelp(QMenu& menu)
{
    QMenu* const help = addSubmenu(menu, "Help");
    help->addAction(text("Guide"), this, [] { openWebPage(QLatin1String(webaddresses::kGuidePage)); });
    help->addAction(text("FAQ"), this, [] { openWebPage(QLatin1String(webaddresses::kSupportPage)); });
    help->addAction(text("Open Log Folder"), this, [] { openFile(QFileInfo(SCLogger::defaultPath()).absolutePath()); });
}

void MainMenu::openSettings()
{
    try {
        auto* const dialog = new SCSettingsWindow(&m_window);
        connect(dialog, &SCSettingsWindow::updateSettings, this, &MainMenu::settingsSaved);
        connect(dialog, &SCSettingsWindow::saveLocationChanged, this, &MainMenu::folderChosen);
        dialogwindow::showOver(*dialog, m_window);
    } catch (const std::out_of_range& error) {
        SCLogger::error(QStringLiteral("The settings window cannot be opened: %1").arg(QLatin1String(error.what())));
        warnOfUnknownFormat();
    }
}

/// The value stays: it may be a newer version's, and the user's to change.
void MainMenu::warnOfUnknownFormat()
{
    const QString recording = m_settings.value(settingskeys::kRecordingFormat).toString();
    const QString screenshot = m_settings.value(settingskeys::kScreenshotFormat).toString();
    const QString& format = settingstables::kRecordingFormatPositions.contains(recording) ? screenshot : recording;
    SCLogger::error(QStringLiteral("The stored format \"%1\" is none of the program's").arg(format));
    messagebox::warning(
        &m_window, tr("Warning"),
        tr("The stored format %1 is unknown. Choose a format in the main window, then open the settings again.")
            .arg(format));
}

void MainMenu::openUpdateCheck()
{
    auto* const dialog = new SCUpgradeWindow(&m_window, QJsonObject());
    connect(dialog, &SCUpgradeWindow::answered, m_updateNotice, &UpdateNotice::drop);
    dialogwindow::showOver(*dialog, m_window);
}

void MainMenu::openAbout()
{
    dialogwindow::showOver(*new SCAboutWindow(&m_window), m_window);
}

void MainMenu::openFirstRunPage()
{
    if (!m_settings.value(settingskeys::kFirstRun).toBool())
        return;
    m_settings.setValue(settingskeys::kFirstRun, false);
    openWebPage(QLatin1String(webaddresses::kFirstRunPage));
}

void MainMenu::chooseLanguage(int position)
{
    const QString& code = settingstables::kLanguageCodes.at(position);
    m_settings.setValue(settingskeys::kLanguage, code);
    if (m_translator != nullptr) {
        m_translator->loadLanguage(code);
        // Installing notifies every window; a translator that is installed twice would be asked twice.
        QCoreApplication::removeTranslator(m_translator.get());
        QCoreApplication::installTranslator(m_translator.get());
    }
    emit languageChosen();
}
