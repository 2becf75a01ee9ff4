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

    void formatBoxHoldsTheTableAndShowsTheStoredFormat()
    {
        openSettings()->setValue(settingskeys::kRecordingFormat, QStringLiteral("GIF"));
        const SCMainWindow window;
        const auto* const box = child<QComboBox>(window, "formatBox");
        QCOMPARE(box->count(), 7);
        QCOMPARE(box->itemText(0), QStringLiteral("MP4"));
        QCOMPARE(box->itemText(6), QStringLiteral("FLAC"));
        QCOMPARE(box->currentText(), QStringLiteral("GIF"));
    }

    void storedFormatThatIsNotInTheTableIsShownAsTheFirstAndLeftAlone()
    {
        openSettings()->setValue(settingskeys::kRecordingFormat, QStringLiteral("MKV"));
        const MessageCapture messages;
        const SCMainWindow window;
        QCOMPARE(child<QComboBox>(window, "formatBox")->currentIndex(), 0);
        QCOMPARE(openSettings()->value(settingskeys::kRecordingFormat).toString(), QStringLiteral("MKV"));
        QVERIFY(!messages.texts().filter(QStringLiteral("\"MKV\"")).isEmpty());
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

    void recordingWithoutAnEngineComesBackAndCanBeTriedAgain()
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

    void folderDialogDoesNotOpenDuringTheCountdown()
    {
        SCMainWindow window;
        window.show();
        bool isOpened = false;
        whenCountingDown(&window, [&window, &isOpened] {
            // A dialog that opens holds the click up until it is closed.
            QTimer closer;
            connect(&closer, &QTimer::timeout, &window, [&isOpened] {
                if (QWidget* const dialog = QApplication::activeModalWidget()) {
                    isOpened = true;
                    dialog->close();
                }
            });
            closer.start(10);
            child<QPushButton>(window, "changeLocationButton")->click();
            closer.stop();
            child<QPushButton>(window, "recordButton")->click();
        });
        child<QPushButton>(window, "recordButton")->click();
        QVERIFY(!isOpened);
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

    void everyControlHasANameAndAPlaceInTheTabOrder()
    {
        SCMainWindow window;
        window.show();
        const QStringList order{"recordButton",   "recordingTab", "screenshotTab",    "filesTab",
                                "settingsBtn",    "menuBtn",      "minimizeBtn",      "closeBtn",
                                "fullScreenTile", "regionTile",   "windowTile",       "ratioBox",
                                "lockButton",     "widthEdit",    "heightEdit",       "screenSwitch",
                                "mouseSwitch",    "webcamSwitch", "speakerSwitch",    "micSwitch",
                                "fileNameEdit",   "formatBox",    "saveLocationEdit", "changeLocationButton"};
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
            QCOMPARE(picture(button->icon()), picture(QIcon(base + QLatin1String("-white.svg"))));
            QEvent leave(QEvent::Leave);
            QCoreApplication::sendEvent(button, &leave);
            QCOMPARE(picture(button->icon()), picture(QIcon(base + QLatin1String(".svg"))));
        }
    }

    void tilesChooseTheMode()
    {
        SCMainWindow window;
        window.show();
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        const MessageCapture messages;
        QTest::mouseClick(child<Tile>(window, "windowTile"), Qt::LeftButton);
        QCOMPARE(selectedTiles(window), QStringList{"windowTile"});
        QTest::mouseClick(child<Tile>(window, "fullScreenTile"), Qt::LeftButton);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QCOMPARE(messages.texts(QtInfoMsg), QStringList{"[INFO] Select screen clicked"});
    }

    void onlyALeftReleaseOnTheTileCounts()
    {
        SCMainWindow window;
        window.show();
        auto* const tile = child<Tile>(window, "windowTile");
        QTest::mouseClick(tile, Qt::RightButton);
        QTest::mousePress(tile, Qt::LeftButton);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QTest::mouseRelease(tile, Qt::LeftButton, {}, {-20, 10});
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
    }

    void regionSelectionGivenUpLeadsBackToTheWholeScreen()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Select region clicked")));
        AreaSelector* const selector = shownWindow<AreaSelector>();
        QVERIFY(selector != nullptr);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::CrossCursor);
        QTest::keyClick(selector, Qt::Key_Escape);
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
    }

    void draggedRegionGetsItsFrameAndItsSizeInTheFields()
    {
        SCMainWindow window;
        window.show();
        dragRegion(window, {100, 80}, {419, 319});
        const DrawWindow* const frame = shownWindow<DrawWindow>();
        QVERIFY(frame != nullptr);
        QCOMPARE(frame->geometry(), QRect(96, 76, 328, 248));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("320"));
        QCOMPARE(field(window, "heightEdit"), QStringLiteral("240"));
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
    }

    void eachSelectionIsLogged()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        dragRegion(window, {100, 80}, {419, 319});
        QVERIFY(
            messages.texts().contains(QStringLiteral("[DEBUG] Selected Area - x=100, y=80, width=320, height=240")));
        QVERIFY(messages.texts().contains(QStringLiteral("[DEBUG] position 100 80 420 320")));
    }

    void regionSmallerThanTheFrameGrowsWithIt()
    {
        SCMainWindow window;
        window.show();
        dragRegion(window, {300, 300}, {309, 309});
        const QRect frame = shownWindow<DrawWindow>()->geometry();
        QCOMPARE(frame, QRect(296, 296, 200, 150));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("192"));
        QCOMPARE(field(window, "heightEdit"), QStringLiteral("142"));
    }

    void frameThatIsMovedIsStoredWhenItRests()
    {
        SCMainWindow window;
        window.show();
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        const MessageCapture messages;
        emit frame->windowGeometryChanged(true, {200, 100}, {599, 399});
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("320"));
        emit frame->windowGeometryChanged(false, {200, 100}, {599, 399});
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("400"));
        QCOMPARE(field(window, "heightEdit"), QStringLiteral("300"));
        QCOMPARE(
            messages.texts().filter(QStringLiteral("Window coords")),
            (QStringList{"[DEBUG] Window coords: (200,100) (599,399)", "[DEBUG] Window coords: (200,100) (599,399)"}));
        QVERIFY(messages.texts().contains(QStringLiteral("[DEBUG] position 200 100 600 400")));
    }

    void movedFrameIsNoPresetAnyMoreUnlessTheSizeIsLocked()
    {
        SCMainWindow window;
        window.show();
        choosePreset(window, "1:1");
        emit shownWindow<DrawWindow>()->windowGeometryChanged(false, {200, 100}, {599, 399});
        QCOMPARE(child<QComboBox>(window, "ratioBox")->currentIndex(), 0);
        choosePreset(window, "1:1");
        child<QPushButton>(window, "lockButton")->click();
        QVERIFY(shownWindow<DrawWindow>()->lockRatio());
        emit shownWindow<DrawWindow>()->windowGeometryChanged(false, {200, 100}, {599, 399});
        QCOMPARE(child<QComboBox>(window, "ratioBox")->currentText(), QStringLiteral("1:1"));
        child<QPushButton>(window, "lockButton")->click();
        QVERIFY(!shownWindow<DrawWindow>()->lockRatio());
    }

    void presetShowsItsFrameInTheMiddleOfTheScreen_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("16:9") << QSize(1920, 1080);
        QTest::newRow("9:16") << QSize(608, 1080);
        QTest::newRow("4:3") << QSize(1440, 1080);
        QTest::newRow("1:1") << QSize(1080, 1080);
    }

    void presetShowsItsFrameInTheMiddleOfTheScreen()
    {
        QFETCH(const QSize, size);
        SCMainWindow window;
        window.show();
        choosePreset(window, QTest::currentDataTag());
        QCOMPARE(field(window, "widthEdit"), QString::number(size.width()));
        QCOMPARE(field(window, "heightEdit"), QString::number(size.height()));
        const QRect frame = shownWindow<DrawWindow>()->geometry();
        QCOMPARE(frame.size(), size + QSize(8, 8));
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QCOMPARE(frame.topLeft(), QPoint((screen.width() - frame.width()) / 2 + screen.x(),
                                         (screen.height() - frame.height()) / 2 + screen.y()));
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
    }

    void firstEntryOfTheRatioBoxRunsNoPreset()
    {
        SCMainWindow window;
        window.show();
        choosePreset(window, "Custom");
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
    }

    void selectionGivenUpBringsBackWhatWasChosenBefore()
    {
        SCMainWindow window;
        window.show();
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        control->setChecked(true);
        control->setChecked(false);
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        QTest::keyClick(shownWindow<AreaSelector>(), Qt::Key_Escape);
        QVERIFY(!control->isChecked());
        QCOMPARE(child<QComboBox>(window, "formatBox")->currentText(), QStringLiteral("MP3"));
        QCOMPARE(openSettings()->value(settingskeys::kScreenSwitch).toBool(), false);
        QCOMPARE(selectedTiles(window), QStringList());
        dragRegion(window, {100, 80}, {419, 319});
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        QTest::keyClick(shownWindow<AreaSelector>(), Qt::Key_Escape);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("320"));
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
    }

    /// On another screen, the window can be reached beside the veil.
    void whatIsChosenWhileARegionIsSelectedStays()
    {
        SCMainWindow window;
        window.show();
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        auto* const box = child<QComboBox>(window, "formatBox");
        control->setChecked(true);
        control->setChecked(false);
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        QTest::keyClick(box, Qt::Key_Down);
        QTest::keyClick(child<Tile>(window, "fullScreenTile"), Qt::Key_Space);
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QCOMPARE(box->currentText(), QStringLiteral("AVI"));
        QVERIFY(control->isChecked());
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        choosePreset(window, "4:3");
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        QTest::keyClick(box, Qt::Key_Down);
        QTest::keyClick(shownWindow<AreaSelector>(), Qt::Key_Escape);
        QCOMPARE(box->currentText(), QStringLiteral("FLV"));
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        control->setChecked(false);
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QVERIFY(!control->isChecked());
    }

    void selectorClosedByTheSystemGivesTheCursorBack()
    {
        SCMainWindow window;
        window.show();
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        shownWindow<AreaSelector>()->close();
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
    }

    void regionThatGrowsAtTheScreensEdgeStaysOnTheScreen()
    {
        SCMainWindow window;
        window.show();
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QPoint corner = screen.bottomRight() - QPoint(20, 20);
        dragRegion(window, corner, corner + QPoint(5, 5));
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(screen.right() - 191, screen.bottom() - 141, 192, 142));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("192"));
    }

    void regionEndsAtTheScreensEdgeWhereverThePointerWasLetGo()
    {
        SCMainWindow window;
        window.show();
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        emit shownWindow<AreaSelector>()->areaSelected(QRect(screen.right() - 299, 80, 500, 240));
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(screen.right() - 299, 80, 300, 240));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("300"));
    }

    void frameLetGoOffTheScreenComesBackToIt_data()
    {
        QTest::addColumn<QPoint>("place");
        QTest::addColumn<QPoint>("back");
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QTest::newRow("below") << QPoint(100, screen.bottom() + 1) << QPoint(100, screen.bottom() - 239);
        QTest::newRow("one row is seen") << QPoint(100, screen.bottom()) << QPoint(100, screen.bottom() - 239);
        QTest::newRow("above") << QPoint(100, -240) << QPoint(100, 0);
        QTest::newRow("enough is seen") << QPoint(100, screen.bottom() - 99) << QPoint(100, screen.bottom() - 99);
    }

    void frameLetGoOffTheScreenComesBackToIt()
    {
        QFETCH(const QPoint, place);
        QFETCH(const QPoint, back);
        SCMainWindow window;
        window.show();
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        const QRect moved(place, QSize(320, 240));
        frame->setGeometry(moved.adjusted(-4, -4, 4, 4));
        emit frame->windowGeometryChanged(true, moved.topLeft(), moved.bottomRight());
        emit frame->windowGeometryChanged(false, moved.topLeft(), moved.bottomRight());
        QCOMPARE(inside(*frame), QRect(back, moved.size()));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("320"));
        const QRect recorded = QRect(back, moved.size()) & QGuiApplication::primaryScreen()->geometry();
        QCOMPARE(field(window, "heightEdit"), QString::number(recorded.height()));
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

    void recordingDoesNotStartWhileADialogIsOpen()
    {
        SCMainWindow window;
        window.show();
        bool isCounting = false;
        whenCountingDown(&window, [&window, &isCounting] {
            isCounting = true;
            child<QPushButton>(window, "recordButton")->click();
        });
        QTimer::singleShot(0, &window, [&window] {
            child<QPushButton>(window, "recordButton")->click();
            QApplication::activeModalWidget()->close();
        });
        child<QPushButton>(window, "changeLocationButton")->click();
        QVERIFY(!isCounting);
        QVERIFY(!window.isMinimized());
    }

    void closedFrameLeadsBackToTheWholeScreen_data()
    {
        QTest::addColumn<bool>("byItsButton");
        QTest::newRow("close button") << true;
        QTest::newRow("right click") << false;
    }

    void closedFrameLeadsBackToTheWholeScreen()
    {
        QFETCH(const bool, byItsButton);
        SCMainWindow window;
        window.show();
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        if (byItsButton)
            emit frame->hideDrawWindow();
        else
            QTest::mousePress(frame, Qt::RightButton, {}, {2, 2});
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        const QSize screen = QGuiApplication::primaryScreen()->size();
        QCOMPARE(field(window, "widthEdit"), QString::number(screen.width()));
    }

    void screenOffMakesAVideoFormatMp3AndOnMakesItMp4()
    {
        SCMainWindow window;
        window.show();
        auto* const box = child<QComboBox>(window, "formatBox");
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        control->setChecked(true);
        QCOMPARE(box->currentText(), QStringLiteral("MP4"));
        control->setChecked(false);
        QCOMPARE(box->currentText(), QStringLiteral("MP3"));
        QCOMPARE(selectedTiles(window), QStringList());
        QCOMPARE(openSettings()->value(settingskeys::kScreenSwitch).toBool(), false);
        control->setChecked(true);
        QCOMPARE(box->currentText(), QStringLiteral("MP4"));
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QCOMPARE(openSettings()->value(settingskeys::kScreenSwitch).toBool(), true);
        QCOMPARE(openSettings()->value(settingskeys::kRecordingFormat).toString(), QStringLiteral("MP4"));
    }

    void screenSwitchLeavesASuitingFormatAlone()
    {
        SCMainWindow window;
        window.show();
        auto* const box = child<QComboBox>(window, "formatBox");
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        box->setCurrentIndex(6);
        control->setChecked(true);
        QCOMPARE(box->currentText(), QStringLiteral("MP4"));
        box->setCurrentIndex(5);
        control->setChecked(false);
        QCOMPARE(box->currentText(), QStringLiteral("AAC"));
        box->setCurrentIndex(2);
        control->setChecked(true);
        QCOMPARE(box->currentText(), QStringLiteral("FLV"));
    }

    void formatWithAPictureSwitchesTheScreenOn()
    {
        SCMainWindow window;
        window.show();
        auto* const box = child<QComboBox>(window, "formatBox");
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        control->setChecked(true);
        control->setChecked(false);
        QCOMPARE(box->currentText(), QStringLiteral("MP3"));
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Down);
        QCOMPARE(box->currentText(), QStringLiteral("AAC"));
        QVERIFY(!control->isChecked());
        QTest::keyClick(box, Qt::Key_Up);
        QTest::keyClick(box, Qt::Key_Up);
        QCOMPARE(box->currentText(), QStringLiteral("GIF"));
        QVERIFY(control->isChecked());
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QCOMPARE(openSettings()->value(settingskeys::kScreenSwitch), QVariant(true));
        QCOMPARE(openSettings()->value(settingskeys::kRecordingFormat).toString(), QStringLiteral("GIF"));
    }

    void soundFormatChosenWithTheScreenOnStays()
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

    void screenSwitchTakesTheFrameAway()
    {
        SCMainWindow window;
        window.show();
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        dragRegion(window, {100, 80}, {419, 319});
        QVERIFY(control->isChecked());
        control->setChecked(false);
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        dragRegion(window, {100, 80}, {419, 319});
        QVERIFY(control->isChecked());
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
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

    void screenshotFormatIsShownAndStored()
    {
        openSettings()->setValue(settingskeys::kScreenshotFormat, QStringLiteral("JPG"));
        SCMainWindow window;
        auto* const box = child<QComboBox>(window, "screenshotFormatBox");
        QCOMPARE(box->currentText(), QStringLiteral("JPG"));
        QCOMPARE(box->count(), 2);
        QTest::keyClick(box, Qt::Key_Up);
        QCOMPARE(openSettings()->value(settingskeys::kScreenshotFormat).toString(), QStringLiteral("PNG"));
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
        const QTemporaryDir place;
        const QString folder = place.filePath(QStringLiteral("videos"));
        openSettings()->setValue(settingskeys::kRecordingSaveLocation, folder);
        SCMainWindow window;
        const OpenedAddresses folders({"file"});
        child<QPushButton>(window, "openFolderButton")->click();
        QCOMPARE(folders.opened(), QList<QUrl>{QUrl::fromLocalFile(folder)});
        QVERIFY(QFileInfo(folder).isDir());
    }

    void closingTakesTheOverlaysAlong()
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

    void selectionIsGivenUpWhenARecordingStarts()
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
        QVERIFY(!messages.texts()
                     .filter(QStringLiteral("Loaded stylesheet from: \":/res/style/main-window.qss\""))
                     .isEmpty());
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

    /// What the icon shows; empty where the system has no plug-in for its format.
    static QImage picture(const QIcon& icon) { return icon.pixmap(QSize(24, 24)).toImage(); }

    template <typename Widget>
    static Widget* child(const SCMainWindow& window, const char* name)
    {
        return window.findChild<Widget*>(QLatin1String(name));
    }

    static QString field(const SCMainWindow& window, const char* name)
    {
        return child<QLineEdit>(window, name)->text();
    }

    /// What a region's frame has within its border.
    static QRect inside(const DrawWindow& frame) { return frame.geometry().adjusted(4, 4, -4, -4); }

    static QStringList selectedTiles(const SCMainWindow& window)
    {
        QStringList names;
        for (const Tile* const tile : window.findChildren<Tile*>()) {
            if (tile->isSelected())
                names.append(tile->objectName());
        }
        return names;
    }

    static void dragRegion(const SCMainWindow& window, const QPoint& from, const QPoint& to)
    {
        QTest::mouseClick(child<Tile>(window, "regionTile"), Qt::LeftButton);
        auto* const selector = shownWindow<AreaSelector>();
        QTest::mousePress(selector, Qt::LeftButton, {}, from);
        QTest::mouseMove(selector, to);
        QTest::mouseRelease(selector, Qt::LeftButton, {}, to);
        QCoreApplication::processEvents();
    }

    /// As a user chooses it, which is what the box reports.
    static void choosePreset(const SCMainWindow& window, const char* name)
    {
        auto* const box = child<QComboBox>(window, "ratioBox");
        box->setCurrentText(QLatin1String(name));
        emit box->textActivated(QLatin1String(name));
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
