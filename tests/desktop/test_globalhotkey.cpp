// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey.h"
#include "tests/desktop/userinput.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

using platform::GlobalHotkey;
using userinput::setKeyboardLayout;
using userinput::xdotool;

namespace {

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
