// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/staleparts.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <array>

namespace {

const QRect kWhole(0, 0, 40, 20);

} // namespace

class TestStaleParts : public QObject
{
    Q_OBJECT

private slots:
    void newBufferLacksTheWholeFrame()
    {
        StaleParts stale(kWhole);
        stale.add(QRect(2, 2, 2, 2));
        QCOMPARE(stale.take(&m_buffers[0]), QRegion(kWhole));
        QCOMPARE(stale.take(&m_buffers[0]), QRegion());
        QCOMPARE(stale.take(&m_buffers[1]), QRegion(kWhole));
    }

    void eachBufferLacksWhatHasChangedSinceItWasWritten()
    {
        StaleParts stale(kWhole);
        stale.take(&m_buffers[0]);
        stale.take(&m_buffers[1]);
        stale.add(QRect(0, 0, 4, 2));
        QCOMPARE(stale.take(&m_buffers[0]), QRegion(0, 0, 4, 2));
        stale.add(QRect(10, 10, 2, 2));
        QCOMPARE(stale.take(&m_buffers[0]), QRegion(10, 10, 2, 2));
        QCOMPARE(stale.take(&m_buffers[1]), QRegion(0, 0, 4, 2) + QRegion(10, 10, 2, 2));
        QCOMPARE(stale.take(&m_buffers[1]), QRegion());
    }

    void partsHaveEvenEdgesInTheFrame_data()
    {
        QTest::addColumn<QRect>("part");
        QTest::addColumn<QRect>("even");
        QTest::newRow("even") << QRect(4, 6, 2, 4) << QRect(4, 6, 2, 4);
        QTest::newRow("odd position") << QRect(5, 7, 2, 2) << QRect(4, 6, 4, 4);
        QTest::newRow("odd size") << QRect(4, 6, 1, 3) << QRect(4, 6, 2, 4);
        QTest::newRow("out of the frame") << QRect(-3, -3, 4, 4) << QRect(0, 0, 2, 2);
        QTest::newRow("beyond the far edges") << QRect(39, 19, 9, 9) << QRect(38, 18, 2, 2);
    }

    void partsHaveEvenEdgesInTheFrame()
    {
        QFETCH(const QRect, part);
        QFETCH(const QRect, even);
        StaleParts stale(kWhole);
        QCOMPARE(stale.evenPart(part), even);
        stale.take(&m_buffers[0]);
        stale.add(part);
        QCOMPARE(stale.take(&m_buffers[0]), QRegion(even));
    }

    void whatIsOutsideTheFrameIsNoPartOfIt()
    {
        const StaleParts stale(kWhole);
        QVERIFY(stale.evenPart(QRect(50, 0, 4, 4)).isEmpty());
        QVERIFY(stale.evenPart(QRect()).isEmpty());
    }

    void manyPartsBecomeTheBoxAroundThem()
    {
        StaleParts stale(QRect(0, 0, 1000, 1000));
        stale.take(&m_buffers[0]);
        QRegion many;
        for (int i = 0; i < 100; ++i)
            many += QRect(4 * i, 4 * i, 2, 2);
        stale.add(many);
        QCOMPARE(stale.take(&m_buffers[0]), QRegion(0, 0, 398, 398));
        for (const QRect& part : many) {
            stale.add(part);
            stale.take(&m_buffers[1]);
        }
        const QRegion together = stale.take(&m_buffers[0]);
        QVERIFY(together.rectCount() <= 64);
        QCOMPARE(together.united(many), together);
    }

private:
    std::array<std::uint8_t, 2> m_buffers{};
};

REGISTER_TEST(testrun::core<TestStaleParts>);

#include "test_staleparts_x11.moc"
