// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/drawwindow.h"
#include "platform/windowing/overlay_window.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

using desktopuser::click;
using desktopuser::drag;
using desktopuser::pointTo;
using desktopuser::scale;
using desktopuser::screenshot;
using desktopuser::waitUntilStill;
using userinput::xdotool;

namespace {

constexpr QRgb kBackdrop = qRgb(10, 200, 30);
constexpr QRgb kBlue = qRgb(0, 122, 204);
constexpr QRgb kRed = qRgb(255, 0, 0);
constexpr QRgb kBar = qRgb(0x28, 0x28, 0x2e);
constexpr int kBorderPx = 4;
/// At positions that are whole pixels at all scales of these tests.
constexpr QRect kGeometry(200, 160, 400, 240);

/// The window below the frame, which counts what reaches it.
class Backdrop : public QWidget
{
public:
    Backdrop() : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint) {}

    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent* /*event*/) override { ++presses; }
};

QPoint inPixels(const QPoint& logical)
{
    return (QPointF(logical) * scale()).toPoint();
}

void dragBy(const QPoint& from, const QPoint& distance)
{
    drag(from, from + distance);
}

bool isLike(QRgb seen, QRgb expected)
{
    // The invisible fill of drawing mode takes the last bit.
    constexpr int kTolerance = 2;
    return std::abs(qRed(seen) - qRed(expected)) <= kTolerance &&
           std::abs(qGreen(seen) - qGreen(expected)) <= kTolerance &&
           std::abs(qBlue(seen) - qBlue(expected)) <= kTolerance;
}

QString named(QRgb colour)
{
    return QColor(colour).name();
}

/// The first pixel of an area, physical, that is on the screen and not of the colour; empty when there is none.
QString otherThan(QRgb expected, const QImage& image, const QRect& wholeArea)
{
    const QRect area = wholeArea & image.rect();
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (!isLike(image.pixel(x, y), expected))
                return QStringLiteral("(%1, %2) is %3").arg(x).arg(y).arg(named(image.pixel(x, y)));
        }
    }
    return {};
}

/// The first pixel of an area, physical, that is neither the border nor what is below nor a mixture of both.
QString otherThanBorderAndBackdrop(const QImage& image, const QRect& area)
{
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QRgb seen = image.pixel(x, y);
            const double share = double(qBlue(seen) - qBlue(kBackdrop)) / (qBlue(kBlue) - qBlue(kBackdrop));
            const auto mixed = [share](int below, int border) { return qRound(below + share * (border - below)); };
            if (!isLike(seen, qRgb(mixed(qRed(kBackdrop), qRed(kBlue)), mixed(qGreen(kBackdrop), qGreen(kBlue)),
                                   qBlue(seen))))
                return QStringLiteral("(%1, %2) is %3").arg(x).arg(y).arg(named(seen));
        }
    }
    return {};
}

int pixelsLike(QRgb expected, const QImage& image, const QRect& area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += isLike(image.pixel(x, y), expected) ? 1 : 0;
    }
    return count;
}

QRect physical(const QRect& logical)
{
    return {inPixels(logical.topLeft()), (QSizeF(logical.size()) * scale()).toSize()};
}

/// What a horizontal stroke fills at every scale, physical.
QRect lineOf(const QPoint& from, int lengthPx)
{
    const QPoint start = inPixels(from);
    return QRect(start, inPixels(from + QPoint(lengthPx, 0))).adjusted(2, -1, -2, 0);
}

QRect insideOf(const QRect& frame)
{
    return frame.adjusted(kBorderPx, kBorderPx, -kBorderPx, -kBorderPx);
}

QWidget* toolBar()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("buttonBackground") && window->isVisible())
            return window;
    }
    return nullptr;
}

/// Where the tool bar has no button.
QPoint emptyPointOfTheBar()
{
    return toolBar()->geometry().topRight() + QPoint(-40, 15);
}

QPoint centreOf(const char* button)
{
    const auto* const found = toolBar()->findChild<QPushButton*>(QLatin1String(button));
    return found->mapToGlobal(found->rect().center());
}

