// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/savefolder.h"
#include "app/sclogger.h"
#include "app/settings.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/recording/recordingkeeper.h"
#include "mainwindow/recording/recordingsession.h"
#include "mainwindow/recording/recordingstage.h"
#include "tests/support/fakerecorder.h"
#include "tests/support/fulldisk.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

constexpr int kNever = 1000000;
constexpr Durations kPatient{.clockTickMs = kNever, .drainPollMs = 1};

const auto kSaved =
    QStringLiteral("The folder of the recording went away: what was recorded is saved in the default folder.");
const auto kLost =
    QStringLiteral("The folder of the recording went away: what was recorded could not be saved, or not all of it.");

class FakeStage : public RecordingStage
{
public:
    void minimiseWindow() override {}
    bool isWindowMinimised() const override { return true; }
    void hideOverlays() override {}
    void restoreWindow() override {}
    void countDown(int /*from*/) override {}
    void cancelCountdown() override {}
    bool prepareCapture() override { return true; }
    RecordingChoices choices() const override { return chosen; }
    void setExcludedFromCapture(bool /*excluded*/) override {}

    RecordingChoices chosen;
};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isOpenHere(const QString& path)
{
    const QStringList descriptors = QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System);
    return std::any_of(descriptors.begin(), descriptors.end(), [&path](const QString& descriptor) {
        return QFile::symLinkTarget(QStringLiteral("/proc/self/fd/") + descriptor) == path;
    });
}

} // namespace

