// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "files/fileitemdelegate.h"
#include "mainwindow/activity.h"
#include "mainwindow/filelistkeys.h"
#include "mainwindow/filepage.h"
#include "mainwindow/notices/notices.h"
#include "tests/support/addresses.h"
#include "tests/support/filelibrary.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListView>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <memory>

class TestFilePage : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        const auto settings = openSettings();
        settings->setValue(settingskeys::kRecordingSaveLocation, m_produced.folder() + QLatin1String("/videos"));
        settings->setValue(settingskeys::kScreenshotSaveLocation, m_produced.folder() + QLatin1String("/pictures"));
        LibraryRefuge::clear();
        QJsonArray list;
        for (const auto& [name, type] : {std::pair{"new.mp4", "video"},
                                         {"song.mp3", "audio"},
                                         {"shot.png", "screenshot"},
                                         {"old.mp4", "video"},
                                         {"plain.dat", ""}})
            list.append(QJsonObject{{"filepath", m_produced.add(QLatin1String(name))},
                                    {"properties", QJsonObject{{"type", QLatin1String(type)}}}});
        filelibrary::write(QJsonDocument(list).toJson());
        m_recording = RecordingState::Idle;
        makePage();
    }

    void cleanup() { m_page.reset(); }

    void showingThePageSelectsTheNewestFile()
    {
        open();
        QCOMPARE(names(), QStringList({"new.mp4", "song.mp3", "shot.png", "old.mp4", "plain.dat"}));
        QCOMPARE(selectedNames(), QStringList{"new.mp4"});
        QVERIFY(view()->isVisible());
    }

    void showingThePageAgainKeepsItsFilter()
    {
        open();
        press("audioFilter");
        open();
        QCOMPARE(names(), QStringList{"song.mp3"});
        QCOMPARE(selectedNames(), QStringList{"song.mp3"});
    }

    void filterTabsShowTheirFilesAndCounts_data()
    {
        QTest::addColumn<QByteArray>("tab");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("all") << QByteArray("allFilter") << "All (5)"
                             << QStringList{"new.mp4", "song.mp3", "shot.png", "old.mp4", "plain.dat"};
        QTest::newRow("video") << QByteArray("videoFilter") << "Video (2)" << QStringList{"new.mp4", "old.mp4"};
        QTest::newRow("audio") << QByteArray("audioFilter") << "Audio (1)" << QStringList{"song.mp3"};
        QTest::newRow("screenshot") << QByteArray("screenshotFilter") << "Screenshot (1)" << QStringList{"shot.png"};
    }

    void filterTabsShowTheirFilesAndCounts()
    {
        QFETCH(const QByteArray, tab);
        QFETCH(const QString, text);
        QFETCH(const QStringList, expected);
        open();
        press("videoFilter");
        press(tab.constData());
        QVERIFY(button(tab.constData())->isChecked());
        QCOMPARE(button(tab.constData())->text(), text);
        QCOMPARE(names(), expected);
        QVERIFY(selectedNames().isEmpty());
    }

    void onlyWhatIsSelectedCanBeDeleted()
    {
        open();
        QVERIFY(button("deleteFilesButton")->isEnabled());
        view()->clearSelection();
        QVERIFY(!button("deleteFilesButton")->isEnabled());
        view()->selectAll();
        QVERIFY(button("deleteFilesButton")->isEnabled());
        press("audioFilter");
        QVERIFY(!button("deleteFilesButton")->isEnabled());
    }

    void selectedFilesAreDeletedUnderTheirFilter()
    {
        open();
        press("videoFilter");
        view()->selectAll();
        messagebox::Recorder boxes;
        boxes.setAnswer({true, true});
        press("deleteFilesButton");
        QCOMPARE(boxes.questions().front().text, QStringLiteral("Do you want to delete 2 files?"));
        QVERIFY(names().isEmpty());
        QCOMPARE(button("videoFilter")->text(), QStringLiteral("Video (0)"));
        QCOMPARE(button("allFilter")->text(), QStringLiteral("All (3)"));
        QVERIFY(!QFileInfo::exists(m_produced.folder() + QLatin1String("/new.mp4")));
        press("allFilter");
        QCOMPARE(names(), QStringList({"song.mp3", "shot.png", "plain.dat"}));
    }

    void reversedOrderOutlivesTheWindow()
    {
        open();
        press("reverseFilesButton");
        const QStringList reversed{"plain.dat", "old.mp4", "shot.png", "song.mp3", "new.mp4"};
        QCOMPARE(names(), reversed);
        makePage();
        open();
        QCOMPARE(names(), reversed);
    }

    void emptyPageSaysWhatItIsFor()
    {
        open();
        const auto* const label = child<QWidget>("noFilesLabel");
        QVERIFY(!label->isVisible());
        press("audioFilter");
        view()->selectAll();
        messagebox::Recorder boxes;
        boxes.setAnswer({true, false});
        press("deleteFilesButton");
        QVERIFY(label->isVisible());
        QVERIFY(!view()->isVisible());
        QVERIFY(!button("reverseFilesButton")->isEnabled());
        QVERIFY(!button("deleteFilesButton")->isEnabled());
        press("allFilter");
        QVERIFY(view()->isVisible());
        QVERIFY(button("reverseFilesButton")->isEnabled());
    }

    void folderOfWhatIsShownIsOpened()
    {
        const OpenedAddresses opener({"file"});
        open();
        press("openFolderButton");
        press("screenshotFilter");
        press("openFolderButton");
        press("videoFilter");
        press("openFolderButton");
        const QString videos = m_produced.folder() + QLatin1String("/videos");
        QCOMPARE(opener.files(), QStringList({videos, m_produced.folder() + QLatin1String("/pictures"), videos}));
    }

    void folderThatCanOnlyBeReadIsOpened()
    {
        const auto folder = QStringLiteral("/proc");
        if (!QFileInfo(folder).isDir())
            QSKIP("There is no folder that cannot be written to");
        openSettings()->setValue(settingskeys::kRecordingSaveLocation, folder);
        makePage();
        const OpenedAddresses opener({"file"});
        open();
        press("openFolderButton");
        QCOMPARE(opener.files(), QStringList{folder});
    }

    void fileThatIsGoneSaysSoWhereverItIsWanted()
    {
        const OpenedAddresses opener({"file"});
        const QSignalSpy posted(&m_notices, &Notices::posted);
        open();
        QVERIFY(QFile::remove(m_produced.folder() + QLatin1String("/song.mp3")));
        const QRect row = view()->visualRect(view()->model()->index(1, 0));
        QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, row.center());
        QCOMPARE(posted.size(), 1);
        QCOMPARE(posted.at(0).at(0).value<Notice>().text, QStringLiteral("The file is no longer there: song.mp3"));
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {},
                          SCFileManager::FileItemDelegate::folderRect(row).center());
        QCOMPARE(posted.size(), 2);
        QCOMPARE(opener.files(), QStringList());
        // It leaves the list at the next start.
        QCOMPARE(names().size(), 5);
        makePage();
        QCOMPARE(names(), QStringList({"new.mp4", "shot.png", "old.mp4", "plain.dat"}));
    }

    void fileThatNoProgramOpensIsReported()
    {
        open();
        QList<Notice> posted;
        const QObject context;
        connect(&m_notices, &Notices::posted, &context, [&posted](const Notice& notice) { posted.append(notice); });
        const QPoint first = view()->visualRect(view()->model()->index(0, 0)).center();
        {
            const OpenedAddresses opener({"file"});
            QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, first);
            QCOMPARE(opener.files(), QStringList{m_produced.folder() + QLatin1String("/new.mp4")});
            QVERIFY(posted.isEmpty());
        }
        // Off screen nothing opens anything.
        QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, first);
        QCOMPARE(posted.size(), 1);
        QCOMPARE(posted.constFirst().text, QStringLiteral("No program can open new.mp4."));
        QCOMPARE(posted.constFirst().actionText, QStringLiteral("Show in Folder"));
        QVERIFY(posted.constFirst().action);
    }

    void recordingIsEnteredWhenItStartsAndShownWhenItIsOver()
    {
        open();
        const QString path = m_produced.add(QStringLiteral("Recording.aac"));
        record(path, QStringLiteral("audio"));
        QCOMPARE(filelibrary::paths().front(), path);
        const QJsonObject properties = QJsonDocument::fromJson(filelibrary::text())
                                           .array()
                                           .first()
                                           .toObject()
                                           .value(QLatin1String("properties"))
                                           .toObject();
        QCOMPARE(properties.value(QLatin1String("type")).toString(), QStringLiteral("audio"));
        QCOMPARE(names().size(), 5);
        m_page->onRecordingOver();
        QCOMPARE(names().front(), QStringLiteral("Recording.aac"));
        QCOMPARE(selectedNames(), QStringList{"Recording.aac"});
        QCOMPARE(button("audioFilter")->text(), QStringLiteral("Audio (2)"));
    }

    void newFileIsInSightWhateverTheFilter_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<bool>("isInView");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("of another kind") << QByteArray("audioFilter") << true << QByteArray("allFilter");
        QTest::newRow("of another kind, later") << QByteArray("audioFilter") << false << QByteArray("allFilter");
        QTest::newRow("of the same kind") << QByteArray("videoFilter") << true << QByteArray("videoFilter");
    }

    void newFileIsInSightWhateverTheFilter()
    {
        QFETCH(const QByteArray, before);
        QFETCH(const bool, isInView);
        QFETCH(const QByteArray, after);
        open();
        press(before.constData());
        m_page->setVisible(isInView);
        record(m_produced.add(QStringLiteral("Recording.mp4")), QStringLiteral("video"));
        m_page->onRecordingOver();
        if (!isInView) {
            m_page->show();
            open();
        }
        QVERIFY(button(after.constData())->isChecked());
        QCOMPARE(selectedNames(), QStringList{"Recording.mp4"});
        const QRect row = view()->visualRect(view()->selectionModel()->selectedIndexes().constFirst());
        QVERIFY(view()->viewport()->rect().contains(row));
        // Once it has been seen the filter is the user's again.
        press("audioFilter");
        open();
        QVERIFY(button("audioFilter")->isChecked());
    }

    void listIsWorkedFromTheFilters()
    {
        open();
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
        button("allFilter")->setFocus();
        key(Qt::Key_Down);
        QCOMPARE(selectedNames(), QStringList{"song.mp3"});
        key(Qt::Key_End);
        QCOMPARE(selectedNames(), QStringList{"plain.dat"});
        key(Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(selectedNames().size(), 2);
        key(Qt::Key_Home);
        QCOMPARE(selectedNames(), QStringList{"new.mp4"});
        key(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(selectedNames().size(), 5);
        key(Qt::Key_PageDown);
        QCOMPARE(selectedNames(), QStringList{"plain.dat"});
        QVERIFY(button("allFilter")->hasFocus());
    }

    void enterOnAFilterOpensTheSelectedFile()
    {
        const OpenedAddresses opener({"file"});
        open();
        button("allFilter")->setFocus();
        key(Qt::Key_Down);
        for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter})
            key(enter);
        const QString song = m_produced.folder() + QLatin1String("/song.mp3");
        QCOMPARE(opener.files(), QStringList({song, song}));
        // Under another filter nothing is selected yet.
        press("videoFilter");
        key(Qt::Key_Return);
        QCOMPARE(opener.files().size(), 2);
    }

    void controlAndEnterOnAFilterShowTheSelectedFileInItsFolder()
    {
        open();
        button("allFilter")->setFocus();
        key(Qt::Key_Down);
        // What is gone is not shown, but reported.
        QVERIFY(QFile::remove(m_produced.folder() + QLatin1String("/song.mp3")));
        const auto* const keys = view()->findChild<FileListKeys*>();
        QVERIFY(keys != nullptr);
        const QSignalSpy shown(keys, &FileListKeys::folderRequested);
        const QSignalSpy opened(keys, &FileListKeys::openRequested);
        const QSignalSpy posted(&m_notices, &Notices::posted);
        for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter})
            key(enter, Qt::ControlModifier);
        QCOMPARE(shown.size(), 2);
        QCOMPARE(shown.first().first().toModelIndex().row(), 1);
        QCOMPARE(posted.size(), 2);
        view()->clearSelection();
        key(Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(shown.size(), 2);
        QVERIFY(opened.isEmpty());
    }

    void deleteOnAFilterAsksAsTheButtonDoesAndGoesOnWithTheNextFile()
    {
        open();
        button("allFilter")->setFocus();
        messagebox::Recorder boxes;
        key(Qt::Key_Down);
        key(Qt::Key_Down, Qt::ShiftModifier);
        key(Qt::Key_Delete);
        QCOMPARE(boxes.questions().size(), std::size_t{1});
        QCOMPARE(boxes.questions().front().text, QStringLiteral("Do you want to delete 2 files?"));
        QCOMPARE(selectedNames(), QStringList({"song.mp3", "shot.png"}));
        boxes.setAnswer({true, false});
        key(Qt::Key_Delete);
        QCOMPARE(names(), QStringList({"new.mp4", "old.mp4", "plain.dat"}));
        QCOMPARE(selectedNames(), QStringList{"old.mp4"});
        key(Qt::Key_End);
        key(Qt::Key_Delete);
        QCOMPARE(selectedNames(), QStringList{"old.mp4"});
        key(Qt::Key_Home);
        for (int file = 0; file < 3; ++file)
            key(Qt::Key_Delete);
        QVERIFY(names().isEmpty());
        QCOMPARE(boxes.questions().size(), std::size_t{5});
        key(Qt::Key_Down);
        key(Qt::Key_Delete);
        QCOMPARE(boxes.questions().size(), std::size_t{5});
    }

    void otherKeysStayTheFilters()
    {
        open();
        button("allFilter")->setFocus();
        key(Qt::Key_Down, Qt::ControlModifier);
        key(Qt::Key_Delete, Qt::ShiftModifier);
        QCOMPARE(selectedNames(), QStringList{"new.mp4"});
        button("videoFilter")->setFocus();
        QTest::keyClick(button("videoFilter"), Qt::Key_Space);
        QVERIFY(button("videoFilter")->isChecked());
    }

    void messageThatAFileIsSavedOpensAndShowsIt()
    {
        open();
        const QString path = m_produced.folder() + QLatin1String("/shot.png");
        const QList<messagebox::Action> actions = m_page->actionsOn(path);
        QCOMPARE(actions.size(), 2);
        QCOMPARE(actions.at(0).text, QStringLiteral("Open"));
        QCOMPARE(actions.at(1).text, QStringLiteral("Show in Folder"));
        {
            const OpenedAddresses opener({"file"});
            actions.at(0).run();
            QCOMPARE(opener.files(), QStringList{path});
        }
        QVERIFY(QFile::remove(path));
        const QSignalSpy posted(&m_notices, &Notices::posted);
        for (const messagebox::Action& action : actions)
            action.run();
        QCOMPARE(posted.size(), 2);
    }

    void recordingThatWasSeenWhilePausedIsInSightWhenItIsOver()
    {
        open();
        record(m_produced.add(QStringLiteral("Recording.mp4")), QStringLiteral("video"));
        open();
        press("audioFilter");
        m_page->onRecordingOver();
        QVERIFY(button("allFilter")->isChecked());
        QCOMPARE(selectedNames(), QStringList{"Recording.mp4"});
        // Another session that came to nothing leaves the filter alone.
        press("audioFilter");
        m_page->onRecordingOver();
        QVERIFY(button("audioFilter")->isChecked());
    }

    void nothingIsSelectedOnAPageThatIsNotInView()
    {
        m_page->hide();
        record(m_produced.add(QStringLiteral("Recording.mp4")), QStringLiteral("video"));
        m_page->onRecordingOver();
        QCOMPARE(names().front(), QStringLiteral("Recording.mp4"));
        QVERIFY(selectedNames().isEmpty());
    }

    void savedScreenshotIsShownAmongTheScreenshots()
    {
        const QString path = m_produced.add(QStringLiteral("Screenshot.png"));
        m_page->addFile(path, QStringLiteral("screenshot"));
        m_page->showScreenshots();
        QVERIFY(button("screenshotFilter")->isChecked());
        QCOMPARE(names(), QStringList({"Screenshot.png", "shot.png"}));
        QCOMPARE(selectedNames(), QStringList{"Screenshot.png"});
        QCOMPARE(filelibrary::paths().front(), path);
        // What is not being recorded can be deleted.
        messagebox::Recorder deletion;
        deletion.setAnswer({true, true});
        press("deleteFilesButton");
        QVERIFY(!QFileInfo::exists(path));
    }

    void fileIsNotDeletedWhileItIsBeingRecorded()
    {
        const QString path = m_produced.add(QStringLiteral("Recording.mp4"));
        record(path, QStringLiteral("video"));
        open();
        view()->selectAll();
        messagebox::Recorder boxes;
        boxes.setAnswer({true, true});
        press("deleteFilesButton");
        QVERIFY(boxes.questions().empty());
        QVERIFY(QFileInfo::exists(path));
        m_page->onRecordingOver();
        view()->selectAll();
        press("deleteFilesButton");
        QVERIFY(!QFileInfo::exists(path));
    }

    void listThatCannotBeSavedIsReportedWhenTheRecordingIsOver_data()
    {
        QTest::addColumn<bool>("isRecording");
        QTest::addColumn<bool>("isClosing");
        QTest::addColumn<int>("boxes");
        QTest::newRow("idle") << false << false << 1;
        QTest::newRow("recording") << true << false << 1;
        QTest::newRow("recording, then the program closes") << true << true << 0;
    }

    void listThatCannotBeSavedIsReportedWhenTheRecordingIsOver()
    {
        QFETCH(const bool, isRecording);
        QFETCH(const bool, isClosing);
        QFETCH(const int, boxes);
        open();
        QVERIFY(QFile::remove(filelibrary::path()));
        QVERIFY(QDir().mkpath(filelibrary::path() + QLatin1String("/in the way")));
        const messagebox::Recorder shown;
        m_recording = isRecording ? RecordingState::Recording : RecordingState::Idle;
        press("reverseFilesButton");
        press("reverseFilesButton");
        QVERIFY(QDir(filelibrary::path()).removeRecursively());
        QCOMPARE(shown.calls().size(), std::size_t(isRecording ? 0 : 1));
        if (isClosing)
            m_activity.setClosing();
        m_recording = RecordingState::Idle;
        m_page->onRecordingOver();
        QCOMPARE(shown.calls().size(), std::size_t(boxes));
        for (const messagebox::Call& box : shown.calls()) {
            QCOMPARE(box.kind, messagebox::Kind::Critical);
            QCOMPARE(box.parent, m_page.get());
            QVERIFY(box.text.startsWith(QLatin1String("The list of files could not be saved: ")));
        }
        QCOMPARE(names().size(), 5);
    }

    void everyPartCanBeReachedWithTheKeyboardButTheList()
    {
        open();
        for (const char* name : {"allFilter", "openFolderButton", "reverseFilesButton", "deleteFilesButton"})
            QVERIFY2((button(name)->focusPolicy() & Qt::TabFocus) != 0, name);
        // On some systems the filters are one place for the Tab key, and the arrows go from one to the next.
        const bool byTab = (button("videoFilter")->focusPolicy() & Qt::TabFocus) != 0;
        button(byTab ? "videoFilter" : "allFilter")->setFocus();
        QTest::keyClick(button(byTab ? "videoFilter" : "allFilter"), byTab ? Qt::Key_Space : Qt::Key_Right);
        QVERIFY(button("videoFilter")->isChecked());
        QCOMPARE(names(), QStringList({"new.mp4", "old.mp4"}));
        QCOMPARE(view()->focusPolicy(), Qt::NoFocus);
        QCOMPARE(view()->accessibleName(), QStringLiteral("Files"));
    }