/// How far the border reaches at least, physical: less far where logical pixels are no whole ones, and a window that is
/// cut is cut at whole logical ones.
int borderPx()
{
    const int whole = static_cast<int>(kBorderPx * scale());
    if (scale() == std::floor(scale()))
        return whole;
    const int left = whole - 2;
    return platform::isCompositing() ? left : static_cast<int>(std::floor(left / scale()) * scale());
}

/// The frame, the four strips of its border and nothing else, is where it belongs and as it should look.
QString wrongInTheLook(const QRect& frame)
{
    const QImage image = screenshot();
    const QRect outer = physical(frame);
    const QRect inner = physical(insideOf(frame));
    const int border = borderPx();
    const QRect above(outer.left(), outer.top(), outer.width(), border);
    const QRect below = above.translated(0, outer.height() - border);
    const QRect left(outer.left(), outer.top(), border, outer.height());
    const QRect right = left.translated(outer.width() - border, 0);
    QStringList wrong;
    for (const QRect& strip : {above, below, left, right})
        wrong.append(otherThan(kBlue, image, strip));
    wrong.append(otherThan(kBackdrop, image, inner));
    wrong.append(otherThan(kBackdrop, image, QRect(outer.left(), outer.bottom() + 1, outer.width(), 3)));
    wrong.append(otherThan(kBackdrop, image, QRect(outer.left() - 3, outer.top(), 3, outer.height())));
    wrong.append(otherThan(kBackdrop, image, QRect(outer.right() + 1, outer.top(), 3, outer.height())));
    wrong.removeAll(QString());
    return wrong.join(QStringLiteral(", "));
}

} // namespace

