// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/cursortracker.h"
#include "tests/engine/xserver.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

constexpr std::uint32_t kRed = 0xC81428;

void update(X11Connection& connection, CursorTracker& tracker)
{
    tracker.updatePointer();
    while (const auto event = connection.nextEvent())
        tracker.handle(*event);
    tracker.updateImage();
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

    void imageIsThatOfThePointer_data()
    {
        QTest::addColumn<int>("sizePx");
        QTest::addColumn<QPoint>("hotSpot");
        QTest::newRow("small") << 12 << QPoint(3, 4);
        QTest::newRow("large") << 64 << QPoint(32, 32);
        QTest::newRow("very large") << 256 << QPoint(255, 0);
    }

    void imageIsThatOfThePointer()
    {
        QFETCH(const int, sizePx);
        QFETCH(const QPoint, hotSpot);
        PaintedWindow window(QRect(30, 40, 100, 100), kRed);
        window.setBlockPointer(sizePx, hotSpot, 0x8080);
        window.movePointer(QPoint(50, 50));
        X11Connection connection;
        CursorTracker tracker(connection);
        update(connection, tracker);
        QCOMPARE(tracker.image().widthPx, sizePx);
        QCOMPARE(tracker.image().heightPx, sizePx);
        QCOMPARE(tracker.image().hotSpot, hotSpot);
        const auto pixels = static_cast<std::size_t>(sizePx) * static_cast<std::size_t>(sizePx);
        QCOMPARE(tracker.image().argbPremultiplied, std::vector<std::uint32_t>(pixels, 0xFF800000));
    }

    void imagesAreCountedWhereTheyDiffer()
    {
        PaintedWindow window(QRect(30, 40, 100, 100), kRed);
        window.setBlockPointer(12, QPoint(3, 4), 0xFFFF);
        window.movePointer(QPoint(50, 50));
        X11Connection connection;
        CursorTracker tracker(connection);
        update(connection, tracker);
        const int first = tracker.imageNumber();
        window.movePointer(QPoint(60, 60));
        update(connection, tracker);
        QCOMPARE(tracker.imageNumber(), first);
        window.setBlockPointer(12, QPoint(3, 5), 0xFFFF);
        update(connection, tracker);
        QCOMPARE(tracker.imageNumber(), first + 1);
        window.setBlockPointer(12, QPoint(3, 5), 0x8080);
        update(connection, tracker);
        QCOMPARE(tracker.imageNumber(), first + 2);
    }

    void imageStaysUntilAnAnimatedPointerHasOne()
    {
        PaintedWindow window(QRect(30, 40, 100, 100), kRed);
        window.setBlockPointer(12, QPoint(3, 4), 0x4040);
        window.movePointer(QPoint(50, 50));
        X11Connection connection;
        CursorTracker tracker(connection);
        update(connection, tracker);
        window.setAnimatedPointer(16, {0x8080, 0xC0C0}, 60'000);
        update(connection, tracker);
        QCOMPARE(tracker.image().argbPremultiplied, std::vector<std::uint32_t>(144, 0xFF400000));
    }

    void imagesOfAnAnimatedPointerComeOneAfterTheOther()
    {
        PaintedWindow window(QRect(30, 40, 100, 100), kRed);
        window.setAnimatedPointer(16, {0x4040, 0x8080, 0xC0C0}, 200);
        window.movePointer(QPoint(50, 50));
        X11Connection connection;
        CursorTracker tracker(connection);
        for (const std::uint32_t color : {0xFF400000U, 0xFF800000U, 0xFFC00000U, 0xFF400000U}) {
            const std::vector<std::uint32_t> image(256, color);
            QTRY_VERIFY((update(connection, tracker), tracker.image().argbPremultiplied == image));
        }
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
