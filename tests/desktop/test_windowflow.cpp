#include "app/appidentity.h"
#include "app/settings.h"
#include "mainwindow/sccountdownwidget.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "overlays/windowhighlighter.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>

using desktopuser::centreOf;
using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::drag;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::press;
using desktopuser::scale;
using desktopuser::shown;
using userinput::xdotool;

namespace {

constexpr QRgb kBackdrop = qRgb(10, 200, 30);
constexpr QRgb kBorder = qRgb(0x00, 0x7a, 0xcc);
constexpr QRgb kTile = qRgb(0x37, 0x37, 0x3d);
constexpr QRgb kSelectedTile = qRgb(0x2b, 0x3d, 0x4d);
constexpr int kBorderPx = 4;
/// On the primary screen, beside the main window and at whole physical pixels at all scales of these tests.
constexpr QRect kRegion(900, 120, 320, 240);
constexpr QPoint kWindowPlace(20, 40);
/// The argument with which this program is another one with a window of its own.
constexpr char kOtherProgram[] = "--other-program";
constexpr QRect kOtherWindow(940, 460, 300, 200);

QRect region()
{
    return {onScreen(kRegion.topLeft()), kRegion.size()};
}

QRect framed(const QRect& area)
{
    return area.adjusted(-kBorderPx, -kBorderPx, kBorderPx, kBorderPx);
}

/// Black at alpha 100 over the backdrop.
QRgb veiled()
{
    const auto mixed = [](int value) { return value * (255 - 100) / 255; };
    return qRgb(mixed(qRed(kBackdrop)), mixed(qGreen(kBackdrop)), mixed(qBlue(kBackdrop)));
}

bool isLike(QRgb seen, QRgb expected)
{
    constexpr int kTolerance = 2;
    return std::abs(qRed(seen) - qRed(expected)) <= kTolerance &&
           std::abs(qGreen(seen) - qGreen(expected)) <= kTolerance &&
           std::abs(qBlue(seen) - qBlue(expected)) <= kTolerance;
}

/// The frame's border is seen around the area; empty when it is so.
QString wrongInTheBorder(const QRect& area)
{
    const QRect frame = framed(area);
    const QList<QPoint> border{{frame.left() + 1, area.center().y()},
                               {frame.right() - 1, area.center().y()},
                               {area.center().x(), frame.top() + 1},
                               {area.center().x(), frame.bottom() - 1}};
    for (const QPoint& place : border) {
        if (!isLike(colourAt(place), kBorder))
            return QStringLiteral("the border at (%1, %2)").arg(place.x()).arg(place.y());
    }
    return {};
}

/// The border is seen, and through the frame what lies below; empty when it is so.
QString wrongInTheFrame(const QRect& area)
{
    const QRect frame = framed(area);
    const QString wrong = wrongInTheBorder(area);
    if (!wrong.isEmpty())
        return wrong;
    const QList<QPoint> clear{area.topLeft() + QPoint(2, 2), area.bottomRight() - QPoint(2, 2), area.center(),
                              frame.bottomRight() + QPoint(3, 3)};
    for (const QPoint& place : clear) {
        if (!isLike(colourAt(place), kBackdrop))
            return QStringLiteral("(%1, %2) is covered").arg(place.x()).arg(place.y());
    }
    return {};
}

/// What another program says of the clicks on its window.
class OtherProgram
{
public:
    bool start()
    {
        m_process.start(QCoreApplication::applicationFilePath(), {QLatin1String(kOtherProgram)});
        return waitFor("shown");
    }

    bool waitFor(const QByteArray& word)
    {
        for (int attempt = 0; attempt < 100 && !m_said.contains(word); ++attempt) {
            QTest::qWait(50);
            m_said += m_process.readAll();
        }
        return m_said.contains(word);
    }

    ~OtherProgram()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    QByteArray m_said;
};

/// The window of the other program.
class TalkingWindow : public QWidget
{
public:
    TalkingWindow() : QWidget(nullptr, Qt::FramelessWindowHint) {}

protected:
    void mousePressEvent(QMouseEvent* /*event*/) override { say("pressed"); }
    void showEvent(QShowEvent* /*event*/) override { say("shown"); }

private:
    static void say(const char* word)
    {
        std::puts(word);
        std::fflush(stdout);
    }
};

} // namespace

