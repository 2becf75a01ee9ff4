// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_manager.h"
#include "platform/input/global_hotkey.h"
#include "platform/input/mouse_hook.h"
#include "platform/input/window_hotkey.h"
#include "platform/windowing/window_activation.h"
#include "tests/support/reportedfailures.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeySequence>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <windows.h>

namespace {

QString words(DWORD error)
{
    return qt_error_string(static_cast<int>(error)).trimmed();
}

/// Mouse events that a hook of the test's own has seen.
int seenMouseEvents = 0;

LRESULT CALLBACK countMouseEvent(int code, WPARAM message, LPARAM details)
{
    ++seenMouseEvents;
    return CallNextHookEx(nullptr, code, message, details);
}

bool movePointer()
{
    static int step = 0;
    step = -step + 1;
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dx = step;
    input.mi.dy = 1;
    input.mi.dwFlags = MOUSEEVENTF_MOVE;
    return SendInput(1, &input, sizeof(input)) == 1;
}

/// As the system does, whoever has put them on: by their handles, whose lower halves are all that matters under Wine.
bool takeOffEveryHook()
{
    bool found = false;
    for (quintptr handle = 0x20; handle <= 0xFFFF; ++handle)
        found = UnhookWindowsHookEx(reinterpret_cast<HHOOK>(handle)) != 0 || found;
    return found;
}

QString failureOf(const char* call, DWORD error)
{
    return QStringLiteral("%1 failed: %2 (error %3)").arg(QLatin1String(call), words(error)).arg(error);
}

} // namespace

