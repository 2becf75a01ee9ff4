// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "mainwindow/recording/toolbarplacement.h"
#include "tests/desktop/desktopuser.h"
#include "tests/support/testrun.h"
#include "tests/support/x11clients.h"

#include <QApplication>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

#include <algorithm>

using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::pointTo;
using desktopuser::press;

namespace {

constexpr QRgb kBackdrop = qRgb(10, 200, 30);
/// Longer than a fade, two looks at the pointer and an image.
constexpr int kFadeIsOverMs = 300;

QPoint centreOf(const SCFullscreenToolbar& bar, const char* name)
{
    const auto* const widget = bar.findChild<QWidget*>(QLatin1String(name));
    return widget->mapToGlobal(widget->rect().center());
}

/// Of 4294967295, as compositors read it; -1 where it was never set.
qint64 opacityOf(const QWidget& window)
{
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(window.internalWinId()),
                                          QStringLiteral("_NET_WM_WINDOW_OPACITY")});
    xprop.waitForFinished();
    const QString answer = QString::fromUtf8(xprop.readAll());
    return answer.contains(QLatin1String(" = ")) ? answer.section(QStringLiteral(" = "), 1).trimmed().toLongLong() : -1;
}

} // namespace

class TestToolbarLook : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_backdrop.setStyleSheet(QStringLiteral("background-color: rgb(10, 200, 30)"));
        m_backdrop.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
        m_backdrop.setGeometry(QGuiApplication::primaryScreen()->geometry());
        m_backdrop.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_backdrop));
    }

    void init() { pointTo(kAway); }

    void barLooksFramelessAndIsAtTheTopCentre()
    {
        SCFullscreenToolbar bar;
        showAtTop(bar);
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QCOMPARE(bar.windowFlags().toInt(), 0x4001B);
        QCOMPARE(bar.frameGeometry(), bar.geometry());
        QCOMPARE(bar.geometry(), QRect((screen.width() - 280) / 2, 0, 280, 40));
        const QPoint middle(bar.geometry().center());
        QTRY_VERIFY(colourAt(middle - QPoint(100, 0)) != kBackdrop);
        QCOMPARE(colourAt({bar.x() - 2, middle.y()}), kBackdrop);
        QCOMPARE(colourAt({bar.geometry().right() + 3, middle.y()}), kBackdrop);
        QCOMPARE(colourAt({middle.x(), bar.geometry().bottom() + 3}), kBackdrop);
        // A window manager that does not have it can put no frame around it.
        const QList<x11clients::Window> managed = x11clients::windowsOf(QCoreApplication::applicationPid());
        QVERIFY(std::ranges::none_of(managed, [&](const auto& window) { return window.id == bar.internalWinId(); }));
    }

    void cornersAreSeenThrough()
    {
        SCFullscreenToolbar bar;
        showAtTop(bar);
        for (const QPoint& corner : {bar.geometry().topLeft(), bar.geometry().topRight(), bar.geometry().bottomLeft(),
                                     bar.geometry().bottomRight()})
            QTRY_COMPARE(colourAt(corner), kBackdrop);
    }

    void barLeavesTheFocusToTheRecordedProgram()
    {
        QLineEdit other;
        other.setGeometry(300, 250, 200, 40);
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        SCFullscreenToolbar bar;
        showAtTop(bar);
        const QSignalSpy toggled(&bar, &SCFullscreenToolbar::recordingToggled);
        click(centreOf(bar, "recordButton"));
        QTRY_COMPARE(toggled, (QList<QVariantList>{{true}}));
        QVERIFY(other.isActiveWindow());
        QVERIFY(!bar.isActiveWindow());
        press(QStringLiteral("a"));
        QTRY_COMPARE(other.text(), QStringLiteral("a"));
    }

    void barIsAboveAFocusedFullScreenWindow()
    {
        QWidget film;
        film.setStyleSheet(QStringLiteral("background-color: rgb(10, 200, 30)"));
        film.showFullScreen();
        QVERIFY(QTest::qWaitForWindowActive(&film));
        SCFullscreenToolbar bar;
        showAtTop(bar);
        QTRY_VERIFY(colourAt(bar.geometry().center() - QPoint(100, 0)) != kBackdrop);
        film.raise();
        film.activateWindow();
        desktopuser::waitUntilStill();
        QVERIFY(colourAt(bar.geometry().center() - QPoint(100, 0)) != kBackdrop);
        QVERIFY(film.isActiveWindow());
    }

    void buttonsAnswerThePointer()
    {
        SCFullscreenToolbar bar;
        bar.setRecording(true);
        showAtTop(bar);
        const QSignalSpy recording(&bar, &SCFullscreenToolbar::recordingToggled);
        const QSignalSpy paused(&bar, &SCFullscreenToolbar::pauseToggled);
        click(centreOf(bar, "pauseButton"));
        QTRY_COMPARE(paused, (QList<QVariantList>{{true}}));
        bar.setPausable(false);
        click(centreOf(bar, "pauseButton"));
        click(centreOf(bar, "recordButton"));
        QTRY_COMPARE(recording, (QList<QVariantList>{{false}}));
        QCOMPARE(paused.size(), 1);
    }

    void pinLetsTheBarFadeAndTheTopEdgeBringsItBack()
    {
        SCFullscreenToolbar bar;
        showAtTop(bar);
        const QPoint fill = bar.geometry().center() + QPoint(80, 0);
        click(centreOf(bar, "autoHideButton"));
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
        pointTo(kAway);
        QTRY_VERIFY(!bar.isVisible());
        QTRY_COMPARE(colourAt(fill), kBackdrop);
        pointTo({20, 0});
        QTRY_VERIFY(bar.isVisible());
        QTRY_VERIFY(colourAt(fill) != kBackdrop);
        // Down onto the bar, which stays; the pin goes in again, and the bar stays altogether.
        click(centreOf(bar, "autoHideButton"));
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
        pointTo(kAway);
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
        QVERIFY(colourAt(fill) != kBackdrop);
    }

    void barIsAlwaysALittleTransparentWhileItFadesAndOpaqueAfterwards()
    {
        SCFullscreenToolbar bar;
        showAtTop(bar);
        bar.onAutoHideToggled(false);
        QTRY_VERIFY(!bar.isVisible());
        pointTo({20, 0});
        QTRY_VERIFY(bar.isVisible());
        // Opaque is said by no property, or by the highest number.
        const auto isOpaque = [&bar] { return opacityOf(bar) == -1 || opacityOf(bar) == 0xffffffffLL; };
        QTRY_VERIFY(isOpaque());
        pointTo(kAway);
        constexpr qint64 kHighest = 0xffffffffLL * 230 / 255;
        QTRY_VERIFY(!isOpaque());
        QVERIFY(opacityOf(bar) <= kHighest + 1);
    }

    void topEdgeOnlyShowsTheBarOnlyWhileThePointerIsThere()
    {
        SCFullscreenToolbar bar;
        bar.move(toolbarTopCentre(QGuiApplication::primaryScreen()->geometry(), bar.size()));
        bar.setTopEdgeOnly(true);
        bar.show();
        const QPoint fill = bar.geometry().center() + QPoint(80, 0);
        QTest::qWait(kFadeIsOverMs);
        QCOMPARE(colourAt(fill), kBackdrop);
        pointTo({20, 5});
        QTRY_VERIFY(colourAt(fill) != kBackdrop);
        pointTo(kAway);
        QTRY_COMPARE(colourAt(fill), kBackdrop);
        QTRY_VERIFY(!bar.isVisible());
    }

    void toolTipsShowThoughTheBarIsNeverActive()
    {
        SCFullscreenToolbar bar;
        showAtTop(bar);
        const QPoint pin = centreOf(bar, "autoHideButton");
        pointTo(pin);
        QTest::qWait(50);
        pointTo(pin + QPoint(1, 1));
        QTRY_VERIFY(QToolTip::isVisible());
        QCOMPARE(QToolTip::text(), QStringLiteral("Toggle Auto-Hide"));
        QToolTip::hideText();
        pointTo(kAway);
        QTRY_VERIFY(!QToolTip::isVisible());
    }

private:
    static constexpr QPoint kAway{400, 400};

    static void showAtTop(SCFullscreenToolbar& bar)
    {
        bar.move(toolbarTopCentre(QGuiApplication::primaryScreen()->geometry(), bar.size()));
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        desktopuser::waitUntilStill();
    }

    QWidget m_backdrop;
};

REGISTER_TEST(testrun::gui<TestToolbarLook>);

#include "test_toolbarlook.moc"