/// What is captured, chosen with the pointer and the keyboard in the main window and on what floats over the desktop.
class TestWindowFlow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::screens().size(), qEnvironmentVariableIsSet("KESTRANO_TEST_TWO_SCREENS") ? 2 : 1);
        m_backdrop.setStyleSheet(QStringLiteral("background-color: rgb(10, 200, 30)"));
        m_backdrop.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
        m_backdrop.setGeometry(QGuiApplication::primaryScreen()->virtualGeometry());
        m_backdrop.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_backdrop));
    }

    void init()
    {
        const auto settings = openSettings();
        settings->clear();
        settings->setValue(settingskeys::kFirstRun, false);
        settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("F9"));
        pointTo(onScreen({3, 3}));
        m_window = std::make_unique<SCMainWindow>();
        m_window->move(onScreen(kWindowPlace));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QTest::qWait(150);
    }

    void cleanup()
    {
        xdotool({"mouseup", "1"});
        m_window.reset();
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    }

    void tileIsChosen_data()
    {
        QTest::addColumn<QString>("tile");
        QTest::addColumn<QString>("key");
        for (const char* tile : {"fullScreenTile", "regionTile", "windowTile"}) {
            for (const char* key : {"", "space", "Return"})
                QTest::addRow("%s by %s", tile, *key == '\0' ? "click" : key) << QString(tile) << QString(key);
        }
    }

    void tileIsChosen()
    {
        QFETCH(const QString, tile);
        QFETCH(const QString, key);
        auto* const chosen = child<Tile>(tile);
        if (tile == QLatin1String("fullScreenTile"))
            giveUpARegion();
        const MessageCapture messages;
        if (key.isEmpty()) {
            click(*chosen);
        } else {
            QVERIFY(desktopuser::tabTo(*chosen));
            press(key);
        }
        pointTo(onScreen({3, 3}));
        QTRY_COMPARE(selectedTiles(), QStringList{tile});
        QCOMPARE(shown<AreaSelector>() != nullptr, tile == QLatin1String("regionTile"));
        QCOMPARE(shown<WindowHighlighter>() != nullptr, tile == QLatin1String("windowTile"));
        const QString screen = QStringLiteral("[INFO] Select screen clicked");
        const QString region = QStringLiteral("[INFO] Select region clicked");
        QCOMPARE(messages.texts(QtInfoMsg), tile == QLatin1String("fullScreenTile") ? QStringList{screen}
                                            : tile == QLatin1String("regionTile")   ? QStringList{region}
                                                                                    : QStringList());
        QCOMPARE(openSettings()->value(settingskeys::kScreenSwitch), QVariant(true));
        if (shown<AreaSelector>() == nullptr)
            expectTilePixels(tile);
        else
            press(QStringLiteral("Escape"));
    }

    void veilDarkensThePrimaryScreenAndNoOther()
    {
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(isLike(colourAt(onScreen({3, 3})), veiled()));
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QVERIFY(isLike(colourAt(screen.bottomRight() - QPoint(3, 3)), veiled()));
        QCOMPARE(shown<AreaSelector>()->geometry(), screen);
        for (const QScreen* const other : QGuiApplication::screens()) {
            if (other != QGuiApplication::primaryScreen())
                QCOMPARE(const_cast<QScreen*>(other)->grabWindow().toImage().pixel(20, 20) | 0xff000000, kBackdrop);
        }
        press(QStringLiteral("Escape"));
        QTRY_COMPARE(colourAt(onScreen({3, 3})), kBackdrop);
    }

    void draggedRegionGetsItsFrame_data()
    {
        QTest::addColumn<QPoint>("from");
        QTest::addColumn<QPoint>("to");
        QTest::newRow("from top left") << kRegion.topLeft() << kRegion.bottomRight();
        QTest::newRow("from bottom right") << kRegion.bottomRight() << kRegion.topLeft();
        QTest::newRow("from bottom left") << kRegion.bottomLeft() << kRegion.topRight();
    }

    void draggedRegionGetsItsFrame()
    {
        QFETCH(const QPoint, from);
        QFETCH(const QPoint, to);
        const MessageCapture messages;
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shown<AreaSelector>() != nullptr && shown<AreaSelector>()->isActiveWindow());
        drag(onScreen(from), onScreen(to));
        QTRY_VERIFY(frame() != nullptr);
        QCOMPARE(frame()->geometry(), framed(region()));
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        QVERIFY(shown<AreaSelector>() == nullptr);
        expectFields(kRegion.size());
        QVERIFY(messages.texts().contains(QStringLiteral("[DEBUG] Selected Area - x=%1, y=%2, width=320, height=240")
                                              .arg(kRegion.x())
                                              .arg(kRegion.y())) ||
                QGuiApplication::screens().size() == 2);
        expectPosition(messages, region());
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }

    void escapeGivesASelectionUp()
    {
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shown<AreaSelector>() != nullptr);
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(shown<AreaSelector>() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"fullScreenTile"});
        QVERIFY(frame() == nullptr);
        QTRY_COMPARE(colourAt(region().center()), kBackdrop);
    }

    void escapeInADragGivesTheSelectionUpAndTheNextOneIsWhole()
    {
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shown<AreaSelector>() != nullptr);
        pointTo(onScreen({300, 560}));
        xdotool({"mousedown", "1"});
        pointTo(onScreen({500, 600}));
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(shown<AreaSelector>() == nullptr);
        xdotool({"mouseup", "1"});
        QTest::qWait(100);
        QVERIFY(frame() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"fullScreenTile"});
        dragRegion();
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        expectFields(kRegion.size());
    }

    void escapeKeepsTheFrameThatStands()
    {
        dragRegion();
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shown<AreaSelector>() != nullptr);
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(shown<AreaSelector>() == nullptr);
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
        expectFields(kRegion.size());
    }

    void newSelectionMayBeginOnTheOldFrame()
    {
        dragRegion();
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shown<AreaSelector>() != nullptr);
        const QRect area = region().adjusted(-2, -2, 30, 20);
        drag(area.topLeft(), area.bottomRight());
        QTRY_COMPARE(frame()->geometry(), framed(area));
        QTRY_COMPARE(wrongInTheFrame(area), QString());
        expectFields(area.size());
    }

    void presetIsChosenInItsBox_data()
    {
        QTest::addColumn<QSize>("physical");
        QTest::newRow("16:9") << QSize(1920, 1080);
        QTest::newRow("9:16") << QSize(608, 1080);
        QTest::newRow("4:3") << QSize(1440, 1080);
        QTest::newRow("1:1") << QSize(1080, 1080);
    }

    void presetIsChosenInItsBox()
    {
        QFETCH(const QSize, physical);
        choosePreset(QTest::currentDataTag());
        QTRY_VERIFY(frame() != nullptr);
        // Truncated to whole logical pixels.
        const QSize size(int(physical.width() / scale()), int(physical.height() / scale()));
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QSize outer = size + QSize(2 * kBorderPx, 2 * kBorderPx);
        const QPoint corner((screen.width() - outer.width()) / 2 + screen.x(),
                            (screen.height() - outer.height()) / 2 + screen.y());
        QTRY_COMPARE(frame()->geometry(), QRect(corner, outer));
        QTRY_VERIFY(isLike(colourAt(corner + QPoint(1, outer.height() / 2)), kBorder));
        QVERIFY(isLike(colourAt(corner + QPoint(outer.width() / 2, outer.height() - 2)), kBorder));
        QCOMPARE(field("widthEdit"), QString::number(physical.width()));
        QCOMPARE(field("heightEdit"), QString::number(physical.height()));
        QCOMPARE(child<QComboBox>("ratioBox")->currentText(), QLatin1String(QTest::currentDataTag()));
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }

    void frameIsMovedByItsBar()
    {
        dragRegion();
        const MessageCapture messages;
        const QPoint bar = frame()->geometry().topRight() + QPoint(-40, -15);
        drag(bar, bar + QPoint(-20, 44));
        const QRect moved = region().translated(-20, 44);
        QTRY_COMPARE(frame()->geometry(), framed(moved));
        QTRY_COMPARE(wrongInTheFrame(moved), QString());
        expectFields(kRegion.size());
        expectPosition(messages, moved);
        const QStringList coords = messages.texts().filter(QStringLiteral("Window coords"));
        QVERIFY(coords.size() > 1);
        // Only where it rests is applied.
        QCOMPARE(messages.texts().filter(QStringLiteral("] position ")).size(), 1);
    }

    void frameIsResizedByEachHandle_data()
    {
        QTest::addColumn<QPoint>("handle");
        QTest::addColumn<QPoint>("distance");
        QTest::addColumn<QMargins>("grown");
        const QRect outer(0, 0, kRegion.width() + 2 * kBorderPx, kRegion.height() + 2 * kBorderPx);
        const QPoint middle = outer.center();
        const QPoint last = outer.bottomRight() - QPoint(1, 1);
        QTest::newRow("top left") << QPoint(1, 1) << QPoint(-20, -14) << QMargins(20, 14, 0, 0);
        QTest::newRow("top right") << QPoint(last.x(), 1) << QPoint(20, -14) << QMargins(0, 14, 20, 0);
        QTest::newRow("bottom left") << QPoint(1, last.y()) << QPoint(-20, 14) << QMargins(20, 0, 0, 14);
        QTest::newRow("bottom right") << last << QPoint(20, 14) << QMargins(0, 0, 20, 14);
        QTest::newRow("left") << QPoint(1, middle.y()) << QPoint(-20, 14) << QMargins(20, 0, 0, 0);
        QTest::newRow("right") << QPoint(last.x(), middle.y()) << QPoint(20, 14) << QMargins(0, 0, 20, 0);
        QTest::newRow("top") << QPoint(middle.x(), 1) << QPoint(20, -14) << QMargins(0, 14, 0, 0);
        QTest::newRow("bottom") << QPoint(middle.x(), last.y()) << QPoint(20, 14) << QMargins(0, 0, 0, 14);
        QTest::newRow("smaller by a corner") << last << QPoint(-40, -20) << QMargins(0, 0, -40, -20);
        QTest::newRow("no smaller than the minimum") << last << QPoint(-300, -220) << QMargins(0, 0, -128, -98);
    }

    void frameIsResizedByEachHandle()
    {
        QFETCH(const QPoint, handle);
        QFETCH(const QPoint, distance);
        QFETCH(const QMargins, grown);
        dragRegion();
        const MessageCapture messages;
        const QPoint from = frame()->geometry().topLeft() + handle;
        drag(from, from + distance);
        const QRect area = region().marginsAdded(grown);
        QTRY_COMPARE(frame()->geometry(), framed(area));
        QTRY_COMPARE(wrongInTheFrame(area), QString());
        expectFields(area.size());
        expectPosition(messages, area);
        QCOMPARE(messages.texts().filter(QStringLiteral("Window coords")).size(), 1);
    }

    void lockedSizeKeepsItsRatio()
    {
        dragRegion();
        click(*child<QPushButton>("lockButton"));
        QVERIFY(child<QPushButton>("lockButton")->isChecked());
        const QRect before = frame()->geometry();
        const QPoint handle(before.right() - 1, before.center().y());
        drag(handle, handle + QPoint(40, 0));
        // 368 wide, at 328 to 248 so 278 high: 15 more above and below.
        const QRect area = region().adjusted(0, -15, 40, 15);
        QTRY_COMPARE(frame()->geometry(), framed(area));
        expectFields(area.size());
        click(*child<QPushButton>("lockButton"));
        drag(handle + QPoint(40, 0), handle);
        QTRY_COMPARE(frame()->geometry(), framed(region().adjusted(0, -15, 0, 15)));
    }

    void presetStaysChosenWhileTheSizeIsLocked()
    {
        choosePreset("9:16");
        QTRY_VERIFY(frame() != nullptr);
        click(*child<QPushButton>("lockButton"));
        QPoint bar = frame()->geometry().topRight() + QPoint(-40, -15);
        drag(bar, bar + QPoint(20, 0));
        QCOMPARE(child<QComboBox>("ratioBox")->currentText(), QStringLiteral("9:16"));
        click(*child<QPushButton>("lockButton"));
        bar += QPoint(20, 0);
        drag(bar, bar - QPoint(20, 0));
        QTRY_COMPARE(child<QComboBox>("ratioBox")->currentIndex(), 0);
    }

    void frameIsClosed_data()
    {
        QTest::addColumn<bool>("byItsButton");
        QTest::newRow("by its button") << true;
        QTest::newRow("by a right click on its border") << false;
    }

    void frameIsClosed()
    {
        QFETCH(const bool, byItsButton);
        dragRegion();
        if (byItsButton)
            click(*barButton("closeButton"));
        else
            click(frame()->geometry().topLeft() + QPoint(60, 1), "3");
        QTRY_VERIFY(frame() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"fullScreenTile"});
        expectFields(QGuiApplication::primaryScreen()->size());
        QTRY_COMPARE(colourAt(region().topLeft() - QPoint(2, -40)), kBackdrop);
        QCOMPARE(colourAt(region().topRight() + QPoint(-20, -20)), kBackdrop);
    }

    void frameReopensAfterItWasClosed()
    {
        dragRegion();
        click(*barButton("closeButton"));
        QTRY_VERIFY(frame() == nullptr);
        dragRegion();
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        QVERIFY(barButton("closeButton")->isVisible());
    }

    void screenSwitchTakesTheFrameAwayAndTheTilesAlong()
    {
        dragRegion();
        click(*child<QWidget>("screenSwitch"));
        QTRY_VERIFY(frame() == nullptr);
        QCOMPARE(selectedTiles(), QStringList());
        QTRY_COMPARE(colourAt(region().topLeft() - QPoint(2, -40)), kBackdrop);
    }

    void countdownStandsOverTheRegionsCentreAndTheFrameStays()
    {
        dragRegion();
        const MessageCapture messages;
        QRect countdown;
        QRgb ring = 0;
        QString wrong;
        const QPoint centre = region().topLeft() + QPoint(kRegion.width() / 2, kRegion.height() / 2);
        duringTheCountdown([&] {
            countdown = shown<SCCountdownWidget>() != nullptr ? shown<SCCountdownWidget>()->geometry() : QRect();
            ring = colourAt(centre - QPoint(99, 20));
            wrong = wrongInTheBorder(region());
        });
        press(QStringLiteral("F9"));
        QTRY_VERIFY(isCancelled(messages));
        QCOMPARE(countdown, QRect(centre - QPoint(100, 120), QSize(200, 240)));
        QCOMPARE(QColor(ring), QColor(kBorder));
        QCOMPARE(wrong, QString());
        QTRY_VERIFY(!m_window->isMinimized());
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        QVERIFY(shown<SCCountdownWidget>() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }

    void frameStartsTheCountdownItself()
    {
        dragRegion();
        const MessageCapture messages;
        bool minimised = false;
        bool recording = false;
        duringTheCountdown([&] {
            minimised = m_window->isMinimized();
            recording = frame() != nullptr && frame()->isRecording();
        });
        click(*barButton("startButton"));
        QTRY_VERIFY(isCancelled(messages));
        QVERIFY(minimised);
        QVERIFY(recording);
        QTRY_VERIFY(!m_window->isMinimized());
        QTRY_VERIFY(!frame()->isRecording());
    }

    void hotkeyTakesTheVeilAway()
    {
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shown<AreaSelector>() != nullptr);
        const MessageCapture messages;
        QRgb corner = 0;
        bool selecting = true;
        duringTheCountdown([&] {
            corner = colourAt(onScreen({3, 3}));
            selecting = shown<AreaSelector>() != nullptr || QGuiApplication::overrideCursor() != nullptr;
        });
        press(QStringLiteral("F9"));
        QTRY_VERIFY(isCancelled(messages));
        QCOMPARE(QColor(corner), QColor(kBackdrop));
        QVERIFY(!selecting);
        QTRY_VERIFY(!m_window->isMinimized());
        QCOMPARE(selectedTiles(), QStringList{"fullScreenTile"});
    }

    void hotkeyTakesTheHighlighterAway()
    {
        click(*child<Tile>("windowTile"));
        QTRY_VERIFY(shown<WindowHighlighter>() != nullptr);
        const MessageCapture messages;
        bool highlighting = true;
        duringTheCountdown([&] { highlighting = shown<WindowHighlighter>() != nullptr; });
        press(QStringLiteral("F9"));
        QTRY_VERIFY(isCancelled(messages));
        QVERIFY(!highlighting);
        QTRY_VERIFY(!m_window->isMinimized());
    }

    void windowOfAnotherProgramIsPicked()
    {
        OtherProgram other;
        QVERIFY(other.start());
        const QRect place(onScreen(kOtherWindow.topLeft()), kOtherWindow.size());
        const QSignalSpy picked(m_window.get(), &SCMainWindow::windowPicked);
        click(*child<Tile>("windowTile"));
        QTRY_VERIFY(shown<WindowHighlighter>() != nullptr);
        pointTo(place.center());
        QTRY_COMPARE(shown<WindowHighlighter>()->geometry(), place);
        QTRY_COMPARE(colourAt(place.topLeft() + QPoint(1, 1)), qRgb(255, 0, 0));
        xdotool({"click", "1"});
        QTRY_COMPARE(picked, (QList<QVariantList>{{place}}));
        QVERIFY(other.waitFor("pressed"));
        QVERIFY(shown<WindowHighlighter>() == nullptr);
        QTRY_VERIFY(colourAt(place.topLeft() + QPoint(1, 1)) != qRgb(255, 0, 0));
        // It was picked once: the next click is the other program's alone.
        xdotool({"click", "1"});
        QTest::qWait(150);
        QCOMPARE(picked.size(), 1);
    }

