// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPropertyAnimation>
#include <QScreen>
#include <QTest>

#include <windows.h>

namespace {

constexpr COLORREF kColourKey = 0x2E2828;

struct Layering
{
    COLORREF key = 0;
    BYTE alpha = 0;
    DWORD flags = 0;
};

HWND handleOf(const QWidget& window)
{
    return reinterpret_cast<HWND>(window.winId());
}

std::optional<Layering> layeringOf(const QWidget& window)
{
    Layering layering;
    if (GetLayeredWindowAttributes(handleOf(window), &layering.key, &layering.alpha, &layering.flags) == 0)
        return std::nullopt;
    return layering;
}

QPropertyAnimation& beginFade(SCFullscreenToolbar& bar, double from, double to)
{
    auto& animation = *bar.findChild<QPropertyAnimation*>();
    animation.stop();
    animation.setStartValue(from);
    animation.setEndValue(to);
    animation.start();
    return animation;
}

void fade(SCFullscreenToolbar& bar, double from, double to)
{
    const QPropertyAnimation& animation = beginFade(bar, from, to);
    QTRY_COMPARE(animation.state(), QAbstractAnimation::Stopped);
}

/// Of 255; -1 where the system has none.
int alphaOf(const QWidget& window)
{
    const std::optional<Layering> layering = layeringOf(window);
    return layering ? layering->alpha : -1;
}

/// What the system has of the window's content.
QImage contentOf(const QWidget& window)
{
    return window.screen()->grabWindow(window.winId()).toImage();
}

} // namespace

/// The floating bar as a window of Windows, which fades it.
class TestToolbarFade : public QObject
{
    Q_OBJECT

private slots:
    void systemFadesTheBarWithTheAlphaOfTheAnimation()
    {
        SCFullscreenToolbar bar;
        bar.move(300, 200);
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        QPropertyAnimation& animation = beginFade(bar, 1.0, 0.0);
        animation.pause();
        animation.setCurrentTime(animation.duration() / 2);
        QTRY_COMPARE(alphaOf(bar), 115);
        const std::optional<Layering> layering = layeringOf(bar);
        QVERIFY(layering.has_value());
        QCOMPARE(layering->flags, DWORD(LWA_ALPHA));
        QCOMPARE(layering->key, kColourKey);
        fade(bar, 0.5, 1.0);
        QTRY_COMPARE(alphaOf(bar), 255);
    }

    void barGoesOnShowingTheTimeAfterAFade()
    {
        SCFullscreenToolbar bar;
        bar.move(300, 200);
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        fade(bar, 1.0, 0.5);
        fade(bar, 0.5, 1.0);
        QTRY_COMPARE(alphaOf(bar), 255);
        const QImage before = contentOf(bar);
        const MessageCapture messages;
        bar.setTimeText(QStringLiteral("88:88:88"));
        QTRY_VERIFY(contentOf(bar) != before);
        QCOMPARE(messages.texts(), QStringList());
        QCOMPARE(alphaOf(bar), 255);
    }

    void nothingOfTheBarIsBlackBeyondItsRoundCorners()
    {
        SCFullscreenToolbar bar;
        bar.move(300, 200);
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        const HRGN region = CreateRectRgn(0, 0, 0, 0);
        QVERIFY(GetWindowRgn(handleOf(bar), region) != ERROR);
        QVERIFY(PtInRegion(region, 0, 0) == 0);
        QVERIFY(PtInRegion(region, bar.width() - 1, bar.height() - 1) == 0);
        QVERIFY(PtInRegion(region, bar.width() / 2, bar.height() / 2) != 0);
        DeleteObject(region);
    }
};

static int run(int argc, char* argv[])
{
    // Off screen there are no windows of the system's.
    qputenv("QT_QPA_PLATFORM", "windows");
    return testrun::gui<TestToolbarFade>(argc, argv);
}

REGISTER_TEST(run);

#include "test_toolbarfade_win.moc"
