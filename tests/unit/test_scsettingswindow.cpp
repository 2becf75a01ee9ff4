// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "app/settingstables.h"
#include "dialogs/folderfield.h"
#include "dialogs/scsettingswindow.h"
#include "tests/support/messagecapture.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEnterEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSemaphore>
#include <QSettings>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>
#include <QTimer>
#include <QTranslator>

#include <utility>

#include <functional>
#include <memory>
#include <stdexcept>

namespace {

/// Translates every text into capitals with a mark behind them.
class Shouting : public QTranslator
{
public:
    QString translate(const char*, const char* text, const char*, int) const override
    {
        return QString::fromUtf8(text).toUpper() + u'!';
    }
    bool isEmpty() const override { return false; }
};

QStringList keysWithout(const QString& left)
{
    QStringList keys{"None"};
    for (int number = 1; number <= 10; ++number) {
        const QString key = QStringLiteral("F%1").arg(number);
        if (key != left)
            keys.append(key);
    }
    return keys;
}

/// A disk that does not answer, until it is released.
class HeldThreads
{
public:
    explicit HeldThreads(QThreadPool& pool) : m_count(pool.maxThreadCount())
    {
        for (int number = 0; number < m_count; ++number)
            pool.start([gates = m_gates] {
                gates->held.release();
                gates->open.acquire();
            });
        m_gates->held.acquire(m_count);
    }
    ~HeldThreads() { release(); }
    Q_DISABLE_COPY_MOVE(HeldThreads)

    void release() { m_gates->open.release(std::exchange(m_count, 0)); }

private:
    struct Gates
    {
        QSemaphore held;
        QSemaphore open;
    };

    int m_count;
    std::shared_ptr<Gates> m_gates = std::make_shared<Gates>();
};

/// Of a widget that it filters.
class EnablingCounter : public QObject
{
public:
    int count() const { return m_count; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::EnabledChange && static_cast<QWidget*>(watched)->isEnabled())
            ++m_count;
        return false;
    }

private:
    int m_count = 0;
};

} // namespace

