// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/windowhighlighter.h"
#include "platform/input/native_windows.h"
#include "platform/windowing/overlay_window.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <vector>

using desktopuser::scale;
using userinput::pointTo;
using userinput::xdotool;

namespace {

constexpr QRgb kBackdrop = qRgb(10, 200, 30);
constexpr QRgb kOutline = qRgb(255, 0, 0);
/// Longer than what the highlighter takes to look at its window again.
constexpr int kTickIsOverMs = 200;

QImage screenshot()
{
    return desktopuser::screenshot().convertToFormat(QImage::Format_RGB32);
}

QRgb pixel(const QPoint& physical)
{
    return screenshot().pixel(physical) | 0xff000000;
}

/// A window of the system as it is, in physical pixels; Qt would merge a child with its parent.
class Pane : public QWidget
{
public:
    explicit Pane(QWidget* parent, const char* style = "background-color: rgb(10, 200, 30)") : QWidget(parent)
    {
        setAttribute(Qt::WA_NativeWindow);
        setAttribute(Qt::WA_StyledBackground);
        setStyleSheet(QLatin1String(style));
    }

    int presses = 0;
    Qt::MouseButton lastButton = Qt::NoButton;

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        ++presses;
        lastButton = event->button();
    }
};

/// Where the system says that the widget's window is.
QRect physicalRect(const QWidget& widget)
{
    return platform::NativeWindows().rectOf(widget.internalWinId()).value_or(QRect());
}

} // namespace

