// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/drawwindow.h"
#include "tests/support/messagecapture.h"
#include "tests/support/pointerevents.h"
#include "tests/support/testrun.h"
#include "tests/support/widgetimage.h"
#include "widgets/tooltip.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

#include <cmath>

using pointerevents::drag;
using pointerevents::enter;
using pointerevents::leave;
using pointerevents::mouse;
using pointerevents::moveHeld;
using pointerevents::press;
using pointerevents::release;

namespace {

constexpr QColor kBlue(0, 122, 204, 255);
constexpr QRect kGeometry(150, 120, 400, 300);

/// Puts a mark before every text, which distinguishes translated texts from others.
class MarkingTranslator : public QTranslator
{
public:
    QString translate(const char*, const char* text, const char*, int) const override
    {
        return u'~' + QString::fromUtf8(text);
    }
    bool isEmpty() const override { return false; }
};

QWidget* toolBar()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("buttonBackground"))
            return window;
    }
    return nullptr;
}

/// As the pointer does that rests on it.
void showTip(QWidget& part)
{
    QHelpEvent event(QEvent::ToolTip, QPoint(), part.mapToGlobal(QPoint()));
    QApplication::sendEvent(&part, &event);
}

QPushButton* button(const char* name)
{
    return toolBar()->findChild<QPushButton*>(QLatin1String(name));
}

QLabel* timerLabel()
{
    return toolBar()->findChild<QLabel*>(QStringLiteral("timerLabel"));
}

void click(const char* name)
{
    QTest::mouseClick(button(name), Qt::LeftButton);
}

/// What the icon looks like. Without the SVG plug-in all are blank.
QImage render(const QIcon& icon)
{
    return icon.pixmap(24, 24).toImage();
}

bool shows(const QPushButton* button, const char* image)
{
    const QImage expected = render(QIcon(QStringLiteral(":/res/forms/images/%1.svg").arg(QLatin1String(image))));
    return render(button->icon()) == expected;
}

QImage frame(const QSize& size, int borderPx)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.fillRect(QRect(QPoint(), size), kBlue);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(QRect(QPoint(), size).adjusted(borderPx, borderPx, -borderPx, -borderPx), Qt::transparent);
    return image;
}

/// The frame in drawing mode with some lines drawn on it.
QImage drawnFrame(const QSize& size, const QList<QPolygonF>& lines)
{
    QImage image = frame(size, 4);
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(QRect(QPoint(), size).adjusted(4, 4, -4, -4), QColor(0, 0, 0, 1));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::red, 2));
    for (const QPolygonF& line : lines)
        painter.drawPolyline(line);
    return image;
}

QPolygonF line(std::initializer_list<QPointF> points)
{
    return {QList<QPointF>(points)};
}

bool hasBorder(DrawWindow& window)
{
    return imageOf(window).pixelColor(1, 1) == kBlue;
}

using Report = QVariantList;

Report report(bool isMoving, const QRect& inside)
{
    return {isMoving, inside.topLeft(), inside.bottomRight()};
}

struct PaintCounter : QObject
{
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

    int count = 0;
};

} // namespace

class TestDrawWindow : public QObject
{
    Q_OBJECT

private slots:
    void isATopLevelWindowWithoutFrameThatStaysOnTop()
    {
        const DrawWindow window;
        QVERIFY(window.isWindow());
        QVERIFY(window.parentWidget() == nullptr);
        QCOMPARE(window.windowFlags() & ~Qt::Window,
                 (Qt::SubWindow | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) & ~Qt::Window);
        QCOMPARE(window.windowTitle(), QStringLiteral("Drawing Window"));
        QCOMPARE(window.minimumSize(), QSize(200, 150));
        QVERIFY(window.testAttribute(Qt::WA_TranslucentBackground));
        QVERIFY(window.testAttribute(Qt::WA_StaticContents));
        QVERIFY(window.testAttribute(Qt::WA_MouseTracking));
        QVERIFY(!window.isVisible());
    }

    void startsWithItsFirstGeometryAndValues()
    {
        const DrawWindow window;
        QCOMPARE(window.geometry(), QRect(100, 100, 800, 600));
        QCOMPARE(window.property("lockRatio"), QVariant(false));
        QCOMPARE(window.property("borderWidth"), QVariant(4));
        QVERIFY(!window.isRecording());
    }

    void toolBarHoldsItsPartsFromLeftToRight()
    {
        const DrawWindow window;
        QVERIFY(toolBar() != nullptr);
        QCOMPARE(toolBar()->windowFlags() & ~Qt::Window,
                 (Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) & ~Qt::Window);
        QVERIFY(toolBar()->testAttribute(Qt::WA_AlwaysShowToolTips));
        const auto* const layout = qobject_cast<QHBoxLayout*>(toolBar()->layout());
        QVERIFY(layout != nullptr);
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(layout->spacing(), 0);
        QCOMPARE(layout->alignment(), Qt::AlignLeft);
        QStringList names;
        for (int index = 0; index < layout->count(); ++index)
            names.append(layout->itemAt(index)->widget()->objectName());
        QCOMPARE(names, QStringList({"drawToggleButton", "clearButton", "timerLabel", "startButton", "closeButton"}));
        QCOMPARE(timerLabel()->text(), QStringLiteral("00:00:00"));
        QCOMPARE(timerLabel()->size(), QSize(100, 30));
        QCOMPARE(timerLabel()->alignment(), Qt::AlignCenter);
        QCOMPARE(layout->itemAt(2)->alignment(), Qt::AlignCenter);
    }