/// What the settings window shows of the store, how its controls depend on each other, and what it writes.
class TestSCSettingsWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_window.reset();
        m_settings->clear();
        applyDefaultSettings(*m_settings);
    }

    void storedValuesAreShown()
    {
        m_settings->setValue(settingskeys::kRecordingFormat, "GIF");
        m_settings->setValue(settingskeys::kScreenshotFormat, "JPG");
        m_settings->setValue(settingskeys::kRecordingSaveLocation, "/some/videos");
        m_settings->setValue(settingskeys::kScreenshotSaveLocation, "/some/pictures");
        m_settings->setValue(settingskeys::kRecordingHotkey, "F3");
        m_settings->setValue(settingskeys::kScreenshotHotkey, "None");
        m_settings->setValue(settingskeys::kMouseShowHighlight, false);
        open();
        QCOMPARE(box("recordingFormatComboBox")->currentIndex(), 3);
        QCOMPARE(box("screenshotFormatComboBox")->currentIndex(), 1);
        QCOMPARE(child<QLineEdit>("recordingFileLocationLE")->text(), QStringLiteral("/some/videos"));
        QCOMPARE(child<QLineEdit>("screenshotFileLocationLE")->text(), QStringLiteral("/some/pictures"));
        QCOMPARE(box("recordingComboBox")->currentText(), QStringLiteral("F3"));
        QCOMPARE(box("screenshotComboBox")->currentText(), QStringLiteral("None"));
        QVERIFY(check("showCursorCheckBox")->isChecked());
        QVERIFY(!check("highlightCursorCheckBox")->isChecked());
    }

    void formatBoxesHoldTheTables()
    {
        open();
        QCOMPARE(texts("recordingFormatComboBox"), (QStringList{"MP4", "AVI", "FLV", "GIF", "MP3", "AAC", "FLAC"}));
        QCOMPARE(texts("screenshotFormatComboBox"), (QStringList{"PNG", "JPG"}));
    }

    void tabsShowTheirPages()
    {
        open();
        const auto* const stack = child<QStackedWidget>("stackedWidget");
        QCOMPARE(stack->currentIndex(), 0);
        QVERIFY(child<QPushButton>("recordingSettingsTab")->isChecked());
        const QList<std::tuple<QString, int, QString>> tabs{{"screenshotSettingsTab", 1, "screenshotSettingsPage"},
                                                            {"hotkeysSettingsTab", 3, "hotkeysSettingsPage"},
                                                            {"mouseSettingsTab", 2, "mouseSettingsPage"},
                                                            {"recordingSettingsTab", 0, "recorderSettingsPage"}};
        for (const auto& [tab, id, page] : tabs) {
            QTest::mouseClick(child<QPushButton>(tab), Qt::LeftButton);
            QCOMPARE(m_window->findChild<QButtonGroup*>()->checkedId(), id);
            QCOMPARE(stack->currentIndex(), id);
            QCOMPARE(stack->currentWidget()->objectName(), page);
        }
    }

    void tabsStandInTheirOrder()
    {
        open();
        int above = -1;
        for (const char* name :
             {"recordingSettingsTab", "screenshotSettingsTab", "hotkeysSettingsTab", "mouseSettingsTab"}) {
            QVERIFY(child<QPushButton>(name)->y() > above);
            above = child<QPushButton>(name)->y();
        }
    }

    void keyOfTheRecordingIsNotOfferedForTheScreenshot()
    {
        m_settings->setValue(settingskeys::kRecordingHotkey, "F5");
        open();
        QCOMPARE(texts("screenshotComboBox"), keysWithout("F5"));
        QCOMPARE(texts("recordingComboBox"), keysWithout("F10"));
    }

    void noneForOneHotkeyGivesTheOtherAllTenKeys()
    {
        open();
        box("screenshotComboBox")->setCurrentIndex(0);
        QCOMPARE(texts("recordingComboBox"), keysWithout({}));
        QCOMPARE(box("recordingComboBox")->currentText(), QStringLiteral("F9"));
        box("recordingComboBox")->setCurrentIndex(0);
        QCOMPARE(texts("screenshotComboBox"), keysWithout({}));
    }

    void chosenKeyGoesFromTheOtherBoxAtOnceAndIsNotStoredYet()
    {
        open();
        choose("recordingComboBox", "F2");
        QCOMPARE(texts("screenshotComboBox"), keysWithout("F2"));
        QCOMPARE(box("recordingComboBox")->currentText(), QStringLiteral("F2"));
        QCOMPARE(box("screenshotComboBox")->currentText(), QStringLiteral("F10"));
        choose("screenshotComboBox", "F9");
        QCOMPARE(texts("recordingComboBox"), keysWithout("F9"));
        QCOMPARE(text(settingskeys::kRecordingHotkey), QStringLiteral("F9"));
        QCOMPARE(text(settingskeys::kScreenshotHotkey), QStringLiteral("F10"));
    }

    void storedKeyIsFoundWhateverItsLetters()
    {
        m_settings->setValue(settingskeys::kRecordingHotkey, "f5");
        open();
        QCOMPARE(box("recordingComboBox")->currentText(), QStringLiteral("F5"));
        QCOMPARE(texts("screenshotComboBox"), keysWithout("F5"));
    }

    void keyThatIsNoneOfTheChoicesIsShownAsNone()
    {
        m_settings->setValue(settingskeys::kRecordingHotkey, "Ctrl+Alt+R");
        open();
        QCOMPARE(box("recordingComboBox")->currentText(), QStringLiteral("None"));
    }

    void noneIsShownTranslatedAndStoredAsItIs()
    {
        m_settings->setValue(settingskeys::kScreenshotHotkey, "None");
        Shouting translator;
        QCoreApplication::installTranslator(&translator);
        open();
        QCOMPARE(box("screenshotComboBox")->currentText(), QStringLiteral("NONE!"));
        QCOMPARE(box("recordingComboBox")->count(), 11);
        box("recordingComboBox")->setCurrentIndex(0);
        QCOMPARE(box("recordingComboBox")->currentText(), QStringLiteral("NONE!"));
        QCOMPARE(box("screenshotComboBox")->count(), 11);
        press(QDialogButtonBox::Save);
        QCoreApplication::removeTranslator(&translator);
        QCOMPARE(text(settingskeys::kRecordingHotkey), QStringLiteral("None"));
        QCOMPARE(text(settingskeys::kScreenshotHotkey), QStringLiteral("None"));
        QCOMPARE(text(settingskeys::kRecordingFormat), QStringLiteral("MP4"));
    }

    void uncheckingTheCursorUnchecksTheEffect()
    {
        open();
        check("showCursorCheckBox")->click();
        QVERIFY(!check("showCursorCheckBox")->isChecked());
        QVERIFY(!check("highlightCursorCheckBox")->isChecked());
    }

    void checkingTheEffectChecksTheCursor()
    {
        m_settings->setValue(settingskeys::kMouseShowCursor, false);
        m_settings->setValue(settingskeys::kMouseShowHighlight, false);
        open();
        check("highlightCursorCheckBox")->click();
        QVERIFY(check("highlightCursorCheckBox")->isChecked());
        QVERIFY(check("showCursorCheckBox")->isChecked());
    }

    void uncheckingTheEffectLeavesTheCursor()
    {
        open();
        check("highlightCursorCheckBox")->click();
        QVERIFY(check("showCursorCheckBox")->isChecked());
    }

    void saveWritesEverythingAndCloses()
    {
        open();
        box("recordingFormatComboBox")->setCurrentIndex(6);
        box("screenshotFormatComboBox")->setCurrentIndex(1);
        choose("recordingComboBox", "F1");
        choose("screenshotComboBox", "F2");
        check("showCursorCheckBox")->setChecked(false);
        const QSignalSpy updated(m_window.get(), &SCSettingsWindow::updateSettings);
        QString formatWhenNotified;
        connect(m_window.get(), &SCSettingsWindow::updateSettings, this,
                [&] { formatWhenNotified = openSettings()->value(settingskeys::kRecordingFormat).toString(); });
        press(QDialogButtonBox::Save);
        QCOMPARE(updated.size(), 1);
        QCOMPARE(formatWhenNotified, QStringLiteral("FLAC"));
        QVERIFY(!m_window->isVisible());
        QCOMPARE(text(settingskeys::kRecordingFormat), QStringLiteral("FLAC"));
        QCOMPARE(text(settingskeys::kScreenshotFormat), QStringLiteral("JPG"));
        QCOMPARE(text(settingskeys::kRecordingHotkey), QStringLiteral("F1"));
        QCOMPARE(text(settingskeys::kScreenshotHotkey), QStringLiteral("F2"));
        QCOMPARE(m_settings->value(settingskeys::kMouseShowCursor), QVariant(false));
        QCOMPARE(m_settings->value(settingskeys::kMouseShowHighlight), QVariant(false));
    }

    void saveWithUnchangedValuesStillReportsOnceAndKeepsThem()
    {
        const auto before = stored();
        open();
        const QSignalSpy updated(m_window.get(), &SCSettingsWindow::updateSettings);
        press(QDialogButtonBox::Save);
        QCOMPARE(updated.size(), 1);
        QCOMPARE(stored(), before);
    }

    void leavingWithoutSavingWritesNothing_data()
    {
        QTest::addColumn<QString>("way");
        for (const char* way : {"cancel", "close button", "escape"})
            QTest::newRow(way) << QString(way);
    }

    void leavingWithoutSavingWritesNothing()
    {
        QFETCH(const QString, way);
        const auto before = stored();
        open();
        const QSignalSpy updated(m_window.get(), &SCSettingsWindow::updateSettings);
        box("recordingFormatComboBox")->setCurrentIndex(2);
        choose("recordingComboBox", "F1");
        check("showCursorCheckBox")->setChecked(false);
        if (way == "cancel") {
            press(QDialogButtonBox::Cancel);
        } else if (way == "escape") {
            QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
            QTest::keyClick(m_window.get(), Qt::Key_Escape);
        } else {
            QTest::mouseClick(child<QPushButton>("closeBtn"), Qt::LeftButton);
        }
        QVERIFY(!m_window->isVisible());
        QCOMPARE(updated.size(), 0);
        QCOMPARE(stored(), before);
    }

    void chosenFolderStaysWhenTheRestIsCancelled_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("title");
        QTest::newRow("recordings") << "changeRecordingFileLocationBtn"
                                    << "recordingFileLocationLE" << QString(settingskeys::kRecordingSaveLocation)
                                    << "Choose Save Location";
        QTest::newRow("screenshots") << "changeScreenshotFileLocationBtn"
                                     << "screenshotFileLocationLE" << QString(settingskeys::kScreenshotSaveLocation)
                                     << "Choose Screenshot Save Location";
    }

    void chosenFolderStaysWhenTheRestIsCancelled()
    {
        QFETCH(const QString, button);
        QFETCH(const QString, field);
        QFETCH(const QString, key);
        QFETCH(const QString, title);
        const QTemporaryDir folder;
        open();
        const QSignalSpy updated(m_window.get(), &SCSettingsWindow::updateSettings);
        const QSignalSpy moved(m_window.get(), &SCSettingsWindow::saveLocationChanged);
        chooseFolder(button, title, folder.path());
        QCOMPARE(child<QLineEdit>(field)->text(), folder.path());
        QCOMPARE(m_settings->value(key).toString(), folder.path());
        press(QDialogButtonBox::Cancel);
        QCOMPARE(m_settings->value(key).toString(), folder.path());
        QCOMPARE(updated.size(), 0);
        QCOMPARE(moved.size(), 1);
    }

    void cancelledFolderChoiceChangesNothing()
    {
        const auto before = stored();
        open();
        const QString shown = child<QLineEdit>("recordingFileLocationLE")->text();
        chooseFolder("changeRecordingFileLocationBtn", "Choose Save Location", {});
        QCOMPARE(child<QLineEdit>("recordingFileLocationLE")->text(), shown);
        QCOMPARE(stored(), before);
    }

    void spaceInTheStoredFolderIsShown()
    {
        const QTemporaryDir folder;
        m_settings->setValue(settingskeys::kRecordingSaveLocation, folder.path());
        m_settings->setValue(settingskeys::kScreenshotSaveLocation, folder.filePath("new"));
        open();
        QTRY_VERIFY(note("recordingFolderNote").startsWith("Free space: "));
        QTRY_VERIFY(note("screenshotFolderNote").startsWith("The folder will be created. Free space: "));
        QVERIFY(!QFileInfo::exists(folder.filePath("new")));
    }

    void diskIsNotWaitedFor()
    {
        const QTemporaryDir folder;
        m_settings->setValue(settingskeys::kRecordingSaveLocation, folder.path());
        m_window = std::make_unique<SCSettingsWindow>(nullptr);
        QCOMPARE(note("recordingFolderNote"), QString());
        m_window->show();
        QTRY_VERIFY(note("recordingFolderNote").startsWith("Free space: "));
        type("recordingSettingsTab", "recordingFileLocationLE", folder.filePath("new"));
        press(QDialogButtonBox::Save);
        QVERIFY(m_window->isVisible());
        QCOMPARE(note("recordingFolderNote"), QString("Checking the folder..."));
        QTRY_VERIFY(!m_window->isVisible());
        QCOMPARE(text(settingskeys::kRecordingSaveLocation), folder.filePath("new"));
    }

    void nothingCanBeChangedWhileSaveWaitsForTheDisk()
    {
        const QTemporaryDir folder;
        open();
        const QSignalSpy updated(m_window.get(), &SCSettingsWindow::updateSettings);
        HeldThreads disk(FolderField::threads(true));
        type("recordingSettingsTab", "recordingFileLocationLE", folder.filePath("a"));
        type("screenshotSettingsTab", "screenshotFileLocationLE", folder.filePath("b"));
        child<QPushButton>("hotkeysSettingsTab")->click();
        press(QDialogButtonBox::Save);
        for (const char* const control :
             {"recordingSettingsTab", "mouseSettingsTab", "recordingFileLocationLE", "changeRecordingFileLocationBtn",
              "screenshotFileLocationLE", "changeScreenshotFileLocationBtn", "recordingComboBox"})
            QVERIFY2(!child<QWidget>(control)->isEnabled(), control);
        QVERIFY(child<QLabel>("savingNote")->isVisible());
        QCOMPARE(note("savingNote"), QString("Checking the folder..."));
        QVERIFY(child<QPushButton>("closeBtn")->isEnabled() && button(QDialogButtonBox::Cancel)->isEnabled());
        QCOMPARE(m_window->focusWidget(), button(QDialogButtonBox::Save));
        press(QDialogButtonBox::Save);
        // Not for a moment, between the one folder and the other.
        EnablingCounter enabled;
        child<QStackedWidget>("stackedWidget")->installEventFilter(&enabled);
        disk.release();
        QTRY_VERIFY(!m_window->isVisible());
        QCOMPARE(enabled.count(), 1);
        QCOMPARE(updated.size(), 1);
        QCOMPARE(text(settingskeys::kRecordingSaveLocation), folder.filePath("a"));
        QCOMPARE(text(settingskeys::kScreenshotSaveLocation), folder.filePath("b"));
    }

    void whoeverClosesTheWindowWhileSaveWaitsSavesNothing_data()
    {
        using Close = std::function<void(TestSCSettingsWindow&)>;
        QTest::addColumn<Close>("close");
        QTest::newRow("Cancel") << Close([](TestSCSettingsWindow& test) { test.press(QDialogButtonBox::Cancel); });
        QTest::newRow("X") << Close([](TestSCSettingsWindow& test) { test.child<QPushButton>("closeBtn")->click(); });
        QTest::newRow("Escape") << Close(
            [](TestSCSettingsWindow& test) { QTest::keyClick(test.m_window.get(), Qt::Key_Escape); });
    }

    void whoeverClosesTheWindowWhileSaveWaitsSavesNothing()
    {
        QFETCH(const std::function<void(TestSCSettingsWindow&)>, close);
        const QTemporaryDir folder;
        const auto before = stored();
        open();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        const QSignalSpy updated(m_window.get(), &SCSettingsWindow::updateSettings);
        HeldThreads disk(FolderField::threads(true));
        type("recordingSettingsTab", "recordingFileLocationLE", folder.filePath("new"));
        press(QDialogButtonBox::Save);
        close(*this);
        QVERIFY(!m_window->isVisible());
        disk.release();
        QTRY_VERIFY(note("recordingFolderNote").startsWith("The folder will be created."));
        QCOMPARE(updated.size(), 0);
        QCOMPARE(stored(), before);
    }

    void diskOfTheStoredFoldersThatHangsDoesNotKeepSave()
    {
        const QTemporaryDir folder;
        const HeldThreads hung(FolderField::threads(false));
        open();
        type("recordingSettingsTab", "recordingFileLocationLE", folder.filePath("new"));
        press(QDialogButtonBox::Save);
        QTRY_VERIFY(!m_window->isVisible());
        QCOMPARE(text(settingskeys::kRecordingSaveLocation), folder.filePath("new"));
    }

    void typedFolderIsCheckedAndStoredBySave()
    {
        const QTemporaryDir folder;
        open();
        QLineEdit& field = type("recordingSettingsTab", "recordingFileLocationLE", folder.path() + "/a/../new/");
        QTest::keyClick(&field, Qt::Key_Return);
        QTRY_COMPARE(field.text(), folder.filePath("new"));
        QVERIFY(note("recordingFolderNote").startsWith("The folder will be created. Free space: "));
        QVERIFY(!field.property("wrong").toBool());
        QVERIFY(text(settingskeys::kRecordingSaveLocation) != folder.filePath("new"));
        type("screenshotSettingsTab", "screenshotFileLocationLE", folder.path());
        press(QDialogButtonBox::Save);
        QTRY_VERIFY(!m_window->isVisible());
        QCOMPARE(text(settingskeys::kRecordingSaveLocation), folder.filePath("new"));
        QCOMPARE(text(settingskeys::kScreenshotSaveLocation), folder.path());
    }

    void folderThatCannotBeUsedIsMarkedAndToldAndNothingIsStored_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("expected");
        QFile blocker(m_root.filePath("in the way"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        QTest::newRow("empty") << QString() << "Type the whole path of a folder.";
        QTest::newRow("relative") << "videos"
                                  << "Type the whole path of a folder.";
        QTest::newRow("root") << "/"
                              << "Files cannot be saved there: choose a folder below it.";
        QTest::newRow("below a file") << blocker.fileName() + "/a"
                                      << "This folder cannot be created.";
    }

    void folderThatCannotBeUsedIsMarkedAndToldAndNothingIsStored()
    {
        QFETCH(const QString, folder);
        QFETCH(const QString, expected);
        const auto before = stored();
        open();
        const QSignalSpy updated(m_window.get(), &SCSettingsWindow::updateSettings);
        box("recordingFormatComboBox")->setCurrentIndex(6);
        QLineEdit& field = type("screenshotSettingsTab", "screenshotFileLocationLE", folder);
        child<QPushButton>("hotkeysSettingsTab")->click();
        press(QDialogButtonBox::Save);
        QTRY_COMPARE(child<QStackedWidget>("stackedWidget")->currentIndex(), 1);
        QVERIFY(m_window->isVisible());
        QCOMPARE(updated.size(), 0);
        QCOMPARE(stored(), before);
        QVERIFY(child<QPushButton>("screenshotSettingsTab")->isChecked());
        QVERIFY(field.property("wrong").toBool());
        QCOMPARE(note("screenshotFolderNote"), expected);
        QCOMPARE(field.accessibleDescription(), expected);
        QCOMPARE(m_window->focusWidget(), &field);
        QVERIFY(field.isEnabled() && child<QPushButton>("hotkeysSettingsTab")->isEnabled());
        QCOMPARE(note("savingNote"), QString());
    }

    void markGoesWithTheNextLetter()
    {
        open();
        QLineEdit& field = type("recordingSettingsTab", "recordingFileLocationLE", "videos");
        QTest::keyClick(&field, Qt::Key_Return);
        QTRY_VERIFY(field.property("wrong").toBool());
        QTest::keyClick(&field, Qt::Key_A);
        QVERIFY(!field.property("wrong").toBool());
        QCOMPARE(note("recordingFolderNote"), QString());
    }

    void escapeRestoresTheFolderBeforeItClosesTheWindow()
    {
        open();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        const QString before = child<QLineEdit>("recordingFileLocationLE")->text();
        QLineEdit& field = type("recordingSettingsTab", "recordingFileLocationLE", "videos");
        QTest::keyClick(&field, Qt::Key_Return);
        QTRY_VERIFY(field.property("wrong").toBool());
        QTest::keyClick(&field, Qt::Key_Escape);
        QVERIFY(m_window->isVisible());
        QCOMPARE(field.text(), before);
        QVERIFY(!field.property("wrong").toBool());
        QTest::keyClick(&field, Qt::Key_Escape);
        QVERIFY(!m_window->isVisible());
    }

    void unknownStoredFormatThrowsAndStays_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("format");
        QTest::newRow("recording") << QString(settingskeys::kRecordingFormat) << "MKV";
        QTest::newRow("screenshot") << QString(settingskeys::kScreenshotFormat) << "BMP";
    }

    void unknownStoredFormatThrowsAndStays()
    {
        QFETCH(const QString, key);
        QFETCH(const QString, format);
        m_settings->setValue(key, format);
        const auto before = stored();
        QWidget parent;
        QString said;
        try {
            new SCSettingsWindow(&parent);
        } catch (const std::out_of_range& error) {
            said = QLatin1String(error.what());
        }
        QCOMPARE(said, QStringLiteral("invalid map<K, T> key"));
        QVERIFY(parent.children().isEmpty());
        QCOMPARE(stored(), before);
    }

    void valuesOfWrongTypesAreSurvived_data()
    {
        QTest::addColumn<QString>("key");
        for (const auto& [key, value] : defaultSettings())
            QTest::newRow(qPrintable(key)) << key;
    }

    /// Only a format that cannot be looked up keeps the window from opening.
    void valuesOfWrongTypesAreSurvived()
    {
        QFETCH(const QString, key);
        const bool isFormat = key == settingskeys::kRecordingFormat || key == settingskeys::kScreenshotFormat;
        for (const QVariant& value : {QVariant(), QVariant(42), QVariant(true), QVariant(QString("no such thing")),
                                      QVariant(QStringList{"a", "b"}), QVariant(QByteArray("\0\xff\n", 3))}) {
            m_settings->setValue(key, value);
            bool thrown = false;
            try {
                open();
                press(QDialogButtonBox::Save);
            } catch (const std::out_of_range&) {
                thrown = true;
            }
            QCOMPARE(thrown, isFormat);
        }
    }

    void closeButtonShowsItsLightIconUnderThePointer()
    {
        open();
        auto* const button = child<QPushButton>("closeBtn");
        QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
        QCoreApplication::sendEvent(button, &enter);
        QCOMPARE(render(button->icon()), render(QIcon(":/res/forms/images/close-white.svg")));
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(button, &leave);
        QCOMPARE(render(button->icon()), render(QIcon(":/res/forms/images/close.svg")));
    }

    void everyControlHasANameAndAPositionInTheTabOrder()
    {
        open();
        for (const char* tab :
             {"recordingSettingsTab", "screenshotSettingsTab", "hotkeysSettingsTab", "mouseSettingsTab"}) {
            child<QPushButton>(tab)->click();
            QSet<const QWidget*> reached;
            const QWidget* widget = m_window.get();
            do {
                widget = widget->nextInFocusChain();
                reached.insert(widget);
            } while (widget != m_window.get());
            for (const QWidget* const control : m_window->findChildren<QWidget*>()) {
                if ((control->focusPolicy() & Qt::TabFocus) == 0 || !control->isVisible())
                    continue;
                QVERIFY2(reached.contains(control), qPrintable(control->objectName()));
                const auto* const button = qobject_cast<const QAbstractButton*>(control);
                QVERIFY2(!control->accessibleName().isEmpty() || (button != nullptr && !button->text().isEmpty()),
                         qPrintable(control->objectName()));
            }
        }
    }

    void styleSheetIsLoadedAndSaidSo()
    {
        const MessageCapture messages;
        open();
        QVERIFY(messages.texts().contains(QStringLiteral("Loaded stylesheet from: :/res/style/settings-window.qss")));
    }

