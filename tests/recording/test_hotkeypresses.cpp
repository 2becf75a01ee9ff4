// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/heldkeyboard.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/stillimage.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QTest>

#include <optional>

namespace {

constexpr int kRecordMs = 1500;
constexpr int kTimeoutMs = 30'000;
/// Of the X server's keyboard.
constexpr int kKeycodeF9 = 75;

} // namespace

/// The hotkeys of the running program while other programs hold the keyboard.
class TestHotkeyPresses : public QObject
{
    Q_OBJECT

private slots:
    void recordingIsMadeWhileAnotherProgramHoldsTheKeyboard_data()
    {
        QTest::addColumn<bool>("isMenu");
        QTest::newRow("with an open menu") << true;
        QTest::newRow("with a grab of its own") << false;
    }

    void recordingIsMadeWhileAnotherProgramHoldsTheKeyboard()
    {
        QFETCH(const bool, isMenu);
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        heldkeyboard::TkMenu menu;
        std::optional<heldkeyboard::Holder> holder;
        if (isMenu)
            QVERIFY(menu.open());
        else
            holder.emplace();
        QVERIFY(heldkeyboard::isHeld());
        const Take take = record(program, QStringLiteral("mp4"), kRecordMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QVERIFY(heldkeyboard::isHeld());
        // One press, one recording.
        QCOMPARE(program.transcript().count(QStringLiteral("Starting recording to file: ")), 1);
        const MediaFile file(take.path);
        QVERIFY2(file.isReadable() && file.video(), qPrintable(file.error()));
        QVERIFY(file.durationSeconds() > 1.0);
    }

    void screenshotIsBegunWhileAnotherProgramsMenuIsOpen()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        {
            heldkeyboard::TkMenu menu;
            QVERIFY(menu.open());
            ProgramUnderTest::pressKey(QStringLiteral("F10"));
            QVERIFY2(program.mainWindow(true, kTimeoutMs), qPrintable(program.transcript()));
            QVERIFY(heldkeyboard::isHeld());
        }
        // The frame asks for the focus once the window has gone.
        QTRY_VERIFY_WITH_TIMEOUT(
            (ProgramUnderTest::pressKey(QStringLiteral("Escape")), program.mainWindow(false, 500).has_value()),
            kTimeoutMs);
    }

    void escapeCancelsTheCountdown_data()
    {
        QTest::addColumn<bool>("isHeld");
        QTest::newRow("keyboard free") << false;
        QTest::newRow("keyboard held by another program") << true;
    }

    void escapeCancelsTheCountdown()
    {
        QFETCH(const bool, isHeld);
        QImage white(StillImage::displaySize(), QImage::Format_RGB32);
        white.fill(Qt::white);
        const StillImage still(white);
        ProgramUnderTest program;
        // It is not over before Escape on a busy machine.
        program.countDownBy(kTimeoutMs);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        std::optional<heldkeyboard::Holder> holder;
        if (isHeld)
            holder.emplace();
        QCOMPARE(heldkeyboard::isHeld(), isHeld);
        ProgramUnderTest::pressKey(QStringLiteral("F9"));
        QVERIFY2(program.mainWindow(true, kTimeoutMs), qPrintable(program.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(isCountdownShown(), kTimeoutMs);
        ProgramUnderTest::pressKey(QStringLiteral("Escape"));
        QVERIFY2(program.waitForMessage(QStringLiteral("Countdown cancelled, nothing is recorded"), kTimeoutMs),
                 qPrintable(program.transcript()));
        QVERIFY2(program.mainWindow(false, kTimeoutMs), qPrintable(program.transcript()));
        QVERIFY(!program.transcript().contains(QStringLiteral("Starting recording to file: ")));
    }

    void keyThatAnotherProgramHoldsIsReportedAtTheStart()
    {
        const heldkeyboard::KeyHolder other(kKeycodeF9);
        QVERIFY(other.isHolding());
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY2(program.waitForMessage(
                     QStringLiteral("Notice: The hotkey F9 cannot be used. Another program may hold it."), kTimeoutMs),
                 qPrintable(program.transcript()));
        QVERIFY(program.transcript().contains(
            QStringLiteral("The hotkey \"F9\" cannot be used: another program holds it")));
        QVERIFY(!program.transcript().contains(QStringLiteral("The hotkey \"F10\" cannot be used")));
    }
};

REGISTER_TEST(testrun::core<TestHotkeyPresses>);

#include "test_hotkeypresses.moc"
