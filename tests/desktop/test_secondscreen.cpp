// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "tests/desktop/desktoprun.h"
#include "tests/desktop/regiontest.h"
#include "tests/desktop/userinput.h"
#include "tests/support/messagecapture.h"

#include <QApplication>
#include <QMenu>
#include <QScreen>
#include <QTest>

using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::drag;
using desktopuser::pointTo;
using desktopuser::press;
using userinput::xdotool;

/// Two screens, of which the left one is not the primary: the menu that offers them, and regions there. No engine runs,
/// so a region is on one of them.
class TestSecondScreen : public RegionTest
{
    Q_OBJECT

private slots:
    void screenIsChosenByThePointer()
    {
        QMenu* const menu = openMenu();
        QVERIFY(menu != nullptr);
        QCOMPARE(menu->actions().size(), 2);
        QVERIFY(menu->actions().at(0)->isChecked());
        expectFields(primary().size());
        clickEntry(*menu, 1);
        QTRY_VERIFY(shownWindow<QMenu>() == nullptr);
        expectFields(other().geometry().size());
        QCOMPARE(selectedTiles(), QStringList{"fullScreenTile"});
        QCOMPARE(tile().note(), QStringLiteral("Screen 2"));
        QVERIFY(tile().findChild<QWidget*>(QStringLiteral("tileNote"))->isVisible());
    }

    void screenIsChosenByTheKeyboard()
    {
        QVERIFY(desktopuser::tabTo(tile()));
        press(QStringLiteral("space"));
        QTRY_VERIFY(shownWindow<QMenu>() != nullptr);
        press(QStringLiteral("Down"));
        press(QStringLiteral("Return"));
        QTRY_VERIFY(shownWindow<QMenu>() == nullptr);
        expectFields(other().geometry().size());
        QTRY_VERIFY(tile().hasFocus());
    }

    void regionIsDraggedOutOnTheOtherScreen()
    {
        const QRect area(other().geometry().topLeft() + QPoint(100, 200), QSize(320, 240));
        dragRegionAt(area);
        QTRY_VERIFY(frame() != nullptr);
        QCOMPARE(frame()->geometry(), framed(area));
        expectFields(area.size());
        QTRY_VERIFY(isLike(colourOnTheOther(framed(area).topLeft() + QPoint(1, 1)), kBorder));
        QVERIFY(isLike(colourOnTheOther(area.center()), kBackdrop));
    }

    void dragAcrossIsSeenOnBothScreens()
    {
        beginRegion();
        const int edge = primary().left();
        const QPoint onLeft(edge - 30, 400);
        const QPoint onRight(edge + 30, 400);
        const QRgb veiledLeft = colourOnTheOther(onLeft);
        const QRgb veiledRight = colourAt(onRight);
        pointTo({edge - 60, 300});
        xdotool({"mousedown", "1"});
        pointTo(onRight);
        pointTo({edge + 259, 539});
        QTRY_VERIFY(qGray(colourOnTheOther(onLeft)) > qGray(veiledLeft));
        QTRY_VERIFY(qGray(colourAt(onRight)) > qGray(veiledRight));
        xdotool({"mouseup", "1"});
        QTRY_VERIFY(frame() != nullptr);
        // Most of it is on the right one.
        const QRect area(edge, 300, 260, 240);
        QTRY_COMPARE(frame()->geometry(), framed(area));
        expectFields(area.size());
    }

    void selectionFollowsScreensThatGoAndCome()
    {
        beginRegion();
        QVERIFY(desktopuser::unplugSecondScreen());
        QTRY_COMPARE(QGuiApplication::screens().size(), 1);
        QTRY_COMPARE(veils(), QList<QRect>{primary()});
        QVERIFY(desktopuser::plugSecondScreen());
        QTRY_COMPARE(QGuiApplication::screens().size(), 2);
        QTRY_COMPARE(veils().size(), 2);
        QVERIFY(veils().contains(other().geometry()));
        desktopuser::waitUntilStill();
        const QRect area(other().geometry().topLeft() + QPoint(100, 200), QSize(320, 240));
        drag(area.topLeft(), area.bottomRight());
        QTRY_VERIFY(frame() != nullptr);
        QCOMPARE(frame()->geometry(), framed(area));
        QCOMPARE(veils(), QList<QRect>());
    }

