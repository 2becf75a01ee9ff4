// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sctranslator.h"
#include "overlays/windowhighlighter.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"
#include "tests/support/widgetimage.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

using Event = platform::MouseHook::Event;
using platform::NativeWindow;

namespace {

const auto kSecondInstance = QStringLiteral("--second-instance");
constexpr int kFatalExitCode = 42;
constexpr int kWatchdogMs = 60'000;

/// Windows that there are only here; the test outlives the highlighter and moves the mouse.
struct Desktop
{
    std::map<NativeWindow, QRect> windows{};
    /// Windows that exist but have no known position.
    std::map<NativeWindow, bool> unreadable{};
    NativeWindow under = 0;
    /// From the top.
    std::vector<NativeWindow> stack{};
    /// Not to be picked.
    NativeWindow own = 0;
    unsigned long hookError = 0;
    platform::MouseHook::Handler handler{};
    std::function<void()> hotkey{};
    std::function<void()> cancelKey{};
    bool wanted = false;
    bool buttonDown = false;
    /// How often it was asked whether a button is held down.
    int buttonLooks = 0;
    QStringList calls{};
};

class FakeDesktop : public PickingDesktop
{
public:
    explicit FakeDesktop(Desktop& desktop) : m_desktop(desktop) {}

    unsigned long installMouseHook(platform::MouseHook::Handler handler) override
    {
        m_desktop.calls << QStringLiteral("hook");
        m_desktop.handler = std::move(handler);
        return m_desktop.hookError;
    }
    void removeMouseHook() override
    {
        m_desktop.calls << QStringLiteral("unhook");
        m_desktop.handler = nullptr;
    }
    void setInputWanted(bool wanted) override { m_desktop.wanted = wanted; }
    void registerCancelKey(std::function<void()> pressed) override { m_desktop.cancelKey = std::move(pressed); }
    void registerHotkey(QWidget& window, std::function<void()> pressed) override
    {
        m_desktop.calls << QStringLiteral("hotkey");
        QVERIFY(window.winId() != 0);
        m_desktop.hotkey = std::move(pressed);
    }
    void unregisterHotkey() override { m_desktop.calls << QStringLiteral("no hotkey"); }
    NativeWindow windowAt(const QPoint&) const override { return m_desktop.under; }
    std::vector<NativeWindow> windows() const override { return m_desktop.stack; }
    void activate(NativeWindow window) override { m_desktop.calls << QStringLiteral("activate %1").arg(window); }
    bool isPickable(NativeWindow window) const override { return window != m_desktop.own; }
    bool exists(NativeWindow window) const override { return m_desktop.windows.contains(window); }
    std::optional<QRect> rectOf(NativeWindow window) const override
    {
        const auto found = m_desktop.windows.find(window);
        if (found == m_desktop.windows.end() || m_desktop.unreadable.contains(window))
            return std::nullopt;
        return found->second;
    }
    bool isMouseButtonDown() const override
    {
        ++m_desktop.buttonLooks;
        return m_desktop.buttonDown;
    }

private:
    Desktop& m_desktop;
};

class Highlighter : public WindowHighlighter
{
public:
    explicit Highlighter(Desktop& desktop) : WindowHighlighter(std::make_unique<FakeDesktop>(desktop)) {}

    using WindowHighlighter::nativeEvent;
};

void moveOver(Desktop& desktop, NativeWindow window, const QPoint& position = {})
{
    desktop.under = window;
    desktop.handler(Event::Move, position);
}

QTimer* updateTimer(const WindowHighlighter& highlighter)
{
    return highlighter.findChild<QTimer*>();
}

/// What the timer would do in its time.
void tick(const WindowHighlighter& highlighter)
{
    QVERIFY(QMetaObject::invokeMethod(updateTimer(highlighter), "timeout"));
}

QMenu* openMenu()
{
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

int runUntilQuit()
{
    QTimer watchdog;
    QObject::connect(&watchdog, &QTimer::timeout, [] { QCoreApplication::exit(EXIT_FAILURE); });
    watchdog.start(kWatchdogMs);
    return QCoreApplication::exec();
}

/// Says what a program that ends in a fatal message had to say, and ends where it would abort.
void endInFatal(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtFatalMsg)
        return;
    std::fputs(qPrintable(message), stdout);
    std::fflush(stdout);
    std::_Exit(kFatalExitCode);
}

int makeTwo()
{
    qInstallMessageHandler(&endInFatal);
    Desktop desktop;
    const Highlighter first(desktop);
    const Highlighter second(desktop);
    return EXIT_SUCCESS;
}

} // namespace

