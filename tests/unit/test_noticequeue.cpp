// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/noticequeue.h"
#include "tests/support/testrun.h"

#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

constexpr Durations kBrief{.noticeMs = 30, .noticeWithActionMs = 60};

QString textOf(const NoticeQueue& queue)
{
    return queue.current() != nullptr ? queue.current()->text : QString();
}

const QTimer& timerOf(const NoticeQueue& queue)
{
    return *queue.findChild<QTimer*>();
}

} // namespace

/// Which notice is shown, and for how long.
class TestNoticeQueue : public QObject
{
    Q_OBJECT

private slots:
    void noticesAreShownOneAfterTheOther()
    {
        NoticeQueue queue(kBrief, nullptr);
        QSignalSpy changed(&queue, &NoticeQueue::currentChanged);
        QVERIFY(queue.current() == nullptr);
        QVERIFY(queue.add({"one"}) && queue.add({"two"}));
        QCOMPARE(textOf(queue), QStringLiteral("one"));
        QCOMPARE(changed.size(), 1);
        queue.setTimePasses(true);
        QVERIFY(changed.wait());
        QCOMPARE(textOf(queue), QStringLiteral("two"));
        QVERIFY(changed.wait());
        QVERIFY(queue.current() == nullptr);
        QVERIFY(!timerOf(queue).isActive());
    }

    void sameTextIsNotShownTwiceInARow()
    {
        NoticeQueue queue({}, nullptr);
        QVERIFY(queue.add({"one"}) && queue.add({"two"}));
        QVERIFY(!queue.add({"one"}) && !queue.add({"two"}));
        queue.next();
        // It is over, and may come again.
        QVERIFY(queue.add({"one"}));
        queue.next();
        QCOMPARE(textOf(queue), QStringLiteral("one"));
        queue.next();
        QVERIFY(queue.current() == nullptr);
    }

    void sameTextGetsTheNewAction()
    {
        NoticeQueue queue(kBrief, nullptr);
        QString done;
        queue.add({"one", "Act", [&done] { done = "first"; }});
        queue.add({"two", "Act", [&done] { done = "second"; }});
        const QSignalSpy changed(&queue, &NoticeQueue::currentChanged);
        queue.add({"two", "Other", [&done] { done = "third"; }});
        queue.add({"one", "Act", [&done] { done = "fourth"; }});
        queue.current()->action();
        QCOMPARE(done, QStringLiteral("fourth"));
        QCOMPARE(changed.size(), 0);
        // What is shown of it changes with its label.
        queue.add({"one"});
        QCOMPARE(changed.size(), 1);
        QVERIFY(!queue.current()->action && queue.current()->actionText.isEmpty());
        queue.next();
        queue.current()->action();
        QCOMPARE(queue.current()->actionText, QStringLiteral("Other"));
        QCOMPARE(done, QStringLiteral("third"));
    }

    void sameTextIsReportedAgainAfterSomeTime()
    {
        NoticeQueue queue(kBrief, nullptr);
        QVERIFY(queue.add({"one"}));
        QVERIFY(QTest::qWaitFor([&queue] { return queue.add({"one"}); }));
        QVERIFY(QTest::qWaitFor([&queue] { return queue.add({"one"}); }));
        queue.next();
        QVERIFY(queue.current() == nullptr);
        NoticeQueue slow({}, nullptr);
        QVERIFY(slow.add({"one"}));
        QVERIFY(!slow.add({"one"}));
    }

    void whatHasBecomeOfARecordingComesFirst()
    {
        NoticeQueue queue(kBrief, nullptr);
        queue.add({"one"});
        queue.add({"two"});
        const QSignalSpy changed(&queue, &NoticeQueue::currentChanged);
        queue.add({"ended", {}, {}, NoticeTurn::First});
        QCOMPARE(changed.size(), 1);
        queue.add({"lost", {}, {}, NoticeTurn::First});
        QCOMPARE(changed.size(), 1);
        QStringList order;
        for (; queue.current() != nullptr; queue.next())
            order.append(textOf(queue));
        QCOMPARE(order, QStringList({"ended", "lost", "one", "two"}));
    }

    void whatOnlyARecordingHasUseForGoesWithIt()
    {
        NoticeQueue queue(kBrief, nullptr);
        queue.add({"little space", {}, {}, NoticeTurn::UntilRecordingEnds});
        queue.add({"one"});
        queue.add({"less space", {}, {}, NoticeTurn::UntilRecordingEnds});
        queue.add({"two"});
        const QSignalSpy changed(&queue, &NoticeQueue::currentChanged);
        queue.dropWhatTheRecordingHad();
        QCOMPARE(changed.size(), 1);
        QCOMPARE(textOf(queue), QStringLiteral("one"));
        queue.dropWhatTheRecordingHad();
        QCOMPARE(changed.size(), 1);
        queue.next();
        QCOMPARE(textOf(queue), QStringLiteral("two"));
        queue.next();
        QVERIFY(queue.current() == nullptr);
    }

    void timePassesOnlyWhileItIsSaidTo()
    {
        NoticeQueue queue(kBrief, nullptr);
        queue.add({"one"});
        QVERIFY(!timerOf(queue).isActive());
        queue.setTimePasses(true);
        QVERIFY(timerOf(queue).isActive());
        queue.setTimePasses(false);
        QVERIFY(!timerOf(queue).isActive());
        QCOMPARE(textOf(queue), QStringLiteral("one"));
    }

    void anActionGetsMoreTime()
    {
        NoticeQueue queue(kBrief, nullptr);
        queue.setTimePasses(true);
        queue.add({"one"});
        QCOMPARE(timerOf(queue).interval(), kBrief.noticeMs);
        queue.next();
        queue.add({"two", "Act", [] {}});
        QCOMPARE(timerOf(queue).interval(), kBrief.noticeWithActionMs);
    }

    void defaultIsEightSecondsAndTwiceAsMuchWithAnAction()
    {
        QCOMPARE(Durations().noticeMs, 8000);
        QCOMPARE(Durations().noticeWithActionMs, 16000);
    }

    void clearedQueueShowsNothing()
    {
        NoticeQueue queue(kBrief, nullptr);
        queue.setTimePasses(true);
        queue.add({"one"});
        queue.add({"two"});
        const QSignalSpy changed(&queue, &NoticeQueue::currentChanged);
        queue.clear();
        QVERIFY(queue.current() == nullptr && !timerOf(queue).isActive());
        queue.clear();
        queue.next();
        QCOMPARE(changed.size(), 1);
    }
};

REGISTER_TEST(testrun::core<TestNoticeQueue>);

#include "test_noticequeue.moc"