    void buttonsSayWhatTheyDo_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("checkable");
        QTest::addColumn<QString>("image");
        QTest::newRow("drawToggleButton") << "Start Drawing" << true << "pen";
        QTest::newRow("clearButton") << "Clear Drawing" << false << "clear";
        QTest::newRow("startButton") << "Start Recording" << true << "start-recording";
        QTest::newRow("closeButton") << "Close Window" << false << "close";
    }

    void buttonsSayWhatTheyDo()
    {
        QFETCH(const QString, text);
        QFETCH(const bool, checkable);
        QFETCH(const QString, image);
        DrawWindow window;
        const QPushButton* const looked = button(QTest::currentDataTag());
        QCOMPARE(looked->size(), QSize(30, 30));
        QCOMPARE(looked->text(), QString());
        QCOMPARE(looked->isCheckable(), checkable);
        QVERIFY(looked->testAttribute(Qt::WA_Hover));
        QVERIFY(shows(looked, qPrintable(image)));
        QCOMPARE(looked->toolTip(), text);
        QCOMPARE(looked->accessibleName(), text);

        MarkingTranslator translator;
        QApplication::installTranslator(&translator);
        QApplication::processEvents();
        QCOMPARE(looked->toolTip(), u'~' + text);
        QCOMPARE(looked->accessibleName(), u'~' + text);
        QApplication::removeTranslator(&translator);
    }

    void languageChangeKeepsWhatTheRecordingButtonDoesNow()
    {
        DrawWindow window;
        window.setRecording(true);
        MarkingTranslator translator;
        QApplication::installTranslator(&translator);
        QApplication::processEvents();
        QCOMPARE(button("startButton")->toolTip(), QStringLiteral("~Stop Recording"));
        QApplication::removeTranslator(&translator);
    }

    void styleSheetIsGivenToEveryPart()
    {
        const MessageCapture messages;
        const DrawWindow window;
        QCOMPARE(messages.texts(),
                 QStringList(QStringLiteral("Loaded draw window stylesheet from: :/res/style/draw-window.qss")));
        QVERIFY(!window.styleSheet().isEmpty());
        QCOMPARE(toolBar()->styleSheet(), window.styleSheet());
        QCOMPARE(timerLabel()->styleSheet(), window.styleSheet());
        for (const char* const name : {"drawToggleButton", "clearButton", "startButton", "closeButton"})
            QCOMPARE(button(name)->styleSheet(), window.styleSheet());
    }

    void isShownAndHiddenWithItsToolBar()
    {
        DrawWindow window;
        QVERIFY(!toolBar()->isVisible());
        window.show();
        QVERIFY(window.isVisible());
        QVERIFY(toolBar()->isVisible());
        const QWidgetList parts{timerLabel(), button("drawToggleButton"), button("clearButton"), button("startButton"),
                                button("closeButton")};
        for (const QWidget* const part : parts)
            QVERIFY(part->isVisible());
        window.hide();
        QVERIFY(!window.isVisible());
        QVERIFY(!toolBar()->isVisible());
        for (const QWidget* const part : parts)
            QVERIFY(part->isHidden());
        window.show();
        for (const QWidget* const part : parts)
            QVERIFY(part->isVisible());
    }

    void toolBarIsOnTopOfTheFrameAndAsWide()
    {
        DrawWindow window;
        window.show();
        QCOMPARE(toolBar()->geometry(), QRect(100, 70, 800, 30));
        window.setGeometry(kGeometry);
        QCOMPARE(toolBar()->geometry(), QRect(150, 90, 400, 30));
        window.resize(200, 150);
        QCOMPARE(toolBar()->geometry(), QRect(150, 90, 200, 30));
    }

    void toolBarWithoutRoomAboveIsBelowTheFrame()
    {
        DrawWindow window;
        window.show();
        window.setGeometry(QRect(QPoint(), kGeometry.size()));
        QCOMPARE(toolBar()->geometry(), QRect(0, 300, 400, 30));
        window.move(0, 30);
        QCOMPARE(toolBar()->geometry(), QRect(0, 0, 400, 30));
    }

    void toolBarOfAFrameAroundTheWholeScreenIsInsideWhileItIsNotRecorded()
    {
        DrawWindow window;
        const QRect screen = window.screen()->geometry();
        window.setGeometry(screen.adjusted(-4, -4, 4, 4));
        window.show();
        const QRect bar = toolBar()->geometry();
        QVERIFY(screen.contains(bar));
        QCOMPARE(bar.right(), screen.right() - 4);
        QCOMPARE(bar.top(), screen.top() + 4);
        for (const QPushButton* const part : toolBar()->findChildren<QPushButton*>()) {
            if (part->isVisible())
                QVERIFY2(toolBar()->rect().contains(QRect(part->mapTo(toolBar(), QPoint()), part->size())),
                         qPrintable(part->objectName()));
        }
        window.setInsideRecorded(true, true);
        QCOMPARE(toolBar()->geometry(), bar);
        window.setInsideRecorded(true, false);
        QVERIFY(!toolBar()->geometry().intersects(screen));
        window.setInsideRecorded(false);
        QCOMPARE(toolBar()->geometry(), bar);
    }

    void tipsOfABarThatTheSystemLeavesOutStayOutOfTheVideo()
    {
        DrawWindow window(nullptr, [](QWidget&, bool) { return true; });
        window.setGeometry(window.screen()->geometry());
        window.show();
        window.setRecording(true);
        // The frames are without the bar and its tips.
        window.setInsideRecorded(true, true);
        const QRect bar = toolBar()->geometry();
        QVERIFY(window.geometry().contains(bar));
        showTip(*button("closeButton"));
        QVERIFY(visibleToolTip() != nullptr);
        // Only the bar's window is left out.
        window.setInsideRecorded(true, false);
        QCOMPARE(toolBar()->geometry(), bar);
        showTip(*button("closeButton"));
        QVERIFY(visibleToolTip() == nullptr);
    }

    void toolBarInsideTakesThePointerThere()
    {
        DrawWindow window;
        window.setGeometry(window.screen()->geometry());
        window.show();
        button("drawToggleButton")->setChecked(true);
        const QImage image = imageOf(window);
        QCOMPARE(image.pixelColor(image.rect().center()).alpha(), 1);
        QCOMPARE(image.pixelColor(toolBar()->geometry().center() - window.pos()).alpha(), 0);
    }

    void toolBarThatIsDraggedStaysUnderThePointerUntilItIsReleased()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        const QPoint from = toolBar()->geometry().center();
        press(*toolBar(), from);
        moveHeld(*toolBar(), from - QPoint(0, 110));
        QCOMPARE(toolBar()->geometry(), QRect(150, -20, 400, 30));
        release(*toolBar(), from - QPoint(0, 110));
        QCOMPARE(toolBar()->geometry(), QRect(150, 310, 400, 30));
    }

    void toolBarIsInItsPlaceWhenTheEndOfItsDragIsReported()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        QRect reported;
        connect(&window, &DrawWindow::windowGeometryChanged, this, [&](bool isMoving) {
            if (!isMoving)
                reported = window.toolBarGeometry();
        });
        // There is no room above the frame any more.
        drag(*toolBar(), toolBar()->geometry().center(), {0, -kGeometry.y()});
        QCOMPARE(window.y(), 0);
        QCOMPARE(reported, QRect(kGeometry.x(), kGeometry.height(), kGeometry.width(), 30));
        QCOMPARE(toolBar()->geometry(), reported);
    }

    void toolBarIsPositionedWhenShown()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        toolBar()->move(0, 0);
        window.show();
        QCOMPARE(toolBar()->geometry(), QRect(150, 90, 400, 30));
    }

    void timeIsShown()
    {
        DrawWindow window;
        window.setTimeText(QStringLiteral("01:02:03"));
        QCOMPARE(timerLabel()->text(), QStringLiteral("01:02:03"));
    }

    void cursorFollowsTheHitAreas_data()
    {
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<Qt::CursorShape>("shape");
        QTest::newRow("top left") << QPoint(9, 9) << Qt::SizeFDiagCursor;
        QTest::newRow("inside") << QPoint(10, 10) << Qt::SizeAllCursor;
    }

    void cursorFollowsTheHitAreas()
    {
        QFETCH(const QPoint, position);
        QFETCH(const Qt::CursorShape, shape);
        DrawWindow window;
        window.setGeometry(kGeometry);
        mouse(window, QEvent::MouseMove, kGeometry.topLeft() + position);
        QCOMPARE(window.cursor().shape(), shape);
        button("drawToggleButton")->setChecked(true);
        QCOMPARE(window.cursor().shape(), Qt::CrossCursor);
        mouse(window, QEvent::MouseMove, kGeometry.topLeft() + position);
        QCOMPARE(window.cursor().shape(), Qt::CrossCursor);
        button("drawToggleButton")->setChecked(false);
        QCOMPARE(window.cursor().shape(), Qt::ArrowCursor);
    }

    void handleResizesAndInsideMoves_data()
    {
        QTest::addColumn<QPoint>("handle");
        QTest::addColumn<QRect>("resized");
        QTest::newRow("top left") << QPoint(2, 2) << kGeometry.adjusted(20, 10, 0, 0);
        QTest::newRow("move") << QPoint(200, 150) << kGeometry.translated(20, 10);
    }

    void handleResizesAndInsideMoves()
    {
        QFETCH(const QPoint, handle);
        QFETCH(const QRect, resized);
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        const QPoint from = kGeometry.topLeft() + handle;
        press(window, from);
        moveHeld(window, from + QPoint(7, -3));
        moveHeld(window, from + QPoint(20, 10));
        QCOMPARE(window.geometry(), resized);
        QCOMPARE(toolBar()->geometry(), QRect(resized.left(), resized.top() - 30, resized.width(), 30));
        QCOMPARE(changed.size(), 0);
        release(window, from + QPoint(20, 10));
        QCOMPARE(changed, QList<Report>{report(false, resized.adjusted(4, 4, -4, -4))});
        moveHeld(window, from + QPoint(90, 90));
        QCOMPARE(window.geometry(), resized);
    }

    void bottomRightCornerDraggedInwardStopsAtTheMinimumAnchoredAtTheTopLeft()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        drag(window, kGeometry.bottomRight(), {-350, -280});
        QCOMPARE(window.geometry(), QRect(kGeometry.topLeft(), QSize(200, 150)));
    }

    void lockedRightEdgeChangesTheHeightEvenlyAboutTheMiddle()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        QVERIFY(window.setProperty("lockRatio", true));
        drag(window, {kGeometry.right(), kGeometry.center().y()}, {80, 0});
        QCOMPARE(window.geometry(), kGeometry.adjusted(0, -30, 80, 30));
        window.setLockRatio(false);
        drag(window, {window.geometry().right(), kGeometry.center().y()}, {20, 0});
        QCOMPARE(window.geometry(), kGeometry.adjusted(0, -30, 100, 30));
    }

    void lockedRatioIsTheOneThatWasLockedHoweverTheAreaIsRounded()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.setLockRatio(true);
        const double ratio = double(kGeometry.width()) / kGeometry.height();
        // As the owner does, whose areas have even sizes.
        connect(&window, &DrawWindow::windowGeometryChanged, &window, [&window](bool isMoving) {
            if (!isMoving)
                window.resize((window.width() + 3) / 4 * 4, (window.height() + 1) / 2 * 2);
        });
        for (int times = 0; times < 20; ++times)
            drag(window, window.geometry().bottomRight(), {times % 2 == 0 ? 13 : -14, 0});
        QVERIFY2(std::abs(window.width() - window.height() * ratio) <= 4.5,
                 qPrintable(QStringLiteral("%1 x %2").arg(window.width()).arg(window.height())));
        // Another size has another ratio.
        window.setGeometry(QRect(kGeometry.topLeft(), QSize(400, 400)));
        drag(window, window.geometry().bottomRight(), {40, 0});
        QCOMPARE(window.size(), QSize(440, 440));
    }

    void keysKeepTheRatioThatTheFrameWasGivenAfterItWasLocked()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.setLockRatio(true);
        window.setGeometry(QRect(kGeometry.topLeft(), QSize(400, 400)));
        window.show();
        QTest::keyClick(&window, Qt::Key_Right, Qt::ControlModifier);
        QCOMPARE(window.size(), QSize(410, 410));
    }

    void lockedRatioIsThatOfTheFrameOnceItWasCut()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.setLockRatio(true);
        // As the owner does at the edge of a screen.
        const auto cut = connect(&window, &DrawWindow::windowGeometryChanged, &window,
                                 [&window] { window.resize(window.width(), 200); });
        drag(window, kGeometry.bottomRight(), {0, 0});
        disconnect(cut);
        drag(window, window.geometry().bottomRight(), {40, 0});
        QCOMPARE(window.size(), QSize(440, 220));
    }

    void draggedFrameStaysInTheAvailableAreaButForTheToolBarsHeightBelow()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        const QRect available = window.screen()->availableGeometry();
        drag(window, kGeometry.center(), {-5000, -5000});
        QCOMPARE(window.pos(), available.topLeft());
        QCOMPARE(toolBar()->y(), available.top() + 300);
        drag(window, window.geometry().center(), {5000, 5000});
        QCOMPARE(window.pos(),
                 QPoint(available.left() + available.width() - 400, available.top() + available.height() + 30 - 300));
    }

    void clickOnTheFrameReportsItsArea()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        drag(window, kGeometry.topLeft(), {0, 0});
        QCOMPARE(changed, QList<Report>{report(false, kGeometry.adjusted(4, 4, -4, -4))});
    }

    void reportedAreaIsInsideAnyBorder()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        QVERIFY(window.setProperty("borderWidth", 10));
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        drag(window, kGeometry.topLeft(), {0, 0});
        QCOMPARE(changed, QList<Report>{report(false, kGeometry.adjusted(10, 10, -10, -10))});
    }

    void otherButtonsOnTheFrameDoNothing()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        const QPoint position = kGeometry.topLeft();
        mouse(window, QEvent::MouseButtonPress, position, Qt::MiddleButton, Qt::MiddleButton);
        mouse(window, QEvent::MouseMove, position + QPoint(30, 30), Qt::NoButton, Qt::MiddleButton);
        mouse(window, QEvent::MouseButtonRelease, position + QPoint(30, 30), Qt::MiddleButton);
        QCOMPARE(window.geometry(), kGeometry);
        QCOMPARE(changed.size(), 0);
        press(window, position);
        mouse(window, QEvent::MouseButtonRelease, position, Qt::MiddleButton, Qt::LeftButton);
        moveHeld(window, position + QPoint(5, 5));
        QCOMPARE(window.geometry(), kGeometry.adjusted(5, 5, 0, 0));
        release(window, position + QPoint(5, 5));
    }

    void rightClickClosesTheFrameAlsoInDrawingMode_data()
    {
        QTest::addColumn<bool>("drawing");
        QTest::newRow("frame mode") << false;
        QTest::newRow("drawing mode") << true;
    }

    void rightClickClosesTheFrameAlsoInDrawingMode()
    {
        QFETCH(const bool, drawing);
        DrawWindow window;
        window.show();
        button("drawToggleButton")->setChecked(drawing);
        const QSignalSpy hidden(&window, &DrawWindow::hideDrawWindow);
        mouse(window, QEvent::MouseButtonPress, window.geometry().center(), Qt::RightButton, Qt::RightButton);
        QVERIFY(!window.isVisible());
        QVERIFY(!toolBar()->isVisible());
        QCOMPARE(hidden.size(), 0);
        window.show();
        QVERIFY(toolBar()->isVisible());
        QVERIFY(button("closeButton")->isVisible());
    }

    void neitherFrameNorToolBarKeepsTheProgramRunning()
    {
        DrawWindow window;
        QVERIFY(!window.testAttribute(Qt::WA_QuitOnClose));
        QVERIFY(!toolBar()->testAttribute(Qt::WA_QuitOnClose));
    }

    void toolBarDragsTheFrame()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        const QPoint from = toolBar()->geometry().center();
        press(*toolBar(), from);
        QCOMPARE(changed.size(), 0);
        moveHeld(*toolBar(), from + QPoint(10, 5));
        moveHeld(*toolBar(), from + QPoint(20, -300));
        QCOMPARE(window.geometry(), kGeometry.translated(20, -300));
        QCOMPARE(toolBar()->pos(), window.pos() - QPoint(0, 30));
        release(*toolBar(), from + QPoint(20, -300));
        moveHeld(*toolBar(), from);
        const QRect inside = kGeometry.adjusted(4, 4, -4, -4);
        QCOMPARE(changed,
                 (QList<Report>{report(true, inside.translated(10, 5)), report(true, inside.translated(20, -300)),
                                report(false, inside.translated(20, -300))}));
        QCOMPARE(window.geometry(), kGeometry.translated(20, -300));
    }

    void toolBarDragsTheFrameInDrawingModeToo()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        button("drawToggleButton")->setChecked(true);
        drag(*toolBar(), toolBar()->geometry().center(), {20, 30});
        QCOMPARE(window.geometry(), kGeometry.translated(20, 30));
    }

    void toolBarDragStaysBetweenTheSidesOfTheScreenOnly()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        const QRect available = window.screen()->availableGeometry();
        drag(*toolBar(), toolBar()->geometry().center(), {-5000, -5000});
        QCOMPARE(window.pos(), QPoint(available.left(), kGeometry.y() - 5000));
        drag(*toolBar(), toolBar()->geometry().center(), {9000, 9000});
        QCOMPARE(window.pos(), QPoint(available.left() + available.width() - 400, kGeometry.y() + 4000));
    }

    void arrowKeysMoveTheFrameAndWithControlResizeIt()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        QTest::keyClick(&window, Qt::Key_Right);
        QTest::keyClick(&window, Qt::Key_Up, Qt::ShiftModifier);
        const QRect moved = kGeometry.translated(10, -1);
        QCOMPARE(window.geometry(), moved);
        QCOMPARE(toolBar()->pos(), moved.topLeft() - QPoint(0, 30));
        QCOMPARE(changed.last(), report(false, moved.adjusted(4, 4, -4, -4)));
        QTest::keyClick(&window, Qt::Key_Down, Qt::ControlModifier);
        QTest::keyClick(&window, Qt::Key_Left, Qt::ControlModifier | Qt::ShiftModifier);
        const QRect resized = moved.adjusted(0, 0, -1, 10);
        QCOMPARE(window.geometry(), resized);
        QCOMPARE(changed.last(), report(false, resized.adjusted(4, 4, -4, -4)));
    }

    void recordedInsideIsMovedByKeysAndKeepsItsSize()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        window.setInsideRecorded(true);
        window.takeKeyboard();
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        QTest::keyClick(&window, Qt::Key_Right, Qt::ControlModifier);
        QTest::keyClick(&window, Qt::Key_Left);
        // Out of the frames first.
        QVERIFY(!hasBorder(window));
        QTRY_COMPARE(window.geometry(), kGeometry.translated(-10, 0));
        QTRY_VERIFY(hasBorder(window));
        QCOMPARE(changed.last(), report(false, window.geometry().adjusted(4, 4, -4, -4)));
    }

    /// They may be meant for what is recorded.
    void recordedInsideIsMovedByKeysOnlyWhileItHasTakenTheKeyboard()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        window.activateWindow();
        QTRY_VERIFY(window.hasKeyboard());
        window.setInsideRecorded(true);
        QTest::keyClick(&window, Qt::Key_Left);
        QVERIFY(hasBorder(window));
        QWidget other;
        window.takeKeyboard();
        other.show();
        other.activateWindow();
        // On Windows the system knows before Qt does.
        QTRY_COMPARE(QApplication::activeWindow(), &other);
        QTRY_VERIFY(!window.hasKeyboard());
        window.activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), &window);
        QTRY_VERIFY(window.hasKeyboard());
        QTest::keyClick(&window, Qt::Key_Left);
        QVERIFY(hasBorder(window));
        window.takeKeyboard();
        toolBar()->activateWindow();
        QTRY_VERIFY(toolBar()->isActiveWindow());
        QTest::keyClick(toolBar(), Qt::Key_Left);
        QTRY_COMPARE(window.geometry(), kGeometry.translated(-10, 0));
    }

    void tabLeadsFromTheFrameThroughItsToolBar()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        window.takeKeyboard();
        QTRY_VERIFY(window.hasKeyboard());
        QWidget* focused = &window;
        for (const char* name : {"drawToggleButton", "clearButton", "startButton", "closeButton", "drawToggleButton"}) {
            QTest::keyClick(focused, Qt::Key_Tab);
            QTRY_COMPARE(QApplication::focusWidget(), button(name));
            focused = button(name);
        }
        QVERIFY(window.hasKeyboard());
        QTest::keyClick(focused, Qt::Key_Space);
        QVERIFY(button("drawToggleButton")->isChecked());
        QTest::keyClick(&window, Qt::Key_Backtab);
        QTRY_COMPARE(QApplication::focusWidget(), button("closeButton"));
    }

    void recordedInsideIsHiddenWhileDraggingAndVisibleAtRest()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        window.setInsideRecorded(true);
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        QVERIFY(hasBorder(window));
        const QPoint from = kGeometry.topLeft() + QPoint(300, -15);
        press(*toolBar(), from);
        moveHeld(*toolBar(), from + QPoint(10, 5));
        moveHeld(*toolBar(), from + QPoint(20, 10));
        QVERIFY(!toolBar()->mask().isEmpty());
        QVERIFY(!toolBar()->mask().intersects(toolBar()->rect()));
        QVERIFY(!hasBorder(window));
        QCOMPARE(window.geometry(), kGeometry);
        QCOMPARE(changed.size(), 0);
        const QRect first = kGeometry.translated(20, 10);
        QTRY_COMPARE(window.geometry(), first);
        QCOMPARE(changed, QList<Report>{report(true, first.adjusted(4, 4, -4, -4))});
        // From then on without delay.
        const QRect second = kGeometry.translated(30, 20);
        moveHeld(*toolBar(), from + QPoint(30, 20));
        QCOMPARE(window.geometry(), second);
        QCOMPARE(toolBar()->geometry().topLeft(), second.topLeft() - QPoint(0, 30));
        QVERIFY(!hasBorder(window));
        release(*toolBar(), from + QPoint(30, 20));
        QCOMPARE(changed.size(), 3);
        QCOMPARE(changed.constLast(), report(false, second.adjusted(4, 4, -4, -4)));
        QVERIFY(!hasBorder(window));
        QTRY_VERIFY(hasBorder(window));
        QVERIFY(toolBar()->mask().isEmpty());
    }

    void recordedInsideThatFollowsIsHiddenOnItsWay()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        window.setInsideRecorded(true);
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        const QRect inside = kGeometry.adjusted(4, 4, -4, -4);
        QVERIFY(window.followTo(inside.topLeft() + QPoint(10, 5)));
        QVERIFY(window.followTo(inside.topLeft() + QPoint(20, 10)));
        QCOMPARE(window.geometry(), kGeometry);
        QVERIFY(!hasBorder(window));
        QTRY_COMPARE(changed.size(), 2);
        const QRect moved = inside.translated(20, 10);
        QCOMPARE(changed, (QList<Report>{report(true, moved), report(false, moved)}));
        QTRY_VERIFY(hasBorder(window));
    }

    void frameThatTheUserDragsDoesNotFollow()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        press(*toolBar(), toolBar()->geometry().center());
        QVERIFY(!window.followTo({10, 10}));
        QCOMPARE(window.geometry(), kGeometry);
        release(*toolBar(), toolBar()->geometry().center());
        QVERIFY(window.followTo({10, 40}));
        QCOMPARE(window.pos(), QPoint(6, 36));
    }

    void shortDragOfARecordedInsideArrivesWhereItEnded()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        window.setInsideRecorded(true);
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        drag(*toolBar(), kGeometry.topLeft() + QPoint(300, -15), {40, 24});
        QCOMPARE(window.geometry(), kGeometry);
        QCOMPARE(changed.size(), 0);
        const QRect moved = kGeometry.translated(40, 24);
        const QRect inside = moved.adjusted(4, 4, -4, -4);
        QTRY_COMPARE(changed.size(), 2);
        QCOMPARE(changed, (QList<Report>{report(true, inside), report(false, inside)}));
        QCOMPARE(window.geometry(), moved);
        QTRY_VERIFY(toolBar()->mask().isEmpty());
    }

    void dragThatOutlastsTheRecordingIsVisibleAgain()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        window.setInsideRecorded(true);
        const QPoint from = kGeometry.topLeft() + QPoint(300, -15);
        press(*toolBar(), from);
        moveHeld(*toolBar(), from + QPoint(10, 5));
        window.setInsideRecorded(false);
        QVERIFY(toolBar()->mask().isEmpty());
        moveHeld(*toolBar(), from + QPoint(20, 10));
        QCOMPARE(window.geometry(), kGeometry.translated(20, 10));
        QVERIFY(toolBar()->mask().isEmpty());
    }

    void edgesOfARecordedInsideDoNotResizeIt()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        window.setInsideRecorded(true);
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        for (const QPoint& handle : {QPoint(2, 2), QPoint(397, 297), QPoint(200, 2), QPoint(2, 150)}) {
            mouse(window, QEvent::MouseMove, kGeometry.topLeft() + handle);
            QCOMPARE(window.cursor().shape(), Qt::ArrowCursor);
            drag(window, kGeometry.topLeft() + handle, {40, 24});
            QCOMPARE(window.geometry(), kGeometry);
        }
        QCOMPARE(changed.size(), 0);
        window.setInsideRecorded(false);
        drag(window, kGeometry.topLeft() + QPoint(2, 2), {40, 24});
        QCOMPARE(window.geometry(), kGeometry.adjusted(40, 24, 0, 0));
    }

    void dragIsOverWhenTheFrameIsHiddenUnderWay()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        const QPoint from = kGeometry.topLeft() + QPoint(300, -15);
        press(*toolBar(), from);
        moveHeld(*toolBar(), from + QPoint(10, 5));
        window.hide();
        window.setGeometry(kGeometry);
        window.show();
        // The wheel is what is held now.
        mouse(*toolBar(), QEvent::MouseMove, from + QPoint(90, 60), Qt::NoButton, Qt::MiddleButton);
        QCOMPARE(window.geometry(), kGeometry);
    }

    void otherButtonsOnTheToolBarDoNothing()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        const QPoint from = toolBar()->geometry().center();
        mouse(*toolBar(), QEvent::MouseButtonPress, from, Qt::RightButton, Qt::RightButton);
        mouse(*toolBar(), QEvent::MouseMove, from + QPoint(9, 9), Qt::NoButton, Qt::RightButton);
        mouse(*toolBar(), QEvent::MouseButtonRelease, from + QPoint(9, 9), Qt::RightButton);
        QCOMPARE(window.geometry(), kGeometry);
        QCOMPARE(changed.size(), 0);
    }

    void moveOfTheToolBarIsConsumedPressAndReleaseArePassedOn()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        const QPoint from = toolBar()->geometry().center();
        const auto filtered = [&window](QEvent::Type type, const QPoint& position, Qt::MouseButton changed) {
            QMouseEvent event(type, QPointF(5, 5), position, changed, Qt::LeftButton, Qt::NoModifier);
            return static_cast<QObject&>(window).eventFilter(toolBar(), &event);
        };
        QVERIFY(!filtered(QEvent::MouseMove, from, Qt::NoButton));
        QVERIFY(!filtered(QEvent::MouseButtonPress, from, Qt::LeftButton));
        QVERIFY(filtered(QEvent::MouseMove, from, Qt::NoButton));
        QVERIFY(!filtered(QEvent::MouseButtonRelease, from, Qt::LeftButton));
    }

    void recordingButtonStartsAndStops()
    {
        DrawWindow window;
        const QSignalSpy started(&window, &DrawWindow::startRecording);
        const QSignalSpy stopped(&window, &DrawWindow::stopRecording);
        click("startButton");
        QCOMPARE(started.size(), 1);
        QCOMPARE(stopped.size(), 0);
        QVERIFY(window.isRecording());
        QCOMPARE(button("startButton")->toolTip(), QStringLiteral("Stop Recording"));
        QVERIFY(shows(button("startButton"), "stop-recording"));
        click("startButton");
        QCOMPARE(started.size(), 1);
        QCOMPARE(stopped.size(), 1);
        QVERIFY(!window.isRecording());
        QCOMPARE(button("startButton")->toolTip(), QStringLiteral("Start Recording"));
        QVERIFY(shows(button("startButton"), "start-recording"));
    }

    void recordingStateFromOutsideEmitsNothing()
    {
        DrawWindow window;
        const QSignalSpy started(&window, &DrawWindow::startRecording);
        const QSignalSpy stopped(&window, &DrawWindow::stopRecording);
        window.setRecording(true);
        QVERIFY(window.isRecording());
        QVERIFY(button("startButton")->isChecked());
        QCOMPARE(button("startButton")->toolTip(), QStringLiteral("Stop Recording"));
        QVERIFY(shows(button("startButton"), "stop-recording"));
        window.setRecording(false);
        QCOMPARE(button("startButton")->toolTip(), QStringLiteral("Start Recording"));
        QVERIFY(shows(button("startButton"), "start-recording"));
        QVERIFY(!button("startButton")->isChecked());
        QCOMPARE(started.size() + stopped.size(), 0);
        window.setRecording(true);
        click("startButton");
        QCOMPARE(stopped.size(), 1);
    }

    void closeButtonWhileRecordingEmitsStopRecordingBeforeHideDrawWindow()
    {
        DrawWindow window;
        window.show();
        window.setRecording(true);
        button("drawToggleButton")->setChecked(true);
        QStringList order;
        connect(&window, &DrawWindow::stopRecording, this, [&] { order.append(QStringLiteral("stop")); });
        connect(&window, &DrawWindow::hideDrawWindow, this, [&] {
            order.append(QStringLiteral("hide"));
            order.append(button("drawToggleButton")->isChecked() ? "pen on" : "pen off");
            order.append(window.isVisible() ? "visible" : "hidden");
        });
        click("closeButton");
        QCOMPARE(order, QStringList({"stop", "hide", "pen off", "visible"}));
        QVERIFY(!window.isRecording());
        QCOMPARE(button("startButton")->toolTip(), QStringLiteral("Start Recording"));
        QVERIFY(!window.isVisible());
        QVERIFY(!toolBar()->isVisible());
    }

    void closeButtonWithoutRecordingStopsNothingAndForgetsTheStrokes()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        button("drawToggleButton")->setChecked(true);
        drag(window, kGeometry.center(), {50, 40});
        const QSignalSpy stopped(&window, &DrawWindow::stopRecording);
        const QSignalSpy hidden(&window, &DrawWindow::hideDrawWindow);
        click("closeButton");
        QCOMPARE(stopped.size(), 0);
        QCOMPARE(hidden.size(), 1);
        window.show();
        QCOMPARE(imageOf(window), frame(kGeometry.size(), 4));
        button("drawToggleButton")->setChecked(true);
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {}));
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {}));
    }

    void strokesAreUndoneAndRedoneByTheKeyboard_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::newRow("Ctrl+Shift+Z") << int(Qt::Key_Z) << (Qt::ControlModifier | Qt::ShiftModifier);
        QTest::newRow("Ctrl+Y") << int(Qt::Key_Y) << Qt::KeyboardModifiers(Qt::ControlModifier);
    }

    void strokesAreUndoneAndRedoneByTheKeyboard()
    {
        QFETCH(const int, key);
        QFETCH(const Qt::KeyboardModifiers, modifiers);
        DrawWindow window;
        showWithTwoStrokes(window);
        const auto drawn = [&window] { return imageOf(window); };
        QCOMPARE(drawn(), drawnFrame(kGeometry.size(), {m_first, m_second}));
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(drawn(), drawnFrame(kGeometry.size(), {m_first}));
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(drawn(), drawnFrame(kGeometry.size(), {}));
        QTest::keyClick(&window, Qt::Key(key), modifiers);
        QCOMPARE(drawn(), drawnFrame(kGeometry.size(), {m_first}));
        // Also where the bar has the keyboard.
        QTest::keyClick(toolBar(), Qt::Key(key), modifiers);
        QTest::keyClick(toolBar(), Qt::Key(key), modifiers);
        QCOMPARE(drawn(), drawnFrame(kGeometry.size(), {m_first, m_second}));
    }

    void clearIsOneStepAndAStrokeDropsWhatWasUndone()
    {
        DrawWindow window;
        showWithTwoStrokes(window);
        click("clearButton");
        click("clearButton");
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {}));
        click("undoButton");
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {m_first, m_second}));
        click("undoButton");
        QVERIFY(button("redoButton")->isEnabled());
        drag(window, kGeometry.topLeft() + QPoint(50, 200), {20, 0});
        const QPolygonF third = line({{50, 200}, {60, 200}, {70, 200}, {70, 200}});
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {m_first, third}));
        QVERIFY(!button("redoButton")->isEnabled());
    }

    void undoDuringAStrokeDropsThatOne()
    {
        DrawWindow window;
        showWithTwoStrokes(window);
        const QPoint from = kGeometry.topLeft() + QPoint(50, 200);
        press(window, from);
        moveHeld(window, from + QPoint(20, 0));
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
        release(window, from + QPoint(40, 0));
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {m_first, m_second}));
    }

    void undoButtonsAreThereWhereTheBarIsWideEnoughAndOnWhereThereIsAStep()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        for (const char* const name : {"undoButton", "redoButton"}) {
            QVERIFY(button(name)->isVisible());
            QVERIFY(!button(name)->isEnabled());
        }
        QCOMPARE(button("undoButton")->toolTip(), QStringLiteral("Undo"));
        QCOMPARE(button("redoButton")->accessibleName(), QStringLiteral("Redo"));
        QVERIFY(button("undoButton")->mapTo(toolBar(), QPoint()).x() >= button("closeButton")->geometry().right());
        window.resize(300, 200);
        QVERIFY(!button("undoButton")->isVisible());
        window.setGeometry(kGeometry);
        button("drawToggleButton")->setChecked(true);
        drag(window, kGeometry.center(), {50, 40});
        QVERIFY(button("undoButton")->isEnabled());
        click("undoButton");
        QVERIFY(!button("undoButton")->isEnabled());
        QVERIFY(button("redoButton")->isEnabled());
        // Nothing of it can be seen.
        button("drawToggleButton")->setChecked(false);
        QVERIFY(!button("redoButton")->isEnabled());
        QTest::keyClick(&window, Qt::Key_Y, Qt::ControlModifier);
        button("drawToggleButton")->setChecked(true);
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {}));
    }

    void hoveredButtonsTurnLight()
    {
        DrawWindow window;
        for (const QByteArray name : {"close", "clear"}) {
            QPushButton* const hovered = button(name + "Button");
            enter(*hovered);
            QVERIFY(shows(hovered, name + "-white"));
            leave(*hovered);
            QVERIFY(shows(hovered, name));
        }
        enter(*button("startButton"));
        QVERIFY(shows(button("startButton"), "start-recording"));
    }

    void penIsLightWhileItIsHoveredOrOn()
    {
        DrawWindow window;
        QPushButton* const pen = button("drawToggleButton");
        enter(*pen);
        QVERIFY(shows(pen, "pen-white"));
        leave(*pen);
        QVERIFY(shows(pen, "pen"));
        pen->setChecked(true);
        QVERIFY(shows(pen, "pen-white"));
        enter(*pen);
        leave(*pen);
        QVERIFY(shows(pen, "pen-white"));
        pen->setChecked(false);
        QVERIFY(shows(pen, "pen"));
    }

    void insideIsClearInFrameMode()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        QCOMPARE(imageOf(window), frame(kGeometry.size(), 4));
        window.resize(333, 221);
        QCOMPARE(imageOf(window), frame(QSize(333, 221), 4));
        window.setBorderWidth(8);
        QCOMPARE(imageOf(window), frame(QSize(333, 221), 8));
    }

    void borderStaysAtTheEdgeOfAResizedWindow()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        PaintCounter painted;
        window.installEventFilter(&painted);
        window.resize(500, 350);
        QTRY_VERIFY(painted.count > 0);
        const QImage shown = window.windowHandle()->screen()->grabWindow(window.winId()).toImage();
        if (!shown.isNull() && shown.size() == QSize(500, 350))
            QVERIFY(isCutOff(window, {398, 100}) || shown.pixelColor(398, 100) != kBlue);
        QCOMPARE(imageOf(window), frame(QSize(500, 350), 4));
    }

    void drawingModeFillsTheWindowWithWhatOnlyThePointerFeels()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        button("drawToggleButton")->setChecked(true);
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {}));
        button("drawToggleButton")->setChecked(false);
        QCOMPARE(imageOf(window), frame(kGeometry.size(), 4));
    }

    void strokesAreDrawnAndKeptWhileThePenIsOff()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        button("drawToggleButton")->setChecked(true);
        const QPoint origin = kGeometry.topLeft();
        press(window, origin + QPoint(50, 60));
        moveHeld(window, origin + QPoint(90, 100));
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {line({{50, 60}, {90, 100}})}));
        moveHeld(window, origin + QPoint(150, 70));
        release(window, origin + QPoint(160, 80));
        drag(window, origin + QPoint(200, 200), {40, -20});
        const QList<QPolygonF> strokes{line({{50, 60}, {90, 100}, {150, 70}, {160, 80}}),
                                       line({{200, 200}, {220, 190}, {240, 180}, {240, 180}})};
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), strokes));
        button("drawToggleButton")->setChecked(false);
        QCOMPARE(imageOf(window), frame(kGeometry.size(), 4));
        button("drawToggleButton")->setChecked(true);
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), strokes));
        click("clearButton");
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {}));
    }

    void drawingNeitherMovesNorReports()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        button("drawToggleButton")->setChecked(true);
        const QSignalSpy changed(&window, &DrawWindow::windowGeometryChanged);
        drag(window, kGeometry.topLeft(), {60, 60});
        drag(window, kGeometry.center(), {60, 60});
        QCOMPARE(window.geometry(), kGeometry);
        QCOMPARE(changed.size(), 0);
    }

    void clearingDuringAStrokeDropsIt()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        button("drawToggleButton")->setChecked(true);
        press(window, kGeometry.center());
        moveHeld(window, kGeometry.center() + QPoint(30, 30));
        button("clearButton")->click();
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {}));
        moveHeld(window, kGeometry.center() + QPoint(60, 10));
        release(window, kGeometry.center() + QPoint(70, 20));
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {}));
        drag(window, kGeometry.topLeft() + QPoint(20, 20), {10, 10});
        QCOMPARE(imageOf(window), drawnFrame(kGeometry.size(), {line({{20, 20}, {25, 25}, {30, 30}, {30, 30}})}));
    }

    void pressInsideInFrameModeFindsNoWindow()
    {
        DrawWindow window;
        window.setGeometry(kGeometry);
        window.show();
        QVERIFY(isReached(window, QRegion(0, 0, 400, 300) - QRegion(4, 4, 392, 292)));
        button("drawToggleButton")->setChecked(true);
        QVERIFY(isReached(window, QRegion(0, 0, 400, 300)));
    }

