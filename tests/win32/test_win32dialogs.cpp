// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "tests/win32/win32user.h"

#include <QTest>

#include <memory>

using namespace win32user;

namespace {

/// Starting and ending one takes longer on a busy machine.
constexpr int kRecordingTimeoutMs = 60'000;
/// A position in the main window, left of and below every dialog.
constexpr QPoint kEmptyPosition(76, 420);

using WayToClose = bool (*)(const WindowsWindow&);

bool pressEscape(const WindowsWindow& /*window*/)
{
    press({QStringLiteral("Escape")});
    return true;
}

bool clickCloseButton(const WindowsWindow& window)
{
    return click(window, QPoint(window.position.width() - 24, 20));
}

// From the format of the recordings.
bool pressCancel(const WindowsWindow& /*window*/)
{
    press({"Tab", "Tab", "Tab", "Tab", "space"});
    return true;
}

bool pressSave(const WindowsWindow& /*window*/)
{
    press({"Tab", "Tab", "Tab", "space"});
    return true;
}

QString stored(const char* key)
{
    return Win32Program::storedSettings().value(QLatin1String(key));
}

} // namespace

/// The windows that the Windows program opens over its main window, worked by keys and pointer.
class TestWin32Dialogs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_desktop.begin(), QString()); }

    void init()
    {
        m_program = std::make_unique<Win32Program>();
        m_program->setSetting(QStringLiteral("screenshot/saveLocation"),
                              WineDesktop::windowsPath(shots().path()).replace('\\', '/'));
        const auto window = startInFront(*m_program);
        QVERIFY2(window, qPrintable(m_program->transcript()));
        m_main = *window;
    }

    void cleanup() { m_program.reset(); }

    void savedSettingsAreStoredAndInForceAtOnce();
    void settingsThatAreNotSavedAreNotStored();
    void aboutWindowStaysInFrontOfTheMainWindowAndClosesInEveryWay();
    void hotkeyRecordsWithoutTheAboutWindowWhichComesBack();
    void updateCheckWithoutANetworkIsReportedInItsWindowWhichClosesInEveryWay();
    void closeButtonOfTheMainWindowEndsTheProgramWithZero();

private:
    QDir shots() const { return m_program->profile().filePath(QStringLiteral("shots")); }

    /// Opens the main menu and presses the keys that choose an entry. The window that this opens.
    std::optional<WindowsWindow> choose(const QStringList& keys, const QString& title) const;
    /// Whether the dialog goes and leaves the main window in front, with the program running.
    bool closes(const WindowsWindow& window, WayToClose close) const;

    WineDesktop m_desktop;
    std::unique_ptr<Win32Program> m_program;
    WindowsWindow m_main;
};

std::optional<WindowsWindow> TestWin32Dialogs::choose(const QStringList& keys, const QString& title) const
{
    if (!click(m_main, kMenuButton) || !awaitWindow([this](const WindowsWindow& window) {
            return window.process == m_main.process && window.handle != m_main.handle;
        }))
        return std::nullopt;
    press(keys);
    return awaitReady(title);
}

bool TestWin32Dialogs::closes(const WindowsWindow& window, WayToClose close) const
{
    if (!close(window) || !awaitGone(window.title) || !m_program->isRunning())
        return false;
    const auto front = awaitReady(m_main.title);
    return front && front->handle == m_main.handle && visibleWindows() == 1;
}

void TestWin32Dialogs::savedSettingsAreStoredAndInForceAtOnce()
{
    const auto window = choose({"Down", "Return"}, QStringLiteral("Settings"));
    QVERIFY(window);
    // The tabs have the keyboard; the close button comes before the page. JPG, and F8 in the place of F9.
    press({"Down", "Tab", "Tab", "Down", "shift+Tab", "shift+Tab", "Down", "Tab", "Tab", "Up"});
    QCOMPARE(stored("hotkeys/recording"), QStringLiteral("F9"));
    const auto pressSaveOfTheHotkeys = [](const WindowsWindow&) {
        press({"Tab", "Tab", "space"});
        return true;
    };
    QVERIFY(closes(*window, pressSaveOfTheHotkeys));
    QCOMPARE(stored("hotkeys/recording"), QStringLiteral("F8"));
    QCOMPARE(stored("hotkeys/screenshot"), QStringLiteral("F10"));
    QCOMPARE(stored("screenshot/format"), QStringLiteral("JPG"));
    QCOMPARE(stored("recording/format"), QStringLiteral("MP4"));

    // The first key would minimise the window and count down, and the second one then take no screenshot.
    press({"F9", "F10"});
    QVERIFY(awaitScreenshotBar());
    press({"Return"});
    QVERIFY(awaitReady(QStringLiteral("Screenshot Saved")));
    QCOMPARE(shots().entryList({"Screenshot_*.jpg"}, QDir::Files).size(), 1);
    press({"Return"});
    QVERIFY(awaitGone(QStringLiteral("Screenshot Saved")) && awaitReady(m_main.title));
    QCOMPARE(visibleWindows(), 1);
    QVERIFY2(!m_program->transcript().contains(QLatin1String("Recording started...")),
             qPrintable(m_program->transcript()));
    press({"F8"});
    QVERIFY(m_program->waitForMessage(QStringLiteral("Recording started..."), kRecordingTimeoutMs));
    press({"F8"});
    QVERIFY(m_program->waitForMessage(QStringLiteral("Recording stopped... 0"), kRecordingTimeoutMs));
    QVERIFY(awaitReady(m_main.title));
    QCOMPARE(QDir(m_program->saveFolder()).entryList({"*.mp4"}, QDir::Files).size(), 1);
}

