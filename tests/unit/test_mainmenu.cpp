#include "mainwindow/mainmenu.h"
#include "tests/support/testrun.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <memory>

class TestMainMenu : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_button = std::make_unique<QPushButton>();
        m_button->setGeometry(100, 50, 40, 30);
        m_button->show();
        m_menu = std::make_unique<MainMenu>(nullptr);
    }

    void cleanup() { m_menu.reset(); }

    void entriesStandInTheirOrder()
    {
        const QMenu& menu = popUp();
        QCOMPARE(texts(menu), (QStringList{"Settings", "Language", "-", "Check for Updates", "Help", "About"}));
        QCOMPARE(texts(*submenu(menu, 1)), (QStringList{"English", "Deutsch", "Français", "Español", "Português",
                                                        "Italiano", "简体中文", "繁體中文", "日本語"}));
        QCOMPARE(texts(*submenu(menu, 4)), (QStringList{"Guide", "FAQ", "Open Log Folder"}));
    }

    void currentLanguageAloneIsChecked()
    {
        const QMenu& languages = *submenu(popUp("oc_FR"), 1);
        for (const QAction* const entry : languages.actions()) {
            QVERIFY(entry->isCheckable());
            QCOMPARE(entry->isChecked(), entry->text() == QStringLiteral("Français"));
        }
    }

    void unknownLanguageChecksNone()
    {
        for (const QAction* const entry : submenu(popUp("xx_XX"), 1)->actions())
            QVERIFY(!entry->isChecked());
    }

    void chosenLanguageIsReportedByItsPosition()
    {
        const QSignalSpy chosen(m_menu.get(), &MainMenu::languageChosen);
        const QMenu& languages = *submenu(popUp(), 1);
        languages.actions().at(8)->trigger();
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen.at(0).at(0).toInt(), 8);
    }

    void entriesReportThemselves()
    {
        QStringList chosen;
        connect(m_menu.get(), &MainMenu::settingsRequested, this, [&chosen] { chosen << "Settings"; });
        connect(m_menu.get(), &MainMenu::updateCheckRequested, this, [&chosen] { chosen << "Check for Updates"; });
        connect(m_menu.get(), &MainMenu::aboutRequested, this, [&chosen] { chosen << "About"; });
        connect(m_menu.get(), &MainMenu::guideRequested, this, [&chosen] { chosen << "Guide"; });
        connect(m_menu.get(), &MainMenu::supportRequested, this, [&chosen] { chosen << "FAQ"; });
        connect(m_menu.get(), &MainMenu::logFolderRequested, this, [&chosen] { chosen << "Open Log Folder"; });
        const QMenu& menu = popUp();
        for (const int position : {0, 3, 5})
            menu.actions().at(position)->trigger();
        for (QAction* const entry : submenu(menu, 4)->actions())
            entry->trigger();
        QCOMPARE(chosen, (QStringList{"Settings", "Check for Updates", "About", "Guide", "FAQ", "Open Log Folder"}));
    }

    void entryThatNobodyAnswersIsDisabled()
    {
        connect(m_menu.get(), &MainMenu::aboutRequested, this, [] {});
        const QMenu& menu = popUp();
        QVERIFY(menu.actions().at(5)->isEnabled());
        QVERIFY(!menu.actions().at(0)->isEnabled());
    }

    void settingsAreDisabledWhileTheyCannotBeChanged()
    {
        connect(m_menu.get(), &MainMenu::settingsRequested, this, [] {});
        QVERIFY(popUp().actions().at(0)->isEnabled());
        QVERIFY(!popUp("en_US", false).actions().at(0)->isEnabled());
    }

    void opensBelowTheButtonWithoutWaiting()
    {
        const QMenu& menu = popUp();
        QVERIFY(menu.isVisible());
        QCOMPARE(menu.pos(), m_button->mapToGlobal(QPoint(0, 30)));
    }

    void styleSheetIsTheMenusOwn()
    {
        const QMenu& menu = popUp();
        QVERIFY(menu.styleSheet().startsWith(QLatin1String("QMenu { background-color: #252526; border: 1px solid ")));
        // Runs of 25 blanks part the rules.
        QCOMPARE(menu.styleSheet().count(QLatin1Char('}') + QString(25, QLatin1Char(' ')) + QLatin1String("QMenu::")),
                 4);
        QCOMPARE(submenu(menu, 1)->styleSheet(), menu.styleSheet());
        QCOMPARE(submenu(menu, 4)->styleSheet(), menu.styleSheet());
    }

    void menusDoNotAccumulate()
    {
        for (int opening = 0; opening < 3; ++opening)
            popUp().close();
        QTRY_COMPARE(openMenus().size(), 0);
        popUp();
        popUp();
        QTRY_COMPARE(openMenus().size(), 1);
    }

private:
    QMenu& popUp(const char* language = "en_US", bool settingsEnabled = true)
    {
        m_menu->popUp(*m_button, QLatin1String(language), settingsEnabled);
        return *openMenus().last();
    }

    static QList<QMenu*> openMenus()
    {
        QList<QMenu*> menus;
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == QLatin1String("mainMenu"))
                menus.append(qobject_cast<QMenu*>(widget));
        }
        return menus;
    }

    static QMenu* submenu(const QMenu& menu, int position) { return menu.actions().at(position)->menu(); }

    static QStringList texts(const QMenu& menu)
    {
        QStringList texts;
        for (const QAction* const entry : menu.actions())
            texts.append(entry->isSeparator() ? QStringLiteral("-") : entry->text());
        return texts;
    }

    std::unique_ptr<QPushButton> m_button;
    std::unique_ptr<MainMenu> m_menu;
};

REGISTER_TEST(testrun::gui<TestMainMenu>);

#include "test_mainmenu.moc"