/// Recordings whose file goes while no look sees it.
class TestRecordingKeeper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        m_posted.clear();
        m_calls.clear();
        m_chosenFolder.clear();
        m_recorder = std::make_unique<FakeRecorder>(m_calls);
        m_stage.chosen.fileName = QStringLiteral("demo");
        m_stage.chosen.folder = m_root->filePath(QStringLiteral("videos"));
        m_session = std::make_unique<RecordingSession>(*m_recorder, m_stage, nullptr, kPatient);
        m_recorder->onStatus = [this](int status) { m_session->onRecordStatusChanged(status); };
        m_notices = std::make_unique<Notices>();
        connect(m_notices.get(), &Notices::posted, this, [this](const Notice& notice) { m_posted.append(notice); });
        m_keeper = std::make_unique<RecordingKeeper>(
            *m_session, *m_notices, [this] { return m_chosenFolder; }, kNever);
        m_moved = std::make_unique<QSignalSpy>(m_keeper.get(), &RecordingKeeper::fileMoved);
        m_saved = std::make_unique<QSignalSpy>(m_keeper.get(), &RecordingKeeper::fileSaved);
    }

    void cleanup()
    {
        m_keeper.reset();
        m_session.reset();
        QDir(defaultFolder()).removeRecursively();
    }

    void windowsThatAWaylandSessionHidesAreReported()
    {
        QCoreApplication::processEvents();
        QCOMPARE(m_posted.size(), 0);
        qputenv("WAYLAND_DISPLAY", "wayland-0");
        const RecordingKeeper keeper(
            *m_session, *m_notices, [] { return QString(); }, kNever);
        qunsetenv("WAYLAND_DISPLAY");
        QTRY_COMPARE(m_posted.size(), 1);
        QCOMPARE(m_posted.first().text,
                 QStringLiteral("This is a Wayland session: windows of other programs may be missing from recordings. "
                                "An X11 session has them all."));
    }

    void fileThatGoesUnseenIsSavedWhateverEndsTheRecording_data()
    {
        QTest::addColumn<QString>("end");
        QTest::newRow("stop") << "stop";
        QTest::newRow("error of the output") << "error";
        QTest::newRow("nearly full") << "space";
        QTest::newRow("the watch") << "watch";
    }

    void fileThatGoesUnseenIsSavedWhateverEndsTheRecording()
    {
        QFETCH(const QString, end);
        record("recorded");
        QVERIFY(QDir(m_root->filePath(QStringLiteral("videos"))).removeRecursively());
        this->end(end);
        expectCopy("recorded");
    }

    void fileThatGoesWhileTheEncoderIsDrainedIsSaved()
    {
        record("recorded");
        m_recorder->pollsUntilDrained = kNever;
        m_session->requestStop();
        QVERIFY(QFile::remove(path()));
        m_recorder->pollsUntilDrained = 0;
        waitForStop();
        expectCopy("recorded");
    }

    void fileInTheTrashIsSaved()
    {
        record("recorded");
        QVERIFY(QDir().mkpath(m_root->filePath(QStringLiteral("Trash/files"))));
        QVERIFY(QFile::rename(path(), m_root->filePath(QStringLiteral("Trash/files/demo.mp4"))));
        end(QStringLiteral("stop"));
        expectCopy("recorded");
    }

    void movedFileStaysWhereItIs()
    {
        record("recorded");
        const QString moved = m_root->filePath(QStringLiteral("moved.mp4"));
        QVERIFY(QFile::rename(path(), moved));
        end(QStringLiteral("watch"));
        QTRY_COMPARE(m_posted.size(), 1);
        QCOMPARE(m_posted.at(0).text,
                 QStringLiteral("The folder of the recording was moved: the recording was ended and is saved."));
        QCOMPARE(m_moved->takeFirst(), (QVariantList{path(), moved}));
        QCOMPARE(m_saved->takeFirst(), QVariantList{moved});
        QVERIFY(!QFileInfo::exists(defaultFolder()));
    }

    void fileThatIsBackStaysWhereItIs()
    {
        record("recorded");
        end(QStringLiteral("watch"));
        QTRY_COMPARE(m_posted.size(), 1);
        QCOMPARE(m_posted.at(0).text,
                 QStringLiteral("The file could not be reached for a while: the recording was ended and is saved."));
        QCOMPARE(m_moved->size(), 0);
    }

    void recordingThatEndsAsAskedIsNotTouched()
    {
        record("recorded");
        end(QStringLiteral("stop"));
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
        QVERIFY(m_posted.isEmpty());
        QCOMPARE(m_moved->size(), 0);
    }

    void copyThatDoesNotFitCanBeMadeElsewhere()
    {
        const QByteArray content(100'000, 'x');
        record(content);
        QVERIFY(QFile::remove(path()));
        {
            const FullDisk disk(50'000);
            end(QStringLiteral("stop"));
            QTRY_COMPARE(m_posted.size(), 1);
        }
        QCOMPARE(m_posted.at(0).text, kLost);
        // No folder is chosen: there is another try.
        m_posted.takeFirst().action();
        QCOMPARE(m_posted.size(), 1);
        QCOMPARE(m_posted.at(0).text, kLost);
        m_chosenFolder = m_root->filePath(QStringLiteral("chosen"));
        m_posted.takeFirst().action();
        QTRY_COMPARE(m_posted.size(), 1);
        QCOMPARE(m_posted.at(0).text, QStringLiteral("What was recorded is saved in the chosen folder."));
        const QString copy = m_chosenFolder + QLatin1String("/demo.mp4");
        QCOMPARE(contentOf(copy), content);
        QCOMPARE(m_moved->last(), (QVariantList{defaultFolder() + QLatin1String("/demo.mp4"), copy}));
        QCOMPARE(m_saved->last(), QVariantList{copy});
    }

    /// Its disk may come back.
    void partOfAFileThatIsNotDeletedDoesNotReplaceIt()
    {
        record(QByteArray(100'000, 'x'));
        QVERIFY(QDir().mkpath(m_root->filePath(QStringLiteral("Trash/files"))));
        QVERIFY(QFile::rename(path(), m_root->filePath(QStringLiteral("Trash/files/demo.mp4"))));
        const FullDisk disk(50'000);
        end(QStringLiteral("stop"));
        QTRY_COMPARE(m_posted.size(), 1);
        QCOMPARE(m_posted.at(0).text, kLost);
        QCOMPARE(m_moved->last(), (QVariantList{defaultFolder() + QLatin1String("/demo.mp4"), path()}));
        QCOMPARE(m_saved->last(), QVariantList{path()});
    }

private:
    static QString defaultFolder() { return defaultSaveFolder(settingskeys::kRecordingSaveLocation); }
    QString path() const { return m_root->filePath(QStringLiteral("videos/demo.mp4")); }

    /// Up to the one look at the file.
    void record(const QByteArray& content)
    {
        m_session->requestStart();
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
        file.close();
        QTRY_VERIFY(isOpenHere(path()));
        // What the look has found is on its way.
        QTest::qWait(200);
        m_posted.clear();
    }

    void waitForStop()
    {
        QTRY_VERIFY(m_calls.contains(QStringLiteral("stop 0")));
        m_session->onRecordStatusChanged(2);
    }

    void end(const QString& how)
    {
        if (how == QLatin1String("error")) {
            m_recorder->endByItself(QStringLiteral("not written"));
            return;
        }
        if (how == QLatin1String("space"))
            m_session->endForLackOfSpace();
        else if (how == QLatin1String("watch"))
            m_session->endWithoutFolder();
        else
            m_session->requestStop();
        waitForStop();
    }

    void expectCopy(const QByteArray& content)
    {
        QTRY_COMPARE(m_posted.size(), 1);
        QCOMPARE(m_posted.at(0).text, kSaved);
        const QString copy = defaultFolder() + QLatin1String("/demo.mp4");
        QCOMPARE(contentOf(copy), content);
        QCOMPARE(m_moved->takeFirst(), (QVariantList{path(), copy}));
        QCOMPARE(m_saved->takeFirst(), QVariantList{copy});
    }

    std::unique_ptr<QTemporaryDir> m_root;
    QStringList m_calls;
    QString m_chosenFolder;
    QList<Notice> m_posted;
    FakeStage m_stage;
    std::unique_ptr<FakeRecorder> m_recorder;
    std::unique_ptr<RecordingSession> m_session;
    std::unique_ptr<Notices> m_notices;
    std::unique_ptr<RecordingKeeper> m_keeper;
    std::unique_ptr<QSignalSpy> m_moved;
    std::unique_ptr<QSignalSpy> m_saved;
};

REGISTER_TEST(testrun::core<TestRecordingKeeper>);
#include "test_recordingkeeper_x11.moc"
