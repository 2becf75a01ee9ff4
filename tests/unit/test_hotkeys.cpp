// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "mainwindow/hotkeys.h"
#include "mainwindow/notices/notices.h"
#include "overlays/drawwindow.h"
#include "platform/input/global_hotkey.h"
#include "tests/support/windowtest.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTest>

using platform::GlobalHotkey;

/// What the two hotkeys report, of presses and of keys that cannot be had.
class TestHotkeys : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        m_state = RecordingState::Idle;
        m_isGrabbing = false;
        m_hotkeys = std::make_unique<Hotkeys>(nullptr, m_activity, m_notices);
    }

    void pressThatMayBeCarriedOutIsPassedOn()
    {
        const QSignalSpy recording(m_hotkeys.get(), &Hotkeys::recordingPressed);
        const QSignalSpy screenshot(m_hotkeys.get(), &Hotkeys::screenshotPressed);
        const QSignalSpy posted(&m_notices, &Notices::posted);
        press(0);
        QCOMPARE(recording.size(), 1);
        QCOMPARE(screenshot.size(), 0);
        press(1);
        QCOMPARE(recording.size(), 1);
        QCOMPARE(screenshot.size(), 1);
        QCOMPARE(posted.size(), 0);
    }

    void recordingsEndInEveryState()
    {
        const QSignalSpy recording(m_hotkeys.get(), &Hotkeys::recordingPressed);
        for (const RecordingState state :
             {RecordingState::Countdown, RecordingState::Recording, RecordingState::Paused}) {
            m_state = state;
            press(0);
        }
        QCOMPARE(recording.size(), 3);
    }

    void pressThatMustWaitIsExplained_data()
    {
        QTest::addColumn<int>("hotkey");
        QTest::addColumn<RecordingState>("state");
        QTest::addColumn<bool>("isGrabbing");
        QTest::addColumn<QString>("text");
        const auto ending = QStringLiteral("The last recording is still being saved: press %1 again in a moment.");
        QTest::newRow("recording, ending") << 0 << RecordingState::Stopping << false << ending.arg("F8");
        QTest::newRow("screenshot, ending") << 1 << RecordingState::Ended << false << ending.arg("F7");
        QTest::newRow("screenshot, recording")
            << 1 << RecordingState::Recording << false
            << QStringLiteral("A recording is running: screenshots can be taken when it has ended.");
        QTest::newRow("screenshot, screenshot")
            << 1 << RecordingState::Idle << true
            << QStringLiteral("A screenshot is being taken: press F7 again in a moment.");
    }

    void pressThatMustWaitIsExplained()
    {
        QFETCH(const int, hotkey);
        QFETCH(const RecordingState, state);
        QFETCH(const bool, isGrabbing);
        QFETCH(const QString, text);
        const auto settings = openSettings();
        settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("F8"));
        settings->setValue(settingskeys::kScreenshotHotkey, QStringLiteral("F7"));
        m_hotkeys->apply(*settings);
        // What was reported of the keys themselves.
        QCoreApplication::processEvents();
        m_state = state;
        m_isGrabbing = isGrabbing;
        const QSignalSpy recording(m_hotkeys.get(), &Hotkeys::recordingPressed);
        const QSignalSpy screenshot(m_hotkeys.get(), &Hotkeys::screenshotPressed);
        const QSignalSpy posted(&m_notices, &Notices::posted);
        press(hotkey);
        QCOMPARE(posted.size(), 1);
        QCOMPARE(posted.at(0).at(0).value<Notice>().text, text);
        QVERIFY(posted.at(0).at(0).value<Notice>().isOfTheMoment);
        QCOMPARE(recording.size() + screenshot.size(), 0);
    }

    void keyThatCannotBeHadIsReportedWithTheWayToAnotherOne()
    {
        const auto settings = openSettings();
        settings->setValue(settingskeys::kScreenshotHotkey, QStringLiteral("garbage"));
        QSignalSpy posted(&m_notices, &Notices::posted);
        const QSignalSpy requested(m_hotkeys.get(), &Hotkeys::settingsRequested);
        m_hotkeys->apply(*settings);
        // Nobody may look yet.
        QCOMPARE(posted.size(), 0);
        QVERIFY(posted.wait());
        const auto notice = posted.at(0).at(0).value<Notice>();
        QCOMPARE(notice.text, QStringLiteral("The hotkey garbage cannot be used. Another program may hold it."));
        QCOMPARE(notice.actionText, QStringLiteral("Settings"));
        m_state = RecordingState::Recording;
        notice.action();
        QCOMPARE(requested.size(), 0);
        m_state = RecordingState::Idle;
        notice.action();
        QCOMPARE(requested.size(), 1);
    }

    void keyThatCannotBeHadIsReportedOnceAndOnlyWhileItIsWanted()
    {
        const auto settings = openSettings();
        settings->setValue(settingskeys::kScreenshotHotkey, QStringLiteral("garbage"));
        const QSignalSpy posted(&m_notices, &Notices::posted);
        m_hotkeys->apply(*settings);
        m_hotkeys->apply(*settings);
        QCoreApplication::processEvents();
        QCOMPARE(posted.size(), 1);
        settings->setValue(settingskeys::kScreenshotHotkey, QStringLiteral("rubbish"));
        m_hotkeys->apply(*settings);
        settings->setValue(settingskeys::kScreenshotHotkey, QString());
        m_hotkeys->apply(*settings);
        QCoreApplication::processEvents();
        QCOMPARE(posted.size(), 1);
    }

    void keyThatALayoutTakesAwayIsReported()
    {
        QSignalSpy posted(&m_notices, &Notices::posted);
        emit key(0).availabilityChanged(false, QStringLiteral("the keyboard has no such key"));
        QVERIFY(posted.wait());
        emit key(0).availabilityChanged(true, {});
        QCoreApplication::processEvents();
        QCOMPARE(posted.size(), 1);
    }

    void windowKeyThatCannotBeHadIsReportedOnce()
    {
        // Where there is no display to take keys from, nobody can have it either.
        GlobalHotkey other(nullptr);
        other.registerKey(QKeySequence(QStringLiteral("Ctrl+Shift+F8")));
        const auto settings = openSettings();
        settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("F8"));
        m_hotkeys->apply(*settings);
        emit key(0).availabilityChanged(true, {});
        QCoreApplication::processEvents();
        const QSignalSpy posted(&m_notices, &Notices::posted);
        DrawWindow frame;
        frame.show();
        QTRY_COMPARE(posted.size(), 1);
        const auto notice = posted.at(0).at(0).value<Notice>();
        QCOMPARE(notice.text, QStringLiteral("The hotkey Ctrl+Shift+F8 cannot be used. Another program may hold it."));
        frame.hide();
        QCoreApplication::processEvents();
        frame.show();
        QCoreApplication::processEvents();
        QCOMPARE(posted.size(), 1);
        // With a new keyboard layout.
        emit key(2).availabilityChanged(true, {});
        emit key(2).availabilityChanged(false, QStringLiteral("the keyboard has no such key"));
        QCOMPARE(posted.size(), 2);
    }

private:
    /// 0 is the recording's, 1 the screenshot's, 2 the window key.
    GlobalHotkey& key(int index) const { return *m_hotkeys->findChildren<GlobalHotkey*>().at(index); }
    void press(int index) const { emit key(index).activated(); }

    RecordingState m_state = RecordingState::Idle;
    bool m_isGrabbing = false;
    Activity m_activity{{[this] { return m_state; }, {}, {}, [this] { return m_isGrabbing; }, {}, {}, {}}};
    Notices m_notices;
    std::unique_ptr<Hotkeys> m_hotkeys;
};

REGISTER_TEST(windowtest::run<TestHotkeys>);

#include "test_hotkeys.moc"