void TestWin32Dialogs::settingsThatAreNotSavedAreNotStored()
{
    for (const WayToClose close : {pressCancel, pressEscape, clickCloseButton, closeBySystem, pressSave}) {
        QVERIFY(click(m_main, kSettingsButton));
        const auto window = awaitReady(QStringLiteral("Settings"));
        QVERIFY(window);
        // From the tabs over the close button to the format.
        press({"Tab", "Tab", "Down"});
        QVERIFY(closes(*window, close));
        QCOMPARE(stored("recording/format"), close == pressSave ? QStringLiteral("AVI") : QStringLiteral("MP4"));
    }
}

void TestWin32Dialogs::aboutWindowStaysInFrontOfTheMainWindowAndClosesInEveryWay()
{
    const QStringList entry{"Up", "Return"};
    const auto title = QStringLiteral("About");
    auto window = choose(entry, title);
    QVERIFY(window);
    const QPoint off = window->position.center() - m_main.position.center();
    QVERIFY2(off.manhattanLength() <= 2, qPrintable(QStringLiteral("%1 %2").arg(off.x()).arg(off.y())));
    QVERIFY(click(m_main, kEmptyPosition) && click(m_main, kSettingsButton));
    QVERIFY(awaitReady(window->title));
    const auto front = WineDesktop::visibleWindow(QString(), kTimeoutMs);
    QVERIFY(front);
    QCOMPARE(front->handle, window->handle);
    QCOMPARE(visibleWindows(), 2);
    // This click comes after all that, finds the window still before the main window, and leaves no other one.
    QVERIFY(closes(*window, clickCloseButton));
    for (const WayToClose close : {pressEscape, closeBySystem}) {
        window = choose(entry, title);
        QVERIFY(window && closes(*window, close));
    }
}

void TestWin32Dialogs::hotkeyRecordsWithoutTheAboutWindowWhichComesBack()
{
    const auto window = choose({"Up", "Return"}, QStringLiteral("About"));
    QVERIFY(window);
    press({"F9"});
    QVERIFY(m_program->waitForMessage(QStringLiteral("Recording started..."), kRecordingTimeoutMs));
    QVERIFY(!WineDesktop::visibleWindow(window->title, 0));
    press({"F9"});
    QVERIFY(m_program->waitForMessage(QStringLiteral("Recording stopped... 0"), kRecordingTimeoutMs));
    const auto back = awaitReady(window->title);
    QVERIFY(back);
    QCOMPARE(back->position, window->position);
    QCOMPARE(QDir(m_program->saveFolder()).entryList({"*.mp4"}, QDir::Files).size(), 1);
    QVERIFY(closes(*back, clickCloseButton));
}

void TestWin32Dialogs::updateCheckWithoutANetworkIsReportedInItsWindowWhichClosesInEveryWay()
{
    const QStringList entry{"Down", "Down", "Down", "Return"};
    const auto title = QStringLiteral("Upgrade");
    auto window = choose(entry, title);
    QVERIFY(window);
    QVERIFY2(m_program->waitForMessage(QStringLiteral("Network error: "), kRecordingTimeoutMs),
             qPrintable(m_program->transcript()));
    // There is no other box, which would take the click: the window says it.
    QVERIFY(awaitReady(window->title));
    QCOMPARE(visibleWindows(), 2);
    QVERIFY(closes(*window, clickCloseButton));
    for (const WayToClose close : {pressEscape, closeBySystem}) {
        window = choose(entry, title);
        QVERIFY(window && closes(*window, close));
    }
}

void TestWin32Dialogs::closeButtonOfTheMainWindowEndsTheProgramWithZero()
{
    QVERIFY(click(m_main, kCloseButton));
    QVERIFY(m_program->waitUntilEnded(kTimeoutMs));
    QVERIFY2(m_program->endedWell(), qPrintable(m_program->transcript()));
}

REGISTER_TEST(testrun::gui<TestWin32Dialogs>);
#include "test_win32dialogs.moc"
