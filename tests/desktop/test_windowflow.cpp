// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/settings.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "overlays/windowhighlighter.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/desktop/desktoprun.h"
#include "tests/desktop/regiontest.h"
#include "tests/desktop/userinput.h"
#include "tests/support/heldkeyboard.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/x11clients.h"

#include <QApplication>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <cstdio>
#include <optional>

using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::drag;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::press;
using userinput::xdotool;

namespace {

constexpr QRgb kTile = qRgb(0x37, 0x37, 0x3d);
constexpr QRgb kSelectedTile = qRgb(0x2b, 0x3d, 0x4d);
/// The argument with which this program is another one with a window of its own.
constexpr char kOtherProgram[] = "--other-program";
constexpr QRect kOtherWindow(940, 460, 300, 200);
constexpr char16_t kOtherTitle[] = u"Report: 3/4";

/// Black at alpha 100 over a colour.
QRgb veiled(QRgb below)
{
    const auto mixed = [](int value) { return value * (255 - 100) / 255; };
    return qRgb(mixed(qRed(below)), mixed(qGreen(below)), mixed(qBlue(below)));
}

/// What another program says of the clicks on its window.
class OtherProgram
{
public:
    bool start()
    {
        m_process.start(QCoreApplication::applicationFilePath(),
                        {QStringLiteral("test_windowflow"), QLatin1String(kOtherProgram)});
        return waitFor("shown");
    }

    bool waitFor(const QByteArray& word)
    {
        for (int attempt = 0; attempt < 100 && !m_said.contains(word); ++attempt) {
            QTest::qWait(50);
            m_said += m_process.readAll();
        }
        const qsizetype position = m_said.indexOf(word);
        // Each time it is said counts once.
        if (position >= 0)
            m_said.remove(position, word.size());
        return position >= 0;
    }

    uint32_t windowId() const { return x11clients::windowsOf(m_process.processId()).value(0).id; }

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

/// What is captured, chosen with the pointer and the keyboard in the main window and over the desktop.
class TestWindowFlow : public RegionTest
{
    Q_OBJECT

private slots:
    void tileIsChosen_data()
    {
        QTest::addColumn<QString>("tile");
        QTest::addColumn<QString>("key");
        QTest::newRow("screen by click") << "fullScreenTile" << QString();
        QTest::newRow("region by space") << "regionTile"
                                         << "space";
        QTest::newRow("window by Return") << "windowTile"
                                          << "Return";
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
        QCOMPARE(shownWindow<AreaSelector>() != nullptr, tile == QLatin1String("regionTile"));
        QCOMPARE(shownWindow<WindowHighlighter>() != nullptr, tile == QLatin1String("windowTile"));
        const QString screen = QStringLiteral("[INFO] Select screen clicked");
        const QString region = QStringLiteral("[INFO] Select region clicked");
        QCOMPARE(messages.texts(QtInfoMsg), tile == QLatin1String("fullScreenTile") ? QStringList{screen}
                                            : tile == QLatin1String("regionTile")   ? QStringList{region}
                                                                                    : QStringList());
        QCOMPARE(openSettings()->value(settingskeys::kScreenSwitch), QVariant(true));
        if (shownWindow<AreaSelector>() == nullptr)
            expectTilePixels(tile);
        else
            press(QStringLiteral("Escape"));
    }

    void veilDarkensEveryScreen()
    {
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(isLike(colourAt(onScreen({3, 3})), veiled(kBackdrop)));
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QVERIFY(isLike(colourAt(screen.bottomRight() - QPoint(3, 3)), veiled(kBackdrop)));
        for (QScreen* const other : QGuiApplication::screens())
            QTRY_VERIFY(isLike(desktopuser::screenshot(*other).pixel(3, 20), veiled(kBackdrop)));
        press(QStringLiteral("Escape"));
        QTRY_COMPARE(colourAt(onScreen({3, 3})), kBackdrop);
        for (QScreen* const other : QGuiApplication::screens())
            QTRY_VERIFY(isLike(desktopuser::screenshot(*other).pixel(3, 20), kBackdrop));
    }

    void draggedRegionGetsItsFrame()
    {
        const MessageCapture messages;
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(isVeilActive());
        drag(onScreen(kRegion.bottomRight()), onScreen(kRegion.topLeft()));
        QTRY_VERIFY(frame() != nullptr);
        QCOMPARE(frame()->geometry(), framed(region()));
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        expectFields(kRegion.size());
        // In coordinates of the primary screen.
        QVERIFY(messages.texts().contains(QStringLiteral("[DEBUG] Selected Area - x=%1, y=%2, width=320, height=240")
                                              .arg(kRegion.x())
                                              .arg(kRegion.y())));
        expectPosition(messages, region());
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }

