// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey.h"
#include "tests/desktop/userinput.h"
#include "tests/support/heldkeyboard.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <optional>
#include <sys/ioctl.h>
#include <sys/socket.h>

using platform::GlobalHotkey;
using userinput::setKeyboardLayout;
using userinput::xdotool;

namespace {

constexpr int kF9Keycode = 75;

/// Presses a key that nothing else uses, and waits for it: what was pressed before has then been reported.
bool waitForEarlierKeys()
{
    GlobalHotkey last(nullptr);
    QSignalSpy activated(&last, &GlobalHotkey::activated);
    if (!last.registerKey(QKeySequence(Qt::Key_F7)))
        return false;
    xdotool({"key", "F7"});
    return activated.wait();
}

/// The sockets that this process has open.
QSet<int> openSockets()
{
    QSet<int> sockets;
    const QStringList descriptors = QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files);
    for (const QString& descriptor : descriptors) {
        int type = 0;
        socklen_t size = sizeof(type);
        if (getsockopt(descriptor.toInt(), SOL_SOCKET, SO_TYPE, &type, &size) == 0)
            sockets.insert(descriptor.toInt());
    }
    return sockets;
}

int bytesWaiting(int socket)
{
    int count = -1;
    return ioctl(socket, FIONREAD, &count) == 0 ? count : -1;
}

} // namespace

