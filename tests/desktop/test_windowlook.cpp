#include "app/appidentity.h"
#include "app/settings.h"
#include "mainwindow/sccountdownwidget.h"
#include "mainwindow/scmainwindow.h"
#include "platform/capture_exclusion.h"
#include "platform/compositing.h"
#include "platform/global_hotkey.h"
#include "tests/desktop/desktoprun.h"
#include "tests/desktop/userinput.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>
#include <QTimer>

#include <algorithm>

using userinput::pointTo;
using userinput::xdotool;

namespace {

constexpr QRgb kBackdrop = qRgb(10, 200, 30);
constexpr QRgb kCountdownFill = qRgb(0x28, 0x28, 0x2e);
constexpr QRgb kCountdownRing = qRgb(0x00, 0x7a, 0xcc);

/// Presses at a place, moves in steps, which a window manager needs to take it for a drag, and lets go.
void drag(const QPoint& from, const QPoint& distance)
{
    pointTo(from);
    xdotool({"mousedown", "1"});
    QTest::qWait(150);
    constexpr int kSteps = 5;
    for (int step = 1; step <= kSteps; ++step) {
        pointTo(from + distance * step / kSteps);
        QTest::qWait(40);
    }
    xdotool({"mouseup", "1"});
    QTest::qWait(200);
}

QImage screenshot()
{
    return QGuiApplication::primaryScreen()->grabWindow().toImage();
}

QRgb pixel(const QPoint& global)
{
    return screenshot().pixel(global) | 0xff000000;
}

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

