// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/activity.h"
#include "tests/support/testrun.h"

#include <QTest>

class TestActivity : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_recording = RecordingState::Idle;
        m_isSelecting = m_isGrabbing = m_isDialogOpen = m_isMenuOpen = false;
        m_isWindowShown = true;
    }

    void everythingMayBeginWhileNothingElseGoesOn()
    {
        QCOMPARE(answers(), QStringLiteral("idle screenshot frame open"));
    }

    void recordingAllowsNothingElse_data()
    {
        QTest::addColumn<RecordingState>("state");
        for (const RecordingState state : {RecordingState::Preparing, RecordingState::Recording, RecordingState::Paused,
                                           RecordingState::Stopping, RecordingState::Ended})
            QTest::newRow(qPrintable(QString::number(static_cast<int>(state)))) << state;
    }

    void recordingAllowsNothingElse()
    {
        QFETCH(const RecordingState, state);
        m_recording = state;
        QCOMPARE(answers(), QString());
    }

    void countdownBringsTheRegionFrameBack()
    {
        m_recording = RecordingState::Countdown;
        QCOMPARE(answers(), QStringLiteral("frame"));
    }

    void refusalSaysWhy_data()
    {
        using Refusal = Activity::Refusal;
        QTest::addColumn<RecordingState>("state");
        QTest::addColumn<bool>("isDialogOpen");
        QTest::addColumn<bool>("isGrabbing");
        QTest::addColumn<Refusal>("recording");
        QTest::addColumn<Refusal>("screenshot");
        using enum RecordingState;
        QTest::newRow("idle") << Idle << false << false << Refusal::None << Refusal::None;
        QTest::newRow("dialog") << Idle << true << false << Refusal::None << Refusal::None;
        QTest::newRow("screenshot") << Idle << false << true << Refusal::None << Refusal::ScreenshotUnderWay;
        for (const RecordingState state : {Countdown, Preparing, Recording, Paused})
            QTest::addRow("recording, %d", static_cast<int>(state))
                << state << true << false << Refusal::None << Refusal::RecordingUnderWay;
        for (const RecordingState state : {Stopping, Ended})
            QTest::addRow("ending, %d", static_cast<int>(state))
                << state << false << false << Refusal::RecordingEnding << Refusal::RecordingEnding;
    }

    void refusalSaysWhy()
    {
        QFETCH(const RecordingState, state);
        QFETCH(const bool, isDialogOpen);
        QFETCH(const bool, isGrabbing);
        m_recording = state;
        m_isDialogOpen = isDialogOpen;
        m_isGrabbing = isGrabbing;
        QTEST(m_activity.recordingRefusal(), "recording");
        QTEST(m_activity.screenshotRefusal(), "screenshot");
    }

    void dialogThatWaitsKeepsOtherWindowsFromOpening()
    {
        m_isDialogOpen = true;
        QCOMPARE(answers(), QStringLiteral("idle screenshot frame"));
    }

    void openMenuOrDialogKeepsOtherWindowsFromOpening()
    {
        m_isMenuOpen = true;
        QCOMPARE(answers(), QStringLiteral("idle screenshot frame"));
    }

    void selectionKeepsOtherWindowsFromOpening()
    {
        m_isSelecting = true;
        QCOMPARE(answers(), QStringLiteral("idle screenshot frame"));
    }

    void nothingIsSelectedForAScreenshotWhileOneIsGrabbed()
    {
        m_isGrabbing = true;
        QCOMPARE(answers(), QStringLiteral("idle frame open"));
    }

    void windowThatIsNotInTheRecordingMayOpenMeanwhile()
    {
        m_recording = RecordingState::Recording;
        m_isWindowShown = false;
        QVERIFY(m_activity.mayOpenUnasked(true));
        m_isSelecting = true;
        QVERIFY(!m_activity.mayOpenUnasked(true));
    }

    void minimisedWindowHasNoOtherWindowOpened()
    {
        m_isWindowShown = false;
        QCOMPARE(answers(), QStringLiteral("idle screenshot frame"));
        QVERIFY(m_activity.mayOpenUnasked(true));
    }

    void closingIsRemembered()
    {
        QVERIFY(!m_activity.isClosing());
        m_activity.setClosing();
        QVERIFY(m_activity.isClosing());
    }

private:
    QString answers() const
    {
        QStringList names;
        for (const auto& [name, answer] : {std::pair{"idle", m_activity.isIdle()},
                                           {"screenshot", m_activity.mayTakeScreenshot()},
                                           {"frame", m_activity.mayRestoreRegionFrame()},
                                           {"open", m_activity.mayOpenUnasked(false)}}) {
            if (answer)
                names.append(QLatin1String(name));
        }
        return names.join(QLatin1Char(' '));
    }

    RecordingState m_recording = RecordingState::Idle;
    bool m_isActive = false;
    bool m_isSelecting = false;
    bool m_isGrabbing = false;
    bool m_isDialogOpen = false;
    bool m_isMenuOpen = false;
    bool m_isWindowShown = true;
    Activity m_activity{{[this] { return m_recording; }, [this] { return m_isActive; },
                         [this] { return m_isSelecting; }, [this] { return m_isGrabbing; },
                         [this] { return m_isDialogOpen; }, [this] { return m_isMenuOpen; },
                         [this] { return m_isWindowShown; }}};
};

REGISTER_TEST(testrun::core<TestActivity>);

#include "test_activity.moc"
