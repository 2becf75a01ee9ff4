#pragma once

#include <QObject>
#include <QPointer>

class QAction;
class QMenu;
class QWidget;

/// The main menu under the title bar's menu button. It is made anew each time it opens and goes when it has closed. An
/// entry whose signal nobody listens to is shown disabled.
class MainMenu : public QObject
{
    Q_OBJECT

public:
    explicit MainMenu(QObject* parent);
    ~MainMenu() override;

    /// Pops the menu up with its top-left corner at the button's bottom-left corner and returns at once.
    ///
    /// @param language the code of the language that is marked
    /// @param settingsEnabled whether the settings can be changed at present
    void popUp(const QWidget& button, const QString& language, bool settingsEnabled);

signals:
    void settingsRequested();
    /// A position in the table of languages.
    void languageChosen(int position);
    void updateCheckRequested();
    void guideRequested();
    void supportRequested();
    void logFolderRequested();
    void aboutRequested();

private:
    QMenu* build(const QString& language, bool settingsEnabled);
    QAction& addEntry(QMenu& menu, const QString& text, void (MainMenu::*chosen)());
    void addLanguages(QMenu& menu, const QString& current);
    void addHelp(QMenu& menu);

    /// The one that is open.
    QPointer<QMenu> m_menu;
};