class TestDrawWindowDesktop : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(platform::isCompositing(), !qEnvironmentVariableIsSet("KESTRANO_TEST_WITHOUT_COMPOSITOR"));
        m_backdrop.setStyleSheet(QStringLiteral("background-color: rgb(10, 200, 30)"));
        m_backdrop.setGeometry(QGuiApplication::primaryScreen()->geometry());
        m_backdrop.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_backdrop));
    }

    void init()
    {
        pointTo({3, 3});
        m_window = std::make_unique<DrawWindow>();
        m_window->setGeometry(kGeometry);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        waitUntilStill();
        m_backdrop.presses = 0;
    }

    void cleanup() { m_window.reset(); }

    void standsExactlyWhereItIsPut_data()
    {
        QTest::addColumn<QRect>("geometry");
        QTest::newRow("in the corner") << QRect(0, 30, 400, 240);
        QTest::newRow("smallest") << QRect(300, 200, 200, 150);
    }

    void standsExactlyWhereItIsPut()
    {
        QFETCH(const QRect, geometry);
        m_window->setGeometry(geometry);
        QTRY_COMPARE(wrongInTheLook(geometry), QString());
        QCOMPARE(m_window->geometry(), geometry);
        QCOMPARE(m_window->frameGeometry(), geometry);
        QCOMPARE(toolBar()->geometry(), QRect(geometry.left(), geometry.top() - 30, geometry.width(), 30));
    }

    void isCleanAtOddPositionsToo_data()
    {
        QTest::addColumn<QRect>("geometry");
        QTest::newRow("odd position") << kGeometry.translated(1, 1);
        QTest::newRow("odd size") << kGeometry.adjusted(0, 0, 1, 1);
    }

    /// Where pixels are no whole ones the border may end a pixel further out, but nothing else is ever seen.
    void isCleanAtOddPositionsToo()
    {
        QFETCH(const QRect, geometry);
        m_window->setGeometry(geometry);
        const QRect clear = physical(insideOf(geometry));
        QTRY_COMPARE(otherThan(kBackdrop, screenshot(), clear), QString());
        QCOMPARE(otherThanBorderAndBackdrop(screenshot(), physical(geometry).adjusted(-2, 2, 2, 2)), QString());
        click(centreOf("drawToggleButton"));
        pointTo({3, 3});
        waitUntilStill();
        QCOMPARE(otherThan(kBackdrop, screenshot(), clear), QString());
        QCOMPARE(otherThanBorderAndBackdrop(screenshot(), physical(geometry).adjusted(-2, 2, 2, 2)), QString());
    }

    void mayLiePartlyBelowTheScreen()
    {
        const int bottom = QGuiApplication::primaryScreen()->geometry().height();
        const int down = bottom - 40 - kGeometry.top();
        dragBy(emptyPointOfTheBar(), {0, down});
        QTRY_COMPARE(m_window->geometry(), kGeometry.translated(0, down));
        QTRY_COMPARE(wrongInTheLook(kGeometry.translated(0, down)), QString());
        QCOMPARE(toolBar()->y(), bottom - 70);
    }

    void toolBarIsOnTopOfTheFrame()
    {
        const QPoint position(kGeometry.right() - 40, kGeometry.top() - 15);
        QTRY_COMPARE(named(screenshot().pixel(inPixels(position))), named(kBar));
        QTRY_COMPARE(named(screenshot().pixel(inPixels(kGeometry.topRight() + QPoint(-40, -2)))), named(kBar));
        QVERIFY(isLike(screenshot().pixel(inPixels(kGeometry.topRight() + QPoint(-40, -32))), kBackdrop));
    }

    void standsAboveAFocusedFullScreenWindow()
    {
        QWidget full;
        full.setStyleSheet(QStringLiteral("background-color: rgb(10, 200, 30)"));
        full.showFullScreen();
        QVERIFY(QTest::qWaitForWindowActive(&full));
        waitUntilStill();
        QTRY_COMPARE(wrongInTheLook(kGeometry), QString());
        QVERIFY(full.isActiveWindow());
    }

    void clickOnItLeavesTheFocusWhereItIs()
    {
        m_backdrop.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&m_backdrop));
        click(kGeometry.topLeft() + QPoint(1, 1));
        click(centreOf("drawToggleButton"));
        click(kGeometry.center());
        QTest::qWait(100);
        QVERIFY(m_backdrop.isActiveWindow());
    }

    void givesTheFocusBackWhenItWasActivatedAndIsHidden()
    {
        QLineEdit other;
        other.setGeometry(20, 20, 100, 30);
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        m_window->raise();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_window->hide();
        QTRY_VERIFY(other.isActiveWindow());
        xdotool({"key", "a"});
        QTRY_COMPARE(other.text(), QStringLiteral("a"));
    }

    void toolBarMovesIt()
    {
        const QSignalSpy changed(m_window.get(), &DrawWindow::windowGeometryChanged);
        dragBy(emptyPointOfTheBar(), {80, 40});
        const QRect moved = kGeometry.translated(80, 40);
        QTRY_COMPARE(m_window->geometry(), moved);
        QTRY_COMPARE(wrongInTheLook(moved), QString());
        QTRY_VERIFY(changed.size() >= 4);
        QCOMPARE(changed.constFirst().at(0).toBool(), true);
        // The button's release may come later than the last move.
        QTRY_COMPARE(changed.constLast(),
                     (QVariantList{false, insideOf(moved).topLeft(), insideOf(moved).bottomRight()}));
    }

    void handleResizesIt()
    {
        const QSignalSpy changed(m_window.get(), &DrawWindow::windowGeometryChanged);
        dragBy(kGeometry.topLeft() + QPoint(1, 1), {40, 24});
        const QRect resized = kGeometry.adjusted(40, 24, 0, 0);
        QTRY_COMPARE(m_window->geometry(), resized);
        QTRY_COMPARE(wrongInTheLook(resized), QString());
        QTRY_COMPARE(changed,
                     QList<QVariantList>({{false, insideOf(resized).topLeft(), insideOf(resized).bottomRight()}}));
    }

    void pointerReachesWhatIsBelowTheInsideInFrameMode()
    {
        click(kGeometry.center());
        QTRY_COMPARE(m_backdrop.presses, 1);
        click(kGeometry.topLeft() + QPoint(6, 6));
        QTRY_COMPARE(m_backdrop.presses, 2);
        click(kGeometry.topLeft() + QPoint(2, 2));
        click(kGeometry.bottomRight() - QPoint(2, 2));
        QTest::qWait(100);
        QCOMPARE(m_backdrop.presses, 2);
        QVERIFY(m_window->isVisible());
        QCOMPARE(m_window->geometry(), kGeometry);
    }

    void insideShowsWhatChangesBelow()
    {
        m_backdrop.setStyleSheet(QStringLiteral("background-color: rgb(90, 30, 200)"));
        QTRY_COMPARE(named(screenshot().pixel(inPixels(kGeometry.center()))), named(qRgb(90, 30, 200)));
        click(centreOf("drawToggleButton"));
        m_backdrop.setStyleSheet(QStringLiteral("background-color: rgb(10, 200, 30)"));
        QTRY_VERIFY(isLike(screenshot().pixel(inPixels(kGeometry.center())), kBackdrop));
    }

    void penDrawsWhatIsOnTheScreen()
    {
        click(centreOf("drawToggleButton"));
        pointTo(kGeometry.center());
        QTRY_COMPARE(wrongInTheLook(kGeometry), QString());
        const QPoint from = kGeometry.topLeft() + QPoint(60, 80);
        dragBy(from, {200, 0});
        const QRect line = lineOf(from, 200);
        QTRY_COMPARE(otherThan(kRed, screenshot(), line), QString());
        const QRect aboveLine = physical(QRect(from + QPoint(-20, -60), QSize(240, 57)));
        QCOMPARE(otherThan(kBackdrop, screenshot(), aboveLine), QString());
        QCOMPARE(m_backdrop.presses, 0);
        QCOMPARE(m_window->geometry(), kGeometry);

        click(centreOf("drawToggleButton"));
        QTRY_COMPARE(wrongInTheLook(kGeometry), QString());
        click(kGeometry.center());
        QTRY_COMPARE(m_backdrop.presses, 1);
        click(centreOf("drawToggleButton"));
        QTRY_COMPARE(otherThan(kRed, screenshot(), line), QString());
        click(centreOf("clearButton"));
        pointTo({3, 3});
        QTRY_COMPARE(wrongInTheLook(kGeometry), QString());
    }

    void strokesAreTakenBackWithoutTheKeyboardFocus()
    {
        QPushButton other;
        const QShortcut key(QKeySequence(Qt::CTRL | Qt::Key_Z), &other);
        const QSignalSpy pressed(&key, &QShortcut::activated);
        other.setGeometry(20, 20, 100, 30);
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        click(centreOf("drawToggleButton"));
        const QPoint from = kGeometry.topLeft() + QPoint(60, 80);
        dragBy(from, {200, 0});
        const QRect line = lineOf(from, 200);
        QTRY_COMPARE(otherThan(kRed, screenshot(), line), QString());
        xdotool({"key", "ctrl+z"});
        QTRY_COMPARE(otherThan(kBackdrop, screenshot(), line), QString());
        xdotool({"key", "ctrl+shift+z"});
        QTRY_COMPARE(otherThan(kRed, screenshot(), line), QString());
        click(centreOf("clearButton"));
        QTRY_COMPARE(otherThan(kBackdrop, screenshot(), line), QString());
        click(centreOf("undoButton"));
        QTRY_COMPARE(otherThan(kRed, screenshot(), line), QString());
        xdotool({"key", "ctrl+y"});
        QTRY_COMPARE(otherThan(kBackdrop, screenshot(), line), QString());
        QVERIFY(other.isActiveWindow());
        QCOMPARE(pressed.size(), 0);
        // Without the pen the keys are the other program's.
        click(centreOf("drawToggleButton"));
        xdotool({"key", "ctrl+z"});
        QTRY_COMPARE(pressed.size(), 1);
    }

    void textFieldKeepsItsKeys()
    {
        QLineEdit field;
        field.setGeometry(20, 20, 100, 30);
        field.show();
        QVERIFY(QTest::qWaitForWindowActive(&field));
        click(centreOf("drawToggleButton"));
        const QPoint from = kGeometry.topLeft() + QPoint(60, 80);
        dragBy(from, {200, 0});
        QTRY_COMPARE(otherThan(kRed, screenshot(), lineOf(from, 200)), QString());
        xdotool({"key", "a"});
        QTRY_COMPARE(field.text(), QStringLiteral("a"));
        xdotool({"key", "ctrl+z"});
        QTRY_COMPARE(field.text(), QString());
        QCOMPARE(otherThan(kRed, screenshot(), lineOf(from, 200)), QString());
        // In any other window they are the strokes' again.
        field.setReadOnly(true);
        field.clearFocus();
        xdotool({"key", "ctrl+z"});
        QTRY_COMPARE(otherThan(kBackdrop, screenshot(), lineOf(from, 200)), QString());
    }

    void keyTakesBackOneStrokeWhereTheFrameHasTheFocus()
    {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        click(centreOf("drawToggleButton"));
        const QPoint first = kGeometry.topLeft() + QPoint(60, 80);
        const QPoint second = first + QPoint(0, 40);
        dragBy(first, {200, 0});
        dragBy(second, {200, 0});
        QTRY_COMPARE(otherThan(kRed, screenshot(), lineOf(second, 200)), QString());
        xdotool({"key", "ctrl+z"});
        QTRY_COMPARE(otherThan(kBackdrop, screenshot(), lineOf(second, 200)), QString());
        waitUntilStill();
        QCOMPARE(otherThan(kRed, screenshot(), lineOf(first, 200)), QString());
    }

    void toolBarOfAFrameAroundTheWholeScreenIsReached()
    {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        m_window->setGeometry(screen.adjusted(-kBorderPx, -kBorderPx, kBorderPx, kBorderPx));
        // As after a region was chosen.
        m_window->raise();
        QTRY_VERIFY(screen.contains(toolBar()->geometry()));
        QTRY_COMPARE(named(screenshot().pixel(inPixels(emptyPointOfTheBar() + QPoint(10, 0)))), named(kBar));
        auto* const pen = toolBar()->findChild<QPushButton*>(QStringLiteral("drawToggleButton"));
        click(centreOf("drawToggleButton"));
        QTRY_VERIFY(pen->isChecked());
        const QPoint from = kGeometry.topLeft() + QPoint(60, 80);
        dragBy(from, {200, 0});
        QTRY_COMPARE(otherThan(kRed, screenshot(), lineOf(from, 200)), QString());
        click(centreOf("drawToggleButton"));
        QTRY_VERIFY(!pen->isChecked());
        click(centreOf("closeButton"));
        QTRY_VERIFY(!m_window->isVisible());
        QCOMPARE(m_backdrop.presses, 0);
    }

    void strokeIsSeenWhileItIsDrawn()
    {
        click(centreOf("drawToggleButton"));
        const QPoint from = kGeometry.topLeft() + QPoint(60, 80);
        pointTo(from);
        QTest::qWait(60);
        xdotool({"mousedown", "1"});
        pointTo(from + QPoint(50, 50));
        QTest::qWait(60);
        pointTo(from + QPoint(100, 0));
        const QRect around = physical(QRect(from, QSize(100, 60)));
        QTRY_VERIFY(pixelsLike(kRed, screenshot(), around) > 50);
        const QImage image = screenshot();
        QVERIFY(isLike(image.pixel(inPixels(from + QPoint(50, 10))), kBackdrop));
        xdotool({"mouseup", "1"});
    }

    void strokeThatIsBrokenOffIsGoneWithTheNextOne()
    {
        click(centreOf("drawToggleButton"));
        const QPoint kept = kGeometry.topLeft() + QPoint(60, 40);
        dragBy(kept, {200, 0});
        const QPoint broken = kGeometry.topLeft() + QPoint(60, 80);
        pointTo(broken);
        xdotool({"mousedown", "1"});
        QTest::qWait(60);
        pointTo(broken + QPoint(200, 0));
        QTRY_COMPARE(otherThan(kRed, screenshot(), lineOf(broken, 200)), QString());
        m_window->hide();
        xdotool({"mouseup", "1"});
        m_window->show();
        const QPoint next = kGeometry.topLeft() + QPoint(60, 120);
        dragBy(next, {200, 0});
        QTRY_COMPARE(otherThan(kRed, screenshot(), lineOf(next, 200)), QString());
        QCOMPARE(otherThan(kRed, screenshot(), lineOf(kept, 200)), QString());
        QCOMPARE(otherThan(kBackdrop, screenshot(), lineOf(broken, 200)), QString());
    }

    void penDrawsWhereTheFrameWasMovedTo()
    {
        click(centreOf("drawToggleButton"));
        dragBy(emptyPointOfTheBar(), {80, 40});
        QTRY_COMPARE(m_window->geometry(), kGeometry.translated(80, 40));
        const QPoint from = m_window->geometry().bottomRight() - QPoint(240, 20);
        dragBy(from, {200, 0});
        QTRY_COMPARE(otherThan(kRed, screenshot(), lineOf(from, 200)), QString());
        // Where it was, nothing takes the pointer any more.
        click(kGeometry.topLeft() + QPoint(40, 20));
        QTRY_COMPARE(m_backdrop.presses, 1);
    }

    void rightClickClosesIt_data()
    {
        QTest::addColumn<bool>("pen");
        QTest::addColumn<QPoint>("position");
        QTest::newRow("on the border") << false << kGeometry.topLeft() + QPoint(2, 2);
        QTest::newRow("inside, with the pen") << true << kGeometry.center();
    }

    void rightClickClosesIt()
    {
        QFETCH(const bool, pen);
        QFETCH(const QPoint, position);
        if (pen)
            click(centreOf("drawToggleButton"));
        click(position, "3");
        QTRY_VERIFY(!m_window->isVisible());
        QVERIFY(toolBar() == nullptr);
        QTRY_COMPARE(otherThan(kBackdrop, screenshot(), physical(kGeometry.adjusted(0, -30, 0, 0))), QString());
        click(kGeometry.center());
        QTRY_COMPARE(m_backdrop.presses, 1);
    }

    void hiddenWithThePenOnItTakesNoPointer()
    {
        click(centreOf("drawToggleButton"));
        m_window->hide();
        waitUntilStill();
        click(kGeometry.center());
        QTRY_COMPARE(m_backdrop.presses, 1);
        m_window->show();
        waitUntilStill();
        click(kGeometry.center());
        QTest::qWait(100);
        QCOMPARE(m_backdrop.presses, 1);
    }

    void closeButtonHidesIt()
    {
        const QSignalSpy hidden(m_window.get(), &DrawWindow::hideDrawWindow);
        click(centreOf("closeButton"));
        QTRY_VERIFY(!m_window->isVisible());
        QCOMPARE(hidden.size(), 1);
        QTRY_COMPARE(otherThan(kBackdrop, screenshot(), physical(kGeometry.adjusted(0, -30, 0, 0))), QString());
    }

    void recordingButtonIsPressed()
    {
        const QSignalSpy started(m_window.get(), &DrawWindow::startRecording);
        const QSignalSpy stopped(m_window.get(), &DrawWindow::stopRecording);
        click(centreOf("startButton"));
        QTRY_COMPARE(started.size(), 1);
        click(centreOf("startButton"));
        QTRY_COMPARE(stopped.size(), 1);
        QCOMPARE(started.size(), 1);
    }

    void cursorFollowsThePointer()
    {
        const auto expectAt = [this](const QPoint& position, Qt::CursorShape shape) {
            pointTo(kGeometry.topLeft() + position);
            QTRY_COMPARE(m_window->cursor().shape(), shape);
        };
        expectAt({2, 2}, Qt::SizeFDiagCursor);
        expectAt({kGeometry.width() - 2, 120}, Qt::SizeHorCursor);
        click(centreOf("drawToggleButton"));
        expectAt({200, 120}, Qt::CrossCursor);
    }

    void tipsStandAboveTheToolBarAndNotInTheRecording()
    {
        for (const char* const name : {"drawToggleButton", "clearButton", "startButton", "closeButton"}) {
            pointTo(centreOf(name));
            QTRY_VERIFY2(tip() != nullptr, name);
            QVERIFY2(tip()->geometry().bottom() < toolBar()->geometry().top(), name);
            QVERIFY2(tip()->geometry().top() >= 0, name);
            pointTo({3, 3});
            QTRY_VERIFY2(tip() == nullptr, name);
        }
    }

    void tipWithoutRoomAboveStaysOutOfARecording()
    {
        m_window->setGeometry(kGeometry.left(), 30, kGeometry.width(), kGeometry.height());
        pointTo(centreOf("clearButton"));
        QTRY_VERIFY(tip() != nullptr);
        pointTo({3, 300});
        QTRY_VERIFY(tip() == nullptr);
        m_window->setRecording(true);
        pointTo(centreOf("clearButton"));
        QTRY_VERIFY(tip() != nullptr);
        QVERIFY(!tip()->geometry().intersects(m_window->geometry()));
        QVERIFY(!tip()->geometry().intersects(toolBar()->geometry()));
    }

    void recordedFrameIsNotSeenWhileItIsMoved_data()
    {
        QTest::addColumn<bool>("pen");
        QTest::newRow("without the pen") << false;
        QTest::newRow("with the pen") << true;
    }

    void recordedFrameIsNotSeenWhileItIsMoved()
    {
        QFETCH(const bool, pen);
        if (pen)
            click(centreOf("drawToggleButton"));
        m_window->setRecording(true);
        m_window->setInsideRecorded(true);
        const QPoint grip = emptyPointOfTheBar();
        pointTo(grip);
        xdotool({"mousedown", "1"});
        const auto moveBy = [&](int steps) {
            pointTo(grip + QPoint(5 * steps, 3 * steps));
            QTRY_COMPARE(m_window->geometry(), kGeometry.translated(5 * steps, 3 * steps));
        };
        for (int steps = 1; steps <= 12; ++steps)
            moveBy(steps);
        // A look that comes so late that the frame may be at rest proves nothing.
        constexpr int kWellBeforeRestMs = 150;
        constexpr int kMostLooks = 50;
        QImage seen;
        QRect moved;
        for (int look = 0; look < kMostLooks && seen.isNull(); ++look) {
            const int steps = 11 + look % 2;
            QElapsedTimer sinceMove;
            sinceMove.start();
            moveBy(steps);
            moved = kGeometry.translated(5 * steps, 3 * steps);
            seen = sinceMove.elapsed() < kWellBeforeRestMs ? screenshot() : QImage();
            if (sinceMove.elapsed() >= kWellBeforeRestMs)
                seen = QImage();
        }
        QVERIFY(!seen.isNull());
        const QRect all = physical(kGeometry.united(moved).adjusted(0, -30, 0, 0));
        QCOMPARE(otherThan(kBackdrop, seen, all), QString());
        // At rest it is there again, though it is still held.
        QTRY_COMPARE(wrongInTheLook(moved), QString());
        pointTo(grip + QPoint(80, 40));
        QTRY_COMPARE(m_window->geometry(), kGeometry.translated(80, 40));
        xdotool({"mouseup", "1"});
        QTRY_COMPARE(wrongInTheLook(kGeometry.translated(80, 40)), QString());
    }

private:
    static QWidget* tip()
    {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->inherits("QTipLabel") && window->isVisible())
                return window;
        }
        return nullptr;
    }

    Backdrop m_backdrop;
    std::unique_ptr<DrawWindow> m_window;
};

REGISTER_TEST(testrun::gui<TestDrawWindowDesktop>);

#include "test_drawwindow_desktop.moc"
