// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/webaddresses.h"
#include "dialogs/scupgradewindow.h"
#include "dialogs/updatecheck.h"
#include "tests/support/messagecapture.h"
#include "tests/support/updateserver.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>
#include <QTextEdit>

using Answer = UpdateServer::Answer;
using Manner = UpdateServer::Manner;
using Page = SCUpgradeWindow::Page;

namespace {

constexpr qint64 kHugeBytes = qint64{50} * 1024 * 1024;
constexpr int kTimeoutMs = 20'000;
/// Enough for the request to arrive on a busy machine.
constexpr int kShortLimitMs = 2000;
/// What may be on its way when the other side has had enough: what the two systems and libraries hold.
constexpr qint64 kUnderwayBytes = qint64{12} * 1024 * 1024;

Answer answered(const QByteArray& body)
{
    return {"200 OK", body, {}, Manner::Answer, true};
}

QByteArray packed(const QByteArray& body)
{
    // Without the size that the function puts before it.
    return qCompress(body).mid(4);
}

QByteArray large()
{
    return R"({"win": {"version": "9", "change": [")" + QByteArray(kHugeBytes, 'x') + R"("]}})";
}

} // namespace

/// The check for a newer release against an HTTPS server.
class TestUpdateCheck : public QObject
{
    Q_OBJECT

private slots:
    void answerDecidesThePage_data()
    {
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("logged");
        const auto ok = [](const char* name, const char* body, Page page, const char* logged = "") {
            QTest::newRow(name) << QByteArray("200 OK") << QByteArray(body) << int(page) << QString(logged);
        };
        ok("newer", R"({"win": {"version": "1.0.1"}})", Page::NewVersion);
        ok("same", R"({"win": {"version": "1.0.0"}})", Page::UpToDate);
        ok("older", R"({"win": {"version": "0.9.9"}})", Page::UpToDate);
        ok("no win", R"({"mac": {"version": "9"}})", Page::Waiting, "No Windows upgrade info found");
        ok("empty object", "{}", Page::Waiting, "Failed to parse JSON data");
        ok("not JSON", "<html></html>", Page::Waiting);
        ok("empty body", "", Page::Waiting);
        ok("an array", R"([{"win": {"version": "9"}}])", Page::Waiting);
        ok("null", "null", Page::Waiting);
        ok("version is a number", R"({"win": {"version": 9}})", Page::UpToDate);
        ok("a number in change", R"({"win": {"version": "9", "change": [1]}})", Page::NewVersion);
        QTest::newRow("404") << QByteArray("404 Not Found") << QByteArray(R"({"win": {"version": "9"}})")
                             << int(Page::UpToDate) << QString("Network error: ContentNotFoundError");
        QTest::newRow("500") << QByteArray("500 Internal Server Error") << QByteArray("{}") << int(Page::UpToDate)
                             << QString("Network error: InternalServerError");
    }

    void answerDecidesThePage()
    {
        QFETCH(const QByteArray, status);
        QFETCH(const QByteArray, body);
        QFETCH(const int, page);
        QFETCH(const QString, logged);
        UpdateServer server;
        server.setAnswers({{status, body, {}, Manner::Answer, true}});
        const MessageCapture messages;
        const SCUpgradeWindow window(nullptr, {});
        const QSignalSpy answered(&window, &SCUpgradeWindow::answered);
        QCOMPARE(pageOf(window), int(Page::Waiting));
        waitForReply(window);
        QCOMPARE(pageOf(window), page);
        QCOMPARE(saysNotChecked(window), status != "200 OK");
        QCOMPARE(answered.size(), page != Page::Waiting && status == "200 OK" ? 1 : 0);
        if (page == Page::UpToDate && status == "200 OK")
            QCOMPARE(window.findChild<QLabel*>("currentVersionLabel")->text(), QStringLiteral("1.0.0"));
        const QStringList lines = messages.texts(QtDebugMsg).filter("[DEBUG]");
        QCOMPARE(lines, logged.isEmpty() ? QStringList() : QStringList("[DEBUG] " + logged));

        QCOMPARE(silentCheck(), page == Page::NewVersion);
    }

    void numberInChangeIsAnEmptyLine()
    {
        UpdateServer server;
        server.setAnswer(R"({"win": {"version": "9", "change": ["a", 1, "b"]}})");
        const SCUpgradeWindow window(nullptr, {});
        waitForReply(window);
        QCOMPARE(window.findChild<QTextEdit*>("upgradeInfoTextEdit")->toPlainText(), QStringLiteral("a\n\nb\n"));
    }

