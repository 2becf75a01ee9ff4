// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/capture_exclusion.h"
#include "tests/support/reportedfailures.h"
#include "tests/support/testrun.h"

#include <QTest>
#include <QWidget>

using platform::DisplayAffinity;

namespace {

/// One version of the system: what it makes of each value, or that it refuses.
class PlayedSystem : public DisplayAffinity
{
public:
    enum class Answer
    {
        Obeys,
        Refuses,
        BlacksOut,
        SetsButCannotSay
    };

    explicit PlayedSystem(Answer answer) : m_answer(answer) {}

    bool set(quint32 affinity) override
    {
        asked.append(affinity);
        if (m_answer == Answer::Refuses)
            return false;
        const bool blacksOut = m_answer == Answer::BlacksOut && affinity == kExcluded;
        kept = blacksOut ? kBlackInCaptures : affinity;
        return true;
    }

    std::optional<quint32> get() const override
    {
        return m_answer == Answer::SetsButCannotSay ? std::nullopt : std::optional(kept);
    }

    QList<quint32> asked;
    quint32 kept = kEverywhere;

private:
    Answer m_answer;
};

using Answer = PlayedSystem::Answer;

} // namespace

Q_DECLARE_METATYPE(Answer)

/// Windows that are kept out of a recording: on which systems that works, and that it never makes a black box of one.
class TestCaptureExclusion : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_reports.clear(); }

    void windowIsExcludedWhereTheSystemCan()
    {
        PlayedSystem system(Answer::Obeys);
        QVERIFY(platform::applyExclusion(system, true, true));
        QCOMPARE(system.asked, QList<quint32>{17});
        QCOMPARE(system.kept, quint32{17});
        QVERIFY(platform::applyExclusion(system, true, false));
        QCOMPARE(system.kept, quint32{0});
        QCOMPARE(m_reports.sentences(), QStringList());
    }

    /// It would accept the value and black the window out.
    void olderSystemIsNotEvenAsked()
    {
        PlayedSystem system(Answer::BlacksOut);
        QVERIFY(!platform::applyExclusion(system, false, true));
        QVERIFY(!platform::applyExclusion(system, false, false));
        QCOMPARE(system.asked, QList<quint32>());
    }

    void refusedWindowIsLeftAsItWas()
    {
        PlayedSystem system(Answer::Refuses);
        QVERIFY(!platform::applyExclusion(system, true, true));
        QCOMPARE(system.asked, QList<quint32>{17});
    }

    void windowIsNeverLeftABlackBoxInTheRecording_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::newRow("the system blacks it out instead") << Answer::BlacksOut;
        QTest::newRow("the system does not say what it did") << Answer::SetsButCannotSay;
    }

    void windowIsNeverLeftABlackBoxInTheRecording()
    {
        QFETCH(const Answer, answer);
        PlayedSystem system(answer);
        QVERIFY(!platform::applyExclusion(system, true, true));
        QCOMPARE(system.kept, quint32{0});
        QVERIFY(!system.asked.contains(1));
        QCOMPARE(m_reports.sentences().size(), 1);
    }

    void windowsThatBelongTogetherAreAllExcludedOrNone_data()
    {
        QTest::addColumn<int>("refused");
        QTest::addColumn<QStringList>("calls");
        QTest::newRow("none is refused") << -1 << QStringList{"0 out", "1 out", "2 out"};
        QTest::newRow("the first is refused") << 0 << QStringList{"0 out"};
        QTest::newRow("the last is refused") << 2 << QStringList{"0 out", "1 out", "2 out", "0 in", "1 in"};
    }

    void windowsThatBelongTogetherAreAllExcludedOrNone()
    {
        QFETCH(const int, refused);
        std::array<QWidget, 3> windows;
        QStringList calls;
        const auto play = [&](const QWidget& window, bool excluded) {
            const auto index = static_cast<int>(&window - windows.data());
            calls << QStringLiteral("%1 %2").arg(index).arg(excluded ? "out" : "in");
            return index != refused;
        };
        QCOMPARE(platform::excludeTogether({&windows[0], &windows[1], &windows[2]}, play), refused < 0);
        QTEST(calls, "calls");
    }

private:
    ReportedFailures m_reports;
};

REGISTER_TEST(testrun::gui<TestCaptureExclusion>);

#include "test_captureexclusion.moc"