    void regionIsChosenWithTheKeyboardAlone()
    {
        pointTo(onScreen({200, 150}));
        QVERIFY(desktopuser::tabTo(*child<Tile>("regionTile")));
        press(QStringLiteral("space"));
        QTRY_VERIFY(isVeilActive());
        press(QStringLiteral("space"));
        for (int step = 0; step < 24; ++step) {
            press(QStringLiteral("Right"));
            press(QStringLiteral("Down"));
        }
        press(QStringLiteral("shift+Down"));
        press(QStringLiteral("Return"));
        QTRY_VERIFY(frame() != nullptr);
        QCOMPARE(frame()->geometry(), framed(QRect(onScreen({200, 150}), QSize(241, 242))));
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
    }

    void escapeGivesASelectionUp()
    {
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(isVeilActive());
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(shownWindow<AreaSelector>() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"fullScreenTile"});
        QVERIFY(frame() == nullptr);
        QTRY_COMPARE(colourAt(region().center()), kBackdrop);
    }

    void escapeInADragGivesTheSelectionUpAndTheNextOneIsWhole()
    {
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shownWindow<AreaSelector>() != nullptr);
        pointTo(onScreen({300, 560}));
        xdotool({"mousedown", "1"});
        pointTo(onScreen({500, 600}));
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(shownWindow<AreaSelector>() == nullptr);
        xdotool({"mouseup", "1"});
        desktopuser::waitUntilStill();
        QVERIFY(frame() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"fullScreenTile"});
        dragRegion();
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        expectFields(kRegion.size());
    }

    void escapeKeepsTheFrameThatIsShown()
    {
        dragRegion();
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(isVeilActive());
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(shownWindow<AreaSelector>() == nullptr);
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
        expectFields(kRegion.size());
    }

    void newSelectionMayBeginOnTheOldFrame()
    {
        dragRegion();
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shownWindow<AreaSelector>() != nullptr);
        const QRect area = region().adjusted(-2, -2, 30, 20);
        drag(area.topLeft(), area.bottomRight());
        QTRY_COMPARE(frame()->geometry(), framed(area));
        QTRY_COMPARE(wrongInTheFrame(area), QString());
        expectFields(area.size());
    }

    void hotkeyTakesTheVeilAway()
    {
        click(*child<Tile>("regionTile"));
        QTRY_VERIFY(shownWindow<AreaSelector>() != nullptr);
        const MessageCapture messages;
        QRgb corner = 0;
        bool selecting = true;
        duringTheCountdown([&] {
            corner = colourAt(onScreen({3, 3}));
            selecting = shownWindow<AreaSelector>() != nullptr || QGuiApplication::overrideCursor() != nullptr;
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
        QTRY_VERIFY(shownWindow<WindowHighlighter>() != nullptr);
        const MessageCapture messages;
        bool highlighting = true;
        duringTheCountdown([&] { highlighting = shownWindow<WindowHighlighter>() != nullptr; });
        press(QStringLiteral("F9"));
        QTRY_VERIFY(isCancelled(messages));
        QVERIFY(!highlighting);
        QTRY_VERIFY(!m_window->isMinimized());
    }

    void windowOfAnotherProgramIsPicked()
    {
        OtherProgram other;
        QVERIFY(other.start());
        const QRect position(onScreen(kOtherWindow.topLeft()), kOtherWindow.size());
        click(*child<Tile>("windowTile"));
        QTRY_VERIFY(shownWindow<WindowHighlighter>() != nullptr);
        pointTo(position.center());
        QTRY_COMPARE(shownWindow<WindowHighlighter>()->geometry(), position);
        QTRY_COMPARE(colourAt(position.topLeft() + QPoint(1, 1)), qRgb(255, 0, 0));
        xdotool({"click", "1"});
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() != nullptr);
        QVERIFY(other.waitFor("pressed"));
        QVERIFY(shownWindow<WindowHighlighter>() == nullptr);
        auto* const frame = shownWindow<SCScreenshotWindow>();
        QCOMPARE(frame->geometry(), position);
        QTRY_VERIFY(isLike(colourAt(position.topLeft() + QPoint(1, 1)), kBorder));
        // It was picked once: the next click is the other program's alone.
        xdotool({"click", "1"});
        QVERIFY(other.waitFor("pressed"));
        QCOMPARE(frame->geometry(), position);
        click(desktopuser::centreOf(*barButton("cancelButton")));
        QTRY_VERIFY(!m_window->isMinimized());
    }

    void pickedWindowBecomesTheRegionWhichFollowsIt()
    {
        OtherProgram other;
        QVERIFY(other.start());
        const QRect position(onScreen(kOtherWindow.topLeft()), kOtherWindow.size());
        frameOtherWindow(position);
        click(desktopuser::centreOf(*barButton("recordButton")));
        QTRY_VERIFY(frame() != nullptr && shownWindow<SCScreenshotWindow>() == nullptr);
        QTRY_VERIFY(!m_window->isMinimized());
        QCOMPARE(frame()->geometry(), framed(position));
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
        expectFields(position.size());
        QCOMPARE(field("fileNameEdit"), QStringLiteral("Report 34"));
        QTRY_COMPARE(wrongInTheBorder(position), QString());

        const auto moveTo = [id = other.windowId()](const QPoint& corner) {
            xdotool({"windowmove", QString::number(id), QString::number(corner.x()), QString::number(corner.y())});
        };
        click(desktopuser::centreOf(*followButton()));
        QTRY_VERIFY(followButton()->isChecked());
        moveTo(position.topLeft() + QPoint(60, 90));
        QTRY_COMPARE(frame()->geometry(), framed(position.translated(60, 90)));
        QTRY_COMPARE(wrongInTheBorder(position.translated(60, 90)), QString());
        expectFields(position.size());
        x11clients::minimise(other.windowId());
        desktopuser::waitUntilStill();
        QCOMPARE(frame()->geometry(), framed(position.translated(60, 90)));
        x11clients::activate(other.windowId());
        moveTo(position.topLeft());
        QTRY_COMPARE(frame()->geometry(), framed(position));
    }

    void windowIsPickedAndItsRegionMovedWithTheKeyboardAlone()
    {
        OtherProgram other;
        QVERIFY(other.start());
        const QRect position(onScreen(kOtherWindow.topLeft()), kOtherWindow.size());
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QVERIFY(desktopuser::tabTo(*child<Tile>("windowTile")));
        press(QStringLiteral("space"));
        QTRY_VERIFY(shownWindow<WindowHighlighter>() != nullptr);
        press(QStringLiteral("Tab"));
        QTRY_COMPARE(shownWindow<WindowHighlighter>()->geometry(), position);
        press(QStringLiteral("Return"));
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() != nullptr);
        QTRY_VERIFY(m_window->isMinimized() && shownWindow<SCScreenshotWindow>()->hasKeyboard());
        QCOMPARE(shownWindow<SCScreenshotWindow>()->geometry(), position);
        QVERIFY(desktopuser::tabTo(*barButton("recordButton")));
        press(QStringLiteral("space"));
        QTRY_VERIFY(frame() != nullptr && shownWindow<SCScreenshotWindow>() == nullptr);
        QTRY_VERIFY(m_window->isActiveWindow());
        QCOMPARE(frame()->geometry(), framed(position));

        press(QStringLiteral("ctrl+shift+F9"));
        QTRY_VERIFY(frame()->hasKeyboard());
        press(QStringLiteral("Left"));
        QTRY_COMPARE(frame()->geometry(), framed(position.translated(-10, 0)));
        QVERIFY(desktopuser::tabTo(*followButton()));
        press(QStringLiteral("space"));
        QTRY_VERIFY(followButton()->isChecked());
        press(QStringLiteral("ctrl+shift+F9"));
        QTRY_VERIFY(m_window->isActiveWindow());
    }

    void hotkeyRecordsTheWindowThatIsPicked()
    {
        OtherProgram other;
        QVERIFY(other.start());
        const QRect position(onScreen(kOtherWindow.topLeft()), kOtherWindow.size());
        frameOtherWindow(position);
        const MessageCapture messages;
        bool isOffered = true;
        duringTheCountdown([&] { isOffered = shownWindow<SCScreenshotWindow>() != nullptr; });
        press(QStringLiteral("F9"));
        QTRY_VERIFY(isCancelled(messages));
        QVERIFY(!isOffered);
        QTRY_VERIFY(!m_window->isMinimized());
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
        expectFields(position.size());
        QCOMPARE(field("fileNameEdit"), QStringLiteral("Report 34"));
        QTRY_COMPARE(wrongInTheBorder(position), QString());
    }

    void windowOfTheProgramItselfCannotBePicked()
    {
        OtherProgram other;
        QVERIFY(other.start());
        const QRect position(onScreen(kOtherWindow.topLeft()), kOtherWindow.size());
        click(*child<Tile>("windowTile"));
        QTRY_VERIFY(shownWindow<WindowHighlighter>() != nullptr);
        pointTo(position.center());
        QTRY_COMPARE(colourAt(position.topLeft() + QPoint(1, 1)), qRgb(255, 0, 0));
        // The highlight goes, and a click there does what it does in the window.
        auto* const tab = child<QPushButton>("filesTab");
        pointTo(desktopuser::centreOf(*tab));
        QTRY_VERIFY(colourAt(position.topLeft() + QPoint(1, 1)) != qRgb(255, 0, 0));
        xdotool({"click", "1"});
        QTRY_VERIFY(tab->isChecked());
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QVERIFY(shownWindow<WindowHighlighter>() != nullptr);
        // The other window still can.
        pointTo(position.center());
        QTRY_COMPARE(colourAt(position.topLeft() + QPoint(1, 1)), qRgb(255, 0, 0));
        xdotool({"click", "1"});
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() != nullptr);
        // The frame is no part of the screen yet, nor are its buttons.
        desktopuser::waitUntilStill();
        click(desktopuser::centreOf(*barButton("cancelButton")));
        QTRY_VERIFY(!m_window->isMinimized());
    }

    void escapeCancelsAWindowBeingPickedWhoeverHasTheKeyboard_data()
    {
        QTest::addColumn<bool>("isHeld");
        QTest::newRow("free") << false;
        QTest::newRow("held by another program") << true;
    }

    void escapeCancelsAWindowBeingPickedWhoeverHasTheKeyboard()
    {
        QFETCH(const bool, isHeld);
        OtherProgram other;
        QVERIFY(other.start());
        const QRect position(onScreen(kOtherWindow.topLeft()), kOtherWindow.size());
        click(*child<Tile>("windowTile"));
        QTRY_VERIFY(shownWindow<WindowHighlighter>() != nullptr);
        pointTo(position.center());
        QTRY_COMPARE(colourAt(position.topLeft() + QPoint(1, 1)), qRgb(255, 0, 0));
        std::optional<heldkeyboard::Holder> holder;
        if (isHeld)
            holder.emplace();
        QCOMPARE(heldkeyboard::isHeld(), isHeld);
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(shownWindow<WindowHighlighter>() == nullptr);
        xdotool({"click", "1"});
        QVERIFY(other.waitFor("pressed"));
        desktopuser::waitUntilStill();
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QVERIFY(!m_window->isMinimized());
    }