private:
    /// Looks at what there is during the next countdown, which runs within the event that starts it, and cancels it.
    void duringTheCountdown(const std::function<void()>& look) const
    {
        constexpr int kSomewhereInIt = 1000;
        QTimer::singleShot(kSomewhereInIt, m_window.get(), [look] {
            look();
            press(QStringLiteral("F9"));
        });
    }

    static bool isCancelled(const MessageCapture& messages)
    {
        return messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded"));
    }

    template <typename Widget>
    Widget* child(const QString& name) const
    {
        return m_window->findChild<Widget*>(name);
    }

    static DrawWindow* frame() { return shown<DrawWindow>(); }

    static QPushButton* barButton(const char* name)
    {
        for (const QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->objectName() == QLatin1String("buttonBackground"))
                return window->findChild<QPushButton*>(QLatin1String(name));
        }
        return nullptr;
    }

    QString field(const char* name) const { return child<QLineEdit>(QLatin1String(name))->text(); }

    /// The fields show what the area is in physical pixels.
    void expectFields(const QSize& logical) const
    {
        QTRY_COMPARE(field("widthEdit"), QString::number(int(logical.width() * scale())));
        QCOMPARE(field("heightEdit"), QString::number(int(logical.height() * scale())));
    }

    /// The area last applied, its second corner one past the last pixel.
    static void expectPosition(const MessageCapture& messages, const QRect& area)
    {
        const QStringList positions = messages.texts().filter(QStringLiteral("] position "));
        QCOMPARE(positions.isEmpty() ? QString() : positions.constLast(), QStringLiteral("[DEBUG] position %1 %2 %3 %4")
                                                                              .arg(area.x())
                                                                              .arg(area.y())
                                                                              .arg(area.x() + area.width())
                                                                              .arg(area.y() + area.height()));
    }

    QStringList selectedTiles() const
    {
        QStringList names;
        for (const Tile* const tile : m_window->findChildren<Tile*>()) {
            if (tile->isSelected())
                names.append(tile->objectName());
        }
        return names;
    }

    void expectTilePixels(const QString& selected) const
    {
        for (const char* name : {"fullScreenTile", "regionTile", "windowTile"}) {
            const auto* const tile = child<Tile>(QLatin1String(name));
            const QRgb expected = QLatin1String(name) == selected ? kSelectedTile : kTile;
            QTRY_COMPARE(colourAt(tile->mapToGlobal(QPoint(8, tile->height() / 2))), expected);
        }
    }

    void dragRegion() const
    {
        click(*child<Tile>(QStringLiteral("regionTile")));
        QTRY_VERIFY(shown<AreaSelector>() != nullptr);
        QTest::qWait(50);
        drag(region().topLeft(), region().bottomRight());
        QTRY_VERIFY(frame() != nullptr && shown<AreaSelector>() == nullptr);
        QTest::qWait(100);
    }

    /// Leaves the whole screen not chosen any more.
    void giveUpARegion() const
    {
        dragRegion();
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }

    void choosePreset(const char* name) const
    {
        auto* const box = child<QComboBox>(QStringLiteral("ratioBox"));
        click(*box);
        QTRY_VERIFY(box->view()->isVisible());
        QTest::qWait(150);
        const QModelIndex entry = box->model()->index(box->findText(QLatin1String(name)), box->modelColumn());
        click(box->view()->viewport()->mapToGlobal(box->view()->visualRect(entry).center()));
        QTRY_VERIFY(!box->view()->isVisible());
    }

    QWidget m_backdrop;
    std::unique_ptr<SCMainWindow> m_window;
};

namespace {

int beAnotherProgram()
{
    TalkingWindow window;
    window.setGeometry(QRect(onScreen(kOtherWindow.topLeft()), kOtherWindow.size()));
    window.show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char* argv[])
{
    const bool isOther = argc == 2 && qstrcmp(argv[1], kOtherProgram) == 0;
    const TestProfile profile;
    // Before the toolkit looks at the screens.
    if (!isOther && !desktopuser::splitDisplayWhereAsked())
        return EXIT_FAILURE;
    appidentity::apply();
    QApplication application(argc, argv);
    if (isOther)
        return beAnotherProgram();
    // Windows closed by a test must not end the test program.
    QApplication::setQuitOnLastWindowClosed(false);
    TestWindowFlow test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_windowflow.moc"