private:
    static void showWithTwoStrokes(DrawWindow& window)
    {
        window.setGeometry(kGeometry);
        window.show();
        button("drawToggleButton")->setChecked(true);
        drag(window, kGeometry.topLeft() + QPoint(50, 60), {20, 0});
        drag(window, kGeometry.topLeft() + QPoint(50, 100), {20, 0});
    }

    /// By the window's shape; nothing is painted there.
    static bool isCutOff(const QWidget& window, const QPoint& position)
    {
        return !window.mask().isEmpty() && !window.mask().contains(position);
    }

    /// Whether the pointer reaches the window exactly there: in its shape, or by what it paints.
    static bool isReached(QWidget& window, const QRegion& expected)
    {
        const QRegion reached = window.mask().isEmpty() ? opaquePixels(window) : window.mask();
        return reached.xored(expected).isEmpty();
    }

    /// Where a window that is mixed by its alpha takes the pointer.
    static QRegion opaquePixels(QWidget& window)
    {
        const QImage image = imageOf(window);
        QRegion region;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0, end = 0; x < image.width(); x = end + 1) {
                for (end = x; end < image.width() && qAlpha(image.pixel(end, y)) != 0;)
                    ++end;
                region += QRect(x, y, end - x, 1);
            }
        }
        return region;
    }

    const QPolygonF m_first = line({{50, 60}, {60, 60}, {70, 60}, {70, 60}});
    const QPolygonF m_second = line({{50, 100}, {60, 100}, {70, 100}, {70, 100}});
};

REGISTER_TEST(testrun::gui<TestDrawWindow>);
#include "test_drawwindow.moc"
