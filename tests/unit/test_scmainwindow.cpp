// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "app/sctranslator.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "app/webaddresses.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "overlays/scswitchwidget.h"
#include "tests/support/addresses.h"
#include "tests/support/countdowntest.h"
#include "tests/support/messagecapture.h"
#include "tests/support/regiontiles.h"
#include "tests/support/shownwindow.h"
#include "tests/support/windowtest.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTranslator>
#include <QUrl>
#include <QWheelEvent>

class TestSCMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init() { windowtest::resetSettings(); }

    void freshProfileHasAllDefaultsAndIsNoLongerOnItsFirstRun()
    {
        const OpenedAddresses browser({"https"});
        openSettings()->clear();
        const SCMainWindow window;
        const auto settings = openSettings();
        for (const auto& [key, value] : defaultSettings())
            QCOMPARE(settings->value(key), key == settingskeys::kFirstRun ? QVariant(false) : value);
    }

    void installationPageOpensOnceOnAFreshProfile()
    {
        const OpenedAddresses browser({"https"});
        openSettings()->clear();
        for (int start = 0; start < 3; ++start)
            const SCMainWindow window;
        QCOMPARE(browser.opened(), QList<QUrl>{QUrl(QLatin1String(webaddresses::kFirstRunPage))});
    }

    void wheelChoosesNothing()
    {
        SCMainWindow window;
        window.show();
        for (const char* name : {"formatBox", "ratioBox", "screenshotFormatBox"}) {
            auto* const box = child<QComboBox>(window, name);
            QWheelEvent down({5, 5}, box->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                             Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(box, &down);
            QCOMPARE(box->currentIndex(), 0);
        }
    }

    void sizeThatCannotBeIsReported()
    {
        SCMainWindow window;
        window.show();
        auto* const width = child<QLineEdit>(window, "widthEdit");
        QTest::keyClicks(width, QStringLiteral("wide"));
        QTest::keyClick(width, Qt::Key_Return);
        const auto* const notice = child<QLabel>(window, "noticeText");
        QVERIFY(notice->isVisible());
        QCOMPARE(notice->text(), QStringLiteral("The width has to be a whole number from 192 to %1.")
                                     .arg(QGuiApplication::primaryScreen()->geometry().width()));
    }

    void chosenFormatIsStored()
    {
        SCMainWindow window;
        auto* const box = child<QComboBox>(window, "formatBox");
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Down);
        QCOMPARE(openSettings()->value(settingskeys::kRecordingFormat).toString(), QStringLiteral("AVI"));
    }

    void startingWritesNoSettingButTheFirstRun()
    {
        {
            const SCMainWindow window;
        }
        const auto settings = openSettings();
        const auto stored = [&settings] {
            QMap<QString, QVariant> values;
            const QStringList keys = settings->allKeys();
            for (const QString& key : keys)
                values.insert(key, settings->value(key));
            return values;
        };
        settings->setValue(settingskeys::kMicSwitch, true);
        settings->setValue(settingskeys::kMouseShowCursor, false);
        const auto before = stored();
        const SCMainWindow window;
        QCOMPARE(stored(), before);
    }

    void chosenSaveLocationIsShownAndStored()
    {
        const QTemporaryDir folder;
        SCMainWindow window;
        chooseInDialog(window, folder.path());
        QCOMPARE(openSettings()->value(settingskeys::kRecordingSaveLocation).toString(), folder.path());
        QCOMPARE(child<QLineEdit>(window, "saveLocationEdit")->text(), folder.path());
    }

    void cancelledFolderChoiceChangesNothing()
    {
        SCMainWindow window;
        const QString before = child<QLineEdit>(window, "saveLocationEdit")->text();
        chooseInDialog(window, QString());
        QCOMPARE(child<QLineEdit>(window, "saveLocationEdit")->text(), before);
        QCOMPARE(openSettings()->value(settingskeys::kRecordingSaveLocation).toString(), before);
    }

    void folderChoiceIsLogged()
    {
        SCMainWindow window;
        const MessageCapture messages;
        chooseInDialog(window, QString());
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Save location clicked")));
    }

    void recordingWithoutAnEngineRestoresTheWindowAndCanBeTriedAgain()
    {
        SCMainWindow window(Durations{.countdownStepMs = 40});
        window.show();
        auto* const button = child<QPushButton>(window, "recordButton");
        for (int attempt = 0; attempt < 2; ++attempt) {
            bool minimised = false;
            whenCountingDown(&window, [&] { minimised = window.isMinimized(); });
            const MessageCapture messages;
            button->click();
            QVERIFY(minimised);
            QCOMPARE(messages.texts(QtWarningMsg).filter(QStringLiteral("[WARNING]")),
                     QStringList{"[WARNING] OBS wrapper not initialized"});
            QVERIFY(!window.isMinimized());
            QCOMPARE(button->text(), QStringLiteral("Start Recording"));
            // The way back ends with the events.
            QCoreApplication::processEvents();
        }
    }

    void buttonDuringTheCountdownCancelsIt()
    {
        SCMainWindow window;
        window.show();
        auto* const button = child<QPushButton>(window, "recordButton");
        const MessageCapture messages;
        bool finished = false;
        whenCountingDown(&window, [button, &finished] {
            connect(shownWindow<SCCountdownWidget>(), &SCCountdownWidget::countdownFinished, button,
                    [&finished] { finished = true; });
            button->click();
        });
        button->click();
        expectCancelled(window, messages);
        // Nor does it go on unseen, and keep the window away until it is over.
        QVERIFY(!finished);
    }

    void closingDuringTheCountdownCancelsItAndCloses()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        bool closedAtOnce = true;
        whenCountingDown(&window, [&window, &closedAtOnce] { closedAtOnce = window.close(); });
        child<QPushButton>(window, "recordButton")->click();
        // It closes once nothing is under way any more, or the program would end before the file is whole.
        QVERIFY(!closedAtOnce);
        expectCancelled(window, messages);
        QTRY_VERIFY(!window.isVisible());
    }

    void closingTheCountdownItselfCancelsIt()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        whenCountingDown(&window, [] { shownWindow<SCCountdownWidget>()->close(); });
        child<QPushButton>(window, "recordButton")->click();
        expectCancelled(window, messages);
    }

    void cancelledCountdownLeavesTheKeyboardFocusWhereItWas()
    {
        SCMainWindow window;
        window.show();
        auto* const button = child<QPushButton>(window, "recordButton");
        button->setFocus();
        whenCountingDown(&window, [button] { button->click(); });
        button->click();
        QCoreApplication::processEvents();
        QCOMPARE(window.focusWidget(), button);
    }

    void programThatEndsDuringTheCountdownStartsNothing()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        QTimer::singleShot(0, &window, [&window] { child<QPushButton>(window, "recordButton")->click(); });
        whenCountingDown(&window, [] { QCoreApplication::exit(0); });
        QApplication::exec();
        expectCancelled(window, messages);
    }

    void quitDuringTheCountdownCancelsItAndCloses()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        QApplication::setQuitOnLastWindowClosed(true);
        QTimer::singleShot(0, &window, [&window] { child<QPushButton>(window, "recordButton")->click(); });
        whenCountingDown(&window, [] { QCoreApplication::quit(); });
        QApplication::exec();
        QApplication::setQuitOnLastWindowClosed(false);
        QVERIFY(!window.isVisible());
        expectCancelled(window, messages);
    }

    void fitsOnASmallScreenOfTwiceTheScale()
    {
        SCMainWindow window;
        window.show();
        QCOMPARE(window.size().boundedTo(QSize(960, 540)), window.size());
    }

    void closingWhileIdleClosesAtOnce()
    {
        SCMainWindow window;
        window.show();
        QVERIFY(window.close());
        QVERIFY(!window.isVisible());
    }

    void languageChangeChangesTheTextsAtOnce()
    {
        SCMainWindow window;
        window.show();
        class Shouting : public QTranslator
        {
        public:
            QString translate(const char*, const char* text, const char*, int) const override
            {
                return QString::fromUtf8(text).toUpper();
            }
            bool isEmpty() const override { return false; }
        };
        Shouting translator;
        QApplication::installTranslator(&translator);
        QTRY_COMPARE(child<QPushButton>(window, "recordButton")->text(), QStringLiteral("START RECORDING"));
        QCOMPARE(child<QLabel>(window, "fileNameLabel")->text(), QStringLiteral("FILE NAME"));
        QApplication::removeTranslator(&translator);
        QTRY_COMPARE(child<QPushButton>(window, "recordButton")->text(), QStringLiteral("Start Recording"));
    }

    void everyControlHasANameAndAPositionInTheTabOrder()
    {
        SCMainWindow window;
        window.show();
        const QStringList order{"recordButton",         "recordingTab",
                                "screenshotTab",        "filesTab",
                                "settingsBtn",          "menuBtn",
                                "minimizeBtn",          "closeBtn",
                                "fullScreenTile",       "regionTile",
                                "windowTile",           "ratioBox",
                                "lockButton",           "widthEdit",
                                "heightEdit",           "screenSwitch",
                                "mouseSwitch",          "webcamSwitch",
                                "speakerDevicesButton", "speakerSwitch",
                                "micDevicesButton",     "micSwitch",
                                "fileNameEdit",         "formatBox",
                                "saveLocationEdit",     "changeLocationButton"};
        const QWidget* widget = child<QWidget>(window, "recordButton");
        for (const QString& name : order) {
            QCOMPARE(widget->objectName(), name);
            const auto* const button = qobject_cast<const QPushButton*>(widget);
            QVERIFY2(!widget->accessibleName().isEmpty() || (button != nullptr && !button->text().isEmpty()),
                     qPrintable(name));
            do
                widget = widget->nextInFocusChain();
            while ((widget->focusPolicy() & Qt::TabFocus) == 0 || !widget->isVisible() || !widget->isEnabled());
        }
        QCOMPARE(widget->objectName(), order.first());
    }

    void titleBarButtonsShowTheirLightIconUnderThePointer()
    {
        SCMainWindow window;
        for (const char* name : {"closeBtn", "minimizeBtn", "menuBtn", "settingsBtn"}) {
            auto* const button = child<QPushButton>(window, name);
            const QString base = QStringLiteral(":/res/forms/images/%1").arg(QLatin1String(name).chopped(3).toString());
            QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
            QCoreApplication::sendEvent(button, &enter);
            QCOMPARE(image(button->icon()), image(QIcon(base + QLatin1String("-white.svg"))));
            QEvent leave(QEvent::Leave);
            QCoreApplication::sendEvent(button, &leave);
            QCOMPARE(image(button->icon()), image(QIcon(base + QLatin1String(".svg"))));
        }
    }

    void frameClosedDuringTheCountdownCancelsIt()
    {
        SCMainWindow window;
        window.show();
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        const MessageCapture messages;
        whenCountingDown(&window, [frame] { QTest::mousePress(frame, Qt::RightButton, {}, {2, 2}); });
        child<QPushButton>(window, "recordButton")->click();
        expectCancelled(window, messages);
        QTRY_COMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QVERIFY(!frame->isVisible());
    }

    void frameStopsTheCountdownThatItStarted()
    {
        SCMainWindow window;
        window.show();
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        const MessageCapture messages;
        whenCountingDown(&window, [frame] { emit frame->stopRecording(); });
        emit frame->startRecording();
        expectCancelled(window, messages);
    }

    void recordingCancelsTheDialogThatIsOpen()
    {
        SCMainWindow window;
        window.show();
        bool isCounting = false;
        whenCountingDown(&window, [&window, &isCounting] {
            isCounting = QApplication::activeModalWidget() == nullptr;
            child<QPushButton>(window, "recordButton")->click();
        });
        QTimer::singleShot(0, child<QPushButton>(window, "recordButton"), &QPushButton::click);
        child<QPushButton>(window, "changeLocationButton")->click();
        QTRY_VERIFY(isCounting);
    }

    void audioFormatChosenWithTheScreenOnStays()
    {
        SCMainWindow window;
        window.show();
        auto* const box = child<QComboBox>(window, "formatBox");
        child<SCSwitchWidget>(window, "screenSwitch")->setChecked(true);
        const auto chosen = [box] {
            return box->currentText() + u'|' + openSettings()->value(settingskeys::kRecordingFormat).toString();
        };
        QTest::keyClick(box, Qt::Key_End);
        QCOMPARE(chosen(), QStringLiteral("FLAC|FLAC"));
        chooseInMenu(window, "Language", "English");
        QCOMPARE(chosen(), QStringLiteral("FLAC|FLAC"));
        dragRegion(window, {100, 80}, {419, 319});
        emit shownWindow<DrawWindow>()->hideDrawWindow();
        QCOMPARE(chosen(), QStringLiteral("FLAC|FLAC"));
    }

    void pagesFollowTheirTabs()
    {
        SCMainWindow window;
        window.show();
        const auto* const pages = child<QStackedWidget>(window, "pages");
        QCOMPARE(pages->currentWidget()->objectName(), QStringLiteral("recordingPage"));
        child<QPushButton>(window, "screenshotTab")->click();
        QCOMPARE(pages->currentWidget()->objectName(), QStringLiteral("screenshotPage"));
        child<QPushButton>(window, "filesTab")->click();
        QCOMPARE(pages->currentWidget()->objectName(), QStringLiteral("filesPage"));
        child<QPushButton>(window, "recordingTab")->click();
        QCOMPARE(pages->currentWidget()->objectName(), QStringLiteral("recordingPage"));
    }

    void languageOfTheMenuIsStoredLoadedAndKept()
    {
        SCMainWindow window;
        auto translator = std::make_shared<SCTranslator>();
        window.setTranslator(translator);
        window.show();
        chooseInMenu(window, "Language", "English");
        QCOMPARE(openSettings()->value(settingskeys::kLanguage).toString(), QStringLiteral("en_US"));
        QCOMPARE(translator->translate("any", "Start Recording"), QStringLiteral("Start Recording"));
        const MessageCapture messages;
        chooseInMenu(window, "Language", "Français");
        QCOMPARE(openSettings()->value(settingskeys::kLanguage).toString(), QStringLiteral("oc_FR"));
        QCoreApplication::removeTranslator(translator.get());
    }

    void languageIsChangedInFullScreenModeByChoosingItAgain()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        chooseInMenu(window, "Language", "English");
        QCOMPARE(messages.texts().filter(QStringLiteral("Select screen clicked")).size(), 1);
        dragRegion(window, {100, 80}, {419, 319});
        chooseInMenu(window, "Language", "English");
        QCOMPARE(messages.texts().filter(QStringLiteral("Select screen clicked")).size(), 1);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
    }

    void languageDoesNotSwitchTheScreenOn()
    {
        SCMainWindow window;
        window.show();
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        control->setChecked(true);
        control->setChecked(false);
        chooseInMenu(window, "Language", "English");
        QVERIFY(!control->isChecked());
    }

    void helpOpensTheMakersPagesAndTheLogFolder()
    {
        const OpenedAddresses browser({"https"});
        SCMainWindow window;
        window.show();
        chooseInMenu(window, "Help", "Guide");
        chooseInMenu(window, "Help", "FAQ");
        QCOMPARE(browser.opened(), (QList<QUrl>{QUrl(QLatin1String(webaddresses::kGuidePage)),
                                                QUrl(QLatin1String(webaddresses::kSupportPage))}));
        const OpenedAddresses folders({"file"});
        chooseInMenu(window, "Help", "Open Log Folder");
        QCOMPARE(folders.opened(), QList<QUrl>{QUrl::fromLocalFile(QFileInfo(SCLogger::defaultPath()).absolutePath())});
    }

    void openFolderMakesTheSaveFolderWhereItIsMissing()
    {
        const QTemporaryDir position;
        const QString folder = position.filePath(QStringLiteral("videos"));
        openSettings()->setValue(settingskeys::kRecordingSaveLocation, folder);
        SCMainWindow window;
        const OpenedAddresses folders({"file"});
        child<QPushButton>(window, "openFolderButton")->click();
        QCOMPARE(folders.opened(), QList<QUrl>{QUrl::fromLocalFile(folder)});
        QVERIFY(QFileInfo(folder).isDir());
    }

    void closingHidesTheOverlays()
    {
        SCMainWindow window;
        window.show();
        dragRegion(window, {100, 80}, {419, 319});
        QTest::mouseClick(child<Tile>(window, "regionTile"), Qt::LeftButton);
        QVERIFY(shownWindow<AreaSelector>() != nullptr);
        window.close();
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
    }

    void cancelledCountdownKeepsTheFrame()
    {
        SCMainWindow window;
        window.show();
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        whenCountingDown(&window, [&window] { child<QPushButton>(window, "recordButton")->click(); });
        emit frame->startRecording();
        QCoreApplication::processEvents();
        QVERIFY(frame->isVisible());
        QVERIFY(!frame->isRecording());
    }

    void selectionIsCancelledWhenARecordingStarts()
    {
        SCMainWindow window;
        window.show();
        QTest::mouseClick(child<Tile>(window, "regionTile"), Qt::LeftButton);
        whenCountingDown(&window, [&window] { child<QPushButton>(window, "recordButton")->click(); });
        child<QPushButton>(window, "recordButton")->click();
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
    }

    void noHotkeyShowsNoHint()
    {
        SCMainWindow window;
        window.show();
        QVERIFY(!child<QLabel>(window, "hotkeyLabel")->isVisible());
    }

    void hotkeyThatNamesNoKeyIsLoggedWithItsTextAndShowsNoHint()
    {
        openSettings()->setValue(settingskeys::kRecordingHotkey, QStringLiteral("garbage"));
        const MessageCapture messages;
        SCMainWindow window;
        window.show();
        QVERIFY(!child<QLabel>(window, "hotkeyLabel")->isVisible());
        QVERIFY(messages.texts().contains(
            QStringLiteral("[WARNING] The hotkey \"garbage\" cannot be used: there is no such key")));
    }

    void styleSheetIsLoaded()
    {
        const MessageCapture messages;
        const SCMainWindow window;
        QVERIFY(!window.styleSheet().isEmpty());
        QVERIFY(
            !messages.texts().filter(QStringLiteral("Loaded stylesheet from: :/res/style/main-window.qss")).isEmpty());
    }

