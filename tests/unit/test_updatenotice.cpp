// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scupgradewindow.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/tile.h"
#include "mainwindow/updatenotice.h"
#include "overlays/areaselector.h"
#include "platform/windowing/capture_exclusion.h"
#include "tests/support/countdowntest.h"
#include "tests/support/messagecapture.h"
#include "tests/support/shownwindow.h"
#include "tests/support/updateserver.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QNetworkReply>
#include <QPushButton>
#include <QScopeGuard>
#include <QSettings>
#include <QStackedWidget>
#include <QTest>
#include <QTimer>

namespace {

constexpr char kNewer[] = "{\"win\": {\"version\": \"1.0.1\"}}";
/// The countdown outlasts whatever is waited for while it runs.
constexpr Durations kBrief{.countdownStepMs = 20'000, .updateCheckDelayMs = 50, .updateNoticeRetryMs = 20};
constexpr int kTimeoutMs = 10'000;
/// Time enough to ask again, several times.
constexpr int kAskedAgainMs = 10 * kBrief.updateNoticeRetryMs;

bool systemExcludesWindows()
{
    QWidget window;
    return platform::setExcludedFromCapture(window, true);
}

int upgradeWindows()
{
    int count = 0;
    for (const QWidget* const window : QApplication::topLevelWidgets())
        count += qobject_cast<const SCUpgradeWindow*>(window) != nullptr && window->isVisible() ? 1 : 0;
    return count;
}

} // namespace

/// The check for updates that the main window makes by itself, against an HTTPS server.
class TestUpdateNotice : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        makeWindow(kBrief);
    }

    void cleanup() { m_window.reset(); }

    void updateCheckIsDueFiveSecondsAfterTheWindowWasMade()
    {
        makeWindow({});
        QVERIFY(timer().isActive());
        QVERIFY(timer().isSingleShot());
        QCOMPARE(timer().interval(), 5000);
        QCOMPARE(Durations().updateNoticeRetryMs, 1000);
    }

    void updateCheckIsMadeOnceThoughTheUserDoesNothing()
    {
        const UpdateServer server;
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kTimeoutMs);
        QTest::qWait(4 * kBrief.updateCheckDelayMs);
        QCOMPARE(server.requests().size(), 1);
    }

    void newerVersionOpensTheUpdateWindowByItself()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        QTRY_VERIFY_WITH_TIMEOUT(shownWindow<SCUpgradeWindow>() != nullptr, kTimeoutMs);
        const auto* const window = shownWindow<SCUpgradeWindow>();
        QCOMPARE(window->findChild<QStackedWidget*>("stackedWidget")->currentIndex(), int(SCUpgradeWindow::NewVersion));
        QCOMPARE(window->windowModality(), Qt::ApplicationModal);
        QVERIFY((window->geometry().center() - m_window->geometry().center()).manhattanLength() <= 2);
    }

    void sameVersionOpensNothingByItself()
    {
        UpdateServer server;
        server.setAnswer("{\"win\": {\"version\": \"1.0.0\"}}");
        const MessageCapture messages;
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(!isReplyAwaited(), kTimeoutMs);
        QTest::qWait(kAskedAgainMs);
        QVERIFY(shownWindow<SCUpgradeWindow>() == nullptr);
        QCOMPARE(messages.texts().filter("["), QStringList());
    }

    void silentChecksWindowWaitsForADialogToClose()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        menu().openAbout();
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(!isReplyAwaited(), kTimeoutMs);
        QTest::qWait(kAskedAgainMs);
        QVERIFY(shownWindow<SCUpgradeWindow>() == nullptr);
        shownWindow<SCAboutWindow>()->close();
        QTRY_VERIFY(shownWindow<SCUpgradeWindow>() != nullptr);
    }

    void silentChecksWindowWaitsWhileARegionIsChosen()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        QTest::keyClick(m_window->findChild<Tile*>("regionTile"), Qt::Key_Space);
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(!isReplyAwaited(), kTimeoutMs);
        QTest::qWait(kAskedAgainMs);
        QVERIFY(shownWindow<SCUpgradeWindow>() == nullptr);
        QTest::keyClick(shownWindow<AreaSelector>(), Qt::Key_Escape);
        QTRY_VERIFY(shownWindow<SCUpgradeWindow>() != nullptr);
    }

    void silentChecksWindowWaitsForTheEndOfARecordingUnlessTheSystemExcludesItFromCaptures()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        auto* const button = m_window->findChild<QPushButton*>("recordButton");
        bool shownMeanwhile = false;
        whenCountingDown(this, [&] {
            // On failure, too: else the countdown would be waited for.
            const auto cancel = qScopeGuard([button] { button->click(); });
            QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kTimeoutMs);
            QTRY_VERIFY_WITH_TIMEOUT(!isReplyAwaited(), kTimeoutMs);
            if (systemExcludesWindows())
                QTRY_VERIFY(shownWindow<SCUpgradeWindow>() != nullptr);
            QTest::qWait(kAskedAgainMs);
            shownMeanwhile = shownWindow<SCUpgradeWindow>() != nullptr;
        });
        button->click();
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(shownMeanwhile, systemExcludesWindows());
        QTRY_VERIFY(shownWindow<SCUpgradeWindow>() != nullptr);
        QVERIFY(!m_window->isMinimized());
    }

    void userWhoHasCheckedIsNotNotifiedAgain()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        menu().openUpdateCheck();
        QTRY_COMPARE(upgradeWindows(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 2, kTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(!isReplyAwaited(), kTimeoutMs);
        shownWindow<SCUpgradeWindow>()->close();
        QTest::qWait(kAskedAgainMs);
        QCOMPARE(upgradeWindows(), 0);
    }

    void userWhoseCheckFailedIsNotifiedByTheSilentOne()
    {
        UpdateServer server;
        server.setAnswers({{"500 Internal Server Error", "{}", {}, UpdateServer::Manner::Answer, true},
                           {"200 OK", kNewer, {}, UpdateServer::Manner::Answer, true}});
        makeWindow({});
        menu().openUpdateCheck();
        QTRY_COMPARE(page(), int(SCUpgradeWindow::UpToDate));
        shownWindow<SCUpgradeWindow>()->close();
        QCOMPARE(upgradeWindows(), 0);
        timer().start(0);
        QTRY_COMPARE_WITH_TIMEOUT(upgradeWindows(), 1, kTimeoutMs);
        QCOMPARE(page(), int(SCUpgradeWindow::NewVersion));
    }

    void unreachableServerShowsUpToDateOnRequestAndNothingByItself()
    {
        UpdateServer server;
        server.close();
        menu().openUpdateCheck();
        const auto* const window = shownWindow<SCUpgradeWindow>();
        QVERIFY(window != nullptr);
        QTRY_COMPARE(window->findChild<QStackedWidget*>("stackedWidget")->currentIndex(),
                     int(SCUpgradeWindow::UpToDate));
        shownWindow<SCUpgradeWindow>()->close();
        makeWindow(kBrief);
        QTRY_VERIFY(!timer().isActive());
        QTRY_VERIFY_WITH_TIMEOUT(!isReplyAwaited(), kTimeoutMs);
        QTest::qWait(kAskedAgainMs);
        QCOMPARE(upgradeWindows(), 0);
    }

private:
    void makeWindow(const Durations& durations)
    {
        m_window.reset();
        m_window = std::make_unique<SCMainWindow>(durations);
        m_window->move(60, 50);
        m_window->show();
    }

    /// The one that the check waits for.
    QTimer& timer() const
    {
        return *m_window->findChild<UpdateNotice*>()->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    }

    /// The replies are gone when they have been dealt with.
    bool isReplyAwaited() const { return !m_window->findChildren<QNetworkReply*>().isEmpty(); }

    /// The one that the update window shows.
    static int page()
    {
        return shownWindow<SCUpgradeWindow>()->findChild<QStackedWidget*>("stackedWidget")->currentIndex();
    }

    MainMenu& menu() const { return *m_window->findChild<MainMenu*>(); }

    std::unique_ptr<SCMainWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestUpdateNotice>);

#include "test_updatenotice.moc"
