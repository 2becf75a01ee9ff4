// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "tests/support/captureform.h"
#include "tests/support/messagecapture.h"
#include "tests/support/regiontiles.h"
#include "tests/support/shownwindow.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QScreen>
#include <QTest>

#include <algorithm>
#include <cstdlib>

/// What is captured, as tiles, boxes and the region's frame choose it.
class TestCaptureController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init() { windowtest::resetSettings(); }

    void tilesChooseTheMode()
    {
        const CaptureForm window;
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        const MessageCapture messages;
        QTest::mouseClick(child<Tile>(window, "windowTile"), Qt::LeftButton);
        QCOMPARE(selectedTiles(window), QStringList{"windowTile"});
        QTest::mouseClick(child<Tile>(window, "fullScreenTile"), Qt::LeftButton);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QCOMPARE(messages.texts(QtInfoMsg), QStringList{"[INFO] Select screen clicked"});
    }

    void singleScreenIsNotOffered()
    {
        const CaptureForm window;
        auto* const tile = child<Tile>(window, "fullScreenTile");
        QTest::mouseClick(tile, Qt::LeftButton);
        QVERIFY(QApplication::activePopupWidget() == nullptr);
        QCOMPARE(tile->note() + tile->toolTip(), QString());
    }

    void onlyALeftReleaseOnTheTileCounts()
    {
        const CaptureForm window;
        auto* const tile = child<Tile>(window, "windowTile");
        QTest::mouseClick(tile, Qt::RightButton);
        QTest::mousePress(tile, Qt::LeftButton);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QTest::mouseRelease(tile, Qt::LeftButton, {}, {-20, 10});
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
    }

    void cancelledRegionSelectionLeadsBackToTheWholeScreen()
    {
        const CaptureForm window;
        const MessageCapture messages;
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Select region clicked")));
        AreaSelector* const selector = shownWindow<AreaSelector>();
        QVERIFY(selector != nullptr);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::CrossCursor);
        QTest::keyClick(selector, Qt::Key_Escape);
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
    }

    void draggedRegionGetsItsFrameAndItsSizeInTheFields()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        const DrawWindow* const frame = shownWindow<DrawWindow>();
        QVERIFY(frame != nullptr);
        QCOMPARE(frame->geometry(), QRect(96, 76, 328, 248));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("320"));
        QCOMPARE(field(window, "heightEdit"), QStringLiteral("240"));
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
    }

    void eachSelectionIsLogged()
    {
        const CaptureForm window;
        const MessageCapture messages;
        dragRegion(window, {100, 80}, {419, 319});
        QVERIFY(
            messages.texts().contains(QStringLiteral("[DEBUG] Selected Area - x=100, y=80, width=320, height=240")));
        QVERIFY(messages.texts().contains(QStringLiteral("[DEBUG] position 100 80 420 320")));
    }

    void regionSmallerThanTheFrameGrowsWithIt()
    {
        const CaptureForm window;
        dragRegion(window, {300, 300}, {309, 309});
        const QRect frame = shownWindow<DrawWindow>()->geometry();
        QCOMPARE(frame, QRect(296, 296, 200, 150));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("192"));
        QCOMPARE(field(window, "heightEdit"), QStringLiteral("142"));
    }

    void movedFrameIsStoredWhenItIsReleased()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        const MessageCapture messages;
        emit frame->windowGeometryChanged(true, {200, 100}, {599, 399});
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("320"));
        emit frame->windowGeometryChanged(false, {200, 100}, {599, 399});
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("400"));
        QCOMPARE(field(window, "heightEdit"), QStringLiteral("300"));
        QCOMPARE(
            messages.texts().filter(QStringLiteral("Window coords")),
            (QStringList{"[DEBUG] Window coords: (200,100) (599,399)", "[DEBUG] Window coords: (200,100) (599,399)"}));
        QVERIFY(messages.texts().contains(QStringLiteral("[DEBUG] position 200 100 600 400")));
    }

    void movedFrameIsNoPresetUnlessTheSizeIsLocked()
    {
        const CaptureForm window;
        choosePreset(window, "1:1");
        emit shownWindow<DrawWindow>()->windowGeometryChanged(false, {200, 100}, {599, 399});
        QCOMPARE(child<QComboBox>(window, "ratioBox")->currentIndex(), 0);
        choosePreset(window, "1:1");
        child<QPushButton>(window, "lockButton")->click();
        QVERIFY(shownWindow<DrawWindow>()->lockRatio());
        emit shownWindow<DrawWindow>()->windowGeometryChanged(false, {200, 100}, {599, 399});
        QCOMPARE(child<QComboBox>(window, "ratioBox")->currentText(), QStringLiteral("1:1"));
        child<QPushButton>(window, "lockButton")->click();
        QVERIFY(!shownWindow<DrawWindow>()->lockRatio());
    }

    void presetLargerThanTheScreenHasItsRatioOnTheScreen_data()
    {
        QTest::addColumn<QSize>("ratio");
        QTest::newRow("16:9") << QSize(16, 9);
        QTest::newRow("9:16") << QSize(9, 16);
        QTest::newRow("4:3") << QSize(4, 3);
        QTest::newRow("1:1") << QSize(1, 1);
    }

    void presetLargerThanTheScreenHasItsRatioOnTheScreen()
    {
        QFETCH(const QSize, ratio);
        const CaptureForm window;
        const QRect screen = screenGeometry();
        choosePreset(window, QTest::currentDataTag());
        const QRect framed = inside(*shownWindow<DrawWindow>());
        QCOMPARE(fields(window), text(framed.size()));
        // A part of the screen begins in its second column.
        QVERIFY(framed.width() >= screen.width() - 1 || framed.height() >= screen.height() - 1);
        QVERIFY(std::abs(framed.width() * ratio.height() - framed.height() * ratio.width()) <=
                std::max(ratio.width(), ratio.height()));
        QVERIFY(screen.contains(framed));
        QVERIFY((framed.center() - screen.center()).manhattanLength() <= 2);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
    }

    void lockedRatioIsKeptWhateverTheFrameWasResizedTo_data()
    {
        QTest::addColumn<QRect>("resized");
        QTest::addColumn<QRect>("kept");
        QTest::newRow("wider") << QRect(100, 80, 401, 180) << QRect(100, 80, 401, 226);
        QTest::newRow("from the left") << QRect(20, 80, 400, 180) << QRect(20, 80, 400, 225);
        const int width = screenGeometry().width();
        QTest::newRow("beyond the screen")
            << QRect(100, 0, width, width * 9 / 16) << QRect(1, 0, width - 1, (width - 1) * 9 / 16);
        // 142 * 16 / 9 is 252.4.
        QTest::newRow("smallest") << QRect(100, 80, 192, 142) << QRect(100, 80, 252, 142);
    }

    void lockedRatioIsKeptWhateverTheFrameWasResizedTo()
    {
        QFETCH(const QRect, resized);
        QFETCH(const QRect, kept);
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 259});
        child<QPushButton>(window, "lockButton")->click();
        resizeFrame(resized);
        QCOMPARE(inside(*shownWindow<DrawWindow>()), kept);
        QCOMPARE(fields(window), text(kept.size()));
    }

    void unlockedFrameHasTheSizeThatItWasGiven()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 259});
        resizeFrame({100, 80, 401, 180});
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(100, 80, 401, 180));
    }

    void lockedRatioSurvivesAnyNumberOfChanges()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 259});
        child<QPushButton>(window, "lockButton")->click();
        for (int width = 200; width < 650; width += 13) {
            const QRect framed = inside(*shownWindow<DrawWindow>());
            resizeFrame({framed.topLeft(), QSize(width, framed.height())});
        }
        QCOMPARE(inside(*shownWindow<DrawWindow>()).size(), QSize(642, 361));
    }

    void lockedRatioIsThatOfTheWholeScreenOnceThatIsChosen()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 259});
        child<QPushButton>(window, "lockButton")->click();
        QTest::mouseClick(child<Tile>(window, "fullScreenTile"), Qt::LeftButton);
        enter(window, "heightEdit", "400");
        const QSize screen = QGuiApplication::primaryScreen()->size();
        QCOMPARE(fields(window), text({400 * screen.width() / screen.height(), 400}));
    }

    void typedSizeIsTheRegionsAboutItsMiddle()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        enter(window, "widthEdit", "400");
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(60, 80, 400, 240));
        QCOMPARE(fields(window), QStringLiteral("400x240"));
        enter(window, "heightEdit", "200");
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(60, 100, 400, 200));
        QCOMPARE(fields(window), QStringLiteral("400x200"));
    }

    void typedSizeIsKeptOnTheScreen()
    {
        const CaptureForm window;
        const QPoint corner = screenGeometry().bottomRight();
        dragRegion(window, corner - QPoint(299, 299), corner);
        enter(window, "widthEdit", "600");
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(corner - QPoint(599, 299), corner));
    }

    void typedSizeOfTheWholeScreenMakesARegionInItsMiddle()
    {
        const CaptureForm window;
        choosePreset(window, "4:3");
        QTest::mouseClick(child<Tile>(window, "fullScreenTile"), Qt::LeftButton);
        enter(window, "heightEdit", "600");
        QCOMPARE(fields(window), text({screenGeometry().width() - 1, 600}));
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
        enter(window, "widthEdit", "300");
        QCOMPARE(inside(*shownWindow<DrawWindow>()).size(), QSize(300, 600));
    }

    void typedSizeIsNoPresetUnlessTheRatioIsLocked()
    {
        const CaptureForm window;
        const auto* const box = child<QComboBox>(window, "ratioBox");
        choosePreset(window, "4:3");
        child<QPushButton>(window, "lockButton")->click();
        enter(window, "widthEdit", "400");
        QCOMPARE(fields(window), QStringLiteral("400x300"));
        QCOMPARE(box->currentText(), QStringLiteral("4:3"));
        child<QPushButton>(window, "lockButton")->click();
        enter(window, "widthEdit", "500");
        QCOMPARE(fields(window), QStringLiteral("500x300"));
        QCOMPARE(box->currentIndex(), 0);
    }

    void sizeCanBeTypedWhileTheScreenIsSwitchedOn()
    {
        const CaptureForm window;
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        control->setChecked(true);
        QVERIFY(!child<QLineEdit>(window, "widthEdit")->isReadOnly());
        control->setChecked(false);
        QVERIFY(child<QLineEdit>(window, "widthEdit")->isReadOnly());
        QVERIFY(child<QLineEdit>(window, "heightEdit")->isReadOnly());
        control->setChecked(true);
        QVERIFY(!child<QLineEdit>(window, "heightEdit")->isReadOnly());
    }

    void firstEntryOfTheRatioBoxSelectsTheRegionTileAndRunsNoPreset()
    {
        const CaptureForm window;
        QTest::mouseClick(child<Tile>(window, "fullScreenTile"), Qt::LeftButton);
        const QString size = fields(window);
        choosePreset(window, "Custom");
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
        QCOMPARE(fields(window), size);
    }

    void firstEntryOfTheRatioBoxLeavesTheRegionAlone()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        const QRect frame = shownWindow<DrawWindow>()->geometry();
        choosePreset(window, "Custom");
        QCOMPARE(shownWindow<DrawWindow>()->geometry(), frame);
        QCOMPARE(fields(window), QStringLiteral("320x240"));
    }

    void windowTileLeavesTheRegionAlone()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        QTest::mouseClick(child<Tile>(window, "windowTile"), Qt::LeftButton);
        QCOMPARE(selectedTiles(window), QStringList{"windowTile"});
        QCOMPARE(fields(window), QStringLiteral("320x240"));
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(100, 80, 320, 240));
    }

    void cancelledSelectionKeepsTheRegionFromBefore()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        QTest::keyClick(shownWindow<AreaSelector>(), Qt::Key_Escape);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("320"));
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
    }

    /// On another screen, the window can be reached beside the veil.
    void whatIsChosenWhileARegionIsSelectedStays()
    {
        const CaptureForm window;
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        auto* const box = child<QComboBox>(window, "formatBox");
        control->setChecked(true);
        control->setChecked(false);
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        QTest::keyClick(box, Qt::Key_Down);
        QTest::keyClick(child<Tile>(window, "fullScreenTile"), Qt::Key_Space);
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QCOMPARE(box->currentText(), QStringLiteral("AVI"));
        QVERIFY(control->isChecked());
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        choosePreset(window, "4:3");
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"regionTile"});
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        control->setChecked(false);
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QVERIFY(!control->isChecked());
    }

    void selectorClosedByTheSystemRestoresTheCursor()
    {
        const CaptureForm window;
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        shownWindow<AreaSelector>()->close();
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
    }

    void regionThatGrowsAtTheScreensEdgeStaysOnTheScreen()
    {
        const CaptureForm window;
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QPoint corner = screen.bottomRight() - QPoint(20, 20);
        dragRegion(window, corner, corner + QPoint(5, 5));
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(screen.right() - 191, screen.bottom() - 141, 192, 142));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("192"));
    }

    void regionEndsAtTheScreensEdgeWhereverThePointerIsReleased()
    {
        const CaptureForm window;
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QTest::keyClick(child<Tile>(window, "regionTile"), Qt::Key_Space);
        emit shownWindow<AreaSelector>()->areaSelected(QRect(screen.right() - 299, 80, 500, 240));
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(screen.right() - 299, 80, 300, 240));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("300"));
    }

    void frameReleasedOffTheScreenMovesBackToIt_data()
    {
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<QPoint>("back");
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QTest::newRow("below") << QPoint(100, screen.bottom() + 1) << QPoint(100, screen.bottom() - 239);
        QTest::newRow("one row is seen") << QPoint(100, screen.bottom()) << QPoint(100, screen.bottom() - 239);
        QTest::newRow("above") << QPoint(100, -240) << QPoint(100, 0);
        QTest::newRow("enough is seen") << QPoint(100, screen.bottom() - 99) << QPoint(100, screen.bottom() - 99);
    }

    void frameReleasedOffTheScreenMovesBackToIt()
    {
        QFETCH(const QPoint, position);
        QFETCH(const QPoint, back);
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        const QRect moved(position, QSize(320, 240));
        frame->setGeometry(moved.adjusted(-4, -4, 4, 4));
        emit frame->windowGeometryChanged(true, moved.topLeft(), moved.bottomRight());
        emit frame->windowGeometryChanged(false, moved.topLeft(), moved.bottomRight());
        QCOMPARE(inside(*frame), QRect(back, moved.size()));
        QCOMPARE(field(window, "widthEdit"), QStringLiteral("320"));
        const QRect recorded = QRect(back, moved.size()) & QGuiApplication::primaryScreen()->geometry();
        QCOMPARE(field(window, "heightEdit"), QString::number(recorded.height()));
    }

    void closedFrameLeadsBackToTheWholeScreen_data()
    {
        QTest::addColumn<bool>("byItsButton");
        QTest::newRow("close button") << true;
        QTest::newRow("right click") << false;
    }

    void closedFrameLeadsBackToTheWholeScreen()
    {
        QFETCH(const bool, byItsButton);
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        if (byItsButton)
            emit frame->hideDrawWindow();
        else
            QTest::mousePress(frame, Qt::RightButton, {}, {2, 2});
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        const QSize screen = QGuiApplication::primaryScreen()->size();
        QCOMPARE(field(window, "widthEdit"), QString::number(screen.width()));
    }

    void screenSwitchTakesTheFrameAway()
    {
        const CaptureForm window;
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        dragRegion(window, {100, 80}, {419, 319});
        QVERIFY(control->isChecked());
        control->setChecked(false);
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        dragRegion(window, {100, 80}, {419, 319});
        QVERIFY(control->isChecked());
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
    }

    void screenSwitchedOffKeepsRectangleFieldsAndRatio()
    {
        const CaptureForm window;
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        choosePreset(window, "9:16");
        const QString size = fields(window);
        const MessageCapture messages;
        control->setChecked(false);
        QCOMPARE(selectedTiles(window), QStringList());
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        QCOMPARE(fields(window), size);
        QCOMPARE(child<QComboBox>(window, "ratioBox")->currentText(), QStringLiteral("9:16"));
        QCOMPARE(messages.texts().filter(QStringLiteral("] position ")), QStringList());
        control->setChecked(true);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QCOMPARE(fields(window), screenSize());
        QCOMPARE(messages.texts().filter(QStringLiteral("] position ")).size(), 1);
    }

    void formatWithVideoLeadsBackToTheWholeScreen()
    {
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        child<SCSwitchWidget>(window, "screenSwitch")->setChecked(false);
        QTest::keyClick(child<QComboBox>(window, "formatBox"), Qt::Key_Home);
        QCOMPARE(selectedTiles(window), QStringList{"fullScreenTile"});
        QCOMPARE(fields(window), screenSize());
    }

    void regionFromBeforeComesBackWithItsFrame_data()
    {
        QTest::addColumn<bool>("byTile");
        QTest::newRow("window tile") << true;
        QTest::newRow("first entry of the ratio box") << false;
    }

    /// Both leave the rectangle alone, which is a region while the screen is switched off.
    void regionFromBeforeComesBackWithItsFrame()
    {
        QFETCH(const bool, byTile);
        const CaptureForm window;
        dragRegion(window, {100, 80}, {419, 319});
        auto* const control = child<SCSwitchWidget>(window, "screenSwitch");
        control->setChecked(false);
        if (byTile)
            QTest::mouseClick(child<Tile>(window, "windowTile"), Qt::LeftButton);
        else
            choosePreset(window, "Custom");
        QVERIFY(control->isChecked());
        QCOMPARE(inside(*shownWindow<DrawWindow>()), QRect(100, 80, 320, 240));
        QCOMPARE(fields(window), QStringLiteral("320x240"));
    }