    void documentIsAskedForWithoutAnythingOfItsOwn()
    {
        const UpdateServer server;
        const SCUpgradeWindow window(nullptr, {});
        waitForReply(window);
        QCOMPARE(server.targets(), QList<QByteArray>{QByteArray(webaddresses::kUpdateHost) + ":443"});
        const QByteArray request = server.requests().value(0);
        QVERIFY2(request.startsWith("GET /kestrano/upgrade.json HTTP/1.1\r\n"), request);
        QStringList names;
        for (const QByteArray& line : request.split('\n').mid(1)) {
            if (line.contains(':'))
                names.append(QString::fromLatin1(line.left(line.indexOf(':'))).toLower());
        }
        names.sort();
        // Qt's own, which every request has.
        QCOMPARE(names, (QStringList{"accept-encoding", "accept-language", "connection", "host", "user-agent"}));
    }

    void silentCheckHandsOnTheWholeDocument()
    {
        UpdateServer server;
        server.setAnswer(R"({"mac": {}, "win": {"version": "1.1"}})");
        SilentUpdateCheck check(nullptr);
        QSignalSpy found(&check, &SilentUpdateCheck::newerVersionFound);
        check.start();
        QVERIFY(found.wait());
        QCOMPARE(found.at(0).at(0).toJsonObject().keys(), (QStringList{"mac", "win"}));
        QCOMPARE(server.requests().size(), 1);
    }

    void untrustedCertificateReadsAsUpToDate()
    {
        UpdateServer server(false);
        server.setAnswer(R"({"win": {"version": "9"}})");
        const MessageCapture messages;
        const SCUpgradeWindow window(nullptr, {});
        QTRY_COMPARE(pageOf(window), int(Page::UpToDate));
        QVERIFY(messages.texts().contains("[DEBUG] Network error: SslHandshakeFailedError"));
        QVERIFY(!silentCheck());
        QCOMPARE(server.requests(), QList<QByteArray>());
    }

    void unreachableServerReadsAsUpToDateAndTheSilentCheckSaysNothing()
    {
        {
            UpdateServer server;
            server.close();
            const SCUpgradeWindow window(nullptr, {});
            QTRY_COMPARE(pageOf(window), int(Page::UpToDate));
            QCOMPARE(window.findChild<QLabel*>("upToDateLabel")->text(),
                     QStringLiteral("Current version is update to date."));
            QVERIFY(saysNotChecked(window));
            QCOMPARE(window.findChild<QLabel*>("notCheckedLabel")->text(),
                     QStringLiteral("Could not check: no valid answer from the update server."));
            const MessageCapture messages;
            QVERIFY(!silentCheck());
            QCOMPARE(messages.texts(), QStringList());
        }
    }

    void brokenConnectionReadsAsUpToDate_data()
    {
        QTest::addColumn<Manner>("manner");
        QTest::newRow("after the request") << Manner::HangUp;
        QTest::newRow("within the body") << Manner::BreakOff;
    }

    void brokenConnectionReadsAsUpToDate()
    {
        QFETCH(const Manner, manner);
        UpdateServer server;
        server.setAnswers({{"200 OK", R"({"win": {"version": "9"}})", {}, manner, true}});
        const SCUpgradeWindow window(nullptr, {});
        QTRY_COMPARE(pageOf(window), int(Page::UpToDate));
        QVERIFY(!silentCheck());
    }

    void slowServerIsCancelled_data()
    {
        QTest::addColumn<Manner>("manner");
        QTest::newRow("that never answers") << Manner::SayNothing;
        QTest::newRow("that sends a little now and then") << Manner::Trickle;
    }

    void slowServerIsCancelled()
    {
        QFETCH(const Manner, manner);
        UpdateServer server;
        server.setAnswers({{"200 OK", "{", {}, manner, true}});
        SilentUpdateCheck check(nullptr, kShortLimitMs);
        const QSignalSpy found(&check, &SilentUpdateCheck::newerVersionFound);
        QElapsedTimer timer;
        timer.start();
        check.start();
        const SCUpgradeWindow window(nullptr, {}, kShortLimitMs);
        // Neither of them before its time; a timer may be a little early.
        QTRY_VERIFY(pageOf(window) == int(Page::UpToDate) || !isReplyAwaited(check));
        QVERIFY2(timer.elapsed() >= kShortLimitMs * 9 / 10, qPrintable(QString::number(timer.elapsed())));
        QTRY_COMPARE(pageOf(window), int(Page::UpToDate));
        QTRY_VERIFY(!isReplyAwaited(check));
        QCOMPARE(found.size(), 0);
        // They were asked, and hung up on.
        QCOMPARE(server.requests().size(), 2);
        QTRY_VERIFY(!server.isConnected());
    }

