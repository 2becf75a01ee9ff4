// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/streamgate.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

constexpr std::chrono::seconds kLong{10};

/// A stream as libobs runs one: on a thread of its own, the gate first, then the listener that must not be disturbed.
class Stream
{
public:
    explicit Stream(StreamGate& gate)
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

    ~Stream()
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

class TestStreamGate : public QObject
{
    Q_OBJECT

private slots:
    void anOpenGateLetsTheStreamRun()
    {
        StreamGate gate;
        const Stream stream(gate);
        QTRY_VERIFY(stream.items() > 5);
    }

    void aBlockedStreamIsInNoOtherListener()
    {
        StreamGate gate;
        const Stream stream(gate);
        for (int round = 0; round < 50; ++round) {
            gate.close();
            QVERIFY(gate.waitUntilBlocked(kLong));
            const int items = stream.items();
            QVERIFY(!stream.isInListener());
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
            QCOMPARE(stream.items(), items);
            gate.open();
            QTRY_VERIFY(stream.items() > items);
        }
    }

    void openOnlyWhenTheLastHasOpenedIt()
    {
        StreamGate gate;
        const Stream stream(gate);
        gate.close();
        gate.close();
        QVERIFY(gate.waitUntilBlocked(kLong));
        const int items = stream.items();
        gate.open();
        QVERIFY(gate.waitUntilBlocked(kLong));
        QTest::qWait(10);
        QCOMPARE(stream.items(), items);
        gate.open();
        QTRY_VERIFY(stream.items() > items);
    }

    void aBypassedGateBlocksNothingAndNobodyWaitsForIt()
    {
        StreamGate gate;
        const Stream stream(gate);
        gate.close();
        QVERIFY(gate.waitUntilBlocked(kLong));
        gate.setBypassed(true);
        const int items = stream.items();
        QTRY_VERIFY(stream.items() > items + 2);
        gate.waitUntilBlocked(kLong);
        gate.open();
    }

    void aStreamThatDoesNotMoveIsNotWaitedForForEver()
    {
        StreamGate gate;
        gate.close();
        QVERIFY(!gate.waitUntilBlocked(std::chrono::milliseconds(20)));
        gate.open();
        gate.pass();
    }
};

REGISTER_TEST(testrun::core<TestStreamGate>);
#include "test_streamgate.moc"