    void frameIsDraggedToTheOtherScreen()
    {
        dragRegionAt(region());
        QTRY_VERIFY(frame() != nullptr);
        const QPoint bar = frame()->geometry().topRight() + QPoint(-40, -15);
        const QPoint distance(other().geometry().left() + 50 - region().left(), 60);
        drag(bar, bar + distance);
        const QRect moved = region().translated(distance);
        QTRY_COMPARE(frame()->geometry(), framed(moved));
        expectFields(moved.size());
        QTRY_VERIFY(isLike(colourOnTheOther(framed(moved).topLeft() + QPoint(1, 1)), kBorder));
    }

    void regionOfAScreenThatIsGoneForAMomentWaitsForIt()
    {
        const QRect area(other().geometry().topLeft() + QPoint(100, 200), QSize(320, 240));
        dragRegionAt(area);
        QTRY_VERIFY(frame() != nullptr);
        QVERIFY(desktopuser::unplugSecondScreen());
        QTRY_COMPARE(QGuiApplication::screens().size(), 1);
        QTRY_VERIFY(frame() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
        QVERIFY(desktopuser::plugSecondScreen());
        QTRY_COMPARE(QGuiApplication::screens().size(), 2);
        QTRY_VERIFY(frame() != nullptr);
        QCOMPARE(frame()->geometry(), framed(area));
        expectFields(area.size());
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }

    void screenThatIsGoneIsChosenNoMore()
    {
        const MessageCapture messages;
        clickEntry(*openMenu(), 1);
        expectFields(other().geometry().size());
        QVERIFY(desktopuser::unplugSecondScreen());
        QTRY_COMPARE(QGuiApplication::screens().size(), 1);
        expectFields(primary().size());
        QCOMPARE(tile().note() + tile().toolTip(), QString());
        QVERIFY(messages.texts().contains(
            QStringLiteral("[WARNING] The chosen screen \"Left\" is gone; the primary one is used")));
        click(tile());
        QVERIFY(shownWindow<QMenu>() == nullptr);
        QVERIFY(desktopuser::plugSecondScreen());
        QTRY_COMPARE(QGuiApplication::screens().size(), 2);
        QTRY_COMPARE(tile().note(), QStringLiteral("Screen 1"));
        expectFields(primary().size());
    }

private:
    Tile& tile() const { return *child<Tile>(QStringLiteral("fullScreenTile")); }

    static QRect primary() { return QGuiApplication::primaryScreen()->geometry(); }
    static QScreen& other() { return *QGuiApplication::screens().at(1); }

    /// Where a region can be dragged out.
    static QList<QRect> veils()
    {
        QList<QRect> shown;
        for (const QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && qobject_cast<const AreaSelector*>(window) != nullptr)
                shown.append(window->geometry());
        }
        return shown;
    }

    static QRgb colourOnTheOther(const QPoint& position)
    {
        const QPointF inside = position - other().geometry().topLeft();
        return desktopuser::screenshot(other()).pixel((inside * desktopuser::scale()).toPoint()) | 0xff000000;
    }

    QMenu* openMenu() const
    {
        click(tile());
        const bool isOpen = QTest::qWaitFor([] { return shownWindow<QMenu>() != nullptr; });
        desktopuser::waitUntilStill();
        return isOpen ? shownWindow<QMenu>() : nullptr;
    }

    static void clickEntry(const QMenu& menu, qsizetype number)
    {
        click(menu.mapToGlobal(menu.actionGeometry(menu.actions().at(number)).center()));
    }

    void beginRegion() const
    {
        click(*child<Tile>(QStringLiteral("regionTile")));
        QTRY_VERIFY(isVeilActive());
        desktopuser::waitUntilStill();
    }

    void dragRegionAt(const QRect& area) const
    {
        beginRegion();
        drag(area.topLeft(), area.bottomRight());
    }
};

REGISTER_TEST(desktopuser::run<TestSecondScreen>);

#include "test_secondscreen.moc"