/// Calls that Windows refuses: each is reported in the system's words, and what follows it is as it should be.
class TestFailedCalls : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_reports.clear(); }

    void hotkeyOfAnotherProgramIsNotTakenAndSaysWhy()
    {
        constexpr int kIdentifier = 8;
        QVERIFY(RegisterHotKey(nullptr, kIdentifier, MOD_SHIFT, VK_F8) != 0);
        platform::GlobalHotkey hotkey(nullptr);
        QVERIFY(!hotkey.registerKey(QKeySequence(Qt::SHIFT | Qt::Key_F8)));
        QCOMPARE(hotkey.failureReason(), QStringLiteral("another program holds it"));
        QVERIFY(UnregisterHotKey(nullptr, kIdentifier) != 0);
        QVERIFY(hotkey.registerKey(QKeySequence(Qt::SHIFT | Qt::Key_F8)));
        QCOMPARE(hotkey.failureReason(), QString());
        QCOMPARE(m_reports.sentences(), QStringList());
    }

    void keyThatTheKeyboardLacksIsNotTakenAndSaysWhy()
    {
        platform::GlobalHotkey hotkey(nullptr);
        QVERIFY(!hotkey.registerKey(QKeySequence(Qt::Key_Camera)));
        QCOMPARE(hotkey.failureReason(), QStringLiteral("the keyboard has no such key"));
    }

    void hotkeyOfTheProgramItselfIsNotTakenAndSaysWhy()
    {
        platform::GlobalHotkey first(nullptr);
        QVERIFY(first.registerKey(QKeySequence(Qt::Key_F8)));
        platform::GlobalHotkey second(nullptr);
        QVERIFY(!second.registerKey(QKeySequence(Qt::Key_F8)));
        QCOMPARE(second.failureReason(), QStringLiteral("another program holds it"));
        QVERIFY(first.registerKey({}));
        QVERIFY(second.registerKey(QKeySequence(Qt::Key_F8)));
        QCOMPARE(m_reports.sentences(), QStringList());
    }

    void windowsHotkeyThatAnotherProgramHoldsIsLoggedOnly()
    {
        constexpr int kIdentifier = 7;
        constexpr UINT kVirtualKeyH = 0x48;
        QVERIFY(RegisterHotKey(nullptr, kIdentifier, MOD_CONTROL | MOD_SHIFT, kVirtualKeyH) != 0);
        QWidget window;
        {
            const platform::WindowHotkey hotkey(window, {});
            QCOMPARE(m_reports.sentences(), QStringList{failureOf("RegisterHotKey", ERROR_HOTKEY_ALREADY_REGISTERED)});
        }
        // What was not taken is not given back.
        QCOMPARE(m_reports.sentences().size(), 1);
        QVERIFY(UnregisterHotKey(nullptr, kIdentifier) != 0);
        {
            const platform::WindowHotkey hotkey(window, {});
        }
        QCOMPARE(m_reports.sentences().size(), 1);
    }

    void windowThatIsGoneIsNotRaised()
    {
        constexpr quint64 kNoWindow = 0x7FFFFFF0;
        QVERIFY(!platform::raiseWindow(kNoWindow));
        QCOMPARE(m_reports.sentences(), QStringList{failureOf("SetWindowPos", ERROR_INVALID_WINDOW_HANDLE)});
    }

    void mouseHookComesAndGoesWithoutAWord()
    {
        platform::MouseHook hook;
        QCOMPARE(hook.install([](platform::MouseHook::Event, const QPoint&) {}), 0UL);
        hook.remove();
        hook.remove();
        QCOMPARE(m_reports.sentences(), QStringList());
    }

    void mouseHookThatTheSystemHasTakenOffIsPutOnAgainWhereItIsWanted()
    {
        int moves = 0;
        platform::MouseHook hook;
        QCOMPARE(hook.install([&moves](platform::MouseHook::Event, const QPoint&) { ++moves; }), 0UL);
        QVERIFY(movePointer());
        QTRY_VERIFY(moves > 0);
        QVERIFY(takeOffEveryHook());
        moves = 0;
        // The last hook is asked first, and asks those before it.
        const HHOOK last = SetWindowsHookExW(WH_MOUSE_LL, &countMouseEvent, GetModuleHandleW(nullptr), 0);
        QVERIFY(movePointer());
        QTRY_VERIFY(seenMouseEvents > 0);
        QVERIFY(UnhookWindowsHookEx(last) != 0);
        QCOMPARE(moves, 0);
        hook.setWanted(true);
        QVERIFY(movePointer());
        QTRY_VERIFY(moves > 0);
        QCOMPARE(m_reports.sentences(), QStringList());
    }

    void shellGetsAShortPathAsItIs()
    {
        const QString path = QStringLiteral("C:/Users/Jo Doe/a.mp4");
        QCOMPARE(platform::shellPath(path), path);
    }

    void shellGetsALongPathByItsShortNames()
    {
        const QTemporaryDir root;
        const QString folder = root.filePath(QString(120, u'a') + u'/' + QString(80, u'\u9332'));
        QVERIFY(QDir().mkpath(folder));
        const QString path = folder + QStringLiteral("/a recording of a long afternoon.mp4");
        QVERIFY(path.size() > MAX_PATH);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("what is in it");
        file.close();

        const QString shortened = platform::shellPath(path);
        QVERIFY2(shortened.size() < MAX_PATH, qPrintable(shortened));
        QVERIFY(!shortened.startsWith(QLatin1String(R"(\\?\)")));
        QFile same(shortened);
        QVERIFY(same.open(QIODevice::ReadOnly));
        QCOMPARE(same.readAll(), QByteArray("what is in it"));
        QCOMPARE(m_reports.sentences(), QStringList());
    }

    void longPathOfNoFileStaysAsItIs()
    {
        const QString path = QStringLiteral("C:/") + QString(200, u'a') + u'/' + QString(200, u'b');
        QCOMPARE(platform::shellPath(path), path);
        QCOMPARE(m_reports.sentences().size(), 1);
        QVERIFY(m_reports.sentences().constFirst().startsWith(QStringLiteral("GetShortPathName failed: ")));
    }

private:
    ReportedFailures m_reports;
};

static int run(int argc, char* argv[])
{
    // Off screen a window has no number of the system's.
    qputenv("QT_QPA_PLATFORM", "windows");
    return testrun::gui<TestFailedCalls>(argc, argv);
}

REGISTER_TEST(run);

#include "test_failedcalls_win.moc"