private:
    template <typename Widget>
    static Widget* child(const CaptureForm& window, const char* name)
    {
        return window.findChild<Widget*>(QLatin1String(name));
    }

    static QString field(const CaptureForm& window, const char* name) { return child<QLineEdit>(window, name)->text(); }

    static QString fields(const CaptureForm& window)
    {
        return field(window, "widthEdit") + u'x' + field(window, "heightEdit");
    }

    static QString text(const QSize& size) { return QStringLiteral("%1x%2").arg(size.width()).arg(size.height()); }

    static QRect screenGeometry() { return QGuiApplication::primaryScreen()->geometry(); }

    static QString screenSize() { return text(screenGeometry().size()); }

    static void enter(const CaptureForm& window, const char* name, const char* number)
    {
        auto* const edit = child<QLineEdit>(window, name);
        edit->selectAll();
        QTest::keyClicks(edit, QLatin1String(number));
        QTest::keyClick(edit, Qt::Key_Return);
    }

    /// As a drag of its border does.
    static void resizeFrame(const QRect& area)
    {
        auto* const frame = shownWindow<DrawWindow>();
        frame->setGeometry(area.adjusted(-4, -4, 4, 4));
        emit frame->windowGeometryChanged(false, area.topLeft(), area.bottomRight());
    }

    /// What is inside the frame's border.
    static QRect inside(const DrawWindow& frame) { return frame.geometry().adjusted(4, 4, -4, -4); }

    /// As a user chooses it, which is what the box reports.
    static void choosePreset(const CaptureForm& window, const char* name)
    {
        auto* const box = child<QComboBox>(window, "ratioBox");
        box->setCurrentText(QLatin1String(name));
        emit box->textActivated(QLatin1String(name));
    }
};

REGISTER_TEST(windowtest::run<TestCaptureController>);

#include "test_capturecontroller.moc"
