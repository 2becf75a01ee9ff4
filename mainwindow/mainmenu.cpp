#include "mainwindow/mainmenu.h"

#include "app/settingstables.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QMetaMethod>
#include <QWidget>

namespace {

constexpr char kStyleSheet[] =
    "QMenu { background-color: #252526; border: 1px solid #1E1E1E; padding: 5px 0px; font-size: 7.5pt; font-family: "
    "Microsoft YaHei UI; }                         QMenu::item { color: #99A1B0; padding: 8px 20px; padding-right: "
    "24px; }                         QMenu::item:selected { background-color: #37373D; color: #FFFFFF; }               "
    "          QMenu::indicator { width: 12px; height: 12px; left: 4px; }                         "
    "QMenu::indicator:non-exclusive:checked { image: url(:/res/forms/images/check.svg); }";

/// The menu's texts are the main window's.
QString text(const char* source)
{
    return QCoreApplication::translate("SCMainWindow", source);
}

QMenu* addSubmenu(QMenu& menu, const char* title)
{
    QMenu* const submenu = menu.addMenu(text(title));
    submenu->setStyleSheet(QLatin1String(kStyleSheet));
    return submenu;
}

} // namespace

MainMenu::MainMenu(QObject* parent) : QObject(parent) {}

MainMenu::~MainMenu()
{
    delete m_menu;
}

void MainMenu::popUp(const QWidget& button, const QString& language, bool settingsEnabled)
{
    delete m_menu;
    m_menu = build(language, settingsEnabled);
    // Deferred: the chosen entry, which the menu owns, is carried out after the menu has hidden.
    connect(m_menu, &QMenu::aboutToHide, m_menu, &QObject::deleteLater);
    m_menu->popup(button.mapToGlobal(QPoint(0, button.height())));
}

QMenu* MainMenu::build(const QString& language, bool settingsEnabled)
{
    auto* const menu = new QMenu;
    menu->setObjectName(QStringLiteral("mainMenu"));
    menu->setStyleSheet(QLatin1String(kStyleSheet));
    QAction& settings = addEntry(*menu, text("Settings"), &MainMenu::settingsRequested);
    settings.setEnabled(settings.isEnabled() && settingsEnabled);
    addLanguages(*menu, language);
    menu->addSeparator();
    addEntry(*menu, text("Check for Updates"), &MainMenu::updateCheckRequested);
    addHelp(*menu);
    addEntry(*menu, text("About"), &MainMenu::aboutRequested);
    return menu;
}

QAction& MainMenu::addEntry(QMenu& menu, const QString& text, void (MainMenu::*chosen)())
{
    QAction* const entry = menu.addAction(text);
    entry->setEnabled(isSignalConnected(QMetaMethod::fromSignal(chosen)));
    connect(entry, &QAction::triggered, this, chosen);
    return *entry;
}

void MainMenu::addLanguages(QMenu& menu, const QString& current)
{
    QMenu* const languages = addSubmenu(menu, "Language");
    for (const auto& [position, name] : settingstables::languageMenuNames()) {
        QAction* const entry = languages->addAction(name);
        entry->setCheckable(true);
        entry->setChecked(settingstables::languageCodes().at(position) == current);
        connect(entry, &QAction::triggered, this, [this, place = position] { emit languageChosen(place); });
    }
}

void MainMenu::addHelp(QMenu& menu)
{
    QMenu* const help = addSubmenu(menu, "Help");
    addEntry(*help, text("Guide"), &MainMenu::guideRequested);
    addEntry(*help, text("FAQ"), &MainMenu::supportRequested);
    addEntry(*help, text("Open Log Folder"), &MainMenu::logFolderRequested);
}
