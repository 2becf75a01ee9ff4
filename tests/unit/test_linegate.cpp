#include "engine/output/linegate.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <atomic>
#include <thread>

namespace {

constexpr int kLongMs = 10'000;

/// A line as libobs runs one: on a thread of its own, the gate first, then the listener that must not be disturbed.
class Line
{
public:
    explicit Line(LineGate& gate)
        : m_thread([this, &gate] {
            while (!m_ended) {
                gate.pass();
                m_inListener = true;
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
                m_inListener = false;
                ++m_items;
            }
        })
    {}

    ~Line()
    {
        m_ended = true;
        m_thread.join();
    }

    bool isInListener() const { return m_inListener; }
    int items() const { return m_items; }

private:
    std::atomic<bool> m_ended{false};
    std::atomic<bool> m_inListener{false};
    std::atomic<int> m_items{0};
    std::thread m_thread;
};

} // namespace

class TestLineGate : public QObject
{
    Q_OBJECT

private slots:
    void anOpenGateLetsTheLineRun()
    {
        LineGate gate;
        const Line line(gate);
        QTRY_VERIFY(line.items() > 5);
    }

    void aHeldLineIsInNoOtherListener()
    {
        LineGate gate;
        const Line line(gate);
        for (int round = 0; round < 50; ++round) {
            gate.close();
            QVERIFY(gate.waitUntilHeld(kLongMs));
            const int items = line.items();
            QVERIFY(!line.isInListener());
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
            QCOMPARE(line.items(), items);
            gate.open();
            QTRY_VERIFY(line.items() > items);
        }
    }

    void openOnlyWhenTheLastHasOpenedIt()
    {
        LineGate gate;
        const Line line(gate);
        gate.close();
        gate.close();
        QVERIFY(gate.waitUntilHeld(kLongMs));
        const int items = line.items();
        gate.open();
        QVERIFY(gate.waitUntilHeld(kLongMs));
        QTest::qWait(10);
        QCOMPARE(line.items(), items);
        gate.open();
        QTRY_VERIFY(line.items() > items);
    }

    void aBypassedGateHoldsNothingAndNobodyWaitsForIt()
    {
        LineGate gate;
        const Line line(gate);
        gate.close();
        QVERIFY(gate.waitUntilHeld(kLongMs));
        gate.setBypassed(true);
        const int items = line.items();
        QTRY_VERIFY(line.items() > items + 2);
        gate.waitUntilHeld(kLongMs);
        gate.open();
    }

    void aLineThatStandsStillIsNotWaitedForForEver()
    {
        LineGate gate;
        gate.close();
        QVERIFY(!gate.waitUntilHeld(20));
        gate.open();
        gate.pass();
    }
};

REGISTER_TEST(testrun::core<TestLineGate>);
#include "test_linegate.moc"