class TestWindowHighlighter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // A menu takes clicks from a pointer only that has a position.
        QWidget widget;
        widget.show();
        QTest::mouseMove(&widget, QPoint(1, 1));
    }

    void startsHiddenAndPrepared()
    {
        Desktop desktop;
        const Highlighter highlighter(desktop);
        QVERIFY(!highlighter.isVisible());
        QCOMPARE(highlighter.windowFlags(),
                 Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowTransparentForInput);
        QVERIFY(highlighter.testAttribute(Qt::WA_TranslucentBackground));
        QVERIFY(highlighter.testAttribute(Qt::WA_ShowWithoutActivating));
        QVERIFY(highlighter.testAttribute(Qt::WA_NoMousePropagation));
        QCOMPARE(updateTimer(highlighter)->interval(), 100);
        QVERIFY(!updateTimer(highlighter)->isSingleShot());
        QVERIFY(!updateTimer(highlighter)->isActive());
        QCOMPARE(desktop.calls, (QStringList{"hook", "hotkey"}));
        QVERIFY(!desktop.wanted);
    }

    void endUndoesEverything()
    {
        Desktop desktop;
        {
            Highlighter highlighter(desktop);
            highlighter.show();
        }
        QCOMPARE(desktop.calls, (QStringList{"hook", "hotkey", "unhook", "no hotkey"}));
        QVERIFY(!desktop.wanted);
        // There is room for another one.
        const Highlighter next(desktop);
    }

    void aSecondInstanceIsFatal()
    {
        QProcess program;
        program.start(QCoreApplication::applicationFilePath(),
                      {QStringLiteral("test_windowhighlighter"), kSecondInstance});
        QVERIFY(program.waitForFinished(60000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), kFatalExitCode);
        QCOMPARE(program.readAllStandardOutput(), QByteArray("WindowHighlighter already instantiated"));
    }

    void failureToHookIsReportedAndEndsTheProgram()
    {
        Desktop desktop;
        desktop.hookError = 1428;
        const messagebox::Recorder boxes;
        const Highlighter highlighter(desktop);
        QCOMPARE(boxes.calls().size(), std::size_t{1});
        QCOMPARE(boxes.calls()[0].kind, messagebox::Kind::Critical);
        QVERIFY(boxes.calls()[0].parent == nullptr);
        QCOMPARE(boxes.calls()[0].title, QStringLiteral("Error"));
        QCOMPARE(boxes.calls()[0].text, QStringLiteral("Failed to install mouse hook (Error: 1428)"));
        // Made to its end.
        QCOMPARE(desktop.calls, (QStringList{"hook", "hotkey"}));
        QCOMPARE(runUntilQuit(), EXIT_SUCCESS);
    }

    void showingAndHidingStartAndStopTheTimer()
    {
        Desktop desktop;
        Highlighter highlighter(desktop);
        highlighter.show();
        QVERIFY(updateTimer(highlighter)->isActive());
        QVERIFY(desktop.wanted);
        highlighter.hide();
        QVERIFY(!updateTimer(highlighter)->isActive());
        QVERIFY(!desktop.wanted);
        highlighter.setVisible(true);
        QVERIFY(updateTimer(highlighter)->isActive());
    }

    void framesTheWindowUnderThePointer()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}, {8, QRect(100, 100, 80, 20)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        QCOMPARE(highlighter.geometry(), QRect(30, 40, 300, 200));
        moveOver(desktop, 8);
        QCOMPARE(highlighter.geometry(), QRect(100, 100, 80, 20));
        QVERIFY(highlighter.isVisible());
    }

    void keysLeadFromWindowToWindowAndPick()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}, {8, QRect(100, 100, 80, 20)}, {9, QRect(0, 0, 50, 50)}}};
        desktop.stack = {8, 9, 7};
        desktop.own = 9;
        Highlighter highlighter(desktop);
        const QSignalSpy picked(&highlighter, &WindowHighlighter::windowClicked);
        QWidget tile;
        const auto framedBy = [&](Qt::Key key) {
            QTest::keyClick(&tile, key);
            return highlighter.hoveredWindow();
        };
        QCOMPARE(framedBy(Qt::Key_Tab), NativeWindow(0));
        highlighter.show();
        QCOMPARE(framedBy(Qt::Key_Return), NativeWindow(0));
        QCOMPARE(framedBy(Qt::Key_Tab), NativeWindow(8));
        QCOMPARE(highlighter.geometry(), QRect(100, 100, 80, 20));
        QCOMPARE(framedBy(Qt::Key_Down), NativeWindow(7));
        QCOMPARE(framedBy(Qt::Key_Right), NativeWindow(8));
        QCOMPARE(framedBy(Qt::Key_Left), NativeWindow(7));
        QCOMPARE(framedBy(Qt::Key_Up), NativeWindow(8));
        QCOMPARE(framedBy(Qt::Key_Backtab), NativeWindow(7));
        QVERIFY(picked.isEmpty());
        QTest::keyClick(&tile, Qt::Key_Enter);
        QCOMPARE(picked, (QList<QVariantList>{{QRect(30, 40, 300, 200)}}));
        // A covered window would not be seen.
        QCOMPARE(desktop.calls.last(), QStringLiteral("activate 7"));
    }

    void fieldForTextKeepsItsKeysWhileAWindowIsPicked()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        desktop.stack = {7};
        Highlighter highlighter(desktop);
        const QSignalSpy picked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        QLineEdit field(QStringLiteral("name"));
        QTest::keyClick(&field, Qt::Key_Left);
        QCOMPARE(field.cursorPosition(), 3);
        QCOMPARE(highlighter.hoveredWindow(), NativeWindow(0));
    }

    void keysAreTakenOnlyWhileSomebodyReceivesTheWindow()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        desktop.stack = {7};
        Highlighter highlighter(desktop);
        QWidget tile;
        desktop.hotkey();
        QVERIFY(highlighter.isVisible());
        QTest::keyClick(&tile, Qt::Key_Down);
        QCOMPARE(highlighter.hoveredWindow(), NativeWindow(0));
        // As the tile of the main window does, over what the hotkey has shown.
        const QSignalSpy picked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        QTest::keyClick(&tile, Qt::Key_Down);
        QCOMPARE(highlighter.hoveredWindow(), NativeWindow(7));
        QTest::keyClick(&tile, Qt::Key_Return);
        QCOMPARE(picked.size(), 1);
    }

    void onAScreenScaled150PercentTheFrameIsRounded()
    {
        QCOMPARE(WindowHighlighter::logicalRect(QRect(300, 150, 600, 400), {}, 1.5), QRect(200, 100, 400, 267));
    }

    void frameGeometryIsRoundedHalvesAwayFromZero_data()
    {
        QTest::addColumn<QRect>("physical");
        QTest::addColumn<QPoint>("origin");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QRect>("logical");
        QTest::newRow("not scaled") << QRect(-5, 7, 11, 13) << QPoint() << 1.0 << QRect(-5, 7, 11, 13);
        QTest::newRow("halves") << QRect(5, 1, 3, 1) << QPoint() << 2.0 << QRect(3, 1, 2, 1);
        QTest::newRow("halves below zero") << QRect(-5, -1, 3, 7) << QPoint() << 2.0 << QRect(-3, -1, 2, 4);
        QTest::newRow("thirds") << QRect(301, 151, 601, 401) << QPoint() << 1.5 << QRect(201, 101, 401, 267);
        QTest::newRow("a quarter more") << QRect(101, 102, 103, 104) << QPoint() << 1.25 << QRect(81, 82, 82, 83);
        QTest::newRow("screen at the right")
            << QRect(1920 + 300, 150, 600, 400) << QPoint(1920, 0) << 1.5 << QRect(1920 + 200, 100, 400, 267);
        QTest::newRow("screen at the left")
            << QRect(-1920 + 300, 150, 600, 400) << QPoint(-1920, 0) << 1.5 << QRect(-1920 + 200, 100, 400, 267);
    }

    void frameGeometryIsRoundedHalvesAwayFromZero()
    {
        QFETCH(const QRect, physical);
        QFETCH(const QPoint, origin);
        QFETCH(const double, ratio);
        QFETCH(const QRect, logical);
        QCOMPARE(WindowHighlighter::logicalRect(physical, origin, ratio), logical);
    }

    void clickReportsTheRectangleInPhysicalPixels_data()
    {
        QTest::addColumn<int>("press");
        QTest::newRow("left") << int(Event::LeftPress);
        QTest::newRow("right") << int(Event::RightPress);
    }

    void clickReportsTheRectangleInPhysicalPixels()
    {
        QFETCH(const int, press);
        Desktop desktop{{{7, QRect(300, 150, 600, 400)}}};
        Highlighter highlighter(desktop);
        // The menu waits, and goes with the highlighter.
        desktop.buttonDown = true;
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        moveOver(desktop, 7);
        desktop.windows[7] = QRect(-310, 160, 601, 401);
        desktop.handler(Event(press), QPoint(1, 1));
        QCOMPARE(clicked, (QList<QVariantList>{{QRect(-310, 160, 601, 401)}}));
        QVERIFY(highlighter.isVisible());
    }

    void hiddenItMindsNeitherMovesNorClicks()
    {
        Desktop desktop{{{7, QRect(300, 150, 600, 400)}}};
        Highlighter highlighter(desktop);
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        const QRect before = highlighter.geometry();
        moveOver(desktop, 7);
        desktop.handler(Event::LeftPress, QPoint(1, 1));
        desktop.handler(Event::RightPress, QPoint(1, 1));
        tick(highlighter);
        QVERIFY(!isMenuUnderWay());
        QCOMPARE(clicked.size(), 0);
        QVERIFY(!highlighter.isVisible());
        QCOMPARE(highlighter.geometry(), before);
    }

    void theHotkeyShowsItOverNothingUntilTheMouseMoves()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        desktop.hotkey();
        QVERIFY(highlighter.isVisible());
        QVERIFY(isBlank(highlighter));
        moveOver(desktop, 7);
        QVERIFY(!isBlank(highlighter));
        desktop.hotkey();
        QVERIFY(!highlighter.isVisible());
        desktop.hotkey();
        QVERIFY(highlighter.isVisible());
        QVERIFY(isBlank(highlighter));
        desktop.handler(Event::LeftPress, QPoint(1, 1));
        QCOMPARE(clicked.size(), 0);
        tick(highlighter);
        QVERIFY(highlighter.isVisible());
        QVERIFY(isBlank(highlighter));
        // The same window as before.
        moveOver(desktop, 7);
        QVERIFY(!isBlank(highlighter));
    }

    void windowThatIsNotToBePickedIsNeitherFramedNorReported()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}, {8, QRect(200, 40, 300, 200)}}};
        desktop.own = 8;
        Highlighter highlighter(desktop);
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        moveOver(desktop, 7);
        QVERIFY(!isBlank(highlighter));
        moveOver(desktop, 8);
        QVERIFY(isBlank(highlighter));
        desktop.handler(Event::LeftPress, QPoint(210, 50));
        tick(highlighter);
        QCOMPARE(clicked.size(), 0);
        QVERIFY(highlighter.isVisible());
        moveOver(desktop, 7);
        QVERIFY(!isBlank(highlighter));
        desktop.handler(Event::LeftPress, QPoint(40, 50));
        QCOMPARE(clicked, (QList<QVariantList>{{QRect(30, 40, 300, 200)}}));
    }

    void cancelKeyHidesItAndIsReported()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        const QSignalSpy cancelled(&highlighter, &WindowHighlighter::cancelled);
        // Pressed just before it was hidden.
        desktop.cancelKey();
        QCOMPARE(cancelled.size(), 0);
        highlighter.show();
        moveOver(desktop, 7);
        desktop.cancelKey();
        QCOMPARE(cancelled.size(), 1);
        QVERIFY(!highlighter.isVisible());
        QVERIFY(!desktop.wanted);
    }

    void frameFollowsAWindowThatMovesUnderAStillPointer()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        desktop.windows[7] = QRect(60, 20, 310, 90);
        // By the timer itself.
        QTRY_COMPARE(highlighter.geometry(), QRect(60, 20, 310, 90));
    }

    void closingTheHoveredWindowHidesAtTheNextTick()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}, {8, QRect(0, 0, 5, 5)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        desktop.windows.erase(7);
        QVERIFY(highlighter.isVisible());
        tick(highlighter);
        QVERIFY(!highlighter.isVisible());
        QVERIFY(!updateTimer(highlighter)->isActive());
        // And stays hidden.
        moveOver(desktop, 8);
        tick(highlighter);
        QVERIFY(!highlighter.isVisible());
    }

    void movingOffEveryWindowHides()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        moveOver(desktop, 0);
        QVERIFY(!highlighter.isVisible());
    }

    void windowWithoutARectangleChangesNothing()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}, {8, QRect(1, 2, 3, 4)}}, {{8, true}}};
        Highlighter highlighter(desktop);
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        moveOver(desktop, 7);
        moveOver(desktop, 8);
        QCOMPARE(highlighter.geometry(), QRect(30, 40, 300, 200));
        QVERIFY(highlighter.isVisible());
        desktop.handler(Event::LeftPress, QPoint(1, 1));
        QCOMPARE(clicked.size(), 0);
    }

    void otherNativeMessagesAreNotItsOwn()
    {
        Desktop desktop;
        Highlighter highlighter(desktop);
        qintptr result = 5;
        QVERIFY(!highlighter.nativeEvent("xcb_generic_event_t", nullptr, &result));
        QCOMPARE(result, qintptr{5});
        QVERIFY(!highlighter.isVisible());
    }

    void paintsARedOutlineOverAFaintTint()
    {
        Desktop desktop{{{7, QRect(30, 40, 120, 80)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);

        QImage expected(120, 80, QImage::Format_ARGB32_Premultiplied);
        expected.fill(Qt::transparent);
        {
            QPainter painter(&expected);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(QPen(QColor(255, 0, 0), 2, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
            painter.setBrush(QColor(255, 0, 0, 30));
            painter.drawRect(QRect(1, 1, 118, 78));
        }

        QCOMPARE(imageOf(highlighter), expected);
    }

    void aRightClickReportsFirstAndThenShowsTheMenuAtTheClickPoint()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        QStringList events;
        connect(&highlighter, &WindowHighlighter::windowClicked, this, [&] {
            QVERIFY(openMenu() == nullptr);
            events << QStringLiteral("clicked");
            highlighter.hide();
        });
        highlighter.show();
        moveOver(desktop, 7);
        desktop.handler(Event::RightPress, QPoint(111, 99));
        QCOMPARE(events, QStringList{"clicked"});
        answerMenu(QString(), [&](const QMenu& menu) {
            QCOMPARE(menu.pos(), QPoint(111, 99));
            QVERIFY(menu.parentWidget() == nullptr);
            QCOMPARE(menu.actions().size(), 2);
            QCOMPARE(menu.actions().at(0)->text(), QStringLiteral("Capture Window"));
            QCOMPARE(menu.actions().at(1)->text(), QStringLiteral("Close Highlighter"));
            events << QStringLiteral("menu");
        });
        QCOMPARE(events, (QStringList{"clicked", "menu"}));
    }

    void menuWaitsUntilTheButtonIsReleased()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        desktop.buttonDown = true;
        desktop.handler(Event::RightPress, QPoint(111, 99));
        QTRY_VERIFY(desktop.buttonLooks >= 3);
        QVERIFY(openMenu() == nullptr);
        desktop.buttonDown = false;
        int seen = 0;
        answerMenu(QString(), [&seen](const QMenu&) { ++seen; });
        QCOMPARE(seen, 1);
    }

    void aLeftClickShowsNoMenu()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        desktop.handler(Event::LeftPress, QPoint(111, 99));
        QVERIFY(!isMenuUnderWay());
        QCOMPARE(desktop.buttonLooks, 0);
    }

    void captureWindowDescribesTheWindow()
    {
        Desktop desktop{{{7, QRect(-30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        const messagebox::Recorder boxes;
        desktop.handler(Event::RightPress, QPoint(111, 99));
        answerMenu(QStringLiteral("Capture Window"));
        QCOMPARE(boxes.calls().size(), std::size_t{1});
        QCOMPARE(boxes.calls()[0].kind, messagebox::Kind::Information);
        QCOMPARE(boxes.calls()[0].parent, &highlighter);
        QCOMPARE(boxes.calls()[0].title, QStringLiteral("Window Info"));
        QCOMPARE(boxes.calls()[0].text, QStringLiteral("Window Position: (-30, 40)\nSize: 300 x 200"));
    }

    void captureWindowDescribesNothingOfAWindowThatIsGone()
    {
        Desktop desktop{{{7, QRect(-30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        const messagebox::Recorder boxes;
        desktop.handler(Event::RightPress, QPoint(111, 99));
        answerMenu(QStringLiteral("Capture Window"), [&desktop](const QMenu&) { desktop.windows.clear(); });
        QVERIFY(boxes.calls().empty());
    }

    void closeHighlighterWritesALineAndClosesNothing()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        Highlighter highlighter(desktop);
        highlighter.show();
        moveOver(desktop, 7);
        const messagebox::Recorder boxes;
        const MessageCapture messages;
        desktop.handler(Event::RightPress, QPoint(111, 99));
        answerMenu(QStringLiteral("Close Highlighter"));
        QVERIFY(messages.texts().contains(QStringLiteral("[DEBUG] Capture window functionality not implemented yet")));
        QVERIFY(highlighter.isVisible());
        QVERIFY(boxes.calls().empty());
    }

    void highlighterThatGoesWhileItsMenuIsOpenLeavesNothingBehind()
    {
        Desktop desktop{{{7, QRect(30, 40, 300, 200)}}};
        auto highlighter = std::make_unique<Highlighter>(desktop);
        highlighter->show();
        moveOver(desktop, 7);
        const messagebox::Recorder boxes;
        desktop.handler(Event::RightPress, QPoint(111, 99));
        answerMenu(QStringLiteral("Capture Window"), [&highlighter](const QMenu&) { highlighter.reset(); });
        QVERIFY(boxes.calls().empty());
    }

    void textsFollowTheLanguage()
    {
        SCTranslator german;
        QVERIFY(german.loadLanguage(QStringLiteral("de_DE")));
        QVERIFY(QCoreApplication::installTranslator(&german));
        const messagebox::Recorder boxes;
        Desktop desktop{{{7, QRect(-30, 40, 300, 200)}}};
        desktop.hookError = 1428;
        Highlighter highlighter(desktop);
        QCOMPARE(runUntilQuit(), EXIT_SUCCESS);
        highlighter.show();
        moveOver(desktop, 7);
        desktop.handler(Event::RightPress, QPoint(111, 99));
        QStringList entries;
        answerMenu(QStringLiteral("Fenster aufnehmen"), [&entries](const QMenu& menu) {
            for (const QAction* const action : menu.actions())
                entries << action->text();
        });
        QCOMPARE(entries, (QStringList{"Fenster aufnehmen", "Fensterauswahl beenden"}));
        QCOMPARE(boxes.calls().size(), std::size_t{2});
        QCOMPARE(boxes.calls()[0].title, QStringLiteral("Fehler"));
        QCOMPARE(boxes.calls()[0].text, QStringLiteral("Die Mausüberwachung ist nicht möglich (Fehler: 1428)"));
        QCOMPARE(boxes.calls()[1].title, QStringLiteral("Fensterinformationen"));
        QCOMPARE(boxes.calls()[1].text, QStringLiteral("Position: (-30, 40)\nGröße: 300 x 200"));
    }

private:
    static bool isBlank(WindowHighlighter& highlighter)
    {
        QImage nothing(highlighter.size(), QImage::Format_ARGB32_Premultiplied);
        nothing.fill(Qt::transparent);
        return imageOf(highlighter) == nothing;
    }

    /// Whether what is queued now opens a menu; it is closed again.
    static bool isMenuUnderWay()
    {
        bool isOver = false;
        bool isOpen = false;
        // Comes after what was queued before, also within the menu.
        QTimer::singleShot(0, [&isOver, &isOpen] {
            isOver = true;
            isOpen = openMenu() != nullptr;
            if (isOpen)
                openMenu()->close();
        });
        return QTest::qWaitFor([&isOver] { return isOver; }) && isOpen;
    }

    /// Waits for the menu, has a look at it and chooses the entry, or none.
    static void answerMenu(const QString& entry, const std::function<void(const QMenu&)>& look = {})
    {
        bool isAnswered = false;
        QTimer poll;
        connect(&poll, &QTimer::timeout, &poll, [&] {
            QMenu* const menu = openMenu();
            if (menu == nullptr || isAnswered)
                return;
            isAnswered = true;
            if (look)
                look(*menu);
            for (QAction* const action : menu->actions()) {
                if (action->text() == entry) {
                    const QPoint centre = menu->actionGeometry(action).center();
                    QTest::mouseMove(menu, centre);
                    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, centre);
                    return;
                }
            }
            menu->close();
        });
        poll.start(10);
        QTRY_VERIFY(isAnswered && openMenu() == nullptr);
    }
};

static int run(int argc, char* argv[])
{
    if (argc != 2 || argv[1] != kSecondInstance)
        return testrun::gui<TestWindowHighlighter>(argc, argv);
    const QApplication application(argc, argv);
    return makeTwo();
}

REGISTER_TEST(run);

#include "test_windowhighlighter.moc"