class TestGlobalHotkey : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { setKeyboardLayout(QStringLiteral("us")); }

    void firesWithoutFocus()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        xdotool({"key", "F9"});
        QTRY_COMPARE(activated.size(), 1);
        xdotool({"key", "F8"});
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), 1);
    }

    void lockKeysMakeNoDifference_data()
    {
        QTest::addColumn<QStringList>("locks");
        QTest::newRow("Num Lock") << QStringList{"Num_Lock"};
        QTest::newRow("Caps Lock") << QStringList{"Caps_Lock"};
        QTest::newRow("Num Lock and Caps Lock") << QStringList{"Num_Lock", "Caps_Lock"};
    }

    void lockKeysMakeNoDifference()
    {
        QFETCH(QStringList, locks);
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        for (const QString& lock : locks)
            xdotool({"key", lock});
        xdotool({"key", "F9"});
        for (const QString& lock : locks)
            xdotool({"key", lock});
        QTRY_COMPARE(activated.size(), 1);
    }

    void otherModifiersAreOtherKeys()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::CTRL | Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        xdotool({"key", "F9"});
        xdotool({"key", "shift+F9"});
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), 0);
        xdotool({"key", "ctrl+F9"});
        QTRY_COMPARE(activated.size(), 1);
    }

    void everyModifierIsKnown()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::ALT | Qt::Key_R)),
                 qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        xdotool({"key", "ctrl+shift+alt+r"});
        QTRY_COMPARE(activated.size(), 1);
        QVERIFY(hotkey.registerKey(QKeySequence(Qt::META | Qt::Key_R)));
        xdotool({"key", "super+r"});
        QTRY_COMPARE(activated.size(), 2);
    }

    void heldKeyFiresOnce()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        xdotool({"keydown", "F9"});
        QTest::qWait(1500);
        xdotool({"keyup", "F9"});
        QTRY_COMPARE(activated.size(), 1);
        xdotool({"key", "F9"});
        QTRY_COMPARE(activated.size(), 2);
    }

    void firesWhileAnotherProgramHoldsTheKeyboard_data()
    {
        QTest::addColumn<QString>("program");
        QTest::newRow("with a grab of its own") << "grab";
        QTest::newRow("with a menu of Tk") << "Tk";
        QTest::newRow("with a menu of Qt") << "Qt";
    }

    void firesWhileAnotherProgramHoldsTheKeyboard()
    {
        QFETCH(const QString, program);
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        std::optional<heldkeyboard::Holder> holder;
        heldkeyboard::TkMenu tkMenu;
        QMenu qtMenu;
        qtMenu.addAction(QStringLiteral("Entry"));
        if (program == QLatin1String("grab"))
            holder.emplace();
        else if (program == QLatin1String("Tk"))
            QVERIFY(tkMenu.open());
        else
            qtMenu.popup(QPoint(50, 50));
        QTRY_VERIFY(heldkeyboard::isHeld());
        for (int time = 1; time <= 3; ++time) {
            xdotool({"key", "F9"});
            QTRY_COMPARE(activated.size(), time);
        }
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), 3);
        QVERIFY(heldkeyboard::isHeld());
    }

    void countsOnceWhereItsGrabWorksAsWell()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        for (int time = 1; time <= 5; ++time) {
            xdotool({"key", "F9"});
            QTRY_COMPARE(activated.size(), time);
            QVERIFY(waitForEarlierKeys());
            QCOMPARE(activated.size(), time);
        }
    }

    void modifiersMatchExactlyWhileTheKeyboardIsHeld_data()
    {
        QTest::addColumn<QString>("hotkey");
        QTest::addColumn<QString>("pressed");
        QTest::addColumn<int>("count");
        QTest::newRow("one too many") << "F9"
                                      << "shift+F9" << 0;
        QTest::newRow("one too few") << "Ctrl+F9"
                                     << "F9" << 0;
        QTest::newRow("another one") << "Ctrl+F9"
                                     << "alt+F9" << 0;
        QTest::newRow("the one") << "Ctrl+F9"
                                 << "ctrl+F9" << 1;
        QTest::newRow("all of them") << "Ctrl+Shift+Alt+R"
                                     << "ctrl+shift+alt+r" << 1;
    }

    void modifiersMatchExactlyWhileTheKeyboardIsHeld()
    {
        QFETCH(const QString, hotkey);
        QFETCH(const QString, pressed);
        QFETCH(const int, count);
        GlobalHotkey key(nullptr);
        QVERIFY2(key.registerKey(QKeySequence::fromString(hotkey)), qPrintable(key.failureReason()));
        const QSignalSpy activated(&key, &GlobalHotkey::activated);
        const heldkeyboard::Holder holder;
        QVERIFY(holder.isHolding());
        xdotool({"key", pressed});
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), count);
    }

    void modifierThatIsHeldWhenTheKeyIsTakenCounts()
    {
        const heldkeyboard::Holder holder;
        QVERIFY(holder.isHolding());
        xdotool({"keydown", "shift"});
        GlobalHotkey hotkey(nullptr);
        const bool isTaken = hotkey.registerKey(QKeySequence(Qt::Key_F9));
        const QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        xdotool({"key", "F9"});
        xdotool({"keyup", "shift"});
        QVERIFY2(isTaken, qPrintable(hotkey.failureReason()));
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), 0);
        xdotool({"key", "F9"});
        QTRY_COMPARE(activated.size(), 1);
    }

    void lockKeysMakeNoDifferenceWhileTheKeyboardIsHeld()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        const heldkeyboard::Holder holder;
        QVERIFY(holder.isHolding());
        xdotool({"key", "Num_Lock", "Caps_Lock"});
        xdotool({"key", "F9"});
        xdotool({"key", "Num_Lock", "Caps_Lock"});
        QTRY_COMPARE(activated.size(), 1);
    }

    /// Its grab begins with a repetition of the key.
    void keyThatIsDownWhenTheKeyboardIsFreeAgainFiresOnce()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        {
            const heldkeyboard::Holder holder;
            QVERIFY(holder.isHolding());
            xdotool({"keydown", "F9"});
            QTRY_COMPARE(activated.size(), 1);
        }
        QTest::qWait(1500);
        xdotool({"keyup", "F9"});
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), 1);
        xdotool({"key", "F9"});
        QTRY_COMPARE(activated.size(), 2);
    }

    /// The display sends every key to whoever listens.
    void listensToTheKeyboardOnlyWhileThereIsAKeyToListenFor()
    {
        const QSet<int> before = openSockets();
        GlobalHotkey hotkey(nullptr);
        const QSet<int> own = openSockets() - before;
        QCOMPARE(own.size(), 1);
        // Nothing is read while the test waits for the tool.
        const auto sentFor = [socket = *own.begin()](const QStringList& keys) {
            xdotool(QStringList("key") + keys);
            return bytesWaiting(socket);
        };
        sentFor({"a"});
        QCoreApplication::processEvents();
        QCOMPARE(sentFor({"a", "b", "c"}), 0);
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QVERIFY(sentFor({"a", "b", "c"}) > 0);
        QVERIFY(hotkey.registerKey({}));
        QCoreApplication::processEvents();
        QCOMPARE(sentFor({"a", "b", "c"}), 0);
    }

    void keyHeldByAnotherProgramIsNamed()
    {
        // Each hotkey has a connection of its own: to the X server the first one is another program.
        GlobalHotkey other(nullptr);
        QVERIFY(other.registerKey(QKeySequence(Qt::Key_F9)));
        GlobalHotkey hotkey(nullptr);
        QVERIFY(!hotkey.registerKey(QKeySequence(Qt::Key_F9)));
        QCOMPARE(hotkey.failureReason(), QStringLiteral("another program holds it"));
        QVERIFY(other.registerKey(QKeySequence()));
        QVERIFY(hotkey.registerKey(QKeySequence(Qt::Key_F9)));
        QCOMPARE(hotkey.failureReason(), QString());
    }

    void keyHeldByAnotherProgramIsHeardWhereThatIsEnough()
    {
        GlobalHotkey hotkey(nullptr, GlobalHotkey::WhenHeld::Listen);
        const heldkeyboard::KeyHolder other(kF9Keycode);
        QVERIFY(other.isHolding());
        QVERIFY2(hotkey.registerKey(QKeySequence(Qt::Key_F9)), qPrintable(hotkey.failureReason()));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        for (int time = 1; time <= 3; ++time) {
            xdotool({"key", "F9"});
            QTRY_COMPARE(activated.size(), time);
        }
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), 3);
    }

    void keyThatTheKeyboardDoesNotHaveIsNamed()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY(!hotkey.registerKey(QKeySequence(Qt::Key_Select)));
        QCOMPARE(hotkey.failureReason(), QStringLiteral("the keyboard has no such key"));
    }

    void anotherKeyReplacesTheFirst()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY(hotkey.registerKey(QKeySequence(Qt::Key_F9)));
        QVERIFY(hotkey.registerKey(QKeySequence(Qt::Key_F8)));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        xdotool({"key", "F9"});
        xdotool({"key", "F8"});
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), 1);
    }

    void destroyedHotkeyLetsGoOfItsKey()
    {
        auto first = std::make_unique<GlobalHotkey>(nullptr);
        QVERIFY(first->registerKey(QKeySequence(Qt::Key_F9)));
        first.reset();
        GlobalHotkey second(nullptr);
        QTRY_VERIFY(second.registerKey(QKeySequence(Qt::Key_F9)));
    }

    void followsTheKeyboardLayout()
    {
        GlobalHotkey hotkey(nullptr);
        QVERIFY(hotkey.registerKey(QKeySequence(Qt::CTRL | Qt::Key_Y)));
        QSignalSpy activated(&hotkey, &GlobalHotkey::activated);
        setKeyboardLayout(QStringLiteral("de"));
        // The key that bears "z" on an English keyboard, by its position; "y" is on it now.
        QTRY_VERIFY((xdotool({"keydown", "ctrl", "key", "52", "keyup", "ctrl"}), !activated.isEmpty()));
        QVERIFY(waitForEarlierKeys());
        activated.clear();
        xdotool({"keydown", "ctrl", "key", "29", "keyup", "ctrl"});
        QVERIFY(waitForEarlierKeys());
        QCOMPARE(activated.size(), 0);
    }

    void saysWhenALayoutLacksTheKeyAndWhenItIsBack()
    {
        setKeyboardLayout(QStringLiteral("de"));
        GlobalHotkey hotkey(nullptr);
        QTRY_VERIFY(hotkey.registerKey(QKeySequence(Qt::CTRL | Qt::Key_Adiaeresis)));
        const QSignalSpy available(&hotkey, &GlobalHotkey::availabilityChanged);
        setKeyboardLayout(QStringLiteral("us"));
        QTRY_COMPARE(available.size(), 1);
        QCOMPARE(available.at(0), (QVariantList{false, QStringLiteral("the keyboard has no such key")}));
        setKeyboardLayout(QStringLiteral("de"));
        QTRY_COMPARE(available.size(), 2);
        QCOMPARE(available.at(1), (QVariantList{true, QString()}));
    }
};

REGISTER_TEST(testrun::gui<TestGlobalHotkey>);

#include "test_globalhotkey.moc"
