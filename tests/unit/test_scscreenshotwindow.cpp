// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "screenshot/scscreenshot.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/support/messagecapture.h"
#include "tests/support/pointerevents.h"
#include "tests/support/widgetimage.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDir>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using pointerevents::drag;
using pointerevents::enter;
using pointerevents::leave;
using pointerevents::mouse;
using pointerevents::moveHeld;
using pointerevents::press;
using pointerevents::release;

namespace {

constexpr QColor kBlue(0, 122, 204);
constexpr QRect kGeometry(150, 120, 400, 300);

QWidget& toolBar()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("buttonBackground"))
            return *window;
    }
    qFatal("There is no tool bar");
}

QPushButton& button(const char* name)
{
    return *toolBar().findChild<QPushButton*>(QLatin1String(name));
}

void click(const char* name)
{
    QTest::mouseClick(&button(name), Qt::LeftButton);
}

/// Compares what the icons look like. Without the SVG plug-in all are blank.
bool shows(const QPushButton& shown, const char* image)
{
    const QIcon expected(QStringLiteral(":/res/forms/images/%1.svg").arg(QLatin1String(image)));
    return shown.icon().pixmap(24, 24).toImage() == expected.pixmap(24, 24).toImage();
}

QImage canvas(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void paintBorder(QPainter& painter, const QSize& size)
{
    painter.setPen(QPen(kBlue, 4, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(0, 0, size.width() - 1, size.height() - 1);
}

/// What a frame with the pen on looks like; hole is where the fill leaves something out.
QImage drawnFrame(const QSize& size, const QList<QPolygonF>& lines, const QRect& hole)
{
    QImage image = canvas(size);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    for (const QRect& part : QRegion(QRect(QPoint(), size)) - hole)
        painter.fillRect(part, QColor(0, 0, 0, 1));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(QPen(Qt::red, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const QPolygonF& line : lines)
        painter.drawPolyline(line);
    paintBorder(painter, size);
    return image;
}

} // namespace

class TestSCScreenshotWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        openSettings()->clear();
        openSettings()->setValue(settingskeys::kScreenshotSaveLocation, m_folder->path());
        openSettings()->setValue(settingskeys::kScreenshotFormat, QStringLiteral("PNG"));
        m_screenshot = std::make_unique<SCScreenshot>();
        m_window = std::make_unique<SCScreenshotWindow>(m_screenshot.get());
        m_grabbed = QPixmap(40, 30);
        m_grabbed.fill(Qt::green);
        m_window->setGrabber([this](QScreen&, const QRect& area) {
            m_areas.append(area);
            return m_grabbed;
        });
        m_areas.clear();
        m_window->setGeometry(kGeometry);
    }

    void cleanup()
    {
        m_window.reset();
        m_screenshot.reset();
    }

    void isAFramelessWindowOnTop()
    {
        QVERIFY(m_window->testAttribute(Qt::WA_TranslucentBackground));
        QVERIFY(m_window->testAttribute(Qt::WA_StaticContents));
        QVERIFY(m_window->testAttribute(Qt::WA_MouseTracking));
        const Qt::WindowFlags flags = m_window->windowFlags();
        QVERIFY(flags.testFlag(Qt::FramelessWindowHint));
        QVERIFY(flags.testFlag(Qt::WindowStaysOnTopHint));
        QCOMPARE(flags & Qt::SubWindow, Qt::SubWindow);
        QCOMPARE(m_window->minimumSize(), QSize(100, 100));
    }

    void toolBarHasItsButtonsInOrder()
    {
        const QWidget& bar = toolBar();
        QCOMPARE(bar.height(), 30);
        QCOMPARE(bar.windowType(), Qt::Tool);
        QVERIFY(bar.testAttribute(Qt::WA_AlwaysShowToolTips));
        m_window->show();
        struct Expected
        {
            const char* name;
            const char* tip;
            bool checkable;
            int x;
        };
        for (const Expected& expected :
             {Expected{"saveButton", "Capture", false, 0}, Expected{"drawButton", "Start Drawing", true, 30},
              Expected{"clearButton", "Clear Drawing", false, 60},
              Expected{"cancelButton", "Close Window", false, bar.width() - 30}}) {
            const QPushButton& part = button(expected.name);
            QCOMPARE(part.size(), QSize(30, 30));
            QCOMPARE(part.toolTip(), QLatin1String(expected.tip));
            QCOMPARE(part.accessibleName(), QLatin1String(expected.tip));
            QCOMPARE(part.isCheckable(), expected.checkable);
            QVERIFY(part.text().isEmpty());
            QCOMPARE(part.x(), expected.x);
        }
    }

    void recordButtonIsBesideCaptureWhereItIsOffered()
    {
        const QSignalSpy requested(m_window.get(), &SCScreenshotWindow::recordRequested);
        m_window->show();
        const int width = toolBar().width();
        QVERIFY(!button("recordButton").isVisible());
        m_window->hide();
        m_window->setRecordable(true);
        m_window->show();
        QVERIFY(button("recordButton").isVisible());
        QCOMPARE(button("recordButton").geometry(), QRect(30, 0, 30, 30));
        QCOMPARE(button("drawButton").x(), 60);
        QCOMPARE(toolBar().geometry().right(), m_window->geometry().right() - 1);
        QVERIFY(toolBar().rect().contains(button("cancelButton").geometry()));
        click("recordButton");
        QCOMPARE(requested.size(), 1);
        QTest::keyClick(m_window.get(), Qt::Key_R);
        QCOMPARE(requested.size(), 2);
        QTest::keyClick(m_window.get(), Qt::Key_R, Qt::ControlModifier);
        QCOMPARE(requested.size(), 2);
        m_window->hide();
        m_window->setRecordable(false);
        m_window->show();
        QVERIFY(!button("recordButton").isVisible());
        QTest::keyClick(m_window.get(), Qt::Key_R);
        QCOMPARE(requested.size(), 2);
        QCOMPARE(toolBar().width(), width);
        QCOMPARE(button("drawButton").x(), 30);
    }

    void styleSheetIsReported()
    {
        const MessageCapture messages;
        const SCScreenshotWindow window(m_screenshot.get());
        QVERIFY(messages.texts(QtDebugMsg)
                    .contains(QStringLiteral("Loaded screenshot window stylesheet from: "
                                             ":/res/style/screenshot-window.qss")));
        QVERIFY(!button("saveButton").styleSheet().isEmpty());
        QVERIFY(!button("cancelButton").styleSheet().isEmpty());
    }

    void toolBarOfARegionIsTwoPixelsBelowItFlushWithItsRightEdge()
    {
        m_window->setFullScreen(false);
        m_window->show();
        const QRect frame = m_window->geometry();
        QCOMPARE(toolBar().pos(), QPoint(frame.right() - toolBar().width(), frame.bottom() + 2));
        m_window->move(40, 60);
        QCOMPARE(toolBar().pos(), QPoint(40 + 399 - toolBar().width(), 60 + 299 + 2));
        m_window->resize(300, 200);
        QCOMPARE(toolBar().pos(), QPoint(40 + 299 - toolBar().width(), 60 + 199 + 2));
    }

    void toolBarOfAScreenIsFourPixelsInsideItsTopRightCorner()
    {
        m_window->setFullScreen(true);
        m_window->show();
        const QRect frame = m_window->geometry();
        QCOMPARE(toolBar().pos(), QPoint(frame.right() - 4 - toolBar().width(), frame.top() + 4));
    }

    void toolBarThatWouldBeOffTheScreenIsInside()
    {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        m_window->setGeometry(screen.adjusted(20, 20, -20, 0));
        m_window->show();
        QVERIFY(screen.contains(toolBar().geometry()));
    }

    void toolBarOfANarrowRegionDoesNotLeaveTheScreen()
    {
        m_window->setGeometry(0, 120, 150, 200);
        m_window->show();
        QCOMPARE(toolBar().pos(), QPoint(0, 321));
        m_window->move(300, 120);
        QCOMPARE(toolBar().pos(), QPoint(449 - toolBar().width(), 321));
    }

    void toolBarIsThereFromTheStart() { QVERIFY(toolBar().isVisible()); }

    void hideHidesTheToolBarAndEmitsNothing()
    {
        const QSignalSpy cancelled(m_window.get(), &SCScreenshotWindow::screenshotCancelled);
        m_window->show();
        QVERIFY(toolBar().isVisible());
        m_window->hide();
        QVERIFY(!m_window->isVisible());
        QVERIFY(!toolBar().isVisible());
        QVERIFY(cancelled.isEmpty());
        m_window->show();
        QVERIFY(button("saveButton").isVisible());
        QVERIFY(button("cancelButton").isVisible());
        QVERIFY(button("drawButton").isVisible());
    }

    void closedByTheWindowManagerItTakesTheToolBarAlong()
    {
        m_window->show();
        m_window->close();
        QVERIFY(!toolBar().isVisible());
    }

    void buttonsLightUpUnderThePointer()
    {
        struct Icon
        {
            const char* button;
            const char* normal;
            const char* hovered;
        };
        for (const Icon& icon :
             {Icon{"saveButton", "capture", "capture-white"}, Icon{"drawButton", "pen", "pen-white"},
              Icon{"clearButton", "clear", "clear-white"}, Icon{"cancelButton", "close", "close-white"}}) {
            QVERIFY(shows(button(icon.button), icon.normal));
            enter(button(icon.button));
            QVERIFY(shows(button(icon.button), icon.hovered));
            leave(button(icon.button));
            QVERIFY(shows(button(icon.button), icon.normal));
        }
    }

    void drawButtonKeepsItsIconWhileThePenIsOn()
    {
        m_window->show();
        click("drawButton");
        QVERIFY(button("drawButton").isChecked());
        QVERIFY(shows(button("drawButton"), "pen-white"));
        enter(button("drawButton"));
        leave(button("drawButton"));
        QVERIFY(shows(button("drawButton"), "pen-white"));
        click("drawButton");
        QVERIFY(!button("drawButton").isChecked());
        QVERIFY(shows(button("drawButton"), "pen"));
    }

    void cursorShowsTheHandle_data()
    {
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<Qt::CursorShape>("cursor");
        QTest::newRow("top left") << QPoint(9, 9) << Qt::SizeFDiagCursor;
        QTest::newRow("inside") << QPoint(10, 10) << Qt::ArrowCursor;
    }

    void cursorShowsTheHandle()
    {
        QFETCH(const QPoint, position);
        QFETCH(const Qt::CursorShape, cursor);
        m_window->show();
        mouse(*m_window, QEvent::MouseMove, kGeometry.topLeft() + position);
        QCOMPARE(m_window->cursor().shape(), cursor);
        click("drawButton");
        mouse(*m_window, QEvent::MouseMove, kGeometry.topLeft() + position);
        QCOMPARE(m_window->cursor().shape(), Qt::CrossCursor);
    }

    void handlesResize_data()
    {
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<QMargins>("grown");
        // Each is dragged by (-30, -20).
        QTest::newRow("top left") << QPoint(2, 2) << QMargins(30, 20, 0, 0);
        QTest::newRow("inside") << QPoint(100, 100) << QMargins();
    }

    void handlesResize()
    {
        QFETCH(const QPoint, position);
        QFETCH(const QMargins, grown);
        m_window->show();
        drag(*m_window, kGeometry.topLeft() + position, {-30, -20});
        QCOMPARE(m_window->geometry(), kGeometry.marginsAdded(grown));
        QCOMPARE(m_window->cursor().shape(), Qt::ArrowCursor);
    }

    void cornerDraggedPastTheOppositeOneStopsAtTheMinimum()
    {
        m_window->show();
        drag(*m_window, kGeometry.topLeft() + QPoint(398, 298), {-900, -100});
        QCOMPARE(m_window->geometry(), QRect(kGeometry.topLeft(), QSize(100, 200)));
        drag(*m_window, m_window->geometry().topLeft() + QPoint(2, 2), {900, 900});
        QCOMPARE(m_window->geometry(), QRect(kGeometry.left(), kGeometry.top() + 100, 100, 100));
    }

    void toolBarMovesTheFrame()
    {
        m_window->show();
        drag(toolBar(), toolBar().geometry().center(), {-50, 33});
        QCOMPARE(m_window->geometry(), kGeometry.translated(-50, 33));
    }

    void borderIsAllThatIsPaintedWithoutThePen()
    {
        m_window->show();
        QImage expected = canvas(kGeometry.size());
        QPainter painter(&expected);
        paintBorder(painter, kGeometry.size());
        painter.end();
        QCOMPARE(imageOf(*m_window), expected);
    }

    void penLeavesStrokes()
    {
        m_window->show();
        click("drawButton");
        const QPoint origin = kGeometry.topLeft();
        press(*m_window, origin + QPoint(50, 60));
        moveHeld(*m_window, origin + QPoint(80, 90));
        const QPolygonF begun({QPointF(50, 60), QPointF(80, 90)});
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {begun}, hole()));
        moveHeld(*m_window, origin + QPoint(120, 90));
        release(*m_window, origin + QPoint(130, 70));
        const QPolygonF first({QPointF(50, 60), QPointF(80, 90), QPointF(120, 90), QPointF(130, 70)});
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {first}, hole()));
        drag(*m_window, origin + QPoint(200, 200), {40, 0});
        const QPolygonF second({QPointF(200, 200), QPointF(220, 200), QPointF(240, 200)});
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {first, second}, hole()));
        // Nothing of the frame was dragged.
        QCOMPARE(m_window->geometry(), kGeometry);
    }

    void clickWithoutMovementLeavesNoStroke()
    {
        m_window->show();
        click("drawButton");
        press(*m_window, kGeometry.topLeft() + QPoint(50, 60));
        release(*m_window, kGeometry.topLeft() + QPoint(50, 60));
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {}, hole()));
        drag(*m_window, kGeometry.topLeft() + QPoint(200, 200), {40, 0});
        const QPolygonF line({QPointF(200, 200), QPointF(220, 200), QPointF(240, 200)});
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {line}, hole()));
    }

    void drawingOutlivesHidingUntilItIsCleared()
    {
        m_window->show();
        click("drawButton");
        drag(*m_window, kGeometry.topLeft() + QPoint(200, 200), {40, 0});
        const QPolygonF line({QPointF(200, 200), QPointF(220, 200), QPointF(240, 200)});
        m_window->hide();
        m_window->show();
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {line}, hole()));
        click("clearButton");
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {}, hole()));
        QVERIFY(button("drawButton").isChecked());
    }

    void strokesAndClearingAreUndoneAndRedone()
    {
        m_window->show();
        click("drawButton");
        drag(*m_window, kGeometry.topLeft() + QPoint(200, 200), {40, 0});
        const QPolygonF line({QPointF(200, 200), QPointF(220, 200), QPointF(240, 200)});
        click("clearButton");
        const auto isDrawn = [this](const QList<QPolygonF>& lines) {
            return imageOf(*m_window) == drawnFrame(kGeometry.size(), lines, hole());
        };
        QTest::keyClick(m_window.get(), Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(isDrawn({line}));
        QTest::keyClick(m_window.get(), Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(isDrawn({}));
        QTest::keyClick(m_window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(isDrawn({line}));
        QTest::keyClick(&toolBar(), Qt::Key_Y, Qt::ControlModifier);
        QVERIFY(isDrawn({}));
    }

    void undoAndRedoHaveButtonsBesideClear()
    {
        m_window->setRecordable(true);
        m_window->show();
        expectUndoButtons(120);
        // The bar is dragged by what is free.
        QCOMPARE(button("cancelButton").x(), 180 + 50);
        m_window->hide();
        m_window->setRecordable(false);
        m_window->show();
        expectUndoButtons(90);
        click("drawButton");
        QVERIFY(!button("undoButton").isEnabled() && !button("redoButton").isEnabled());
        drag(*m_window, kGeometry.topLeft() + QPoint(200, 200), {40, 0});
        const QPolygonF line({QPointF(200, 200), QPointF(220, 200), QPointF(240, 200)});
        click("undoButton");
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {}, hole()));
        QVERIFY(!button("undoButton").isEnabled());
        click("redoButton");
        QCOMPARE(imageOf(*m_window), drawnFrame(kGeometry.size(), {line}, hole()));
        // Nothing of it can be seen.
        click("drawButton");
        QVERIFY(!button("undoButton").isEnabled());
    }

    void strokesOfAnEarlierScreenshotComeBackOnlyIfTheyWereVisible()
    {
        m_window->show();
        click("drawButton");
        const auto isDrawn = [this](const QList<QPolygonF>& lines) {
            return imageOf(*m_window) == drawnFrame(kGeometry.size(), lines, hole());
        };
        drag(*m_window, kGeometry.topLeft() + QPoint(200, 100), {40, 0});
        click("clearButton");
        drag(*m_window, kGeometry.topLeft() + QPoint(200, 200), {40, 0});
        const QPolygonF line({QPointF(200, 200), QPointF(220, 200), QPointF(240, 200)});
        drag(*m_window, kGeometry.topLeft() + QPoint(200, 150), {40, 0});
        QTest::keyClick(m_window.get(), Qt::Key_Z, Qt::ControlModifier);
        m_window->hide();
        m_window->show();
        QTest::keyClick(m_window.get(), Qt::Key_Y, Qt::ControlModifier);
        QVERIFY(isDrawn({line}));
        QTest::keyClick(m_window.get(), Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(isDrawn({}));
        QTest::keyClick(m_window.get(), Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(isDrawn({}));
    }

    void captureSavesAndHides_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("button") << 0;
        QTest::newRow("return") << int(Qt::Key_Return);
        QTest::newRow("enter") << int(Qt::Key_Enter);
    }

    void captureSavesAndHides()
    {
        QFETCH(const int, key);
        m_window->show();
        const QSignalSpy saved(m_window.get(), &SCScreenshotWindow::screenshotSaved);
        if (key == 0)
            click("saveButton");
        else
            QTest::keyClick(m_window.get(), Qt::Key(key));
        QCOMPARE(saved.size(), 1);
        const QString path = saved.at(0).at(0).toString();
        QCOMPARE(path, m_screenshot->lastSavedPath());
        QCOMPARE(QImage(path).size(), QSize(40, 30));
        QVERIFY(!m_window->isVisible());
        QVERIFY(!toolBar().isVisible());
        QCOMPARE(m_areas.constLast(), kGeometry);
    }

    void captureIsOverWhenTheFileHasBeenReported()
    {
        m_window->show();
        bool wasCapturing = false;
        connect(m_window.get(), &SCScreenshotWindow::screenshotSaved, this,
                [&] { wasCapturing = m_window->isCapturing(); });
        click("saveButton");
        QVERIFY(wasCapturing);
        QVERIFY(!m_window->isCapturing());
        m_window->show();
        QCOMPARE(imageOf(*m_window).pixelColor(200, 0), kBlue);
    }

    void savedImageIsOnTheClipboardAsWell()
    {
        QClipboard* const clipboard = QGuiApplication::clipboard();
        clipboard->setText(QStringLiteral("before"));
        m_window->show();
        m_grabbed = QPixmap();
        click("saveButton");
        QCOMPARE(clipboard->text(), QStringLiteral("before"));
        m_grabbed = QPixmap(40, 30);
        m_grabbed.fill(Qt::green);
        click("saveButton");
        QCOMPARE(clipboard->image().size(), QSize(40, 30));
        QCOMPARE(clipboard->image().pixelColor(20, 15), QColor(Qt::green));
    }

    void nothingOfTheFrameIsThereWhenTheScreenIsGrabbed()
    {
        m_window->setFullScreen(true);
        m_window->show();
        QImage seen;
        bool barSeen = true;
        m_window->setGrabber([&](QScreen&, const QRect&) {
            seen = imageOf(*m_window);
            barSeen = toolBar().isVisible();
            return m_grabbed;
        });
        click("saveButton");
        QCOMPARE(seen, canvas(kGeometry.size()));
        QVERIFY(!barSeen);
    }

    void captureWithThePenOnHasTheDrawingButNoBorder()
    {
        m_window->show();
        click("drawButton");
        drag(*m_window, kGeometry.topLeft() + QPoint(200, 200), {40, 0});
        QImage seen;
        m_window->setGrabber([&](QScreen&, const QRect&) {
            seen = imageOf(*m_window);
            return m_grabbed;
        });
        const QSignalSpy saved(m_window.get(), &SCScreenshotWindow::screenshotSaved);
        click("saveButton");
        QCOMPARE(saved.size(), 1);
        QCOMPARE(seen.pixelColor(0, 0), QColor(0, 0, 0, 1));
        QCOMPARE(seen.pixelColor(399, 150), QColor(0, 0, 0, 1));
        QCOMPARE(seen.pixelColor(220, 200), QColor(Qt::red));
    }

    void failedSaveLeavesTheFrameOpen()
    {
        m_window->show();
        openSettings()->setValue(settingskeys::kScreenshotFormat, QStringLiteral("nonsense"));
        const QSignalSpy saved(m_window.get(), &SCScreenshotWindow::screenshotSaved);
        const QSignalSpy failed(m_screenshot.get(), &SCScreenshot::error);
        click("saveButton");
        QCOMPARE(failed.size(), 1);
        QVERIFY(saved.isEmpty());
        QVERIFY(m_window->isVisible());
        QVERIFY(toolBar().isVisible());
        // The border is back.
        QCOMPARE(imageOf(*m_window).pixelColor(200, 0), kBlue);
    }

    void emptyGrabLeavesTheFrameOpenAndSilent()
    {
        m_window->show();
        m_grabbed = QPixmap();
        const QSignalSpy saved(m_window.get(), &SCScreenshotWindow::screenshotSaved);
        const QSignalSpy failed(m_screenshot.get(), &SCScreenshot::error);
        click("saveButton");
        QVERIFY(saved.isEmpty());
        QVERIFY(failed.isEmpty());
        QVERIFY(m_window->isVisible());
        QVERIFY(QDir(m_folder->path()).isEmpty());
    }

    void borderThatIsStillSeenIsWaitedFor()
    {
        m_window->show();
        int looks = 0;
        QPixmap border(40, 1);
        border.fill(kBlue);
        m_window->setGrabber([&](QScreen&, const QRect& area) {
            const bool isEdge = area.width() == 1 || area.height() == 1;
            return isEdge && ++looks < 3 ? border : m_grabbed;
        });
        click("saveButton");
        QVERIFY(looks >= 3);
        QCOMPARE(QImage(m_screenshot->lastSavedPath()).pixelColor(1, 1), QColor(Qt::green));
    }

    void frameThatIsHiddenWhileItWaitsTakesNoShot()
    {
        m_window->show();
        const QSignalSpy saved(m_window.get(), &SCScreenshotWindow::screenshotSaved);
        const QSignalSpy failed(m_screenshot.get(), &SCScreenshot::error);
        QTimer::singleShot(0, m_window.get(), &SCScreenshotWindow::hide);
        click("saveButton");
        QVERIFY(!m_window->isVisible());
        QVERIFY(!toolBar().isVisible());
        QVERIFY(saved.isEmpty());
        QVERIFY(failed.isEmpty());
        QVERIFY(QDir(m_folder->path()).isEmpty());
        // The next one is taken.
        m_window->show();
        click("saveButton");
        QCOMPARE(saved.size(), 1);
    }

    void penLetsThePointerThroughWhileADialogIsOpen()
    {
        const QPoint inside(200, 150);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        click("drawButton");
        QCOMPARE(imageOf(*m_window).pixelColor(inside).alpha(), 1);
        {
            QDialog dialog;
            dialog.setModal(true);
            dialog.show();
            QVERIFY(QTest::qWaitForWindowExposed(&dialog));
            QCOMPARE(imageOf(*m_window).pixelColor(inside).alpha(), 0);
            QCOMPARE(imageOf(*m_window).pixelColor(200, 0), kBlue);
        }
        QCOMPARE(imageOf(*m_window).pixelColor(inside).alpha(), 1);
    }

    void escapeAndTheCloseButtonCancel_data()
    {
        QTest::addColumn<bool>("byKey");
        QTest::newRow("escape") << true;
        QTest::newRow("button") << false;
    }

    void escapeAndTheCloseButtonCancel()
    {
        QFETCH(const bool, byKey);
        m_window->show();
        const QSignalSpy cancelled(m_window.get(), &SCScreenshotWindow::screenshotCancelled);
        if (byKey)
            QTest::keyClick(m_window.get(), Qt::Key_Escape);
        else
            click("cancelButton");
        QCOMPARE(cancelled.size(), 1);
        QVERIFY(!m_window->isVisible());
        QVERIFY(!toolBar().isVisible());
        QVERIFY(m_areas.isEmpty());
    }

    void keysThatReachTheToolBarAreTheFrames_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<int>("shots");
        QTest::newRow("escape") << Qt::Key_Escape << 0;
        QTest::newRow("return") << Qt::Key_Return << 1;
        QTest::newRow("enter") << Qt::Key_Enter << 1;
    }

    void keysThatReachTheToolBarAreTheFrames()
    {
        QFETCH(const Qt::Key, key);
        QFETCH(const int, shots);
        m_window->show();
        const QSignalSpy cancelled(m_window.get(), &SCScreenshotWindow::screenshotCancelled);
        const QSignalSpy saved(m_window.get(), &SCScreenshotWindow::screenshotSaved);
        QTest::keyClick(&toolBar(), key);
        QCOMPARE(saved.size(), shots);
        QCOMPARE(cancelled.size(), 1 - shots);
        QVERIFY(!m_window->isVisible());
        QVERIFY(!toolBar().isVisible());
    }

    void enterPressesTheButtonThatHasTheFocus()
    {
        m_window->show();
        const QSignalSpy cancelled(m_window.get(), &SCScreenshotWindow::screenshotCancelled);
        const QSignalSpy saved(m_window.get(), &SCScreenshotWindow::screenshotSaved);
        QTest::keyClick(&button("drawButton"), Qt::Key_Enter);
        QVERIFY(button("drawButton").isChecked());
        QVERIFY(m_window->isVisible());
        QTest::keyClick(&button("cancelButton"), Qt::Key_Return);
        QCOMPARE(saved.size(), 0);
        QCOMPARE(cancelled.size(), 1);
        QVERIFY(!m_window->isVisible());
    }

    /// Space would press the first button.
    void pressOnTheToolBarGivesTheFocusToNoButton_data()
    {
        QTest::addColumn<QString>("pressed");
        QTest::newRow("bar") << QString();
        QTest::newRow("button") << QStringLiteral("clearButton");
    }

    void pressOnTheToolBarGivesTheFocusToNoButton()
    {
        QFETCH(const QString, pressed);
        m_window->show();
        toolBar().activateWindow();
        button("saveButton").setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), &button("saveButton"));
        QWidget& part = pressed.isEmpty() ? toolBar() : button(qPrintable(pressed));
        QTest::mouseClick(&part, Qt::LeftButton, {}, part.rect().bottomRight() - QPoint(5, 5));
        QCOMPARE(QApplication::focusWidget(), &toolBar());
        QTest::keyClick(&toolBar(), Qt::Key_Space);
        QVERIFY(m_window->isVisible());
        QTest::keyClick(&toolBar(), Qt::Key_Tab);
        QTRY_COMPARE(QApplication::focusWidget(), &button("saveButton"));
    }

private:
    /// The tool bar's position on the desktop, taken for one in the frame.
    static QRect hole() { return toolBar().geometry(); }

    /// @param left of the first one
    static void expectUndoButtons(int left)
    {
        QCOMPARE(button("undoButton").geometry(), QRect(left, 0, 30, 30));
        QCOMPARE(button("redoButton").geometry(), QRect(left + 30, 0, 30, 30));
        QVERIFY(button("undoButton").isVisible() && button("redoButton").isVisible());
        QCOMPARE(button("undoButton").toolTip(), QStringLiteral("Undo"));
        QCOMPARE(button("redoButton").accessibleName(), QStringLiteral("Redo"));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SCScreenshot> m_screenshot;
    std::unique_ptr<SCScreenshotWindow> m_window;
    QPixmap m_grabbed;
    QList<QRect> m_areas;
};

REGISTER_TEST(windowtest::run<TestSCScreenshotWindow>);

#include "test_scscreenshotwindow.moc"