private:
    void frameOtherWindow(const QRect& position) const
    {
        click(*child<Tile>("windowTile"));
        QTRY_VERIFY(shownWindow<WindowHighlighter>() != nullptr);
        pointTo(position.center());
        QTRY_COMPARE(colourAt(position.topLeft() + QPoint(1, 1)), qRgb(255, 0, 0));
        xdotool({"click", "1"});
        QTRY_VERIFY(shownWindow<SCScreenshotWindow>() != nullptr);
        // The frame is no part of the screen yet, nor are its buttons.
        desktopuser::waitUntilStill();
    }

    static QPushButton* followButton()
    {
        for (const QWidget* const window : QApplication::topLevelWidgets()) {
            if (auto* const button = window->findChild<QPushButton*>(QStringLiteral("followButton")))
                return button;
        }
        return nullptr;
    }

    void expectTilePixels(const QString& selected) const
    {
        for (const char* name : {"fullScreenTile", "regionTile", "windowTile"}) {
            const auto* const tile = child<Tile>(QLatin1String(name));
            const QRgb expected = QLatin1String(name) == selected ? kSelectedTile : kTile;
            QTRY_COMPARE(colourAt(tile->mapToGlobal(QPoint(8, tile->height() / 2))), expected);
        }
    }

    /// Leaves the whole screen not chosen any more.
    void giveUpARegion() const
    {
        dragRegion();
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }
};

namespace {

int beAnotherProgram()
{
    TalkingWindow window;
    window.setWindowTitle(QString::fromUtf16(kOtherTitle));
    window.setGeometry(QRect(onScreen(kOtherWindow.topLeft()), kOtherWindow.size()));
    window.show();
    return QApplication::exec();
}

} // namespace

static int run(int argc, char* argv[])
{
    if (argc != 2 || qstrcmp(argv[1], kOtherProgram) != 0)
        return desktopuser::run<TestWindowFlow>(argc, argv);
    const TestProfile profile;
    const QApplication application(argc, argv);
    return beAnotherProgram();
}

REGISTER_TEST(run);

#include "test_windowflow.moc"
