// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/x11_key_presses.h"
#include "tests/support/testrun.h"

#include <QTest>

using platform::X11KeyPresses;

namespace {

constexpr xcb_keycode_t kKey = 75;
constexpr xcb_keycode_t kOtherKey = 40;
constexpr xcb_keycode_t kShift = 50;
constexpr xcb_keycode_t kControl = 37;
constexpr xcb_keycode_t kOtherControl = 105;
constexpr xcb_keycode_t kNumLock = 77;

platform::X11Key keyWith(std::uint16_t modifiers)
{
    return {{kKey},
            modifiers,
            XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2,
            {{kShift, XCB_MOD_MASK_SHIFT},
             {kControl, XCB_MOD_MASK_CONTROL},
             {kOtherControl, XCB_MOD_MASK_CONTROL},
             {kNumLock, XCB_MOD_MASK_2}}};
}

} // namespace

/// What of a key's events counts, in the order in which the X server sends them.
class TestKeyPresses : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_presses = {};
        m_presses.setKey(keyWith(0));
    }

    void pressReportedTwiceCountsOnce()
    {
        for (const xcb_timestamp_t time : {1000U, 2000U, 3000U}) {
            QVERIFY(m_presses.onRawPress(kKey, time));
            QVERIFY(!m_presses.onGrabPress(kKey, time));
            m_presses.onGrabRelease(kKey, time + 80);
        }
    }

    void pressThatOnlyTheGrabReportsCounts()
    {
        QVERIFY(m_presses.onGrabPress(kKey, 1000));
        m_presses.onGrabRelease(kKey, 1080);
        QVERIFY(m_presses.onGrabPress(kKey, 2000));
    }

    void pressThatOnlyRawEventsReportCounts()
    {
        QVERIFY(m_presses.onRawPress(kKey, 1000));
        m_presses.onRawRelease(kKey);
        QVERIFY(m_presses.onRawPress(kKey, 2000));
    }

    void firstMomentOfTheServersClockCounts()
    {
        QVERIFY(m_presses.onRawPress(kKey, 0));
        QVERIFY(!m_presses.onGrabPress(kKey, 0));
        m_presses = {};
        m_presses.setKey(keyWith(0));
        QVERIFY(m_presses.onGrabPress(kKey, 0));
    }

    void keyThatRepeatsCountsOnce()
    {
        QVERIFY(m_presses.onRawPress(kKey, 1000));
        QVERIFY(!m_presses.onGrabPress(kKey, 1000));
        for (const xcb_timestamp_t time : {1500U, 1540U, 1580U}) {
            m_presses.onGrabRelease(kKey, time);
            QVERIFY(!m_presses.onGrabPress(kKey, time));
        }
        m_presses.onGrabRelease(kKey, 1600);
        QVERIFY(m_presses.onRawPress(kKey, 2000));
    }

    /// Servers can leave the releases out.
    void keyThatRepeatsWithoutReleasesCountsOnce()
    {
        QVERIFY(m_presses.onGrabPress(kKey, 1000));
        QVERIFY(!m_presses.onGrabPress(kKey, 1500));
        QVERIFY(!m_presses.onGrabPress(kKey, 1540));
    }

    /// The other program had the keyboard when the key went down, and has released it since.
    void keyThatIsStillDownWhenItsGrabBeginsCountsOnce()
    {
        QVERIFY(m_presses.onRawPress(kKey, 1000));
        QVERIFY(!m_presses.onGrabPress(kKey, 1500));
        m_presses.onGrabRelease(kKey, 1600);
        QVERIFY(m_presses.onRawPress(kKey, 2000));
    }

    void modifiersMatchExactly_data()
    {
        QTest::addColumn<int>("wanted");
        QTest::addColumn<QList<int>>("held");
        QTest::addColumn<bool>("counts");
        constexpr int kNone = 0;
        constexpr int kWithControl = XCB_MOD_MASK_CONTROL;
        QTest::newRow("none") << kNone << QList<int>{} << true;
        QTest::newRow("one too many") << kNone << QList<int>{kShift} << false;
        QTest::newRow("lock") << kNone << QList<int>{kNumLock} << true;
        QTest::newRow("one too few") << kWithControl << QList<int>{} << false;
        QTest::newRow("left one") << kWithControl << QList<int>{kControl} << true;
        QTest::newRow("right one with a lock") << kWithControl << QList<int>{kOtherControl, kNumLock} << true;
        QTest::newRow("both") << kWithControl << QList<int>{kControl, kOtherControl} << true;
        QTest::newRow("another one beside it") << kWithControl << QList<int>{kControl, kShift} << false;
        QTest::newRow("a key that is no modifier") << kNone << QList<int>{kOtherKey} << true;
    }

    void modifiersMatchExactly()
    {
        QFETCH(const int, wanted);
        QFETCH(const QList<int>, held);
        QFETCH(const bool, counts);
        m_presses.setKey(keyWith(static_cast<std::uint16_t>(wanted)));
        for (const int keycode : held)
            QVERIFY(!m_presses.onRawPress(static_cast<xcb_keycode_t>(keycode), 900));
        QCOMPARE(m_presses.onRawPress(kKey, 1000), counts);
        m_presses.onRawRelease(kKey);
        for (const int keycode : held)
            m_presses.onRawRelease(static_cast<xcb_keycode_t>(keycode));
        QCOMPARE(m_presses.onRawPress(kKey, 2000), wanted == 0);
    }

    void modifierHeldFromBeforeIsKnown()
    {
        m_presses.addDown(kShift);
        m_presses.addDown(kOtherKey);
        QVERIFY(!m_presses.onRawPress(kKey, 1000));
        m_presses.onRawRelease(kKey);
        m_presses.onRawRelease(kShift);
        QVERIFY(m_presses.onRawPress(kKey, 2000));
    }

    /// Its grab begins with a repetition.
    void keyThatIsDownWhenItIsTakenCountsFromItsNextPress()
    {
        m_presses.addDown(kKey);
        QVERIFY(!m_presses.onGrabPress(kKey, 1000));
        m_presses.onGrabRelease(kKey, 1040);
        QVERIFY(!m_presses.onGrabPress(kKey, 1040));
        m_presses.onGrabRelease(kKey, 1100);
        QVERIFY(m_presses.onRawPress(kKey, 2000));
    }

    /// While the key is down its grab has the keyboard, and the server reports other keys by it alone.
    void modifierThatChangesDuringTheGrabIsKnown()
    {
        m_presses.setKey(keyWith(XCB_MOD_MASK_CONTROL));
        m_presses.onRawPress(kControl, 900);
        QVERIFY(m_presses.onRawPress(kKey, 1000));
        QVERIFY(!m_presses.onGrabPress(kKey, 1000));
        m_presses.onGrabRelease(kControl, 1050);
        QVERIFY(!m_presses.onGrabPress(kShift, 1060));
        m_presses.onGrabRelease(kShift, 1070);
        m_presses.onGrabRelease(kKey, 1080);
        QVERIFY(!m_presses.onRawPress(kKey, 2000));
    }

    /// A modifier can be in force without being held, which the server knows.
    void grabKnowsModifiersThatNobodyHolds()
    {
        m_presses.setKey(keyWith(XCB_MOD_MASK_CONTROL));
        QVERIFY(!m_presses.onRawPress(kKey, 1000));
        QVERIFY(m_presses.onGrabPress(kKey, 1000));
    }

    void otherKeysDoNotCount()
    {
        QVERIFY(!m_presses.onRawPress(kOtherKey, 1000));
        QVERIFY(!m_presses.onGrabPress(kOtherKey, 1000));
        m_presses.onGrabRelease(kOtherKey, 1080);
        QVERIFY(m_presses.onRawPress(kKey, 1080));
    }

private:
    X11KeyPresses m_presses;
};

REGISTER_TEST(testrun::core<TestKeyPresses>);

#include "test_keypresses_x11.moc"
