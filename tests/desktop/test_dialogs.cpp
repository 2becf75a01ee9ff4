// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "app/webaddresses.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scsettingswindow.h"
#include "dialogs/scupgradewindow.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/tile.h"
#include "platform/input/global_hotkey.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"
#include "tests/support/addresses.h"
#include "tests/support/countdowntest.h"
#include "tests/support/heldkeyboard.h"
#include "tests/support/messagecapture.h"
#include "tests/support/shownwindow.h"
#include "tests/support/updateserver.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <optional>

using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::drag;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::press;

namespace {

constexpr QPoint kWindowPosition(120, 80);
constexpr QRgb kAccent = qRgb(0x00, 0x7a, 0xcc);
constexpr QRgb kEdge = qRgb(0x5c, 0x62, 0x6c);
constexpr QRgb kWrong = qRgb(0xf3, 0x56, 0x27);

QString stored(QLatin1String key)
{
    return openSettings()->value(key).toString();
}

} // namespace

/// Settings, update and about window, from the main window's menu to their end, worked with the pointer and the
/// keyboard.
class TestDialogs : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        const auto settings = openSettings();
        settings->clear();
        applyDefaultSettings(*settings);
        settings->setValue(settingskeys::kFirstRun, false);
        settings->setValue(settingskeys::kRecordingSaveLocation, m_folder.path());
        settings->setValue(settingskeys::kScreenshotSaveLocation, m_folder.path());
        pointTo(onScreen({3, 3}));
        m_window = std::make_unique<SCMainWindow>(Durations{.countdownStepMs = 20'000, .windowGoneMs = 100});
        m_window->move(onScreen(kWindowPosition));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        desktopuser::waitUntilStill();
    }

    void cleanup() { m_window.reset(); }

    void aboutWindowIsOpenedMovedAndClosedByThePointer()
    {
        chooseEntry("About");
        SCAboutWindow* const about = opened<SCAboutWindow>();
        expectCentred(*about);
        const QPoint before = about->pos();
        drag(desktopuser::centreOf(*about->findChild<QWidget*>("titleBar")),
             desktopuser::centreOf(*about->findChild<QWidget*>("titleBar")) + QPoint(60, 40));
        QTRY_COMPARE(about->pos(), before + QPoint(60, 40));
        const QPoint logo = desktopuser::centreOf(*about->findChild<QWidget*>("logoLabel"));
        drag(logo, logo + QPoint(50, 30));
        desktopuser::waitUntilStill();
        QCOMPARE(about->pos(), before + QPoint(60, 40));
        click(*about->findChild<QPushButton*>("closeBtn"));
        QTRY_VERIFY(shownWindow<SCAboutWindow>() == nullptr);
        QTRY_VERIFY(m_window->isActiveWindow());
    }

    void dialogsHaveAnEdgeAgainstTheMainWindow_data()
    {
        QTest::addColumn<QString>("opener");
        for (const char* opener : {"Settings", "Check for Updates", "About"})
            QTest::newRow(opener) << QString(opener);
    }

    void dialogsHaveAnEdgeAgainstTheMainWindow()
    {
        QFETCH(const QString, opener);
        const UpdateServer server;
        chooseEntry(qPrintable(opener));
        expectEdge(*openedDialog());
        press("Escape");
        QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void messageHasTheProgramsFrameAndIsMovedAndClosedByIt()
    {
        messagebox::informBeside(*m_window, "Screenshot Saved", "Screenshot saved to: /a/folder/with/a/file.png");
        const QPointer<QMessageBox> box = m_window->findChild<QMessageBox*>();
        QVERIFY(QTest::qWaitForWindowActive(box));
        desktopuser::waitUntilStill();
        QCOMPARE(box->frameGeometry(), box->geometry());
        expectEdge(*box);
        QCOMPARE(box->findChild<QLabel*>("titleLabel")->text(), QStringLiteral("Screenshot Saved"));
        // Above everything else in the box, and as wide.
        const auto* const titleBar = box->findChild<QWidget*>("titleBar");
        QCOMPARE(titleBar->mapTo(box.data(), QPoint()).y(), box->contentsRect().top());
        const auto* const text = box->findChild<QLabel*>("qt_msgbox_label");
        QVERIFY(text->y() >= titleBar->geometry().bottom());
        QVERIFY(text->width() >= text->fontMetrics().horizontalAdvance(text->text()));
        QCOMPARE(box->focusWidget(), box->button(QMessageBox::Ok));
        const QPoint before = box->pos();
        const QPoint bar = desktopuser::centreOf(*titleBar);
        drag(bar, bar + QPoint(60, 40));
        QTRY_COMPARE(box->pos(), before + QPoint(60, 40));
        click(*box->findChild<QPushButton*>("closeBtn"));
        QTRY_VERIFY(box == nullptr);
    }

    void menusHaveTextsOfTheWindowsSize()
    {
        click(*m_window->findChild<QPushButton*>("menuBtn"));
        QTRY_VERIFY(openMenu() != nullptr);
        const int sizePx = QFontInfo(m_window->findChild<QLabel*>("titleLabel")->font()).pixelSize();
        QCOMPARE(QFontInfo(openMenu()->font()).pixelSize(), sizePx);
        press("Escape");
        QTRY_VERIFY(openMenu() == nullptr);
    }

    void tileWithTheFocusDoesNotLookSelected()
    {
        auto* const tile = m_window->findChild<Tile*>("regionTile");
        QVERIFY(!tile->isSelected());
        QVERIFY(desktopuser::tabTo(*tile));
        const QPoint edge = tile->mapToGlobal(QPoint(tile->width() / 2, 0));
        QTRY_COMPARE(QColor(colourAt(edge)), QColor(0xff, 0xff, 0xff));
        const auto* const selected = m_window->findChild<Tile*>("fullScreenTile");
        QVERIFY(selected->isSelected());
        QCOMPARE(colourAt(selected->mapToGlobal(QPoint(selected->width() / 2, 0))), kAccent);
    }

    void folderThatCannotBeUsedIsMarkedUntilItIsRestored()
    {
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        auto* const field = window.findChild<QLineEdit*>("recordingFileLocationLE");
        click(*field);
        press("ctrl+a");
        for (const char* letter : {"v", "i", "d"})
            press(letter);
        QTRY_COMPARE(field->text(), QStringLiteral("vid"));
        click(*window.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save));
        QTRY_COMPARE(colourAt(field->mapToGlobal(QPoint(field->width() / 2, 0))), kWrong);
        QTRY_VERIFY(window.isVisible() && field->hasFocus());
        QCOMPARE(stored(settingskeys::kRecordingSaveLocation), m_folder.path());
        press("Escape");
        QTRY_COMPARE(field->text(), m_folder.path());
        QTRY_COMPARE(colourAt(field->mapToGlobal(QPoint(field->width() / 2, 0))), kAccent);
        press("Escape");
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
    }

    void linkOfTheAboutWindowOpensTheProductPageOnce()
    {
        const OpenedAddresses browser({"https"});
        chooseEntry("About");
        const SCAboutWindow* const about = opened<SCAboutWindow>();
        click(*about->findChild<QLabel*>("homeURLLabel"));
        QTRY_COMPARE(browser.opened(), QList<QUrl>{QUrl(QLatin1String(webaddresses::kHomePage))});
        // Wherever the keyboard is in the window, Tab leads to the link.
        for (int step = 0; step < 3 && browser.opened().size() == 1; ++step) {
            press("Tab");
            if (QApplication::focusWidget() == about->findChild<QLabel*>("homeURLLabel"))
                press("Return");
        }
        QTRY_COMPARE(browser.opened().size(), 2);
        press("Escape");
        QTRY_VERIFY(shownWindow<SCAboutWindow>() == nullptr);
    }

    void dialogKeepsTheUserFromTheMainWindow()
    {
        chooseEntry("About");
        opened<SCAboutWindow>()->move(onScreen({700, 500}));
        desktopuser::waitUntilStill();
        const auto* const pages = m_window->findChild<QStackedWidget*>("pages");
        click(*m_window->findChild<QPushButton*>("filesTab"));
        desktopuser::waitUntilStill();
        QCOMPARE(pages->currentWidget()->objectName(), QStringLiteral("recordingPage"));
    }

    void hotkeyOfTheRecordingWorksWhileADialogIsOpenAndTheDialogComesBack_data()
    {
        QTest::addColumn<QString>("opener");
        for (const char* opener : {"Settings", "Check for Updates", "About"})
            QTest::newRow(opener) << QString(opener);
    }

    void hotkeyOfTheRecordingWorksWhileADialogIsOpenAndTheDialogComesBack()
    {
        QFETCH(const QString, opener);
        const UpdateServer server;
        chooseEntry(qPrintable(opener));
        const QPointer<QMainWindow> dialog = qobject_cast<QMainWindow*>(openedDialog());
        QVERIFY(dialog != nullptr);
        dialog->move(onScreen({300, 200}));
        desktopuser::waitUntilStill();
        const QPoint before = dialog->pos();
        bool wasShown = true;
        bool wasBlocked = true;
        whenCountingDown(m_window.get(), [&] {
            QTRY_VERIFY(m_window->isMinimized());
            wasShown = dialog->isVisible();
            wasBlocked = QApplication::activeModalWidget() != nullptr;
            press("F9");
        });
        press("F9");
        QTRY_VERIFY(!wasShown);
        QVERIFY(!wasBlocked);
        QTRY_VERIFY(dialog != nullptr && dialog->isVisible() && dialog->isActiveWindow());
        QVERIFY(QApplication::activeModalWidget() == dialog.data());
        QVERIFY(!m_window->isMinimized());
        desktopuser::waitUntilStill();
        QCOMPARE(dialog->pos(), before);
        press("Escape");
        QTRY_VERIFY(dialog == nullptr);
    }

    void settingsComeBackFromARecordingAsTheyWere()
    {
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        auto* const format = window.findChild<QComboBox*>("recordingFormatComboBox");
        choose(*format, "GIF");
        bool hasList = true;
        whenCountingDown(m_window.get(), [&] {
            hasList = QApplication::activePopupWidget() != nullptr;
            press("F9");
        });
        // With its list open, which has the keyboard.
        click(*format);
        QTRY_VERIFY(QApplication::activePopupWidget() != nullptr && heldkeyboard::isHeld());
        press("F9");
        QTRY_VERIFY(!hasList);
        QTRY_VERIFY(window.isVisible() && window.isActiveWindow());
        desktopuser::waitUntilStill();
        QCOMPARE(format->currentText(), QStringLiteral("GIF"));
        QCOMPARE(stored(settingskeys::kRecordingFormat), QStringLiteral("MP4"));
        click(*window.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save));
        QTRY_COMPARE(stored(settingskeys::kRecordingFormat), QStringLiteral("GIF"));
    }

    void hotkeyOfTheScreenshotWorksWhileADialogIsOpen()
    {
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        press("F10");
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() != nullptr &&
                    shownWindow<SCScreenshotWindow>()->isActiveWindow());
        QVERIFY(!window.isVisible());
        desktopuser::waitUntilStill();
        press("Escape");
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QTRY_VERIFY(window.isVisible() && window.isActiveWindow());
        QVERIFY(!m_window->isMinimized());
        press("Escape");
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
    }

    void hotkeysWorkWhileAMenuOrAListOfTheMainWindowIsOpen_data()
    {
        QTest::addColumn<QString>("opener");
        QTest::newRow("menu") << "menuBtn";
        QTest::newRow("list") << "formatBox";
    }

    void hotkeysWorkWhileAMenuOrAListOfTheMainWindowIsOpen()
    {
        QFETCH(const QString, opener);
        auto& part = *m_window->findChild<QWidget*>(opener);
        click(part);
        QTRY_VERIFY(QApplication::activePopupWidget() != nullptr && heldkeyboard::isHeld());
        bool hasPopup = true;
        whenCountingDown(m_window.get(), [&] {
            hasPopup = QApplication::activePopupWidget() != nullptr;
            press("F9");
        });
        press("F9");
        QTRY_VERIFY(!hasPopup);
        QTRY_VERIFY(!m_window->isMinimized() && m_window->isActiveWindow());
        desktopuser::waitUntilStill();
        click(part);
        QTRY_VERIFY(QApplication::activePopupWidget() != nullptr && heldkeyboard::isHeld());
        press("F10");
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() != nullptr &&
                    shownWindow<SCScreenshotWindow>()->isActiveWindow());
        QVERIFY(QApplication::activePopupWidget() == nullptr);
        desktopuser::waitUntilStill();
        press("Escape");
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QTRY_VERIFY(!m_window->isMinimized());
    }

    void hotkeyCancelsADialogThatWaitsForItsAnswer_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("recording") << "F9";
        QTest::newRow("screenshot") << "F10";
    }

    void hotkeyCancelsADialogThatWaitsForItsAnswer()
    {
        QFETCH(const QString, key);
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        bool wasShown = true;
        whenCountingDown(m_window.get(), [&] {
            wasShown = QApplication::activeModalWidget() != nullptr || window.isVisible();
            press("F9");
        });
        whenActive<QFileDialog>([&](QFileDialog& /*dialog*/) { press(key); });
        click(*window.findChild<QPushButton*>("changeRecordingFileLocationBtn"));
        if (key == QLatin1String("F10")) {
            QTRY_VERIFY(shownWindow<SCScreenshotWindow>() != nullptr &&
                        shownWindow<SCScreenshotWindow>()->isActiveWindow());
            wasShown = QApplication::activeModalWidget() != nullptr || window.isVisible();
            desktopuser::waitUntilStill();
            press("Escape");
        }
        QTRY_VERIFY(!wasShown);
        QTRY_VERIFY(QApplication::activeModalWidget() == &window && window.isActiveWindow());
        desktopuser::waitUntilStill();
        press("Escape");
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
    }

    void escapeClosesAnOpenListAlone()
    {
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        auto* const format = window.findChild<QComboBox*>("recordingFormatComboBox");
        choose(*format, "AVI");
        click(*format);
        QTRY_VERIFY(QApplication::activePopupWidget() != nullptr);
        desktopuser::waitUntilStill();
        press("Down");
        press("Escape");
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
        desktopuser::waitUntilStill();
        QVERIFY(window.isVisible());
        QCOMPARE(format->currentText(), QStringLiteral("AVI"));
        press("Escape");
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
        QCOMPARE(stored(settingskeys::kRecordingFormat), QStringLiteral("MP4"));
    }

    void escapeCancelsTheCountdownWhoeverHasTheKeyboard_data()
    {
        QTest::addColumn<bool>("isHeld");
        QTest::newRow("free") << false;
        QTest::newRow("held by another program") << true;
    }

    void escapeCancelsTheCountdownWhoeverHasTheKeyboard()
    {
        QFETCH(const bool, isHeld);
        const MessageCapture messages;
        bool counted = false;
        whenCountingDown(m_window.get(), [&] {
            counted = true;
            QTRY_VERIFY(m_window->isMinimized());
            std::optional<heldkeyboard::Holder> other;
            if (isHeld)
                other.emplace();
            QCOMPARE(heldkeyboard::isHeld(), isHeld);
            press("Escape");
        });
        press("F9");
        QTRY_VERIFY(counted);
        QTRY_VERIFY(shownWindow<SCCountdownWidget>() == nullptr && !m_window->isMinimized());
        QCOMPARE(messages.texts().filter(QStringLiteral("Countdown cancelled, nothing is recorded")).size(), 1);
        // The key is everybody's again.
        platform::GlobalHotkey escape(nullptr);
        QTRY_VERIFY(escape.registerKey(QKeySequence(Qt::Key_Escape)));
    }

    void newerVersionIsLookedAtAndItsPageOpened()
    {
        UpdateServer server;
        server.setAnswer("{\"win\": {\"version\": \"1.2\", \"url\": \"https:\\/\\/www.kestrano.example\\/new\", "
                         "\"change\": [\"One\", \"Two\"]}}");
        const OpenedAddresses browser({"https"});
        chooseEntry("Check for Updates");
        SCUpgradeWindow* const window = opened<SCUpgradeWindow>();
        expectCentred(*window);
        QTRY_COMPARE(pageOf(*window), int(SCUpgradeWindow::NewVersion));
        const QPoint before = window->pos();
        const QPoint bar = desktopuser::centreOf(*window->findChild<QWidget*>("titleBar"));
        drag(bar, bar + QPoint(30, 50));
        QTRY_VERIFY(window->pos() != before);
        click(*window->findChild<QPushButton*>("upgradeBtn"));
        QTRY_COMPARE(browser.opened(), QList<QUrl>{QUrl("https://www.kestrano.example/new")});
        QVERIFY(window->isVisible());
        click(*window->findChild<QPushButton*>("laterBtn"));
        QTRY_VERIFY(shownWindow<SCUpgradeWindow>() == nullptr);
    }

    void updateWindowIsWorkedByTheKeyboard()
    {
        UpdateServer server;
        server.setAnswer("{\"win\": {\"version\": \"1.0.0\"}}");
        QVERIFY(desktopuser::tabTo(*m_window->findChild<QPushButton*>("menuBtn")));
        press("space");
        QTRY_VERIFY(openMenu() != nullptr);
        for (int step = 0; step < 3; ++step)
            press("Down");
        press("Return");
        const SCUpgradeWindow* const window = opened<SCUpgradeWindow>();
        QTRY_COMPARE(pageOf(*window), int(SCUpgradeWindow::UpToDate));
        press("Escape");
        QTRY_VERIFY(shownWindow<SCUpgradeWindow>() == nullptr);
    }

    void settingsAreChangedPageByPageAndSaved()
    {
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        expectCentred(window);
        choose(*window.findChild<QComboBox*>("recordingFormatComboBox"), "FLAC");
        click(*window.findChild<QPushButton*>("screenshotSettingsTab"));
        choose(*window.findChild<QComboBox*>("screenshotFormatComboBox"), "JPG");
        click(*window.findChild<QPushButton*>("hotkeysSettingsTab"));
        choose(*window.findChild<QComboBox*>("recordingComboBox"), "F4");
        choose(*window.findChild<QComboBox*>("screenshotComboBox"), "F2");
        click(*window.findChild<QPushButton*>("mouseSettingsTab"));
        auto* const cursor = window.findChild<QCheckBox*>("showCursorCheckBox");
        const auto* const effect = window.findChild<QCheckBox*>("highlightCursorCheckBox");
        QVERIFY(cursor->isChecked() && effect->isChecked());
        click(cursor->mapToGlobal(QPoint(12, cursor->height() / 2)));
        QTRY_VERIFY(!cursor->isChecked());
        QVERIFY(!effect->isChecked());
        QCOMPARE(stored(settingskeys::kRecordingFormat), QStringLiteral("MP4"));
        click(*window.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save));
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
        QCOMPARE(stored(settingskeys::kRecordingFormat), QStringLiteral("FLAC"));
        QCOMPARE(stored(settingskeys::kScreenshotFormat), QStringLiteral("JPG"));
        QCOMPARE(stored(settingskeys::kRecordingHotkey), QStringLiteral("F4"));
        QCOMPARE(stored(settingskeys::kScreenshotHotkey), QStringLiteral("F2"));
        QCOMPARE(openSettings()->value(settingskeys::kMouseShowCursor), QVariant(false));
        QCOMPARE(m_window->findChild<QComboBox*>("formatBox")->currentText(), QStringLiteral("FLAC"));
        expectHotkey("F4", true);
        expectHotkey("F9", false);
    }

    void settingsAreChangedByTheKeyboardAlone()
    {
        QVERIFY(desktopuser::tabTo(*m_window->findChild<QPushButton*>("menuBtn")));
        press("space");
        QTRY_VERIFY(openMenu() != nullptr);
        press("Down");
        press("Return");
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        auto* const format = window.findChild<QComboBox*>("recordingFormatComboBox");
        QVERIFY(desktopuser::tabTo(*format));
        press("Down");
        QTRY_COMPARE(format->currentText(), QStringLiteral("AVI"));
        QVERIFY(desktopuser::tabTo(*window.findChild<QPushButton*>("recordingSettingsTab")));
        press("Down");
        press("Down");
        QTRY_COMPARE(window.findChild<QStackedWidget*>("stackedWidget")->currentIndex(), 3);
        auto* const key = window.findChild<QComboBox*>("recordingComboBox");
        QVERIFY(desktopuser::tabTo(*key));
        press("Up");
        QTRY_COMPARE(key->currentText(), QStringLiteral("F8"));
        auto* const save = window.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save);
        QVERIFY(desktopuser::tabTo(*save));
        // The ring around the control that has the focus.
        QTRY_COMPARE(QColor(colourAt(save->mapToGlobal(QPoint(save->width() / 2, 0)))), QColor(0xff, 0xff, 0xff));
        QCOMPARE(QColor(colourAt(save->mapToGlobal(QPoint(10, save->height() / 2)))), QColor(kAccent));
        press("space");
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
        QCOMPARE(stored(settingskeys::kRecordingFormat), QStringLiteral("AVI"));
        expectHotkey("F8", true);
        expectHotkey("F9", false);
    }

    void wheelOverABoxChoosesNothing()
    {
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        const auto* const format = opened<SCSettingsWindow>()->findChild<QComboBox*>("recordingFormatComboBox");
        click(desktopuser::centreOf(*format), "5");
        desktopuser::waitUntilStill();
        QCOMPARE(format->currentText(), QStringLiteral("MP4"));
        press("Escape");
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
    }

    void folderChosenInItsDialogStaysWhenTheRestIsCancelled()
    {
        const QTemporaryDir other;
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        choose(*window.findChild<QComboBox*>("recordingFormatComboBox"), "GIF");
        whenActive<QFileDialog>([path = other.path()](QFileDialog& /*dialog*/) {
            press("ctrl+a");
            userinput::xdotool({"type", "--delay", "15", path});
            press("Return");
        });
        click(*window.findChild<QPushButton*>("changeRecordingFileLocationBtn"));
        QTRY_COMPARE(window.findChild<QLineEdit*>("recordingFileLocationLE")->text(), other.path());
        click(*window.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Cancel));
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
        QCOMPARE(stored(settingskeys::kRecordingSaveLocation), other.path());
        QCOMPARE(stored(settingskeys::kRecordingFormat), QStringLiteral("MP4"));
        QCOMPARE(m_window->findChild<QLineEdit*>("saveLocationEdit")->text(), other.path());
    }

    void hotkeyThatAnotherProgramHoldsIsNamedInANotice()
    {
        platform::GlobalHotkey other(nullptr);
        QVERIFY(other.registerKey(QKeySequence("F6")));
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        click(*window.findChild<QPushButton*>("hotkeysSettingsTab"));
        choose(*window.findChild<QComboBox*>("recordingComboBox"), "F6");
        const QSignalSpy posted(m_window->findChild<Notices*>(), &Notices::posted);
        click(*window.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save));
        QTRY_COMPARE(posted.size(), 1);
        const QString text = posted.at(0).at(0).value<Notice>().text;
        QVERIFY2(text.contains("F6"), qPrintable(text));
        QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
        expectHotkey("F6", false);
        expectHotkey("F9", false);
    }

    void noneTakesNoKey()
    {
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        click(*window.findChild<QPushButton*>("hotkeysSettingsTab"));
        choose(*window.findChild<QComboBox*>("recordingComboBox"), "None");
        click(*window.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save));
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
        QCOMPARE(stored(settingskeys::kRecordingHotkey), QStringLiteral("None"));
        platform::GlobalHotkey other(nullptr);
        QVERIFY(other.registerKey(QKeySequence("F9")));
    }

    void newKeyOfTheScreenshotWorksAtOnceAndTheOldOneIsFree()
    {
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        SCSettingsWindow& window = *opened<SCSettingsWindow>();
        click(*window.findChild<QPushButton*>("hotkeysSettingsTab"));
        choose(*window.findChild<QComboBox*>("screenshotComboBox"), "F7");
        click(*window.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save));
        QTRY_VERIFY(shownWindow<SCSettingsWindow>() == nullptr);
        platform::GlobalHotkey other(nullptr);
        QTRY_VERIFY(other.registerKey(QKeySequence("F10")));
        press("F7");
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() != nullptr &&
                    shownWindow<SCScreenshotWindow>()->isActiveWindow());
        desktopuser::waitUntilStill();
        press("Escape");
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QTRY_VERIFY(!m_window->isMinimized());
    }

    void unknownStoredFormatIsReportedInABox()
    {
        openSettings()->setValue(settingskeys::kRecordingFormat, "MKV");
        QString text;
        whenActive<QMessageBox>([&text](const QMessageBox& box) {
            text = box.text();
            press("Return");
        });
        click(*m_window->findChild<QPushButton*>("settingsBtn"));
        QTRY_VERIFY(!text.isEmpty());
        QVERIFY2(text.contains("MKV"), qPrintable(text));
        QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
        QVERIFY(shownWindow<SCSettingsWindow>() == nullptr);
        QCOMPARE(stored(settingskeys::kRecordingFormat), QStringLiteral("MKV"));
    }

