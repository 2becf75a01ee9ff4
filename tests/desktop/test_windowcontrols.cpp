// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "app/sctranslator.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "app/webaddresses.h"
#include "mainwindow/scmainwindow.h"
#include "overlays/scswitchwidget.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"
#include "tests/support/addresses.h"
#include "tests/support/messagecapture.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"
#include "widgets/volumecontrol.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::press;
using userinput::xdotool;

namespace {

constexpr QPoint kWindowPosition(20, 40);
/// The knob's colours, and that of the track of a switch that is on.
constexpr QRgb kOnKnob = qRgb(0xff, 0xff, 0xff);
constexpr QRgb kOffKnob = qRgb(0xaa, 0xaa, 0xaa);

} // namespace

/// Switches, menu, pages, folders and title bar of the main window, worked with the pointer and the keyboard.
class TestWindowControls : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        const auto settings = openSettings();
        settings->setValue(settingskeys::kRecordingSaveLocation, m_folder.path());
        settings->setValue(settingskeys::kScreenshotSaveLocation, m_folder.path());
        pointTo(onScreen({3, 3}));
        m_window = std::make_unique<SCMainWindow>();
        m_window->move(onScreen(kWindowPosition));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        desktopuser::waitUntilStill();
    }

    void cleanup() { m_window.reset(); }

    void switchIsWorked_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("byPointer");
        QTest::newRow("screen by click") << "screenSwitch" << QString(settingskeys::kScreenSwitch) << true;
        QTest::newRow("speaker by space") << "speakerSwitch" << QString(settingskeys::kSpeakerSwitch) << false;
        QTest::newRow("mouse by click") << "mouseSwitch" << QString(settingskeys::kMouseSwitch) << true;
    }

    void switchIsWorked()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, key);
        QFETCH(const bool, byPointer);
        auto* const control = child<SCSwitchWidget>(name);
        if (!byPointer)
            QVERIFY(desktopuser::tabTo(*control));
        bool on = control->isChecked();
        for (int turn = 0; turn < 2; ++turn) {
            on = !on;
            if (byPointer)
                click(*control);
            else
                press(QStringLiteral("space"));
            QTRY_COMPARE(control->isChecked(), on);
            QCOMPARE(openSettings()->value(key), QVariant(on));
            QTRY_COMPARE(QColor(knobOf(*control)), QColor(on ? kOnKnob : kOffKnob));
        }
    }

    void speakerSwitchGovernsItsMeter()
    {
        auto* const control = child<SCSwitchWidget>("speakerSwitch");
        const auto* const meter = child<VolumeControl>("speakerMeter");
        click(*control);
        QTRY_COMPARE(meter->isActive(), control->isChecked());
        click(*control);
        QTRY_COMPARE(meter->isActive(), control->isChecked());
    }

    void switchWithoutItsDeviceWarnsAndGoesOff_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("byPointer");
        QTest::newRow("microphone by click") << "micSwitch"
                                             << "No microphone device found!" << true;
        QTest::newRow("webcam by space") << "webcamSwitch"
                                         << "No camera device found!" << false;
    }

    /// The engine that would list microphones does not run here.
    void switchWithoutItsDeviceWarnsAndGoesOff()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, text);
        QFETCH(const bool, byPointer);
        const messagebox::Recorder boxes;
        auto* const control = child<SCSwitchWidget>(name);
        QVERIFY(!control->isChecked());
        if (byPointer) {
            click(*control);
        } else {
            QVERIFY(desktopuser::tabTo(*control));
            press(QStringLiteral("space"));
        }
        QTRY_COMPARE(boxes.calls().size(), std::size_t{1});
        QCOMPARE(boxes.calls().front().kind, messagebox::Kind::Warning);
        QCOMPARE(boxes.calls().front().title, QStringLiteral("Warning"));
        QCOMPARE(boxes.calls().front().text, text);
        QCOMPARE(boxes.calls().front().parent, m_window.get());
        QTRY_VERIFY(!control->isChecked());
        QTRY_COMPARE(QColor(knobOf(*control)), QColor(kOffKnob));
        QVERIFY(!openSettings()->value(settingskeys::kMicSwitch).toBool());
        QVERIFY(!openSettings()->value(settingskeys::kWebcamSwitch).toBool());
    }

    void menuIsBelowItsButton()
    {
        auto* const button = child<QPushButton>("menuBtn");
        const QMenu* const menu = openMenu();
        QVERIFY(menu != nullptr);
        QCOMPARE(menu->geometry().topLeft(), button->mapToGlobal(QPoint(0, button->height())));
        QTRY_COMPARE(QColor(colourAt(menu->geometry().topLeft() + QPoint(4, 3))), QColor(0x25, 0x25, 0x26));
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(visibleMenu() == nullptr);
    }

    void languageIsChosenInTheMenu()
    {
        const int position = settingstables::kLanguagePositions.at(QStringLiteral("de_DE"));
        const QString code = QStringLiteral("de_DE");
        const QString name = settingstables::kLanguageMenuNames.at(position);
        auto translator = std::make_shared<SCTranslator>();
        m_window->setTranslator(translator);
        const MessageCapture messages;
        chooseInMenu(QStringLiteral("Language"), name);
        QTRY_COMPARE(openSettings()->value(settingskeys::kLanguage).toString(), code);
        QVERIFY(!translator->isEmpty());
        // As a click on the full-screen tile does.
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Select screen clicked")));
        auto* const button = child<QPushButton>("recordButton");
        QCOMPARE(button->text(), translator->translate("SCMainWindow", "Start Recording"));
        // The next menu has the language checked, and no other.
        QMenu* const menu = openMenu();
        QVERIFY(menu != nullptr);
        const QString languages = translator->translate("SCMainWindow", "Language");
        for (const QAction* const entry : entryOf(*menu, languages)->menu()->actions())
            QCOMPARE(entry->isChecked(), entry->text() == name);
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(visibleMenu() == nullptr);
        QCoreApplication::removeTranslator(translator.get());
    }

    void helpIsChosenInTheMenu()
    {
        const OpenedAddresses web({"https"});
        const OpenedAddresses folders({"file"});
        const QString help = QStringLiteral("Help");
        chooseInMenu(help, QStringLiteral("Guide"));
        QTRY_COMPARE(web.opened(), QList<QUrl>{QUrl(QLatin1String(webaddresses::kGuidePage))});
        chooseInMenu(help, QStringLiteral("FAQ"));
        QTRY_COMPARE(web.opened().value(1), QUrl(QLatin1String(webaddresses::kSupportPage)));
        chooseInMenu(help, QStringLiteral("Open Log Folder"));
        QTRY_COMPARE(folders.opened(),
                     QList<QUrl>{QUrl::fromLocalFile(QFileInfo(SCLogger::defaultPath()).absolutePath())});
    }

    void helpKeyOpensTheManualOfTheBuild_data()
    {
        QTest::addColumn<QString>("over");
        QTest::newRow("main window") << "";
        QTest::newRow("settings") << "settings";
        QTest::newRow("menu") << "menu";
    }

    void helpKeyOpensTheManualOfTheBuild()
    {
        QFETCH(const QString, over);
        const OpenedAddresses system({"file"});
        if (over == QLatin1String("settings")) {
            click(*child<QPushButton>("settingsBtn"));
            QTRY_VERIFY(QApplication::activeModalWidget() != nullptr);
            QVERIFY(QTest::qWaitForWindowActive(QApplication::activeModalWidget()));
        } else if (over == QLatin1String("menu")) {
            QVERIFY(openMenu() != nullptr);
        }
        press(QStringLiteral("F1"));
        const QDir program(QCoreApplication::applicationDirPath());
        QTRY_COMPARE(system.files(), QStringList{program.filePath(QStringLiteral("manual/index.html"))});
        QVERIFY(QFileInfo::exists(program.filePath(QStringLiteral("manual/images/main-window.png"))));
        if (!over.isEmpty())
            press(QStringLiteral("Escape"));
        QTRY_VERIFY(QApplication::activeModalWidget() == nullptr && visibleMenu() == nullptr);
    }

    void menuIsWorkedWithTheKeyboard()
    {
        const OpenedAddresses web({"https"});
        QVERIFY(desktopuser::tabTo(*child<QPushButton>("menuBtn")));
        press(QStringLiteral("space"));
        QTRY_VERIFY(visibleMenu() != nullptr);
        // The last entries come first from below: "Help" opens to the right, with the guide at its top.
        for (const char* key : {"Down", "Down", "Down", "Down"}) {
            if (visibleMenu()->activeAction() != nullptr &&
                visibleMenu()->activeAction()->text() == QLatin1String("Help"))
                break;
            press(QLatin1String(key));
        }
        QCOMPARE(visibleMenu()->activeAction()->text(), QStringLiteral("Help"));
        press(QStringLiteral("Right"));
        press(QStringLiteral("Return"));
        QTRY_COMPARE(web.opened(), QList<QUrl>{QUrl(QLatin1String(webaddresses::kGuidePage))});
    }

    void pageIsChosenByAClick()
    {
        for (const char* page : {"screenshot", "files", "recording"}) {
            click(*child<QPushButton>(QLatin1String(page) + QLatin1String("Tab")));
            expectPage(page);
        }
    }

    /// The tabs are one place in the order of the Tab key; the arrows lead from one to the next.
    void pageIsChosenByTheKeyboard()
    {
        QVERIFY(desktopuser::tabTo(*child<QPushButton>("recordingTab")));
        press(QStringLiteral("Down"));
        expectPage("screenshot");
        press(QStringLiteral("Down"));
        expectPage("files");
        press(QStringLiteral("Up"));
        press(QStringLiteral("Up"));
        expectPage("recording");
        press(QStringLiteral("Tab"));
        QCOMPARE(m_window->focusWidget(), child<QPushButton>("settingsBtn"));
    }

    void folderIsChosen_data()
    {
        QTest::addColumn<QString>("tab");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("title");
        QTest::newRow("recordings") << "recordingTab"
                                    << "changeLocationButton"
                                    << "saveLocationEdit" << QString(settingskeys::kRecordingSaveLocation)
                                    << "Choose Save Location";
        QTest::newRow("screenshots") << "screenshotTab"
                                     << "changeScreenshotLocationButton"
                                     << "screenshotLocationEdit" << QString(settingskeys::kScreenshotSaveLocation)
                                     << "Choose Screenshot Save Location";
    }

    void folderIsChosen()
    {
        QFETCH(const QString, tab);
        QFETCH(const QString, button);
        QFETCH(const QString, field);
        QFETCH(const QString, key);
        QFETCH(const QString, title);
        QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("chosen")));
        const QString folder = m_folder.filePath(QStringLiteral("chosen"));
        click(*child<QPushButton>(tab));
        // Cancelled first: nothing changes.
        QString seenTitle;
        inTheDialog([&seenTitle] {
            seenTitle = QApplication::activeModalWidget()->windowTitle();
            press(QStringLiteral("Escape"));
        });
        click(*child<QPushButton>(button));
        QTRY_COMPARE(seenTitle, title);
        QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(openSettings()->value(key).toString(), m_folder.path());
        inTheDialog([folder] {
            press(QStringLiteral("ctrl+a"));
            xdotool({"type", "--delay", "5", folder});
            press(QStringLiteral("Return"));
        });
        click(*child<QPushButton>(button));
        QTRY_COMPARE(openSettings()->value(key).toString(), folder);
        QCOMPARE(child<QLineEdit>(field)->text(), folder);
    }

    void formatIsChosenInItsBox()
    {
        auto* const box = child<QComboBox>("formatBox");
        QVERIFY(desktopuser::tabTo(*box));
        for (const char* format : {"AVI", "FLV", "GIF", "MP3", "AAC", "FLAC"}) {
            press(QStringLiteral("Down"));
            QTRY_COMPARE(openSettings()->value(settingskeys::kRecordingFormat).toString(), QLatin1String(format));
        }
    }

    void titleBarButtonTurnsLightUnderThePointer()
    {
        const auto* const button = child<QPushButton>("closeBtn");
        const int normal = desktopuser::brightestOf(*button);
        pointTo(desktopuser::centreOf(*button) + QPoint(12, 12));
        QTRY_VERIFY(desktopuser::brightestOf(*button) > normal + 40);
        pointTo(onScreen({3, 3}));
        QTRY_COMPARE(desktopuser::brightestOf(*button), normal);
    }

    void titleBarButtonsDoWhatTheySay()
    {
        click(*child<QPushButton>("minimizeBtn"));
        QTRY_VERIFY(m_window->isMinimized());
        m_window->showNormal();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        click(*child<QPushButton>("closeBtn"));
        QTRY_VERIFY(!m_window->isVisible());
    }

