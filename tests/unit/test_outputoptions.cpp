// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "app/settings.h"
#include "mainwindow/activity.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/outputoptions.h"
#include "tests/support/messagecapture.h"
#include "tests/support/windowtest.h"
#include "ui_scmainwindow.h"

#include <QApplication>
#include <QFileDialog>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

/// Format and folder of the recordings and of the screenshots.
class TestOutputOptions : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init()
    {
        windowtest::resetSettings();
        m_recording = RecordingState::Idle;
        m_form = std::make_unique<QMainWindow>();
        m_ui.setupUi(m_form.get());
    }

    void storedFormatIsShown_data() { addKinds(); }
    void storedFormatIsShown()
    {
        QFETCH(const bool, isRecording);
        m_settings->setValue(formatKey(isRecording), isRecording ? "FLAC" : "JPG");
        OutputOptions options(parts(isRecording), *m_settings, m_activity);
        options.showStored();
        QCOMPARE(box(isRecording).count(), isRecording ? 7 : 2);
        QCOMPARE(box(isRecording).itemText(0), isRecording ? QStringLiteral("MP4") : QStringLiteral("PNG"));
        QCOMPARE(options.format(), isRecording ? 6 : 1);
    }

    void formatThatIsNotInTheTableIsShownAsTheFirstAndStaysStored_data() { addKinds(); }
    void formatThatIsNotInTheTableIsShownAsTheFirstAndStaysStored()
    {
        QFETCH(const bool, isRecording);
        m_settings->setValue(formatKey(isRecording), QStringLiteral("MKV"));
        OutputOptions options(parts(isRecording), *m_settings, m_activity);
        const MessageCapture messages;
        options.showStored();
        QCOMPARE(options.format(), 0);
        QCOMPARE(m_settings->value(formatKey(isRecording)).toString(), QStringLiteral("MKV"));
        QCOMPARE(messages.texts().filter(QStringLiteral("\"MKV\"")).size(), 1);
    }

    void toolTipShowsWhatChangesTheDirectionOfTheFoldersName_data() { addKinds(); }
    void toolTipShowsWhatChangesTheDirectionOfTheFoldersName()
    {
        QFETCH(const bool, isRecording);
        const OutputOptions::Parts shown = parts(isRecording);
        shown.folderEdit.setToolTip({});
        m_settings->setValue(shown.folderKey, QStringLiteral("/a\u202eb"));
        OutputOptions options(shown, *m_settings, m_activity);
        options.showStoredFolder();
        QCOMPARE(shown.folderEdit.toolTip(), QStringLiteral("/a[U+202E]b"));
        QCOMPARE(options.folder(), QStringLiteral("/a\u202eb"));
    }

    void chosenFormatIsStored_data() { addKinds(); }
    void chosenFormatIsStored()
    {
        QFETCH(const bool, isRecording);
        OutputOptions options(parts(isRecording), *m_settings, m_activity);
        options.showStored();
        const QSignalSpy chosen(&options, &OutputOptions::formatChosen);
        QTest::keyClick(&box(isRecording), Qt::Key_Down);
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(m_settings->value(formatKey(isRecording)).toString(),
                 isRecording ? QStringLiteral("AVI") : QStringLiteral("JPG"));
        options.showFormat(0);
        QCOMPARE(chosen.size(), 1);
        QVERIFY(m_settings->value(formatKey(isRecording)).toString() != box(isRecording).itemText(0));
    }

    void folderDialogOpensOnlyWhileIdle()
    {
        OutputOptions options(parts(true), *m_settings, m_activity);
        options.showStored();
        int opened = 0;
        QTimer closer;
        connect(&closer, &QTimer::timeout, this, [&opened] {
            if (auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                ++opened;
                dialog->reject();
            }
        });
        closer.start(10);
        m_recording = RecordingState::Countdown;
        m_ui.changeLocationButton->click();
        QCOMPARE(opened, 0);
        m_recording = RecordingState::Idle;
        m_ui.changeLocationButton->click();
        QCOMPARE(opened, 1);
        QCOMPARE(options.folder(), m_settings->value(settingskeys::kRecordingSaveLocation).toString());
    }

    void folderThatCannotBeUsedIsReportedWithAWayOut()
    {
        OutputOptions options(parts(true), *m_settings, m_activity);
        Notices notices;
        QList<Notice> posted;
        connect(&notices, &Notices::posted, &options, [&posted](const Notice& notice) { posted.append(notice); });
        options.reportFallback(notices);
        QCOMPARE(posted.size(), 1);
        QCOMPARE(posted.at(0).text, QStringLiteral("The save folder cannot be used: files go to the default folder."));
        QCOMPARE(posted.at(0).actionText, QStringLiteral("Choose Another Folder"));
        bool isOpened = false;
        QTimer closer;
        connect(&closer, &QTimer::timeout, this, [&isOpened] {
            if (auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                isOpened = true;
                dialog->reject();
            }
        });
        closer.start(10);
        posted.at(0).action();
        QVERIFY(isOpened);
    }

private:
    static void addKinds()
    {
        QTest::addColumn<bool>("isRecording");
        QTest::newRow("recordings") << true;
        QTest::newRow("screenshots") << false;
    }

    OutputOptions::Parts parts(bool isRecording)
    {
        return isRecording ? OutputOptions::recordings(m_ui) : OutputOptions::screenshots(m_ui);
    }

    static QLatin1String formatKey(bool isRecording)
    {
        return isRecording ? settingskeys::kRecordingFormat : settingskeys::kScreenshotFormat;
    }

    QComboBox& box(bool isRecording) const { return isRecording ? *m_ui.formatBox : *m_ui.screenshotFormatBox; }

    std::unique_ptr<QSettings> m_settings = openSettings();
    RecordingState m_recording = RecordingState::Idle;
    Activity m_activity{{[this] { return m_recording; }, {}, {}, {}, {}, {}, {}}};
    std::unique_ptr<QMainWindow> m_form;
    Ui::SCMainWindow m_ui{};
};

REGISTER_TEST(windowtest::run<TestOutputOptions>);

#include "test_outputoptions.moc"