private:
    static QMenu* openMenu()
    {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->objectName() == QLatin1String("mainMenu") && window->isVisible())
                return qobject_cast<QMenu*>(window);
        }
        return nullptr;
    }

    void chooseEntry(const char* text) const
    {
        click(*m_window->findChild<QPushButton*>("menuBtn"));
        QTRY_VERIFY(openMenu() != nullptr);
        for (QAction* const entry : openMenu()->actions()) {
            if (entry->text() == QLatin1String(text)) {
                click(openMenu()->mapToGlobal(openMenu()->actionGeometry(entry).center()));
                return;
            }
        }
        QFAIL(text);
    }

    /// The window of that class, once it is active.
    template <typename Window>
    static Window* opened()
    {
        Window* window = nullptr;
        [&window] {
            QTRY_VERIFY((window = shownWindow<Window>()) != nullptr);
            QVERIFY(QTest::qWaitForWindowActive(window));
            desktopuser::waitUntilStill();
        }();
        return window;
    }

    /// The dialog that is shown, once it is active.
    static QWidget* openedDialog()
    {
        [] {
            QTRY_VERIFY(QApplication::activeModalWidget() != nullptr);
            QVERIFY(QTest::qWaitForWindowActive(QApplication::activeModalWidget()));
        }();
        return QApplication::activeModalWidget();
    }

    /// At the middle of each side.
    static void expectEdge(const QWidget& dialog)
    {
        desktopuser::waitUntilStill();
        const QRect area = dialog.geometry();
        const QPoint centre = area.center();
        for (const QPoint& side : {QPoint(centre.x(), area.top()), QPoint(centre.x(), area.bottom()),
                                   QPoint(area.left(), centre.y()), QPoint(area.right(), centre.y())})
            QCOMPARE(QColor(colourAt(side)), QColor(kEdge));
    }

    void expectCentred(const QWidget& window) const
    {
        const QPoint off = window.geometry().center() - m_window->geometry().center();
        QVERIFY2(off.manhattanLength() <= 2, qPrintable(QStringLiteral("%1 %2").arg(off.x()).arg(off.y())));
    }

    static int pageOf(const QWidget& window)
    {
        return window.findChild<QStackedWidget*>("stackedWidget")->currentIndex();
    }

    /// Opens the box with the pointer and clicks an entry.
    static void choose(QComboBox& box, const char* text)
    {
        click(box);
        QTRY_VERIFY(QApplication::activePopupWidget() != nullptr);
        desktopuser::waitUntilStill();
        QAbstractItemView* const view = box.view();
        const QModelIndex entry = box.model()->index(box.findText(QLatin1String(text)), 0);
        QVERIFY(entry.isValid());
        click(view->viewport()->mapToGlobal(view->visualRect(entry).center()));
        QTRY_COMPARE(box.currentText(), QLatin1String(text));
    }

    /// A hotkey that works begins the countdown, and takes it back when it is pressed again.
    void expectHotkey(const char* key, bool works) const
    {
        bool counted = false;
        QTRY_VERIFY(m_window->isActiveWindow());
        desktopuser::waitUntilStill();
        const QPointer<QTimer> waiting = whenCountingDown(m_window.get(), [this, &counted, key] {
            counted = true;
            QTRY_VERIFY(m_window->isMinimized());
            press(QLatin1String(key));
        });
        press(QLatin1String(key));
        if (works)
            QTRY_VERIFY(counted);
        else
            desktopuser::waitUntilStill();
        QCOMPARE(counted, works);
        QTRY_VERIFY(shownWindow<SCCountdownWidget>() == nullptr);
        QTRY_VERIFY(!m_window->isMinimized());
        // It would wait for the next countdown.
        delete waiting;
    }

    /// Acts in the next modal window of that class once it is active; it runs within what opens it.
    template <typename Window, typename Act>
    void whenActive(Act act) const
    {
        auto* const look = new QTimer(m_window.get());
        connect(look, &QTimer::timeout, look, [look, act] {
            auto* const window = qobject_cast<Window*>(QApplication::activeModalWidget());
            if (window == nullptr || !window->isActiveWindow())
                return;
            look->stop();
            look->deleteLater();
            desktopuser::waitUntilStill();
            act(*window);
        });
        look->start(50);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<SCMainWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestDialogs>);

#include "test_dialogs.moc"
