// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/areaselector.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"
#include "tests/support/widgetimage.h"

#include <QCursor>
#include <QGuiApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

namespace {

QImage veil(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter(&image).fillRect(QRect(QPoint(), size), QColor(0, 0, 0, 100));
    return image;
}

void press(QWidget& widget, Qt::MouseButton button, const QPoint& position)
{
    QTest::mousePress(&widget, button, Qt::NoModifier, position);
}

void release(QWidget& widget, Qt::MouseButton button, const QPoint& position)
{
    QTest::mouseRelease(&widget, button, Qt::NoModifier, position);
}

/// As the system reports it. The test library's own move counts buttons that are held, and may lead the real pointer.
void moveWithoutButton(QWidget& widget, const QPoint& position)
{
    QMouseEvent move(QEvent::MouseMove, position, widget.mapToGlobal(position), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &move);
}

} // namespace

class TestAreaSelector : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        while (QGuiApplication::overrideCursor() != nullptr)
            QGuiApplication::restoreOverrideCursor();
    }

    void coversThePrimaryScreenOnly()
    {
        const AreaSelector selector;
        QCOMPARE(selector.geometry(), QGuiApplication::primaryScreen()->geometry());
        QVERIFY(selector.testAttribute(Qt::WA_TranslucentBackground));
        QCOMPARE(selector.windowFlags() & ~Qt::Window, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        QCOMPARE(selector.windowType(), Qt::Window);
        QCOMPARE(selector.cursor().shape(), Qt::CrossCursor);
    }

    void aDragReportsItsRectangleOnce_data()
    {
        QTest::addColumn<QPoint>("from");
        QTest::addColumn<QPoint>("to");
        QTest::addColumn<QRect>("area");
        const QRect area(QPoint(10, 20), QPoint(309, 219));
        QTest::newRow("down to the right") << QPoint(10, 20) << QPoint(309, 219) << area;
        QTest::newRow("up to the left") << QPoint(309, 219) << QPoint(10, 20) << area;
        QTest::newRow("up to the right") << QPoint(10, 219) << QPoint(309, 20) << area;
        QTest::newRow("down to the left") << QPoint(309, 20) << QPoint(10, 219) << area;
        QTest::newRow("a click without a move") << QPoint(7, 8) << QPoint(7, 8) << QRect(7, 8, 1, 1);
        QTest::newRow("one column, upwards") << QPoint(7, 8) << QPoint(7, 6) << QRect(7, 6, 1, 3);
        QTest::newRow("one pixel back") << QPoint(7, 8) << QPoint(6, 7) << QRect(6, 7, 2, 2);
    }

    void aDragReportsItsRectangleOnce()
    {
        QFETCH(const QPoint, from);
        QFETCH(const QPoint, to);
        QFETCH(const QRect, area);
        AreaSelector selector;
        const QSignalSpy selected(&selector, &AreaSelector::areaSelected);
        QGuiApplication::setOverrideCursor(Qt::CrossCursor);
        selector.show();
        press(selector, Qt::LeftButton, from);
        QTest::mouseMove(&selector, to);
        QCOMPARE(selected.size(), 0);
        const MessageCapture capture;
        release(selector, Qt::LeftButton, to);
        QCOMPARE(selected, QList<QVariantList>{{area}});
        QCOMPARE(capture.texts(QtDebugMsg),
                 QStringList(QStringLiteral("Selected Area - X: %1 Y: %2 Width: %3 Height: %4")
                                 .arg(area.x())
                                 .arg(area.y())
                                 .arg(area.width())
                                 .arg(area.height())));
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
        QVERIFY(selector.isVisible());
        release(selector, Qt::LeftButton, to);
        QCOMPARE(selected.size(), 1);
    }

    void otherButtonsNeitherStartNorEnd()
    {
        AreaSelector selector;
        const QSignalSpy selected(&selector, &AreaSelector::areaSelected);
        selector.show();
        for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
            press(selector, button, QPoint(5, 5));
            QTest::mouseMove(&selector, QPoint(50, 50));
            release(selector, button, QPoint(50, 50));
        }
        QCOMPARE(selected.size(), 0);
        press(selector, Qt::LeftButton, QPoint(10, 10));
        QTest::mouseMove(&selector, QPoint(30, 30));
        release(selector, Qt::RightButton, QPoint(30, 30));
        QCOMPARE(selected.size(), 0);
        release(selector, Qt::LeftButton, QPoint(30, 30));
        QCOMPARE(selected, (QList<QVariantList>{{QRect(10, 10, 21, 21)}}));
    }

    void escapeHidesAndKeepsTheDrag()
    {
        AreaSelector selector;
        const QSignalSpy selected(&selector, &AreaSelector::areaSelected);
        QGuiApplication::setOverrideCursor(Qt::CrossCursor);
        selector.show();
        press(selector, Qt::LeftButton, QPoint(10, 10));
        QTest::keyClick(&selector, Qt::Key_Escape);
        QVERIFY(!selector.isVisible());
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
        QCOMPARE(selected.size(), 0);
        // The button comes up while the overlay is hidden.
        QWidget elsewhere;
        release(elsewhere, Qt::LeftButton, QPoint(5, 5));
        QVERIFY(selector.hasMouseTracking());
        selector.show();
        moveWithoutButton(selector, QPoint(40, 60));
        QVERIFY(imageOf(selector) != veil(selector.size()));
        QCOMPARE(imageOf(selector).pixelColor(25, 55).value(), lightened().value());
        press(selector, Qt::LeftButton, QPoint(100, 100));
        QTest::mouseMove(&selector, QPoint(130, 130));
        QCOMPARE(imageOf(selector).pixelColor(25, 55), QColor(0, 0, 0, 100));
        release(selector, Qt::LeftButton, QPoint(130, 130));
        QCOMPARE(selected, (QList<QVariantList>{{QRect(100, 100, 31, 31)}}));
    }

    void otherKeysDoNothing()
    {
        AreaSelector selector;
        QGuiApplication::setOverrideCursor(Qt::CrossCursor);
        selector.show();
        QTest::keyClick(&selector, Qt::Key_Delete);
        QVERIFY(selector.isVisible());
        QVERIFY(QGuiApplication::overrideCursor() != nullptr);
    }

    void cornersAreMarkedWithKeys_data()
    {
        QTest::addColumn<Qt::Key>("mark");
        QTest::newRow("Space") << Qt::Key_Space;
        QTest::newRow("Return") << Qt::Key_Return;
        QTest::newRow("Enter") << Qt::Key_Enter;
    }

    void cornersAreMarkedWithKeys()
    {
        QFETCH(const Qt::Key, mark);
        AreaSelector selector;
        const QSignalSpy selected(&selector, &AreaSelector::areaSelected);
        QGuiApplication::setOverrideCursor(Qt::CrossCursor);
        selector.show();
        QCursor::setPos(selector.mapToGlobal(QPoint(100, 100)));
        QTest::keyClick(&selector, Qt::Key_Left);
        QTest::keyClick(&selector, Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(imageOf(selector), veil(selector.size()));
        QTest::keyClick(&selector, mark);
        for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Up})
            QTest::keyClick(&selector, key);
        QTest::keyClick(&selector, Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(imageOf(selector).pixelColor(95, 95).value(), lightened().value());
        QCOMPARE(selected.size(), 0);
        QTest::keyClick(&selector, mark);
        QCOMPARE(selected, (QList<QVariantList>{{QRect(QPoint(90, 91), QPoint(121, 101))}}));
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    }

    void escapeDropsAMarkedCorner()
    {
        AreaSelector selector;
        const QSignalSpy selected(&selector, &AreaSelector::areaSelected);
        selector.show();
        QCursor::setPos(selector.mapToGlobal(QPoint(100, 100)));
        QTest::keyClick(&selector, Qt::Key_Space);
        QTest::keyClick(&selector, Qt::Key_Escape);
        selector.show();
        moveWithoutButton(selector, QPoint(40, 60));
        QCOMPARE(imageOf(selector), veil(selector.size()));
        QTest::keyClick(&selector, Qt::Key_Space);
        QCOMPARE(selected.size(), 0);
    }

    void hidingDropsAMarkedCorner()
    {
        AreaSelector selector;
        const QSignalSpy selected(&selector, &AreaSelector::areaSelected);
        selector.show();
        QCursor::setPos(selector.mapToGlobal(QPoint(100, 100)));
        QTest::keyClick(&selector, Qt::Key_Space);
        QVERIFY(selector.isSelecting());
        selector.hide();
        QVERIFY(!selector.isSelecting());
        selector.show();
        QTest::keyClick(&selector, Qt::Key_Space);
        QCOMPARE(selected.size(), 0);
    }

    void cornersBeyondTheSelectorAreMarkedAtItsEdge()
    {
        AreaSelector selector;
        const QSignalSpy selected(&selector, &AreaSelector::areaSelected);
        selector.setGeometry(50, 60, 200, 150);
        selector.show();
        QCursor::setPos(400, 300);
        QTest::keyClick(&selector, Qt::Key_Space);
        QTest::keyClick(&selector, Qt::Key_Up);
        QCOMPARE(QCursor::pos(), QPoint(249, 209));
        QTest::keyClick(&selector, Qt::Key_Left);
        QCursor::setPos(200, 10);
        QTest::keyClick(&selector, Qt::Key_Space);
        QCOMPARE(selected, (QList<QVariantList>{{QRect(QPoint(150, 0), QPoint(199, 149))}}));
    }

    void cornersReachToANeighbour()
    {
        AreaSelector neighbour;
        neighbour.setGeometry(250, 60, 200, 150);
        AreaSelector selector;
        selector.setGeometry(50, 60, 200, 150);
        selector.setNeighbours({&neighbour});
        const QSignalSpy selected(&selector, &AreaSelector::areaSelected);
        selector.show();
        QCursor::setPos(240, 100);
        QTest::keyClick(&selector, Qt::Key_Space);
        QTest::keyClick(&selector, Qt::Key_Right);
        QTest::keyClick(&selector, Qt::Key_Right);
        QTest::keyClick(&selector, Qt::Key_Space);
        QCOMPARE(selected, (QList<QVariantList>{{QRect(QPoint(190, 40), QPoint(210, 40))}}));
    }

    void theRectangleShowsOnlyWhileItIsDragged()
    {
        AreaSelector selector;
        selector.show();
        QCOMPARE(imageOf(selector), veil(selector.size()));
        press(selector, Qt::LeftButton, QPoint(40, 30));
        QTest::mouseMove(&selector, QPoint(239, 129));

        QImage expected = veil(selector.size());
        {
            QPainter painter(&expected);
            painter.setFont(selector.font());
            const QRect area(40, 30, 200, 100);
            painter.fillRect(area, QColor(255, 255, 255, 50));
            painter.setPen(QPen(Qt::white, 2, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
            painter.drawRect(area);
            painter.drawText(QPoint(139, 79), QStringLiteral("200 x 100"));
        }

        QCOMPARE(imageOf(selector), expected);
        release(selector, Qt::LeftButton, QPoint(239, 129));
        QCOMPARE(imageOf(selector), veil(selector.size()));
    }

private:
    /// White at 50 of 255 over black at 100 of 255.
    static QColor lightened()
    {
        QImage pixel = veil(QSize(1, 1));
        QPainter(&pixel).fillRect(0, 0, 1, 1, QColor(255, 255, 255, 50));
        return pixel.pixelColor(0, 0);
    }
};

REGISTER_TEST(testrun::gui<TestAreaSelector>);
#include "test_areaselector.moc"
