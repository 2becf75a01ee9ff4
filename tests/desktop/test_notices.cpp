// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/floatingnotice.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/screenshotsession.h"
#include "platform/windowing/desktop_notification.h"
#include "platform/windowing/excluded_windows.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"
#include "tests/support/messagebus.h"
#include "tests/support/notificationserver.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

using desktopuser::click;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::press;

namespace {

constexpr Durations kBrief{.noticeMs = 400, .noticeWithActionMs = 800};
constexpr QRgb kBackground = qRgb(0x22, 0x22, 0x22);
constexpr QRgb kAccent = qRgb(0x00, 0x7a, 0xcc);

QRect onDesktop(const QWidget& widget)
{
    return {widget.mapToGlobal(QPoint(0, 0)), widget.size()};
}

} // namespace

/// Notices as the user sees them: in the main window, beside the floating bar, and as messages of the desktop.
class TestNotices : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        pointTo(onScreen({3, 3}));
    }

    void cleanup() { m_window.reset(); }

    void lineIsAtTheTopOfThePageAndLeavesTheWindowAsItIs()
    {
        makeWindow();
        const QRect before = m_window->geometry();
        QWidget* const focused = m_window->focusWidget();
        post({"The disk is almost full."});
        QVERIFY(line().isVisible());
        desktopuser::waitUntilStill();
        QCOMPARE(m_window->geometry(), before);
        QCOMPARE(m_window->focusWidget(), focused);
        const QRect page = onDesktop(*child<QStackedWidget>("pages"));
        const QRect shown = onDesktop(line());
        QCOMPARE(shown.topLeft(), page.topLeft());
        QCOMPARE(shown.width(), page.width());
        QCOMPARE(QColor(desktopuser::colourAt(shown.topLeft() + QPoint(3, 3))), QColor(kBackground));
        QCOMPARE(QColor(desktopuser::colourAt(shown.bottomLeft() + QPoint(3, 0))), QColor(kAccent));
        // The next page is below it as well.
        click(*child<QPushButton>("filesTab"));
        desktopuser::waitUntilStill();
        QCOMPARE(QColor(desktopuser::colourAt(shown.topLeft() + QPoint(3, 3))), QColor(kBackground));
        m_window->resize(m_window->size() + QSize(60, 0));
        QTRY_COMPARE(line().width(), child<QStackedWidget>("pages")->width());
    }

    void lineIsClosedByAClickAndByTheKeyboard()
    {
        makeWindow();
        post({"one"});
        post({"two", "Open Folder", [] {}});
        click(*text());
        QTRY_COMPARE(text()->text(), QStringLiteral("two"));
        QVERIFY(desktopuser::tabTo(*child<QPushButton>("noticeClose")));
        press(QStringLiteral("space"));
        QTRY_VERIFY(!line().isVisible());
        QTRY_VERIFY(m_window->isActiveWindow() && m_window->focusWidget() != nullptr);
    }

    void actionIsClicked()
    {
        makeWindow();
        int done = 0;
        post({"one", "Open Folder", [&done] { ++done; }});
        click(*child<QPushButton>("noticeAction"));
        QTRY_COMPARE(done, 1);
        QVERIFY(!line().isVisible());
    }

    void lineGoesByItselfUnlessThePointerIsOverIt()
    {
        makeWindow(kBrief);
        // Where the line is going to be.
        pointTo(onDesktop(*child<QStackedWidget>("pages")).topLeft() + QPoint(60, 10));
        desktopuser::waitUntilStill();
        post({"one"});
        post({"two"});
        QVERIFY(line().isVisible());
        QTest::qWait(3 * kBrief.noticeMs);
        QCOMPARE(text()->text(), QStringLiteral("one"));
        pointTo(onScreen({3, 3}));
        QTRY_COMPARE(text()->text(), QStringLiteral("two"));
        QTRY_VERIFY(!line().isVisible());
    }

    void noticeOfAMinimisedWindowIsAMessageOfTheDesktopAndShownWhenItComesBack()
    {
        NotificationServer server({QStringLiteral("body"), QStringLiteral("body-markup")});
        QVERIFY(server.isRegistered());
        makeWindow({.noticeMs = kBrief.noticeMs});
        post({"seen in the window"});
        QTRY_VERIFY(!line().isVisible());
        minimise();
        post({QStringLiteral("No program can open a\u202egpj.exe.")});
        QTRY_COMPARE(server.messages().size(), 1);
        QCOMPARE(server.messages().constFirst().program, QCoreApplication::applicationName());
        QCOMPARE(server.messages().constFirst().title, QCoreApplication::applicationName());
        QCOMPARE(server.messages().constFirst().text, QStringLiteral("No program can open a[U+202E]gpj.exe."));
        // Once is enough.
        post({QStringLiteral("No program can open a\u202egpj.exe.")});
        QTest::qWait(3 * kBrief.noticeMs);
        QCOMPARE(server.messages().size(), 1);
        m_window->showNormal();
        QTRY_VERIFY(text()->isVisible() && !m_window->isMinimized());
        QCOMPARE(text()->text(), QStringLiteral("No program can open a[U+202E]gpj.exe."));
        QTRY_VERIFY(!line().isVisible());
    }

    void noticeThatComesAgainLaterIsAnotherMessage()
    {
        NotificationServer server;
        makeWindow(kBrief);
        minimise();
        const auto postAndLook = [&](qsizetype messages) {
            post({"one"});
            return server.messages().size() >= messages;
        };
        QTRY_VERIFY(postAndLook(1));
        QTRY_VERIFY(postAndLook(2));
    }

    /// There is no engine: the recording does not start.
    void whatHasBecomeOfARecordingComesFirstAndItsOwnNoticesGo()
    {
        NotificationServer server;
        makeWindow({.countdownStepMs = 20});
        minimise();
        post({"room for 3 min", {}, {}, NoticeTurn::UntilRecordingEnds});
        post({"older"});
        QTRY_COMPARE(server.messages().size(), 2);
        child<QPushButton>("recordButton")->click();
        // They would be in the video.
        QTRY_COMPARE(server.closed().size(), 2);
        QTRY_VERIFY(text()->isVisible() && !m_window->isMinimized());
        QCOMPARE(text()->text(), QStringLiteral("The recorder failed: the recording did not start."));
        child<QPushButton>("noticeClose")->click();
        QCOMPARE(text()->text(), QStringLiteral("older"));
        child<QPushButton>("noticeClose")->click();
        QVERIFY(!line().isVisible());
    }

    void clickOnAMessageDuringAScreenshotLeavesTheWindowAway()
    {
        NotificationServer server;
        makeWindow();
        minimise();
        post({"one"});
        QTRY_COMPARE(server.messages().size(), 1);
        auto* const screenshots = m_window->findChild<ScreenshotSession*>();
        screenshots->frameScreen();
        QTRY_VERIFY(screenshots->isActive());
        const QSignalSpy activated(m_window->findChild<platform::DesktopNotifier*>(),
                                   &platform::DesktopNotifier::activated);
        const auto clickAndLook = [&] {
            server.click(1);
            return !activated.isEmpty();
        };
        QTRY_VERIFY(clickAndLook());
        QVERIFY(m_window->isMinimized());
        screenshots->cancel();
    }

    void clickOnTheMessageBringsTheWindowBack()
    {
        NotificationServer server;
        makeWindow();
        minimise();
        post({"one"});
        QTRY_COMPARE(server.messages().size(), 1);
        const auto clickAndLook = [&] {
            // It counts once the service has answered.
            server.click(1);
            return !m_window->isMinimized();
        };
        QTRY_VERIFY(clickAndLook());
        QTRY_VERIFY(m_window->isActiveWindow());
        QVERIFY(line().isVisible());
    }

    void desktopWithoutMessagesLeavesTheNoticeToTheWindow()
    {
        makeWindow();
        minimise();
        post({"one"});
        QTest::qWait(200);
        m_window->showNormal();
        QTRY_VERIFY(!m_window->isMinimized());
        QVERIFY(line().isVisible());
        QCOMPARE(text()->text(), QStringLiteral("one"));
    }

    void fileThatNoProgramOpensIsReportedInTheWindow_data()
    {
        QTest::addColumn<bool>("hasXdgOpen");
        QTest::newRow("nothing opens files") << false;
        QTest::newRow("no program for this one") << true;
    }

    void fileThatNoProgramOpensIsReportedInTheWindow()
    {
        QFETCH(const bool, hasXdgOpen);
        const QByteArray path = qgetenv("PATH");
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("a\u202egpj.exe")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QFile xdgOpen(folder.filePath(QStringLiteral("xdg-open")));
        QVERIFY(xdgOpen.open(QIODevice::WriteOnly));
        xdgOpen.write("#!/bin/sh\nexit 3\n");
        xdgOpen.close();
        QVERIFY(xdgOpen.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        makeWindow();
        emit m_window->fileProduced(file.fileName(), QStringLiteral("video"));
        click(*child<QPushButton>("filesTab"));
        auto& view = *child<QListView>("fileView");
        desktopuser::waitUntilStill();
        const QPoint row = view.visualRect(view.model()->index(0, 0)).center();
        qputenv("PATH", hasXdgOpen ? folder.path().toUtf8() : "/nowhere");
        QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, row);
        qputenv("PATH", path);
        QTRY_VERIFY(line().isVisible());
        QCOMPARE(text()->text(), QStringLiteral("No program can open a[U+202E]gpj.exe."));
        QCOMPARE(child<QPushButton>("noticeAction")->text(), QStringLiteral("Show in Folder"));
    }

    void noticeOfARecordingIsSeenTakesNoFocusAndIsInNoFrame()
    {
        makeWindow();
        FloatingNotice notice({});
        notice.placeBeside(QRect(onScreen({300, 0}), QSize(280, 40)), {});
        QVERIFY(!notice.isVisible());
        notice.add({"The sound server is gone; the recording goes on without sound."});
        QVERIFY(QTest::qWaitForWindowExposed(&notice));
        desktopuser::waitUntilStill();
        QCOMPARE(QColor(desktopuser::colourAt(notice.geometry().topLeft() + QPoint(3, 3))), QColor(kBackground));
        QVERIFY(m_window->isActiveWindow());
        const auto entries = platform::ExcludedWindows::ofProgram().all();
        const auto isOwn = [&notice](const platform::ExcludedWindow& entry) {
            return entry.id == notice.internalWinId() && entry.borderPx == 0;
        };
        QVERIFY(std::ranges::any_of(entries, isOwn));
        notice.clear();
        QVERIFY(!notice.isVisible());
    }

private:
    void makeWindow(const Durations& durations = {})
    {
        m_window = std::make_unique<SCMainWindow>(durations);
        m_window->move(onScreen({20, 60}));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        desktopuser::waitUntilStill();
    }

    void minimise() const
    {
        m_window->showMinimized();
        QTRY_VERIFY(m_window->isMinimized());
        desktopuser::waitUntilStill();
    }

    void post(const Notice& notice) const { m_window->findChild<Notices*>()->post(notice); }

    template <typename Widget>
    Widget* child(const char* name) const
    {
        return m_window->findChild<Widget*>(QLatin1String(name));
    }

    QWidget& line() const { return *child<QWidget>("noticeBar"); }
    QLabel* text() const { return child<QLabel>("noticeText"); }

    std::unique_ptr<SCMainWindow> m_window;
};

static int run(int argc, char* argv[])
{
    const MessageBus bus;
    return windowtest::run<TestNotices>(argc, argv);
}

REGISTER_TEST(run);

#include "test_notices.moc"
