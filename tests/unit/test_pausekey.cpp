// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/recording/pausekey.h"
#include "mainwindow/recording/recordingsession.h"
#include "mainwindow/recording/recordingstage.h"
#include "platform/input/global_hotkey.h"
#include "tests/support/fakerecorder.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using platform::GlobalHotkey;

namespace {

constexpr Durations kShort{.windowGoneMs = 1, .drainPollMs = 1};

class QuietStage : public RecordingStage
{
public:
    void minimiseWindow() override {}
    bool isWindowMinimised() const override { return true; }
    void restoreWindow() override {}
    void hideOverlays() override {}
    void countDown(int) override {}
    void cancelCountdown() override {}
    bool prepareCapture() override { return true; }
    RecordingChoices choices() const override
    {
        return {QStringLiteral("demo"), m_folder.path(), 0, {640, 480}, 640, 480, false, false, {}};
    }
    void setExcludedFromCapture(bool) override {}

private:
    QTemporaryDir m_folder;
};

} // namespace

/// The key that pauses, while another program holds it.
class TestPauseKey : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init()
    {
        // Where there is no display to take keys from, nobody can have it either.
        m_other.registerKey(QKeySequence(QStringLiteral("Shift+F9")));
        m_recordingKey = QStringLiteral("F9");
        m_recorder = std::make_unique<FakeRecorder>(m_calls);
        m_recorder->onStatus = [this](int status) { m_session->onRecordStatusChanged(status); };
        m_session = std::make_unique<RecordingSession>(*m_recorder, m_stage, nullptr, kShort);
        m_key = std::make_unique<PauseKey>(nullptr, *m_session, m_notices, [this] { return m_recordingKey; });
    }

    void cleanup()
    {
        m_key.reset();
        m_session.reset();
    }

    void keyThatCannotBeHadIsTriedOnceInARecordingAndReportedOnce()
    {
        const QSignalSpy posted(&m_notices, &Notices::posted);
        const QSignalSpy changed(m_key.get(), &PauseKey::keyChanged);
        const MessageCapture messages;
        m_session->requestStart();
        QCOMPARE(changed, QList<QVariantList>{{QString()}});
        QCOMPARE(m_session->state(), RecordingState::Recording);
        pauseAndResume();
        QCOMPARE(failures(messages), 1);
        QCOMPARE(posted.size(), 1);
        const auto notice = posted.at(0).at(0).value<Notice>();
        QCOMPARE(notice.text, QStringLiteral("The hotkey Shift+F9 cannot be used. Another program may hold it."));
        QVERIFY(notice.isOfTheMoment);
        recordToTheEnd();
        m_session->requestStart();
        QCOMPARE(failures(messages), 2);
        QCOMPARE(posted.size(), 1);
    }

    void noKeyOfTheRecordingIsNoFailure()
    {
        m_recordingKey.clear();
        const QSignalSpy posted(&m_notices, &Notices::posted);
        const MessageCapture messages;
        m_session->requestStart();
        QCOMPARE(failures(messages), 0);
        QCOMPARE(posted.size(), 0);
    }

    void keyThatALayoutTakesAwayIsReported()
    {
        // Nobody else holds it any more.
        m_other.registerKey({});
        m_session->requestStart();
        auto* const key = m_key->findChild<GlobalHotkey*>();
        const QSignalSpy changed(m_key.get(), &PauseKey::keyChanged);
        emit key->availabilityChanged(true, {});
        QCOMPARE(changed.last(), QVariantList{QStringLiteral("Shift+F9")});
        const QSignalSpy posted(&m_notices, &Notices::posted);
        emit key->availabilityChanged(false, QStringLiteral("the keyboard has no such key"));
        QCOMPARE(changed.last(), QVariantList{QString()});
        QCOMPARE(posted.size(), 1);
        QCOMPARE(posted.at(0).at(0).value<Notice>().text,
                 QStringLiteral("The hotkey Shift+F9 cannot be used. Another program may hold it."));
        emit key->availabilityChanged(true, {});
        QCOMPARE(posted.size(), 1);
    }

    void keyPausesAndGoesOn()
    {
        m_session->requestStart();
        emit m_key->findChild<GlobalHotkey*>()->activated();
        QVERIFY(m_recorder->paused);
        emit m_key->findChild<GlobalHotkey*>()->activated();
        QTRY_VERIFY(!m_recorder->paused);
    }

private:
    static qsizetype failures(const MessageCapture& messages)
    {
        return messages.texts(QtWarningMsg).filter(QStringLiteral("The hotkey \"Shift+F9\" cannot be used: ")).size();
    }

    void pauseAndResume()
    {
        m_session->onRecordStatusChanged(1);
        QCOMPARE(m_session->state(), RecordingState::Paused);
        m_session->onRecordStatusChanged(0);
        QCOMPARE(m_session->state(), RecordingState::Recording);
    }

    void recordToTheEnd()
    {
        m_session->requestStop();
        QTRY_VERIFY(!m_recorder->recording);
        m_session->onRecordStatusChanged(2);
        QTRY_COMPARE(m_session->state(), RecordingState::Idle);
    }

    QStringList m_calls;
    std::unique_ptr<FakeRecorder> m_recorder;
    QuietStage m_stage;
    Notices m_notices;
    GlobalHotkey m_other{nullptr};
    QString m_recordingKey;
    std::unique_ptr<RecordingSession> m_session;
    std::unique_ptr<PauseKey> m_key;
};

REGISTER_TEST(testrun::gui<TestPauseKey>);

#include "test_pausekey.moc"
