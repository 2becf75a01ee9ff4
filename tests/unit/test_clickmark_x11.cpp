// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/clickmark.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

constexpr std::int64_t kMs = 1'000'000;

/// How many milliseconds of a video show the mark, from the given frame on.
int shownMs(ClickMark& mark, int firstFrameMs, int intervalMs)
{
    int frames = 0;
    while (mark.isIn((firstFrameMs + frames * intervalMs) * kMs))
        ++frames;
    return frames * intervalMs;
}

} // namespace

/// When the mark of a click is in a frame. Times are milliseconds from any moment on.
class TestClickMark : public QObject
{
    Q_OBJECT

private slots:
    void nothingWithoutAClick()
    {
        ClickMark mark;
        QVERIFY(!mark.isIn(0));
        mark.release(10 * kMs);
        QVERIFY(!mark.isIn(20 * kMs));
    }

    void isThereWhileTheButtonIsDown()
    {
        ClickMark mark;
        mark.press();
        for (int ms = 0; ms < 60'000; ms += 33)
            QVERIFY(mark.isIn(ms * kMs));
        mark.release(60'000 * kMs);
        QVERIFY(!mark.isIn(60'001 * kMs));
    }

    void shortClickIsSeenFor200Ms_data()
    {
        QTest::addColumn<int>("intervalMs");
        QTest::addColumn<int>("firstFrameMs");
        QTest::newRow("30 a second, at once") << 33 << 101;
        QTest::newRow("30 a second, a frame later") << 33 << 133;
        QTest::newRow("60 a second") << 17 << 110;
        QTest::newRow("24 a second") << 42 << 120;
        QTest::newRow("5 a second") << 200 << 299;
        QTest::newRow("2 a second") << 500 << 590;
        QTest::newRow("after frames that were late") << 33 << 900;
        QTest::newRow("a frame that is older than the click") << 33 << 90;
    }

    void shortClickIsSeenFor200Ms()
    {
        QFETCH(const int, intervalMs);
        QFETCH(const int, firstFrameMs);
        ClickMark mark;
        QVERIFY(!mark.isIn((firstFrameMs - intervalMs) * kMs));
        mark.press();
        mark.release(100 * kMs);
        const int shown = shownMs(mark, firstFrameMs, intervalMs);
        QVERIFY2(shown >= 200, qPrintable(QString::number(shown)));
        QVERIFY2(shown < 200 + intervalMs, qPrintable(QString::number(shown)));
        QVERIFY(!mark.isIn((firstFrameMs + 5000) * kMs));
    }

    void clickThatAFrameHasSeenEndsAfter200Ms()
    {
        ClickMark mark;
        mark.press();
        QVERIFY(mark.isIn(100 * kMs));
        mark.release(110 * kMs);
        QVERIFY(mark.isIn(133 * kMs));
        QVERIFY(mark.isIn(299 * kMs));
        QVERIFY(!mark.isIn(300 * kMs));
    }

    void longClickEndsWithTheRelease()
    {
        ClickMark mark;
        mark.press();
        QVERIFY(mark.isIn(0));
        QVERIFY(mark.isIn(300 * kMs));
        mark.release(310 * kMs);
        QVERIFY(!mark.isIn(333 * kMs));
    }

    void secondClickIsSeenAsLong()
    {
        ClickMark mark;
        mark.press();
        mark.release(0);
        QVERIFY(mark.isIn(10 * kMs));
        mark.press();
        mark.release(150 * kMs);
        QVERIFY(mark.isIn(160 * kMs));
        QVERIFY(mark.isIn(359 * kMs));
        QVERIFY(!mark.isIn(360 * kMs));
    }

    void repeatedPressIsTheSameClick()
    {
        ClickMark mark;
        mark.press();
        QVERIFY(mark.isIn(0));
        mark.press();
        mark.release(150 * kMs);
        mark.release(190 * kMs);
        QVERIFY(!mark.isIn(200 * kMs));
    }

    void clickLongBeforeTheNextFrameIsForgotten()
    {
        ClickMark mark;
        mark.press();
        mark.release(0);
        QVERIFY(!mark.isIn(1000 * kMs));
        QVERIFY(!mark.isIn(1001 * kMs));
        mark.press();
        QVERIFY(mark.isIn(1002 * kMs));
    }
};

REGISTER_TEST(testrun::core<TestClickMark>);
#include "test_clickmark_x11.moc"
