// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "widgets/tooltip.h"

#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QTest>

namespace {

using Position = std::optional<QPoint>;

constexpr QSize kTip(90, 20);

QWidget* visibleTip()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->inherits("QTipLabel") && window->isVisible())
            return window;
    }
    return nullptr;
}

} // namespace

Q_DECLARE_METATYPE(Position)

class TestBarTip : public QObject
{
    Q_OBJECT

private slots:
    void tipIsOutsideTheRecordedArea_data()
    {
        QTest::addColumn<QRect>("bar");
        QTest::addColumn<int>("left");
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QRect>("recorded");
        QTest::addColumn<Position>("position");
        const QRect screen(0, 0, 1280, 720);
        const QRect bar(400, 300, 280, 40);
        const QRect atTop(500, 0, 280, 40);
        QTest::newRow("nothing recorded") << bar << 440 << screen << QRect() << Position({440, 276});
        QTest::newRow("recorded area below the bar")
            << bar << 440 << screen << QRect(300, 340, 500, 300) << Position({440, 276});
        QTest::newRow("recorded area above the bar")
            << bar << 440 << screen << QRect(300, 0, 500, 277) << Position({440, 344});
        QTest::newRow("recorded area that ends where the tip begins")
            << bar << 440 << screen << QRect(300, 0, 500, 276) << Position({440, 276});
        QTest::newRow("bar at the top edge")
            << atTop << 540 << screen << QRect(0, 100, 400, 400) << Position({540, 44});
        QTest::newRow("bar at the top edge, recorded area right below it")
            << atTop << 540 << screen << QRect(300, 60, 700, 400) << Position({406, 0});
        QTest::newRow("bar in the corner, recorded area right below it")
            << QRect(0, 0, 280, 40) << 0 << screen << QRect(0, 60, 700, 400) << Position({284, 0});
        QTest::newRow("whole screen recorded") << atTop << 540 << screen << screen << Position();
        QTest::newRow("not beyond the screen's right edge")
            << QRect(1000, 300, 280, 40) << 1240 << screen << QRect() << Position({1190, 276});
        QTest::newRow("not on the screen beside")
            << QRect(1280, 0, 280, 40) << 1280 << QRect(1280, 0, 280, 720) << QRect(1280, 40, 280, 680) << Position();
    }

    void tipIsOutsideTheRecordedArea()
    {
        QFETCH(const QRect, bar);
        QFETCH(const int, left);
        QFETCH(const QRect, screen);
        QFETCH(const QRect, recorded);
        QFETCH(const Position, position);
        QCOMPARE(bartip::positionFor(kTip, bar, left, screen, recorded), position);
    }

    void tipIsShownOutsideTheRecordedAreaOrNotAtAll()
    {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QWidget bar;
        bar.setWindowFlag(Qt::FramelessWindowHint);
        QLabel part(QStringLiteral("part"), &bar);
        part.setToolTip(QStringLiteral("What it does"));
        bar.setGeometry(QRect(screen.topLeft() + QPoint(100, 100), QSize(280, 40)));
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        bartip::show(part, bar.geometry().adjusted(0, 40, 0, 200));
        QVERIFY(visibleTip() != nullptr);
        QVERIFY(visibleTip()->geometry().bottom() < bar.y());
        bartip::show(part, bar.geometry().adjusted(0, -100, 0, -40));
        QVERIFY(visibleTip() != nullptr);
        QVERIFY(visibleTip()->y() > bar.geometry().bottom());
        bartip::show(part, screen);
        QVERIFY(visibleTip() == nullptr);
    }
};

REGISTER_TEST(testrun::gui<TestBarTip>);
#include "test_bartip.moc"
