// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/window_hold.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <windows.h>

/// What a window answers that is held minimised.
class TestWindowHold : public QObject
{
    Q_OBJECT

private slots:
    void requestsToComeBackAreSwallowed_data()
    {
        QTest::addColumn<quint64>("command");
        QTest::newRow("restore") << quint64(0xF120);
        QTest::newRow("restore by double click") << quint64(0xF122);
        QTest::newRow("maximise") << quint64(0xF030);
    }

    void requestsToComeBackAreSwallowed()
    {
        QFETCH(const quint64, command);
        MSG message{};
        message.message = WM_SYSCOMMAND;
        message.wParam = command;
        QCOMPARE(answerTo(message), std::optional<qintptr>(0));
    }

    void otherCommandsAreLeftAlone()
    {
        MSG message{};
        message.message = WM_SYSCOMMAND;
        for (const quint64 command : {0xF020, 0xF060, 0xF010}) {
            message.wParam = command;
            QVERIFY(!answerTo(message));
        }
    }

    void windowThatIsMovedInFrontDoesNotTakeTheFocus()
    {
        WINDOWPOS position{};
        position.flags = SWP_NOSIZE;
        MSG message{};
        message.message = WM_WINDOWPOSCHANGING;
        message.lParam = reinterpret_cast<LPARAM>(&position);
        QCOMPARE(answerTo(message), std::optional<qintptr>(0));
        QCOMPARE(position.flags, UINT(SWP_NOSIZE | 0x0010));
    }

    void otherMessagesAndOtherEventTypesAreLeftAlone()
    {
        MSG message{};
        message.message = WM_CLOSE;
        QVERIFY(!answerTo(message));
        message.message = WM_SYSCOMMAND;
        message.wParam = 0xF120;
        QVERIFY(!platform::answerWhileHeld("windows_dispatcher_MSG", &message));
        QVERIFY(!platform::answerWhileHeld("xcb_generic_event_t", &message));
    }

private:
    static std::optional<qintptr> answerTo(MSG& message)
    {
        return platform::answerWhileHeld("windows_generic_MSG", &message);
    }
};

REGISTER_TEST(testrun::core<TestWindowHold>);

#include "test_windowhold_win.moc"
