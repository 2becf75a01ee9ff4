#include "app/settings.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scupgradewindow.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/tile.h"
#include "mainwindow/updatenotice.h"
#include "overlays/areaselector.h"
#include "platform/capture_exclusion.h"
#include "tests/support/messagecapture.h"
#include "tests/support/shownwindow.h"
#include "tests/support/updateserver.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QTest>
#include <QTimer>

namespace {

constexpr char kNewer[] = "{\"win\": {\"version\": \"1.0.1\"}}";
/// The check's delay and what a loaded machine may add to it.
constexpr int kCheckMs = UpdateNotice::kDelayMs + 3000;

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
        makeWindow();
        m_window->move(60, 50);
        m_window->show();
    }

    void cleanup() { m_window.reset(); }

    void updateCheckStartsFiveSecondsAfterTheWindowWasMadeThoughTheUserDoesNothing()
    {
        const UpdateServer server;
        makeWindow();
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kCheckMs);
        // A timer of that length may be a twentieth early.
        QVERIFY(server.requestTimesMs().constFirst() >= UpdateNotice::kDelayMs * 95 / 100);
        QTest::qWait(500);
        QCOMPARE(server.requests().size(), 1);
    }

    void newerVersionOpensTheUpdateWindowByItself()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        QTRY_VERIFY_WITH_TIMEOUT(shownWindow<SCUpgradeWindow>() != nullptr, kCheckMs);
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
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kCheckMs);
        QTest::qWait(300);
        QVERIFY(shownWindow<SCUpgradeWindow>() == nullptr);
        QCOMPARE(messages.texts().filter("["), QStringList());
    }

    void silentChecksWindowWaitsForADialogToClose()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        emit menu().aboutRequested();
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kCheckMs);
        QTest::qWait(UpdateNotice::kRetryMs + 500);
        QVERIFY(shownWindow<SCUpgradeWindow>() == nullptr);
        shownWindow<SCAboutWindow>()->close();
        QTRY_VERIFY(shownWindow<SCUpgradeWindow>() != nullptr);
    }

    void silentChecksWindowWaitsWhileARegionIsChosen()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        QTest::keyClick(m_window->findChild<Tile*>("regionTile"), Qt::Key_Space);
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, kCheckMs);
        QTest::qWait(UpdateNotice::kRetryMs + 500);
        QVERIFY(shownWindow<SCUpgradeWindow>() == nullptr);
        QTest::keyClick(shownWindow<AreaSelector>(), Qt::Key_Escape);
        QTRY_VERIFY(shownWindow<SCUpgradeWindow>() != nullptr);
    }

    void silentChecksWindowWaitsForTheEndOfARecordingUnlessTheSystemKeepsItOutOfThePicture()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        bool shownMeanwhile = false;
        QTimer look;
        connect(&look, &QTimer::timeout, this,
                [&] { shownMeanwhile = shownMeanwhile || shownWindow<SCUpgradeWindow>() != nullptr; });
        QTest::qWait(UpdateNotice::kDelayMs - 1000);
        look.start(20);
        // Three seconds of countdown; without an engine the recording ends there.
        m_window->findChild<QPushButton*>("recordButton")->click();
        look.stop();
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(shownMeanwhile, systemExcludesWindows());
        QTRY_VERIFY(shownWindow<SCUpgradeWindow>() != nullptr);
        QVERIFY(!m_window->isMinimized());
    }

    void userWhoHasAskedIsNotToldAgain()
    {
        UpdateServer server;
        server.setAnswer(kNewer);
        emit menu().updateCheckRequested();
        QTRY_COMPARE(upgradeWindows(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 2, kCheckMs);
        shownWindow<SCUpgradeWindow>()->close();
        QTest::qWait(UpdateNotice::kRetryMs + 500);
        QCOMPARE(upgradeWindows(), 0);
    }

    void userWhoseCheckFailedIsToldByTheSilentOne()
    {
        UpdateServer server;
        server.setAnswers({{"500 Internal Server Error", "{}", {}, UpdateServer::Manner::Answer, true},
                           {"200 OK", kNewer, {}, UpdateServer::Manner::Answer, true}});
        emit menu().updateCheckRequested();
        QTRY_COMPARE(page(), int(SCUpgradeWindow::UpToDate));
        shownWindow<SCUpgradeWindow>()->close();
        QCOMPARE(upgradeWindows(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(upgradeWindows(), 1, kCheckMs);
        QCOMPARE(page(), int(SCUpgradeWindow::NewVersion));
    }

    void unreachableServerShowsUpToDateOnRequestAndNothingByItself()
    {
        UpdateServer server;
        server.close();
        emit menu().updateCheckRequested();
        const auto* const window = shownWindow<SCUpgradeWindow>();
        QVERIFY(window != nullptr);
        QTRY_COMPARE(window->findChild<QStackedWidget*>("stackedWidget")->currentIndex(),
                     int(SCUpgradeWindow::UpToDate));
        shownWindow<SCUpgradeWindow>()->close();
        makeWindow();
        QTest::qWait(kCheckMs);
        QCOMPARE(upgradeWindows(), 0);
    }

private:
    void makeWindow()
    {
        m_window.reset();
        m_window = std::make_unique<SCMainWindow>();
    }

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