private:
    void open()
    {
        m_window = std::make_unique<SCSettingsWindow>(nullptr);
        m_window->show();
    }

    template <typename Widget>
    Widget* child(const QString& name) const
    {
        return m_window->findChild<Widget*>(name);
    }

    QComboBox* box(const char* name) const { return child<QComboBox>(name); }
    QCheckBox* check(const char* name) const { return child<QCheckBox>(name); }
    QString text(QLatin1String key) const { return m_settings->value(key).toString(); }
    QString note(const char* name) const { return child<QLabel>(name)->text(); }
    void choose(const char* name, const char* key) const { box(name)->setCurrentText(QLatin1String(key)); }
    static QImage render(const QIcon& icon) { return icon.pixmap(20, 20).toImage(); }

    QStringList texts(const char* name) const
    {
        QStringList texts;
        for (int index = 0; index < box(name)->count(); ++index)
            texts.append(box(name)->itemText(index));
        return texts;
    }

    QMap<QString, QVariant> stored() const
    {
        QMap<QString, QVariant> values;
        const QStringList keys = m_settings->allKeys();
        for (const QString& key : keys)
            values.insert(key, m_settings->value(key));
        return values;
    }

    /// In place of what is in the field, on the page of that tab.
    QLineEdit& type(const char* tab, const char* name, const QString& text) const
    {
        child<QPushButton>(tab)->click();
        auto* const field = child<QLineEdit>(name);
        field->setFocus();
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, text);
        return *field;
    }

    QPushButton* button(QDialogButtonBox::StandardButton which) const
    {
        return child<QDialogButtonBox>("buttonBox")->button(which);
    }

    void press(QDialogButtonBox::StandardButton which) const { QTest::mouseClick(button(which), Qt::LeftButton); }

    void chooseFolder(const QString& button, const QString& title, const QString& folder)
    {
        QTimer::singleShot(0, m_window.get(), [title, folder] {
            auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog != nullptr);
            QCOMPARE(dialog->windowTitle(), title);
            QCOMPARE(dialog->fileMode(), QFileDialog::Directory);
            QVERIFY(dialog->testOption(QFileDialog::ShowDirsOnly));
            QVERIFY(dialog->testOption(QFileDialog::DontResolveSymlinks));
            if (folder.isEmpty()) {
                dialog->reject();
                return;
            }
            dialog->setDirectory(folder);
            dialog->findChild<QLineEdit*>()->setText(folder);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        child<QPushButton>(button)->click();
    }

    std::unique_ptr<QSettings> m_settings = openSettings();
    QTemporaryDir m_root;
    std::unique_ptr<SCSettingsWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestSCSettingsWindow>);

#include "test_scsettingswindow.moc"
