// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/cursortracker.h"
#include "tests/engine/xserver.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

constexpr std::uint32_t kRed = 0xC81428;

void update(X11Connection& connection, CursorTracker& tracker)
{
    connection.updateDesktop();
    while (const auto event = connection.nextEvent())
        tracker.handle(*event);
    tracker.update();
}

} // namespace

class TestCursorTracker : public QObject
{
    Q_OBJECT

private slots:
    void positionIsThatOfTheHotSpot()
    {
        PaintedWindow window(QRect(30, 40, 100, 100), kRed);
        X11Connection connection;
        CursorTracker tracker(connection);
        window.movePointer(QPoint(7, 9));
        update(connection, tracker);
        QCOMPARE(tracker.pointer()->positionPx, QPoint(37, 49));
        window.movePointer(QPoint(70, 80));
        update(connection, tracker);
        QCOMPARE(tracker.pointer()->positionPx, QPoint(100, 120));
    }

    void imageIsFetchedWhenItIsAnotherOne()
    {
        PaintedWindow window(QRect(30, 40, 100, 100), kRed);
        window.setBlockPointer(12, QPoint(3, 4), 0xFFFF);
        window.movePointer(QPoint(50, 50));
        X11Connection connection;
        CursorTracker tracker(connection);
        update(connection, tracker);
        const int first = tracker.imageNumber();
        QCOMPARE(tracker.image().widthPx, 12);
        QCOMPARE(tracker.image().heightPx, 12);
        QCOMPARE(tracker.image().hotSpot, QPoint(3, 4));
        QCOMPARE(tracker.image().argbPremultiplied, std::vector<std::uint32_t>(144, 0xFFFF0000));
        window.movePointer(QPoint(60, 60));
        update(connection, tracker);
        QCOMPARE(tracker.imageNumber(), first);

        window.setBlockPointer(64, QPoint(32, 32), 0x8080);
        QTRY_VERIFY((update(connection, tracker), tracker.imageNumber() > first));
        QCOMPARE(tracker.image().widthPx, 64);
        QCOMPARE(tracker.image().argbPremultiplied, std::vector<std::uint32_t>(64 * 64, 0xFF800000));
    }

    void withoutXFixesThePointerHasAPositionAndNoImage()
    {
        XServer server;
        QVERIFY(server.start({QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("320x240x24"),
                              QStringLiteral("-extension"), QStringLiteral("XFIXES")}));
        PaintedWindow window(QRect(30, 40, 100, 100), kRed, server.display().constData());
        X11Connection connection(server.display().constData());
        CursorTracker tracker(connection);
        window.movePointer(QPoint(7, 9));
        update(connection, tracker);
        QCOMPARE(tracker.pointer()->positionPx, QPoint(37, 49));
        QVERIFY(tracker.image().argbPremultiplied.empty());
    }
};

REGISTER_TEST(testrun::core<TestCursorTracker>);

#include "test_cursortracker.moc"