class TestWindowPicking : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_dialog = std::make_unique<Pane>(nullptr);
        m_dialog->setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        m_dialog->setGeometry(100, 100, 400, 300);
        m_button = new Pane(m_dialog.get());
        m_button->setGeometry(40, 30, 120, 60);
        m_nested = new Pane(m_button);
        m_nested->setGeometry(80, 20, 40, 40);
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        desktopuser::waitUntilStill();
    }

    void init()
    {
        pointTo({900, 600});
        QTest::qWait(50);
        m_dialog->presses = m_button->presses = m_nested->presses = 0;
    }

    void cleanupTestCase() { m_dialog.reset(); }

    void movingOverAButtonInsideADialogFramesTheButton()
    {
        WindowHighlighter highlighter;
        highlighter.show();
        pointTo(physicalRect(*m_dialog).topLeft() + QPoint(10, 10));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_dialog));
        pointTo(physicalRect(*m_button).topLeft() + QPoint(10, 10));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_button));
        pointTo(physicalRect(*m_nested).center());
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_nested));
        pointTo(physicalRect(*m_dialog).bottomRight() - QPoint(5, 5));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_dialog));
        QCOMPARE(highlighter.geometry(), m_dialog->geometry());
    }

    void smallMovesOfTheDeviceAreFollowed()
    {
        WindowHighlighter highlighter;
        highlighter.show();
        pointTo(physicalRect(*m_button).topLeft() - QPoint(4, -10));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_dialog));
        xdotool({"mousemove_relative", "8", "0"});
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_button));
        xdotool({"mousemove_relative", "--", "-8", "0"});
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_dialog));
    }

    void outlineAndTintAreSeenAndTheWindowBelow()
    {
        WindowHighlighter highlighter;
        highlighter.show();
        const QRect rect = physicalRect(*m_button);
        pointTo(rect.topLeft() + QPoint(10, 10));
        QTRY_COMPARE(pixel(rect.topLeft() + QPoint(1, 1)), kOutline);
        QCOMPARE(pixel(rect.bottomRight() - QPoint(1, 1)), kOutline);
        QCOMPARE(pixel(rect.topLeft() - QPoint(2, 2)), kBackdrop);
        const QRgb inside = pixel(rect.topLeft() + QPoint(30, 30));
        if (!platform::isCompositing()) {
            QCOMPARE(inside, kBackdrop);
            return;
        }
        // Red at 30 of 255 over the backdrop.
        QVERIFY2(qAbs(qRed(inside) - 39) <= 3 && qAbs(qGreen(inside) - 176) <= 3 && qAbs(qBlue(inside) - 26) <= 3,
                 qPrintable(QColor(inside).name()));
    }

    void overNothingNothingIsSeen()
    {
        const QImage before = screenshot();
        WindowHighlighter highlighter;
        highlighter.show();
        QTest::qWait(kTickIsOverMs);
        QCOMPARE(screenshot(), before);
    }

    void aLeftClickBothReportsAndReachesTheClickedWindow()
    {
        WindowHighlighter highlighter;
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        pointTo(physicalRect(*m_button).topLeft() + QPoint(10, 10));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_button));
        xdotool({"click", "1"});
        QTRY_COMPARE(clicked, (QList<QVariantList>{{physicalRect(*m_button)}}));
        QTRY_COMPARE(m_button->presses, 1);
        QVERIFY(highlighter.isVisible());
    }

    void otherButtonsAndTheWheelAreLeftAlone()
    {
        WindowHighlighter highlighter;
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        pointTo(physicalRect(*m_button).topLeft() + QPoint(10, 10));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_button));
        for (const char* const button : {"2", "4", "5"})
            xdotool({"click", QLatin1String(button)});
        QTest::qWait(kTickIsOverMs);
        QCOMPARE(clicked.size(), 0);
    }

    void swappedButtonsAreTheOnesThatTheUserMeans()
    {
        QCOMPARE(QProcess::execute(QStringLiteral("xmodmap"), {"-e", "pointer = 3 2 1"}), 0);
        WindowHighlighter highlighter;
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        pointTo(physicalRect(*m_button).topLeft() + QPoint(10, 10));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_button));
        // The right one of the device, which is the left one of the user.
        xdotool({"click", "3"});
        QTRY_COMPARE(m_button->presses, 1);
        const bool wasLeft = m_button->lastButton == Qt::LeftButton;
        QTRY_COMPARE(clicked.size(), 1);
        QTest::qWait(kTickIsOverMs);
        const bool hasMenu = QApplication::activePopupWidget() != nullptr;
        QCOMPARE(QProcess::execute(QStringLiteral("xmodmap"), {"-e", "pointer = default"}), 0);
        QVERIFY(wasLeft);
        QVERIFY(!hasMenu);
    }

    void aRightClickReportsFirstAndThenShowsTheMenuAtTheClickPoint()
    {
        WindowHighlighter highlighter;
        bool hadMenu = true;
        connect(
            &highlighter, &WindowHighlighter::windowClicked, this,
            [&hadMenu] { hadMenu = QApplication::activePopupWidget() != nullptr; }, Qt::SingleShotConnection);
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        const QPoint position = physicalRect(*m_button).topLeft() + QPoint(10, 10);
        pointTo(position);
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_button));
        QPoint menuAt;
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&look, &menuAt] {
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (menu == nullptr || !menu->windowHandle()->isExposed())
                return;
            look.stop();
            menuAt = physicalRect(*menu).topLeft();
            // Anywhere else closes it: it has the mouse.
            pointTo({900, 600});
            xdotool({"click", "1"});
        });
        look.start(50);
        xdotool({"click", "3"});
        QTRY_VERIFY(!clicked.isEmpty());
        QCOMPARE(clicked.first(), QVariantList{physicalRect(*m_button)});
        QVERIFY(!hadMenu);
        // The menu's position is in whole logical pixels.
        QTRY_VERIFY((menuAt - position).manhattanLength() <= (scale() == 1.0 ? 0 : 2));
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
        QCOMPARE(m_button->presses, 1);
    }

    void theHotkeyShowsItOverNothingUntilTheMouseMovesAndHidesItAgain()
    {
        WindowHighlighter highlighter;
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        pointTo(physicalRect(*m_button).topLeft() + QPoint(10, 10));
        xdotool({"click", "1"});
        QTest::qWait(kTickIsOverMs);
        QCOMPARE(clicked.size(), 0);
        QVERIFY(!highlighter.isVisible());
        const QImage before = screenshot();
        xdotool({"key", "ctrl+shift+h"});
        QTRY_VERIFY(highlighter.isVisible());
        QTest::qWait(kTickIsOverMs);
        QCOMPARE(screenshot(), before);
        pointTo(physicalRect(*m_button).topLeft() + QPoint(12, 12));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_button));
        xdotool({"key", "ctrl+shift+h"});
        QTRY_VERIFY(!highlighter.isVisible());
    }

    void frameFollowsAWindowThatMovesUnderAStillPointer()
    {
        Pane pane(nullptr);
        pane.setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        pane.setGeometry(520, 100, 200, 200);
        pane.show();
        QVERIFY(QTest::qWaitForWindowActive(&pane));
        WindowHighlighter highlighter;
        highlighter.show();
        pointTo(physicalRect(pane).center());
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(pane));
        pane.setGeometry(500, 80, 208, 240);
        QTRY_COMPARE(highlighter.geometry(), QRect(500, 80, 208, 240));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(pane));
    }

    void closingTheHoveredWindowHidesTheHighlighterAtTheNextTick()
    {
        auto pane = std::make_unique<Pane>(nullptr);
        pane->setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        pane->setGeometry(520, 100, 200, 200);
        pane->show();
        QVERIFY(QTest::qWaitForWindowActive(pane.get()));
        WindowHighlighter highlighter;
        highlighter.show();
        pointTo(physicalRect(*pane).center());
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*pane));
        pane.reset();
        QTRY_VERIFY(!highlighter.isVisible());
        pointTo(physicalRect(*m_button).center());
        QTest::qWait(kTickIsOverMs);
        QVERIFY(!highlighter.isVisible());
    }

    void windowsThatLetTheMouseThroughAreNotFound()
    {
        Pane pane(nullptr);
        pane.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                            Qt::WindowTransparentForInput | Qt::BypassWindowManagerHint);
        pane.setGeometry(m_dialog->geometry());
        pane.show();
        QVERIFY(QTest::qWaitForWindowExposed(&pane));
        desktopuser::waitUntilStill();
        const platform::NativeWindows windows;
        QCOMPARE(windows.at(physicalRect(*m_button).topLeft() + QPoint(5, 5)), m_button->internalWinId());
    }

    void holesInAWindowAreNotTheWindow()
    {
        Pane pane(nullptr);
        pane.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        pane.setGeometry(m_dialog->geometry());
        pane.setMask(QRegion(pane.rect()) - QRect(40, 30, 120, 60));
        pane.show();
        QVERIFY(QTest::qWaitForWindowExposed(&pane));
        desktopuser::waitUntilStill();
        const platform::NativeWindows windows;
        QCOMPARE(windows.at(physicalRect(*m_button).topLeft() + QPoint(5, 5)), m_button->internalWinId());
        QCOMPARE(windows.at(physicalRect(*m_dialog).topLeft() + QPoint(5, 5)), pane.internalWinId());
    }

    void windowThatIsGoneIsReportedAsGone()
    {
        const platform::NativeWindows windows;
        auto pane = std::make_unique<Pane>(nullptr);
        pane->show();
        const platform::NativeWindow id = pane->winId();
        QVERIFY(QTest::qWaitForWindowExposed(pane.get()));
        QVERIFY(windows.exists(id));
        QVERIFY(windows.rectOf(id).has_value());
        pane.reset();
        QTRY_VERIFY(!windows.exists(id));
        QVERIFY(!windows.rectOf(id).has_value());
        QVERIFY(!windows.exists(0));
    }

    void windowIsThatOfTheProgramWhateverPartOfItIsPicked()
    {
        const platform::NativeWindows windows;
        m_dialog->setWindowTitle(QStringLiteral("Ein Fenster \u2014 \u7a93"));
        const platform::NativeWindow dialog = m_dialog->internalWinId();
        QCOMPARE(windows.topLevelOf(m_nested->internalWinId()), dialog);
        QCOMPARE(windows.topLevelOf(dialog), dialog);
        QTRY_COMPARE(windows.titleOf(dialog), m_dialog->windowTitle());
        // The window manager's frame.
        QWidget framed;
        framed.setGeometry(560, 140, 200, 150);
        framed.show();
        QVERIFY(QTest::qWaitForWindowActive(&framed));
        const QPoint onTheTitle = physicalRect(framed).topLeft() + QPoint(60, -8);
        QTRY_VERIFY(windows.at(onTheTitle) != framed.internalWinId());
        QTRY_COMPARE(windows.topLevelOf(windows.at(onTheTitle)), framed.internalWinId());
        QCOMPARE(windows.topLevelOf(windows.at({1200, 700})), platform::NativeWindow(0));
        QCOMPARE(windows.titleOf(0), QString());
    }

    void windowIsShownWhileItIsNeitherMinimisedNorGone()
    {
        const platform::NativeWindows windows;
        auto pane = std::make_unique<QWidget>();
        pane->show();
        QVERIFY(QTest::qWaitForWindowActive(pane.get()));
        const platform::NativeWindow id = pane->internalWinId();
        QVERIFY(windows.isShown(id));
        pane->showMinimized();
        QTRY_VERIFY(!windows.isShown(id));
        pane->showNormal();
        QTRY_VERIFY(windows.isShown(id));
        pane.reset();
        QTRY_VERIFY(!windows.isShown(id));
        QVERIFY(!windows.isShown(0));
    }

    void windowsAreListedFromTheTopWithoutThoseThatAreMinimised()
    {
        const platform::NativeWindows windows;
        QWidget lower;
        lower.setGeometry(560, 140, 200, 150);
        lower.show();
        QVERIFY(QTest::qWaitForWindowActive(&lower));
        QWidget upper;
        upper.setGeometry(580, 160, 200, 150);
        upper.show();
        QVERIFY(QTest::qWaitForWindowActive(&upper));
        const auto topmost = [&windows] {
            std::vector<platform::NativeWindow> shown = windows.shown();
            shown.resize(2);
            return shown;
        };
        QTRY_COMPARE(topmost(), (std::vector<platform::NativeWindow>{upper.winId(), lower.winId()}));
        upper.showMinimized();
        QTRY_COMPARE(topmost().front(), platform::NativeWindow(lower.winId()));
    }

    void partsOfTheDesktopAreNotListed_data()
    {
        QTest::addColumn<QString>("type");
        QTest::newRow("panel") << "_NET_WM_WINDOW_TYPE_DOCK";
        QTest::newRow("background") << "_NET_WM_WINDOW_TYPE_DESKTOP";
    }

    void partsOfTheDesktopAreNotListed()
    {
        QFETCH(const QString, type);
        const platform::NativeWindows windows;
        QWidget part;
        part.setGeometry(560, 140, 200, 150);
        part.show();
        const auto isListed = [&windows, &part] {
            return std::ranges::count(windows.shown(), platform::NativeWindow(part.winId())) == 1;
        };
        QTRY_VERIFY(isListed());
        const auto property = QStringLiteral("_NET_WM_WINDOW_TYPE");
        QCOMPARE(QProcess::execute(QStringLiteral("xprop"), {"-id", QString::number(part.winId()), "-f", property,
                                                             "32a", "-set", property, type}),
                 0);
        QVERIFY(!isListed());
    }

    void theDesktopItselfIsAWindow()
    {
        const platform::NativeWindows windows;
        const platform::NativeWindow desktop = windows.at({1200, 700});
        QVERIFY(desktop != 0);
        QCOMPARE(windows.rectOf(desktop), QRect(0, 0, 1280, 720));
    }

    void highlighterLeavesTheFocusWhereItIs()
    {
        m_dialog->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        WindowHighlighter highlighter;
        highlighter.show();
        pointTo(physicalRect(*m_button).topLeft() + QPoint(10, 10));
        QTRY_COMPARE(physicalRect(highlighter), physicalRect(*m_button));
        QVERIFY(m_dialog->isActiveWindow());
        QVERIFY(!highlighter.isActiveWindow());
    }

    void onAScreenScaled150PercentTheSignalCarriesPhysicalPixels()
    {
        if (scale() != 1.5)
            return;
        Pane pane(nullptr);
        pane.setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        pane.setGeometry(200, 100, 400, 267);
        pane.show();
        QVERIFY(QTest::qWaitForWindowActive(&pane));
        xdotool({"windowsize", "--sync", QString::number(pane.winId()), "600", "400"});
        WindowHighlighter highlighter;
        const QSignalSpy clicked(&highlighter, &WindowHighlighter::windowClicked);
        highlighter.show();
        pointTo({400, 300});
        QTRY_COMPARE(highlighter.geometry(), QRect(200, 100, 400, 267));
        xdotool({"click", "1"});
        QTRY_COMPARE(clicked, (QList<QVariantList>{{QRect(300, 150, 600, 400)}}));
    }

private:
    std::unique_ptr<Pane> m_dialog;
    Pane* m_button = nullptr;
    Pane* m_nested = nullptr;
};

REGISTER_TEST(testrun::gui<TestWindowPicking>);

#include "test_windowpicking.moc"
