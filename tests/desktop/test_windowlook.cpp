// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "mainwindow/scmainwindow.h"
#include "platform/input/global_hotkey.h"
#include "platform/windowing/capture_exclusion.h"
#include "platform/windowing/overlay_window.h"
#include "tests/desktop/desktoprun.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"
#include "tests/support/countdowntest.h"
#include "tests/support/messagecapture.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>

using desktopuser::colourAt;
using desktopuser::drag;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::press;
using desktopuser::screenshot;

namespace {

constexpr QRgb kBackdrop = qRgb(10, 200, 30);
constexpr QRgb kCountdownFill = qRgb(0x28, 0x28, 0x2e);
constexpr QRgb kCountdownRing = qRgb(0x00, 0x7a, 0xcc);
/// A countdown that is cancelled before it ends, however busy the machine is.
constexpr Durations kSlow{.countdownStepMs = 20'000};

bool isOnScreen(const QWidget& window)
{
    return window.isVisible() && !window.isMinimized();
}

} // namespace

class TestWindowLook : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const auto settings = openSettings();
        settings->setValue(settingskeys::kFirstRun, false);
        settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("F9"));
        m_backdrop.setStyleSheet(QStringLiteral("background-color: rgb(10, 200, 30)"));
        m_backdrop.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
        m_backdrop.setGeometry(QGuiApplication::primaryScreen()->geometry());
        m_backdrop.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_backdrop));
    }

    void init() { pointTo(onScreen({3, 3})); }

    void cleanup()
    {
        userinput::setKeyboardLayout(QStringLiteral("us"));
        openSettings()->setValue(settingskeys::kRecordingHotkey, QStringLiteral("F9"));
    }

    void windowHasNoFrameOfTheSystem()
    {
        SCMainWindow window;
        showAndWait(window);
        QCOMPARE(window.frameGeometry(), window.geometry());
        QVERIFY(window.windowFlags().testFlag(Qt::FramelessWindowHint));
        const QPoint corner = window.geometry().topLeft();
        QTRY_COMPARE(colourAt(corner - QPoint(1, 1)), kBackdrop);
        QTRY_VERIFY(colourAt(corner) != kBackdrop);
    }

    void titleBarMovesTheWindow()
    {
        SCMainWindow window;
        showAndWait(window);
        const QRect before = window.geometry();
        const QPoint bar = centreOf(window, "titleBar");
        drag(bar, bar + QPoint(60, -40));
        QTRY_COMPARE(window.pos(), before.topLeft() + QPoint(60, -40));
        QCOMPARE(window.size(), before.size());
    }

    void pageDoesNotMoveTheWindow()
    {
        SCMainWindow window;
        showAndWait(window);
        const QPoint before = window.pos();
        const QPoint card = centreOf(window, "sourceCard");
        drag(card, card + QPoint(60, 40));
        desktopuser::waitUntilStill();
        QCOMPARE(window.pos(), before);
    }

    void edgesResizeTheWindow()
    {
        SCMainWindow window;
        showAndWait(window);
        const QRect before = window.geometry();
        const QPoint corner = before.bottomRight() - QPoint(1, 1);
        drag(corner, corner + QPoint(50, 30));
        QTRY_COMPARE(window.size(), before.size() + QSize(50, 30));
        QCOMPARE(window.pos(), before.topLeft());
        const QPoint edge(window.x() + 1, window.y() + window.height() / 2);
        drag(edge, edge - QPoint(40, 0));
        QTRY_COMPARE(window.geometry().left(), before.left() - 40);
        QCOMPARE(window.geometry().right(), before.right() + 50);
    }

    void pointerOverAnEdgeShowsThatItCanBePulled()
    {
        SCMainWindow window;
        showAndWait(window);
        pointTo(window.geometry().bottomRight() - QPoint(1, 1));
        QTRY_VERIFY(QGuiApplication::overrideCursor() != nullptr);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::SizeFDiagCursor);
        pointTo(window.geometry().center());
        QTRY_VERIFY(QGuiApplication::overrideCursor() == nullptr);
    }

    void countdownHasItsCentreOnTheScreensCentre()
    {
        SCMainWindow window(kSlow);
        showAndWait(window);
        QRect seen;
        bool minimised = false;
        whenCountingDown(&window, [&] {
            minimised = QTest::qWaitFor([&] { return window.isMinimized(); });
            desktopuser::waitUntilStill();
            seen = shownWindow<SCCountdownWidget>()->frameGeometry();
            press(QStringLiteral("F9"));
        });
        button(window)->click();
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QCOMPARE(seen, QRect(screen.x() + screen.width() / 2 - 100, screen.y() + screen.height() / 2 - 120, 200, 240));
        QVERIFY(minimised);
    }

    void hotkeyCancelsTheCountdownAndBringsTheWindowBack()
    {
        SCMainWindow window(kSlow);
        showAndWait(window);
        const MessageCapture messages;
        whenCountingDown(&window, [&] {
            QTRY_VERIFY(window.isMinimized());
            desktopuser::waitUntilStill();
            press(QStringLiteral("F9"));
        });
        button(window)->click();
        QTRY_VERIFY(isOnScreen(window));
        QVERIFY(shownWindow<SCCountdownWidget>() == nullptr);
        // What a countdown that has run to its end says where no engine runs.
        QCOMPARE(messages.texts().filter(QStringLiteral("OBS wrapper not initialized")), QStringList());
        QTRY_VERIFY(colourAt(window.geometry().center()) != kBackdrop);
    }

    void hotkeyStartsTheCountdownFromAnotherWindow()
    {
        SCMainWindow window(kSlow);
        showAndWait(window);
        QLineEdit other;
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        bool counted = false;
        whenCountingDown(&window, [&] {
            counted = true;
            press(QStringLiteral("F9"));
        });
        press(QStringLiteral("F9"));
        QTRY_VERIFY(counted && shownWindow<SCCountdownWidget>() == nullptr);
        QCOMPARE(other.text(), QString());
    }

    void countdownIsRoundAboveOtherWindowsAndLeavesThemTheFocus()
    {
        QLineEdit other;
        other.setGeometry(540, 250, 200, 200);
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        SCCountdownWidget countdown(nullptr, kSlow.countdownStepMs);
        countdown.move(540, 240);
        countdown.start(3);
        QTRY_COMPARE(colourAt({580, 340}), kCountdownFill);
        desktopuser::waitUntilStill();
        QCOMPARE(countdown.geometry(), QRect(540, 240, 200, 240));
        const QImage image = screenshot();
        QCOMPARE(image.pixel(580, 340), kCountdownFill);
        QCOMPARE(image.pixel(540 + 1, 340), kCountdownRing);
        QVERIFY(other.isActiveWindow());
        press(QStringLiteral("a"));
        QTRY_COMPARE(other.text(), QStringLiteral("a"));
        countdown.cancel();
    }

    void countdownIsAboveAFocusedFullScreenWindow()
    {
        m_backdrop.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&m_backdrop));
        SCCountdownWidget countdown(nullptr, kSlow.countdownStepMs);
        countdown.move(540, 240);
        countdown.start(3);
        QTRY_COMPARE(colourAt({580, 340}), kCountdownFill);
        desktopuser::waitUntilStill();
        QCOMPARE(colourAt({580, 340}), kCountdownFill);
        QVERIFY(m_backdrop.isActiveWindow());
        countdown.cancel();
    }

    void outsideOfTheCountdownsCircleIsSeenThrough()
    {
        SCCountdownWidget countdown(nullptr, kSlow.countdownStepMs);
        countdown.move(540, 240);
        countdown.start(3);
        QTRY_COMPARE(colourAt({580, 340}), kCountdownFill);
        desktopuser::waitUntilStill();
        const QImage image = screenshot();
        for (const QPoint& corner : {QPoint(541, 241), QPoint(738, 241), QPoint(541, 438), QPoint(738, 438)})
            QCOMPARE(image.pixel(corner), kBackdrop);
        QCOMPARE(image.pixel(542, 465), kBackdrop);
        countdown.cancel();
    }

    void hintLeavesTheCircleClear()
    {
        SCCountdownWidget countdown(nullptr, kSlow.countdownStepMs);
        countdown.move(540, 240);
        countdown.start(3);
        QTRY_COMPARE(colourAt({560, 465}), kCountdownFill);
        desktopuser::waitUntilStill();
        const QImage image = screenshot();
        QCOMPARE(image.pixel(640, 445), kBackdrop);
        countdown.cancel();
    }

    void hotkeyIsNamedBelowTheButton()
    {
        SCMainWindow window;
        showAndWait(window);
        QVERIFY(hint(window)->isVisible());
        QCOMPARE(hint(window)->text(), QStringLiteral("Start/Stop: F9"));
    }

    void hotkeyHeldByAnotherProgramIsWarnedOfAndNotNamed()
    {
        // It has a connection of its own: to the X server it is another program.
        platform::GlobalHotkey other(nullptr);
        QVERIFY(other.registerKey(QKeySequence(Qt::Key_F9)));
        const MessageCapture messages;
        SCMainWindow window;
        showAndWait(window);
        QVERIFY(!hint(window)->isVisible());
        QCOMPARE(messages.texts(QtWarningMsg).filter(QStringLiteral("hotkey")),
                 QStringList{"[WARNING] The hotkey \"F9\" cannot be used: another program holds it"});
    }

    void hotkeyThatALayoutLacksIsNamedAgainWhenItIsBack()
    {
        userinput::setKeyboardLayout(QStringLiteral("de"));
        const QString key = QKeySequence(Qt::CTRL | Qt::Key_Adiaeresis).toString(QKeySequence::PortableText);
        openSettings()->setValue(settingskeys::kRecordingHotkey, key);
        SCMainWindow window;
        showAndWait(window);
        QVERIFY(hint(window)->isVisible());
        const MessageCapture messages;
        userinput::setKeyboardLayout(QStringLiteral("us"));
        QTRY_VERIFY(!hint(window)->isVisible());
        QCOMPARE(messages.texts(QtWarningMsg).filter(QStringLiteral("hotkey")),
                 QStringList{QStringLiteral("[WARNING] The hotkey \"%1\" is lost with the new keyboard layout: the "
                                            "keyboard has no such key")
                                 .arg(key)});
        userinput::setKeyboardLayout(QStringLiteral("de"));
        QTRY_VERIFY(hint(window)->isVisible());
        QCOMPARE(hint(window)->text(), QStringLiteral("Start/Stop: ") + key);
        QVERIFY(messages.texts(QtInfoMsg).contains(QStringLiteral("[INFO] The hotkey \"%1\" works again").arg(key)));
    }

    void x11CannotExcludeAWindowFromCapture()
    {
        QWidget window;
        QVERIFY(!platform::setExcludedFromCapture(window, true));
        QVERIFY(!platform::setExcludedFromCapture(window, false));
    }

    void compositorIsNoticed()
    {
        QCOMPARE(platform::isCompositing(), !qEnvironmentVariableIsSet("KESTRANO_TEST_WITHOUT_COMPOSITOR"));
    }

private:
    static void showAndWait(SCMainWindow& window)
    {
        window.move(300, 120);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        desktopuser::waitUntilStill();
    }

    static QPoint centreOf(const SCMainWindow& window, const char* name)
    {
        const auto* const widget = window.findChild<QWidget*>(QLatin1String(name));
        return widget->mapToGlobal(widget->rect().center());
    }

    static QPushButton* button(const SCMainWindow& window)
    {
        return window.findChild<QPushButton*>(QStringLiteral("recordButton"));
    }

    static QLabel* hint(const SCMainWindow& window) { return window.findChild<QLabel*>(QStringLiteral("hotkeyLabel")); }

    QWidget m_backdrop;
};

REGISTER_TEST(desktopuser::run<TestWindowLook>);

#include "test_windowlook.moc"
