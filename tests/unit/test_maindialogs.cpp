// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scsettingswindow.h"
#include "dialogs/scupgradewindow.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/scmainwindow.h"
#include "overlays/scswitchwidget.h"
#include "platform/input/global_hotkey.h"
#include "tests/support/countdowntest.h"
#include "tests/support/messagecapture.h"
#include "tests/support/shownwindow.h"
#include "tests/support/updateserver.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

/// The windows that the main window opens, and what it does with what they report.
class TestMainDialogs : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        makeWindow();
        m_window->move(60, 50);
        m_window->show();
    }

    void cleanup() { m_window.reset(); }

    void eachChoiceOfTheMenuMakesANewWindow()
    {
        const UpdateServer server;
        for (int time = 0; time < 2; ++time) {
            menu().openAbout();
            const QPointer<SCAboutWindow> about = shownWindow<SCAboutWindow>();
            QVERIFY(about != nullptr);
            QCOMPARE(about->windowModality(), Qt::ApplicationModal);
            about->close();
            QTRY_VERIFY(about.isNull());
            menu().openUpdateCheck();
            const QPointer<SCUpgradeWindow> upgrade = shownWindow<SCUpgradeWindow>();
            QVERIFY(upgrade != nullptr);
            upgrade->close();
            QTRY_VERIFY(upgrade.isNull());
            m_window->findChild<QPushButton*>("settingsBtn")->click();
            const QPointer<SCSettingsWindow> settings = shownWindow<SCSettingsWindow>();
            QVERIFY(settings != nullptr);
            QCOMPARE(settings->windowModality(), Qt::ApplicationModal);
            settings->close();
            QTRY_VERIFY(settings.isNull());
        }
    }

    void savedSettingsAreInForceAtOnce()
    {
        SCSettingsWindow& settings = openSettingsWindow();
        settings.findChild<QComboBox*>("recordingFormatComboBox")->setCurrentText("AAC");
        settings.findChild<QComboBox*>("screenshotFormatComboBox")->setCurrentText("JPG");
        settings.findChild<QCheckBox*>("highlightCursorCheckBox")->setChecked(false);
        press(settings, QDialogButtonBox::Save);
        QCOMPARE(m_window->findChild<QComboBox*>("formatBox")->currentText(), QStringLiteral("AAC"));
        QCOMPARE(m_window->findChild<QComboBox*>("screenshotFormatBox")->currentText(), QStringLiteral("JPG"));
        QVERIFY(!m_window->findChild<SCSwitchWidget*>("mouseSwitch")->isChecked());
        QCOMPARE(m_settings->value(settingskeys::kMouseShowCursor), QVariant(true));
    }

    void savedFormatWithVideoSwitchesTheScreenOn()
    {
        auto* const screen = m_window->findChild<SCSwitchWidget*>("screenSwitch");
        const auto* const format = m_window->findChild<QComboBox*>("formatBox");
        screen->setChecked(true);
        screen->setChecked(false);
        saveFormat("FLAC");
        QCOMPARE(format->currentText(), QStringLiteral("FLAC"));
        QVERIFY(!screen->isChecked());
        saveFormat("AVI");
        QCOMPARE(format->currentText(), QStringLiteral("AVI"));
        QVERIFY(screen->isChecked());
        QCOMPARE(m_settings->value(settingskeys::kScreenSwitch), QVariant(true));
        QCOMPARE(m_settings->value(settingskeys::kRecordingFormat).toString(), QStringLiteral("AVI"));
    }

    void hiddenCursorStaysHiddenAfterSaving()
    {
        SCSettingsWindow& settings = openSettingsWindow();
        settings.findChild<QCheckBox*>("showCursorCheckBox")->setChecked(false);
        press(settings, QDialogButtonBox::Save);
        QCOMPARE(m_settings->value(settingskeys::kMouseShowCursor), QVariant(false));
        QCOMPARE(m_settings->value(settingskeys::kMouseShowHighlight), QVariant(false));
    }

    void chosenFolderIsShownThoughTheRestIsCancelled()
    {
        const QTemporaryDir folder;
        SCSettingsWindow& settings = openSettingsWindow();
        QTimer::singleShot(0, &settings, [&folder] {
            auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog != nullptr);
            dialog->setDirectory(folder.path());
            dialog->findChild<QLineEdit*>()->setText(folder.path());
            QMetaObject::invokeMethod(dialog, "accept");
        });
        settings.findChild<QPushButton*>("changeRecordingFileLocationBtn")->click();
        press(settings, QDialogButtonBox::Cancel);
        QCOMPARE(m_window->findChild<QLineEdit*>("saveLocationEdit")->text(), folder.path());
    }

    void unknownStoredFormatIsLoggedAndReportedAndStays_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("recording") << QString(settingskeys::kRecordingFormat);
        QTest::newRow("screenshot") << QString(settingskeys::kScreenshotFormat);
    }

    void unknownStoredFormatIsLoggedAndReportedAndStays()
    {
        QFETCH(const QString, key);
        m_settings->setValue(key, "MKV");
        const messagebox::Recorder boxes;
        const MessageCapture messages;
        menu().openSettings();
        QVERIFY(shownWindow<SCSettingsWindow>() == nullptr);
        QCOMPARE(boxes.calls().size(), std::size_t{1});
        QVERIFY(boxes.calls().front().text.contains("MKV"));
        QCOMPARE(boxes.calls().front().parent, m_window.get());
        QCOMPARE(messages.texts().filter("invalid map<K, T> key").size(), 1);
        QCOMPARE(messages.texts().filter("\"MKV\"").size(), 1);
        QCOMPARE(m_settings->value(key).toString(), QStringLiteral("MKV"));
    }

    void everyKeyOfAWrongTypeIsSurvived()
    {
        for (const auto& [key, standard] : defaultSettings()) {
            if (key != settingskeys::kFirstRun)
                m_settings->setValue(key, QVariant(42));
        }
        const messagebox::Recorder boxes;
        makeWindow();
        m_window->show();
        menu().openSettings();
        QCOMPARE(boxes.calls().size(), std::size_t{1});
        // As the message says: a format chosen in the main window mends it.
        for (const char* name : {"formatBox", "screenshotFormatBox"})
            emit m_window->findChild<QComboBox*>(name)->activated(1);
        menu().openSettings();
        auto* const settings = shownWindow<SCSettingsWindow>();
        QVERIFY(settings != nullptr);
        QCOMPARE(settings->findChild<QComboBox*>("recordingFormatComboBox")->currentText(), QStringLiteral("AVI"));
        press(*settings, QDialogButtonBox::Cancel);
    }

    void hotkeyThatAnotherProgramHoldsIsNamed()
    {
        // Where there is no display to take keys from, nobody can have it either.
        platform::GlobalHotkey other(nullptr);
        other.registerKey(QKeySequence("F7"));
        SCSettingsWindow& settings = openSettingsWindow();
        settings.findChild<QComboBox*>("recordingComboBox")->setCurrentText("F7");
        const MessageCapture messages;
        QSignalSpy posted(m_window->findChild<Notices*>(), &Notices::posted);
        press(settings, QDialogButtonBox::Save);
        QVERIFY(posted.wait());
        const auto notice = posted.at(0).at(0).value<Notice>();
        QCOMPARE(notice.text, QStringLiteral("The hotkey F7 cannot be used. Another program may hold it."));
        QCOMPARE(notice.actionText, QStringLiteral("Settings"));
        notice.action();
        auto* const again = shownWindow<SCSettingsWindow>();
        QVERIFY(again != nullptr);
        QCOMPARE(again->findChild<QComboBox*>("recordingComboBox")->currentText(), QStringLiteral("F7"));
        again->close();
        QCOMPARE(messages.texts(QtWarningMsg).filter("The hotkey \"F7\" cannot be used").size(), 1);
        QCOMPARE(m_settings->value(settingskeys::kRecordingHotkey).toString(), QStringLiteral("F7"));
        QVERIFY(!m_window->findChild<QLabel*>("hotkeyLabel")->isVisible());
    }

    void settingsCannotBeOpenedDuringACountdown()
    {
        const auto* const button = m_window->findChild<QPushButton*>("settingsBtn");
        QVERIFY(button->isEnabled());
        bool enabled = true;
        whenCountingDown(this, [&] {
            enabled = button->isEnabled();
            m_window->findChild<QPushButton*>("recordButton")->click();
        });
        m_window->findChild<QPushButton*>("recordButton")->click();
        QVERIFY(!enabled);
        QTRY_VERIFY(button->isEnabled());
    }

private:
    void makeWindow()
    {
        m_window.reset();
        m_window = std::make_unique<SCMainWindow>();
    }

    MainMenu& menu() const { return *m_window->findChild<MainMenu*>(); }

    SCSettingsWindow& openSettingsWindow() const
    {
        menu().openSettings();
        return *shownWindow<SCSettingsWindow>();
    }

    void saveFormat(const char* format) const
    {
        SCSettingsWindow& settings = openSettingsWindow();
        settings.findChild<QComboBox*>("recordingFormatComboBox")->setCurrentText(QLatin1String(format));
        press(settings, QDialogButtonBox::Save);
    }

    static void press(const QWidget& window, QDialogButtonBox::StandardButton which)
    {
        QTest::mouseClick(window.findChild<QDialogButtonBox*>("buttonBox")->button(which), Qt::LeftButton);
    }

    std::unique_ptr<QSettings> m_settings = openSettings();
    std::unique_ptr<SCMainWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestMainDialogs>);

#include "test_maindialogs.moc"
