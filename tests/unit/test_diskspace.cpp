// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/diskspace.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

constexpr qint64 kMegabyte = 1'000'000;
constexpr qint64 kHourMs = 3'600'000;

} // namespace

/// How much space a recording needs.
class TestDiskSpace : public QObject
{
    Q_OBJECT

private slots:
    void reserveIsTwentySecondsAndAtLeastFourMegabytes()
    {
        QCOMPARE(diskspace::reserve(0, 0), 4 * kMegabyte);
        QCOMPARE(diskspace::reserve(100'000, 0), 4 * kMegabyte);
        QCOMPARE(diskspace::reserve(kMegabyte, 0), 20 * kMegabyte);
    }

    void reserveHoldsTheIndexOfALongRecording()
    {
        // 30 frames and 47 blocks of audio a second, 16 bytes each in an AVI.
        const qint64 indexBytes = qint64{77} * 16 * 3600;
        QVERIFY(diskspace::reserve(kMegabyte, kHourMs) >= 20 * kMegabyte + indexBytes);
        QVERIFY(diskspace::reserve(kMegabyte, kHourMs) < 20 * kMegabyte + 2 * indexBytes);
    }

    void minutesAreThoseAboveTheReserve()
    {
        constexpr qint64 kRate = kMegabyte / 2;
        const qint64 reserve = diskspace::reserve(kRate, 0);
        QCOMPARE(diskspace::minutesThatFit(0, kRate), 0);
        QCOMPARE(diskspace::minutesThatFit(reserve, kRate), 0);
        QCOMPARE(diskspace::minutesThatFit(reserve + 59 * kRate, kRate), 0);
        QCOMPARE(diskspace::minutesThatFit(reserve + 61 * kRate, kRate), 1);
        QCOMPARE(diskspace::minutesThatFit(reserve + 605 * kRate, kRate), 10);
    }

    void rateIsUnknownBeforeASecond()
    {
        diskspace::GrowthRate rate;
        QCOMPARE(rate.bytesPerSecond(), 0);
        rate.add(0, 0);
        rate.add(5 * kMegabyte, 900);
        QCOMPARE(rate.bytesPerSecond(), 0);
        rate.add(5 * kMegabyte, 1000);
        QCOMPARE(rate.bytesPerSecond(), 5 * kMegabyte);
    }

    void rateIsThatOfTheLastTenSeconds()
    {
        diskspace::GrowthRate rate;
        qint64 bytes = 0;
        for (int second = 0; second < 60; ++second) {
            rate.add(bytes, second * 1000);
            bytes += second < 30 ? kMegabyte : 10'000;
        }
        QCOMPARE(rate.bytesPerSecond(), 10'000);
    }

    void fileThatShrinksHasNoRate()
    {
        diskspace::GrowthRate rate;
        rate.add(kMegabyte, 0);
        rate.add(0, 2000);
        QCOMPARE(rate.bytesPerSecond(), 0);
    }
};

REGISTER_TEST(testrun::core<TestDiskSpace>);
#include "test_diskspace.moc"