private:
    template <typename Widget>
    Widget* child(const QString& name) const
    {
        return m_window->findChild<Widget*>(name);
    }

    void expectPage(const char* page) const
    {
        const auto* const pages = child<QStackedWidget>(QStringLiteral("pages"));
        QTRY_COMPARE(pages->currentWidget()->objectName(), QLatin1String(page) + QLatin1String("Page"));
        QVERIFY(child<QPushButton>(QLatin1String(page) + QLatin1String("Tab"))->isChecked());
    }

    /// The colour in the middle of the switch's knob, where it rests.
    static QRgb knobOf(const SCSwitchWidget& control)
    {
        constexpr int kFromTheEnd = 7;
        const int x = control.isChecked() ? control.width() - kFromTheEnd : kFromTheEnd;
        return colourAt(control.mapToGlobal(QPoint(x, control.height() / 2)));
    }

    static QMenu* visibleMenu()
    {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->objectName() == QLatin1String("mainMenu") && window->isVisible())
                return qobject_cast<QMenu*>(window);
        }
        return nullptr;
    }

    QMenu* openMenu() const
    {
        click(*child<QPushButton>(QStringLiteral("menuBtn")));
        [] { QTRY_VERIFY(visibleMenu() != nullptr); }();
        return visibleMenu();
    }

    static QAction* entryOf(const QMenu& menu, const QString& text)
    {
        for (QAction* const entry : menu.actions()) {
            if (entry->text() == text)
                return entry;
        }
        return nullptr;
    }

    static void clickEntry(QMenu& menu, const QString& text)
    {
        QAction* const entry = entryOf(menu, text);
        QVERIFY(entry != nullptr);
        click(menu.mapToGlobal(menu.actionGeometry(entry).center()));
    }

    void chooseInMenu(const QString& submenu, const QString& text) const
    {
        QMenu* const menu = openMenu();
        QVERIFY(menu != nullptr);
        clickEntry(*menu, submenu);
        QMenu* const entries = entryOf(*menu, submenu)->menu();
        QTRY_VERIFY(entries->isVisible());
        clickEntry(*entries, text);
        QTRY_VERIFY(visibleMenu() == nullptr);
    }

    /// Acts in the next dialog, which runs within the click that opens it.
    static void inTheDialog(const std::function<void()>& act)
    {
        auto* const look = new QTimer(qApp);
        connect(look, &QTimer::timeout, qApp, [look, act] {
            auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (dialog == nullptr || !dialog->isActiveWindow())
                return;
            look->stop();
            look->deleteLater();
            act();
        });
        look->start(50);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<SCMainWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestWindowControls>);

#include "test_windowcontrols.moc"
