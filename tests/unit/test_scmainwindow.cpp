#include "app/appidentity.h"
#include "app/sclogger.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "app/webaddresses.h"
#include "mainwindow/scmainwindow.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"

#include <QApplication>
#include <QComboBox>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QEnterEvent>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTranslator>
#include <QUrl>

namespace {

/// Takes the place of the web browser.
class Browser : public QObject
{
    Q_OBJECT

public:
    Browser() { QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }

    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened.append(url); }
};

} // namespace

class TestSCMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        const auto settings = openSettings();
        settings->clear();
        settings->setValue(settingskeys::kFirstRun, false);
        settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("None"));
    }

    void freshProfileHasAllDefaultsAndIsNoLongerOnItsFirstRun()
    {
        const Browser browser;
        openSettings()->clear();
        const SCMainWindow window;
        const auto settings = openSettings();
        for (const auto& [key, value] : defaultSettings())
            QCOMPARE(settings->value(key), key == settingskeys::kFirstRun ? QVariant(false) : value);
    }

    void installationPageOpensOnceOnAFreshProfile()
    {
        const Browser browser;
        openSettings()->clear();
        for (int start = 0; start < 3; ++start)
            const SCMainWindow window;
        QCOMPARE(browser.opened, QList<QUrl>{QUrl(QLatin1String(webaddresses::kFirstRunPage))});
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
        SCMainWindow window;
        window.show();
        auto* const button = child<QPushButton>(window, "recordButton");
        for (int attempt = 0; attempt < 2; ++attempt) {
            bool minimised = false;
            QTimer::singleShot(500, &window, [&] { minimised = window.isMinimized(); });
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
        QTimer::singleShot(200, button, &QPushButton::click);
        QElapsedTimer elapsed;
        elapsed.start();
        button->click();
        QVERIFY(elapsed.elapsed() < 2000);
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded")));
    }

    void closingDuringTheCountdownCancelsItAndCloses()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        QTimer::singleShot(200, &window, &QWidget::close);
        QElapsedTimer elapsed;
        elapsed.start();
        child<QPushButton>(window, "recordButton")->click();
        QVERIFY(elapsed.elapsed() < 2000);
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded")));
        QTRY_VERIFY(!window.isVisible());
    }

    void closingTheCountdownItselfCancelsIt()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        QTimer::singleShot(200, &window, [] {
            for (QWidget* const shown : QApplication::topLevelWidgets()) {
                if (shown->inherits("SCCountdownWidget"))
                    shown->close();
            }
        });
        child<QPushButton>(window, "recordButton")->click();
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded")));
        QVERIFY(messages.texts().filter(QStringLiteral("OBS wrapper")).isEmpty());
    }

    void cancelledCountdownLeavesTheKeyboardFocusWhereItWas()
    {
        SCMainWindow window;
        window.show();
        auto* const button = child<QPushButton>(window, "recordButton");
        button->setFocus();
        QTimer::singleShot(200, button, &QPushButton::click);
        button->click();
        QCoreApplication::processEvents();
        QCOMPARE(window.focusWidget(), button);
    }

    void folderDialogDoesNotOpenDuringTheCountdown()
    {
        SCMainWindow window;
        window.show();
        const QWidget* dialog = nullptr;
        QTimer::singleShot(200, &window, [&window, &dialog] {
            // Should one open after all, it must not hold the test up.
            QTimer::singleShot(200, &window, [&dialog] {
                dialog = QApplication::activeModalWidget();
                if (dialog != nullptr)
                    QApplication::activeModalWidget()->close();
            });
            child<QPushButton>(window, "changeLocationButton")->click();
        });
        QTimer::singleShot(600, child<QPushButton>(window, "recordButton"), &QPushButton::click);
        child<QPushButton>(window, "recordButton")->click();
        QCOMPARE(dialog, nullptr);
    }

    void programThatEndsDuringTheCountdownStartsNothing()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        QTimer::singleShot(0, &window, [&window] { child<QPushButton>(window, "recordButton")->click(); });
        QTimer::singleShot(200, qApp, [] { QCoreApplication::exit(0); });
        QApplication::exec();
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded")));
        QVERIFY(messages.texts().filter(QStringLiteral("OBS wrapper")).isEmpty());
    }

    void quitDuringTheCountdownCancelsItAndCloses()
    {
        SCMainWindow window;
        window.show();
        const MessageCapture messages;
        QApplication::setQuitOnLastWindowClosed(true);
        QTimer::singleShot(0, &window, [&window] { child<QPushButton>(window, "recordButton")->click(); });
        QTimer::singleShot(200, qApp, &QCoreApplication::quit);
        QApplication::exec();
        QApplication::setQuitOnLastWindowClosed(false);
        QVERIFY(!window.isVisible());
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded")));
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
        const QStringList order{"recordButton",     "fileNameEdit",         "formatBox",
                                "saveLocationEdit", "changeLocationButton", "widthEdit",
                                "heightEdit",       "minimizeBtn",          "closeBtn"};
        const QWidget* widget = child<QWidget>(window, "recordButton");
        for (const QString& name : order) {
            QCOMPARE(widget->objectName(), name);
            const auto* const button = qobject_cast<const QPushButton*>(widget);
            QVERIFY2(!widget->accessibleName().isEmpty() || (button != nullptr && !button->text().isEmpty()),
                     qPrintable(name));
            do
                widget = widget->nextInFocusChain();
            while ((widget->focusPolicy() & Qt::TabFocus) == 0 || !widget->isVisible());
        }
        QCOMPARE(widget->objectName(), order.first());
    }

    void titleBarButtonsShowTheirLightIconUnderThePointer()
    {
        SCMainWindow window;
        for (const char* name : {"closeBtn", "minimizeBtn"}) {
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

    void everyTextOfTheWindowIsAKeyOfTheTranslations()
    {
        class Listing : public QTranslator
        {
        public:
            QString translate(const char* context, const char* text, const char*, int) const override
            {
                // What Qt's own widgets ask for is Qt's to translate.
                if (QLatin1String(context) == QLatin1String("SCMainWindow"))
                    asked.insert(QString::fromUtf8(text));
                return {};
            }
            bool isEmpty() const override { return false; }

            mutable QSet<QString> asked;
        };
        Listing listing;
        QApplication::installTranslator(&listing);
        const SCMainWindow window;
        QApplication::removeTranslator(&listing);
        QVERIFY(listing.asked.contains(QStringLiteral("Start Recording")));
        QFile file(QStringLiteral(":/locales/en_US.ini"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString keys = QString::fromUtf8(file.readAll());
        for (const QString& text : std::as_const(listing.asked))
            QVERIFY2(keys.contains(text + QLatin1String(" = \"")), qPrintable(text));
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
    /// What the icon shows; empty where the system has no plug-in for its format.
    static QImage picture(const QIcon& icon) { return icon.pixmap(QSize(24, 24)).toImage(); }

    template <typename Widget>
    static Widget* child(const SCMainWindow& window, const char* name)
    {
        return window.findChild<Widget*>(QLatin1String(name));
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

int main(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    // Windows closed by a test must not end the test program.
    QApplication::setQuitOnLastWindowClosed(false);
    TestSCMainWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_scmainwindow.moc"