    void init() { pointTo({3, 3}); }

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
        QTRY_COMPARE(pixel(corner - QPoint(1, 1)), kBackdrop);
        QTRY_VERIFY(pixel(corner) != kBackdrop);
    }

    void titleBarMovesTheWindow()
    {
        SCMainWindow window;
        showAndWait(window);
        const QRect before = window.geometry();
        drag(centreOf(window, "titleBar"), {60, -40});
        QTRY_COMPARE(window.pos(), before.topLeft() + QPoint(60, -40));
        QCOMPARE(window.size(), before.size());
    }

    void pageDoesNotMoveTheWindow()
    {
        SCMainWindow window;
        showAndWait(window);
        const QPoint before = window.pos();
        drag(centreOf(window, "sourceCard"), {60, 40});
        QCOMPARE(window.pos(), before);
    }

    void edgesResizeTheWindow()
    {
        SCMainWindow window;
        showAndWait(window);
        const QRect before = window.geometry();
        drag(before.bottomRight() - QPoint(1, 1), {50, 30});
        QTRY_COMPARE(window.size(), before.size() + QSize(50, 30));
        QCOMPARE(window.pos(), before.topLeft());
        drag({window.x() + 1, window.y() + window.height() / 2}, {-40, 0});
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

    void minimiseButtonMinimises()
    {
        SCMainWindow window;
        showAndWait(window);
        pointTo(centreOf(window, "minimizeBtn"));
        xdotool({"click", "1"});
        QTRY_VERIFY(window.isMinimized());
    }

    void closeButtonCloses()
    {
        SCMainWindow window;
        showAndWait(window);
        pointTo(centreOf(window, "closeBtn"));
        xdotool({"click", "1"});
        QTRY_VERIFY(!window.isVisible());
    }

    void closeButtonTurnsLightUnderThePointer()
    {
        SCMainWindow window;
        showAndWait(window);
        const QPoint centre = centreOf(window, "closeBtn");
        QTRY_VERIFY(brightest(centre) < 200);
        pointTo(centre + QPoint(12, 12));
        QTRY_VERIFY(brightest(centre) > 240);
        pointTo({3, 3});
        QTRY_VERIFY(brightest(centre) < 200);
    }

    void countdownStandsWithItsCentreOnTheScreensCentre()
    {
        SCMainWindow window;
        showAndWait(window);
        QRect seen;
        QPoint circle;
        bool minimised = false;
        QTimer::singleShot(900, &window, [&] {
            const SCCountdownWidget* const countdown = visibleCountdown();
            seen = countdown != nullptr ? countdown->frameGeometry() : QRect();
            minimised = window.isMinimized();
            xdotool({"key", "F9"});
        });
        button(window)->click();
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QCOMPARE(seen, QRect(screen.x() + screen.width() / 2 - 100, screen.y() + screen.height() / 2 - 120, 200, 240));
        QVERIFY(minimised);
    }

    void hotkeyCancelsTheCountdownAndBringsTheWindowBack()
    {
        SCMainWindow window;
        showAndWait(window);
        const MessageCapture messages;
        QTimer::singleShot(900, &window, [] { xdotool({"key", "F9"}); });
        button(window)->click();
        QVERIFY(messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded")));
        QTRY_VERIFY(isOnScreen(window));
        QVERIFY(visibleCountdown() == nullptr);
        QTRY_VERIFY(pixel(window.geometry().center()) != kBackdrop);
    }

    void hotkeyStartsTheCountdownFromAnotherWindow()
    {
        SCMainWindow window;
        showAndWait(window);
        QLineEdit other;
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        const MessageCapture messages;
        xdotool({"key", "F9"});
        QTimer::singleShot(1000, &window, [] { xdotool({"key", "F9"}); });
        QTRY_VERIFY(messages.texts().contains(QStringLiteral("[INFO] Countdown cancelled, nothing is recorded")));
        QCOMPARE(other.text(), QString());
    }

    void countdownIsRoundAboveOtherWindowsAndLeavesThemTheFocus()
    {
        QLineEdit other;
        other.setGeometry(540, 250, 200, 200);
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        SCCountdownWidget countdown(nullptr);
        countdown.move(540, 240);
        countdown.start(3);
        QTest::qWait(600);
        QCOMPARE(countdown.geometry(), QRect(540, 240, 200, 240));
        const QImage picture = screenshot();
        QCOMPARE(picture.pixel(580, 340), kCountdownFill);
        QCOMPARE(picture.pixel(540 + 1, 340), kCountdownRing);
        QVERIFY(other.isActiveWindow());
        xdotool({"key", "a"});
        QTRY_COMPARE(other.text(), QStringLiteral("a"));
        countdown.cancel();
    }

    void countdownStandsAboveAFocusedFullScreenWindow()
    {
        m_backdrop.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&m_backdrop));
        SCCountdownWidget countdown(nullptr);
        countdown.move(540, 240);
        countdown.start(3);
        QTest::qWait(600);
        QCOMPARE(pixel({580, 340}), kCountdownFill);
        QVERIFY(m_backdrop.isActiveWindow());
        countdown.cancel();
    }

    void outsideOfTheCountdownsCircleIsSeenThrough()
    {
        SCCountdownWidget countdown(nullptr);
        countdown.move(540, 240);
        countdown.start(3);
        QTest::qWait(600);
        const QImage picture = screenshot();
        QCOMPARE(picture.pixel(580, 340), kCountdownFill);
        for (const QPoint& corner : {QPoint(541, 241), QPoint(738, 241), QPoint(541, 438), QPoint(738, 438)})
            QCOMPARE(picture.pixel(corner), kBackdrop);
        QCOMPARE(picture.pixel(542, 465), kBackdrop);
        countdown.cancel();
    }

    void hintLeavesTheCircleClear()
    {
        SCCountdownWidget countdown(nullptr);
        countdown.move(540, 240);
        countdown.start(3);
        QTest::qWait(600);
        const QImage picture = screenshot();
        QCOMPARE(picture.pixel(560, 465), kCountdownFill);
        QCOMPARE(picture.pixel(640, 445), kBackdrop);
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

    void nothingIsCutOff_data()
    {
        QTest::addColumn<QString>("tab");
        for (const char* tab : {"recordingTab", "screenshotTab", "filesTab"})
            QTest::newRow(tab) << QString::fromLatin1(tab);
    }

    void nothingIsCutOff()
    {
        QFETCH(const QString, tab);
        SCMainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        window.findChild<QPushButton*>(tab)->click();
        const QSize screen = window.screen()->size();
        QCOMPARE(window.size().boundedTo(screen), window.size());
        const QList<QWidget*> parts = window.findChildren<QWidget*>();
        int looked = 0;
        for (const QWidget* const part : parts) {
            if (!part->isVisible() || part->objectName().startsWith(QLatin1String("qt_")))
                continue;
            ++looked;
            QVERIFY2(part->parentWidget()->rect().contains(part->geometry()), qPrintable(part->objectName()));
            const bool bearsText = qobject_cast<const QLabel*>(part) || qobject_cast<const QPushButton*>(part) ||
                                   qobject_cast<const QComboBox*>(part);
            QVERIFY2(!bearsText || (part->width() >= part->minimumSizeHint().width() &&
                                    part->height() >= part->minimumSizeHint().height()),
                     qPrintable(QStringLiteral("%1 is %2x%3 and needs %4x%5")
                                    .arg(part->objectName())
                                    .arg(part->width())
                                    .arg(part->height())
                                    .arg(part->minimumSizeHint().width())
                                    .arg(part->minimumSizeHint().height())));
        }
        QVERIFY(looked > 15);
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
        QTest::qWait(200);
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

    static SCCountdownWidget* visibleCountdown()
    {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            auto* const countdown = qobject_cast<SCCountdownWidget*>(widget);
            if (countdown != nullptr && countdown->isVisible())
                return countdown;
        }
        return nullptr;
    }

    /// The lightest grey within the icon around centre.
    static int brightest(const QPoint& centre)
    {
        const QImage picture = screenshot();
        int found = 0;
        for (int y = -6; y <= 6; ++y) {
            for (int x = -6; x <= 6; ++x)
                found = std::max(found, qGray(picture.pixel(centre + QPoint(x, y))));
        }
        return found;
    }

    QWidget m_backdrop;
};

REGISTER_TEST(desktopuser::run<TestWindowLook>);

#include "test_windowlook.moc"
