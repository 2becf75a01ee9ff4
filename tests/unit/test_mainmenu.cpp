// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "dialogs/scaboutwindow.h"
#include "mainwindow/activity.h"
#include "mainwindow/durations.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/notices/notices.h"
#include "tests/support/shownwindow.h"
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
        m_settings->clear();
        m_settings->setValue(settingskeys::kLanguage, QStringLiteral("en_US"));
        m_recording = RecordingState::Idle;
        m_menu =
            new MainMenu(&m_window, *m_settings, m_activity, m_notices, Durations{.updateCheckDelayMs = 3'600'000});
    }

    void cleanup() { delete m_menu; }

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
        m_settings->setValue(settingskeys::kLanguage, QStringLiteral("oc_FR"));
        const QMenu& languages = *submenu(popUp(), 1);
        for (const QAction* const entry : languages.actions()) {
            QVERIFY(entry->isCheckable());
            QCOMPARE(entry->isChecked(), entry->text() == QStringLiteral("Français"));
        }
    }

    void unknownLanguageChecksNone()
    {
        m_settings->setValue(settingskeys::kLanguage, QStringLiteral("xx_XX"));
        for (const QAction* const entry : submenu(popUp(), 1)->actions())
            QVERIFY(!entry->isChecked());
    }

    void chosenLanguageIsStored()
    {
        const QSignalSpy chosen(m_menu, &MainMenu::languageChosen);
        const QMenu& languages = *submenu(popUp(), 1);
        languages.actions().at(8)->trigger();
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(m_settings->value(settingskeys::kLanguage).toString(), QStringLiteral("ja_JP"));
    }

    void entryOpensItsWindow()
    {
        popUp().actions().at(5)->trigger();
        QVERIFY(shownWindow<SCAboutWindow>() != nullptr);
        delete shownWindow<SCAboutWindow>();
    }

    void settingsAreDisabledWhileTheyCannotBeChanged()
    {
        QVERIFY(popUp().actions().at(0)->isEnabled());
        m_recording = RecordingState::Countdown;
        QVERIFY(!popUp().actions().at(0)->isEnabled());
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
    QMenu& popUp()
    {
        m_menu->popUp(*m_button);
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

    std::unique_ptr<QSettings> m_settings = openSettings();
    RecordingState m_recording = RecordingState::Idle;
    Activity m_activity{{[this] { return m_recording; }, {}, {}, {}, {}, {}, {}}};
    QWidget m_window;
    std::unique_ptr<QPushButton> m_button;
    Notices m_notices;
    MainMenu* m_menu = nullptr;
};

REGISTER_TEST(testrun::gui<TestMainMenu>);

#include "test_mainmenu.moc"