private:
    /// A countdown that runs to its end finds no engine and says so; a cancelled one leaves nothing behind.
    static void expectCancelled(const SCMainWindow& window, const MessageCapture& messages)
    {
        QCOMPARE(messages.texts().filter(QStringLiteral("OBS wrapper not initialized")), QStringList());
        QVERIFY(shownWindow<SCCountdownWidget>() == nullptr);
        QTRY_VERIFY(!window.isVisible() || !window.isMinimized());
        QCOMPARE(child<QPushButton>(window, "recordButton")->text(), QStringLiteral("Start Recording"));
        QTRY_VERIFY(child<Tile>(window, "fullScreenTile")->isEnabled());
    }

    /// The icon's image; empty where the system has no plug-in for its format.
    static QImage image(const QIcon& icon) { return icon.pixmap(QSize(24, 24)).toImage(); }

    template <typename Widget>
    static Widget* child(const SCMainWindow& window, const char* name)
    {
        return window.findChild<Widget*>(QLatin1String(name));
    }

    static void chooseInMenu(const SCMainWindow& window, const char* submenu, const char* entry)
    {
        child<QPushButton>(window, "menuBtn")->click();
        QMenu* menu = nullptr;
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == QLatin1String("mainMenu") && widget->isVisible())
                menu = qobject_cast<QMenu*>(widget);
        }
        if (menu == nullptr)
            QFAIL("the menu is not shown");
        QAction* const parent = entryOf(*menu, QLatin1String(submenu));
        QVERIFY(parent != nullptr && parent->menu() != nullptr);
        QAction* const chosen = entryOf(*parent->menu(), QString::fromUtf8(entry));
        QVERIFY(chosen != nullptr);
        chosen->trigger();
        menu->close();
    }

    static QAction* entryOf(const QMenu& menu, const QString& text)
    {
        for (QAction* const action : menu.actions()) {
            if (action->text() == text)
                return action;
        }
        return nullptr;
    }

    /// Presses "Change" and answers the dialog with folder, or cancels it for an empty one.
    static void chooseInDialog(SCMainWindow& window, const QString& folder)
    {
        QTimer::singleShot(0, &window, [folder] {
            auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog != nullptr);
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Choose Save Location"));
            if (folder.isEmpty()) {
                dialog->reject();
                return;
            }
            dialog->setDirectory(folder);
            dialog->selectFile(folder);
            dialog->findChild<QLineEdit*>()->setText(folder);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        child<QPushButton>(window, "changeLocationButton")->click();
    }
};

REGISTER_TEST(windowtest::run<TestSCMainWindow>);

#include "test_scmainwindow.moc"