private:
    void makePage()
    {
        m_page.reset();
        m_activity = Activity({[this] { return m_recording; }, {}, {}, {}, {}, {}, {}});
        m_page = std::make_unique<FilePage>(*m_settings, m_activity, m_notices);
        m_page->show();
    }

    template <typename Widget>
    Widget* child(const char* name) const
    {
        return m_page->findChild<Widget*>(QLatin1String(name));
    }

    QPushButton* button(const char* name) const { return child<QPushButton>(name); }
    QListView* view() const { return child<QListView>("fileView"); }
    void press(const char* name) const { button(name)->click(); }
    void open() const { m_page->showNewest(); }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(button("allFilter"), key, modifiers);
    }

    void record(const QString& path, const QString& type) const
    {
        m_page->setRecordedFile(path, type);
        m_page->addFile(path, type);
    }

    QStringList names() const
    {
        QStringList names;
        for (int row = 0; row < view()->model()->rowCount(); ++row)
            names.append(view()->model()->index(row, 0).data().toString());
        return names;
    }

    QStringList selectedNames() const
    {
        QStringList names;
        const QModelIndexList selected = view()->selectionModel()->selectedIndexes();
        for (const QModelIndex& index : selected)
            names.append(index.data().toString());
        return names;
    }

    ProducedFiles m_produced;
    RecordingState m_recording = RecordingState::Idle;
    Activity m_activity{Activity::Facts{}};
    Notices m_notices;
    std::unique_ptr<QSettings> m_settings = openSettings();
    std::unique_ptr<FilePage> m_page;
};

REGISTER_TEST(windowtest::run<TestFilePage>);

#include "test_filepage.moc"