    void serverHasFifteenSeconds() { QCOMPARE(updatecheck::kTimeLimitMs, 15'000); }

    void bodyOfFiftyMegabytesIsRefusedWhileItArrives_data()
    {
        QTest::addColumn<bool>("announceSize");
        QTest::addColumn<bool>("pack");
        QTest::newRow("with its size announced") << true << false;
        QTest::newRow("without") << false << false;
        QTest::newRow("packed into a small one") << true << true;
    }

    void bodyOfFiftyMegabytesIsRefusedWhileItArrives()
    {
        QFETCH(const bool, announceSize);
        QFETCH(const bool, pack);
        UpdateServer server;
        Answer answer{"200 OK", large(), {}, Manner::Answer, announceSize};
        if (pack) {
            answer.body = packed(answer.body);
            answer.headers = "Content-Encoding: deflate\r\n";
        }
        server.setAnswers({answer});
        const SCUpgradeWindow window(nullptr, {});
        QTRY_COMPARE_WITH_TIMEOUT(pageOf(window), int(Page::UpToDate), 20'000);
        QVERIFY2(server.sentBytes() < kUnderwayBytes, qPrintable(QString::number(server.sentBytes())));
        QVERIFY(!silentCheck());
    }

    void bodyUpToTheLimitIsRead()
    {
        UpdateServer server;
        const QByteArray head = R"({"win": {"version": "9", "change": [)";
        const QByteArray filler(updatecheck::kLargestBodyBytes - head.size() - 3, ' ');
        server.setAnswer(head + filler + "]}}");
        const SCUpgradeWindow window(nullptr, {});
        QTRY_COMPARE(pageOf(window), int(Page::NewVersion));
    }

    void redirectionToHttpsIsFollowed()
    {
        UpdateServer server;
        server.setAnswers({redirection("https://" + QByteArray(webaddresses::kUpdateHost) + "/elsewhere.json"),
                           answered(R"({"win": {"version": "9"}})")});
        const SCUpgradeWindow window(nullptr, {});
        QTRY_COMPARE(pageOf(window), int(Page::NewVersion));
        QVERIFY(server.requests().value(1).startsWith("GET /elsewhere.json "));
    }

    void redirectionToAnotherSchemeIsNotFollowed_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::newRow("http") << "http://" + QByteArray(webaddresses::kUpdateHost) + "/elsewhere.json";
        QTest::newRow("file") << QByteArray("file:///etc/hostname");
    }

    void redirectionToAnotherSchemeIsNotFollowed()
    {
        QFETCH(const QByteArray, target);
        UpdateServer server;
        server.setAnswers({redirection(target), answered(R"({"win": {"version": "9"}})")});
        const SCUpgradeWindow window(nullptr, {});
        QTRY_COMPARE(pageOf(window), int(Page::UpToDate));
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(server.targets().size(), 1);
    }

    void redirectionInACircleIsCancelled()
    {
        UpdateServer server;
        server.setAnswers({redirection("https://" + QByteArray(webaddresses::kUpdateHost) + "/kestrano/upgrade.json")});
        const SCUpgradeWindow window(nullptr, {});
        QTRY_COMPARE(pageOf(window), int(Page::UpToDate));
        QCOMPARE(server.requests().size(), updatecheck::kMostRedirections + 1);
    }

    void windowThatIsClosedDuringTheCheckLeavesNothingBehind()
    {
        UpdateServer server;
        server.setAnswers({{"200 OK", {}, {}, Manner::SayNothing, true}});
        {
            const SCUpgradeWindow window(nullptr, {});
            QTRY_COMPARE(server.requests().size(), 1);
        }
        QTRY_VERIFY(!server.isConnected());
    }

private:
    static Answer redirection(const QByteArray& target)
    {
        return {"302 Found", {}, "Location: " + target + "\r\n", Manner::Answer, true};
    }

    static bool saysNotChecked(const SCUpgradeWindow& window)
    {
        return !window.findChild<QLabel*>("notCheckedLabel")->isHidden();
    }

    static int pageOf(const SCUpgradeWindow& window)
    {
        return window.findChild<QStackedWidget*>("stackedWidget")->currentIndex();
    }

    /// The replies are the network manager's children until they have been dealt with.
    static void waitForReply(const SCUpgradeWindow& window) { QTRY_VERIFY(!isReplyAwaited(window)); }

    static bool isReplyAwaited(const QObject& asker)
    {
        return !asker.findChild<QNetworkAccessManager*>()->findChildren<QNetworkReply*>().isEmpty();
    }

    /// Whether a silent check finds a newer release; it has ended when this returns.
    static bool silentCheck()
    {
        SilentUpdateCheck check(nullptr);
        const QSignalSpy found(&check, &SilentUpdateCheck::newerVersionFound);
        check.start();
        return QTest::qWaitFor([&check] { return !isReplyAwaited(check); }, kTimeoutMs) && found.size() == 1;
    }
};

REGISTER_TEST(windowtest::run<TestUpdateCheck>);

#include "test_updatecheck.moc"
