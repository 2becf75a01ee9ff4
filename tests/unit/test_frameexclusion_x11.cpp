// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/sccountdownwidget.h"
#include "overlays/drawwindow.h"
#include "platform/windowing/excluded_windows.h"
#include "platform/windowing/frame_exclusion.h"
#include "tests/support/testrun.h"
#include "widgets/tooltip.h"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QToolTip>
#include <QWidget>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

using platform::ExcludedWindow;
using platform::ExcludedWindows;

namespace {

using Entries = std::vector<ExcludedWindow>;

/// Makes its native window whenever a test wants it.
class NativeWidget : public QWidget
{
public:
    using QWidget::create;
    using QWidget::destroy;
};

Entries entries()
{
    return ExcludedWindows::ofProgram().all();
}

ExcludedWindow entryOf(const QWidget& window, int borderPx = 0)
{
    return {static_cast<std::uint32_t>(window.internalWinId()), borderPx};
}

const QWidget* topLevelNamed(const QString& name)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto found = std::ranges::find(windows, name, &QWidget::objectName);
    return found != windows.end() ? *found : nullptr;
}

} // namespace

/// Windows that are to be left out of frames, as those see them who grab the frames.
class TestFrameExclusion : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(entries(), Entries()); }

    void windowIsEnteredAsSoonAsItHasAHandleAndUntilItGoes()
    {
        auto window = std::make_unique<QWidget>();
        platform::setExcludedFromFrames(*window, true);
        QCOMPARE(entries(), Entries());
        window->winId();
        QCOMPARE(entries(), Entries{entryOf(*window)});
        window->show();
        window->hide();
        QCOMPARE(entries(), Entries{entryOf(*window)});
        window.reset();
        QCOMPARE(entries(), Entries());
    }

    void windowThatGetsAnotherHandleIsEnteredUnderThat()
    {
        NativeWidget window;
        window.create();
        platform::setExcludedFromFrames(window, true);
        const Entries before = entries();
        QCOMPARE(before, Entries{entryOf(window)});
        window.destroy();
        QCOMPARE(entries(), Entries());
        window.create();
        QCOMPARE(entries(), Entries{entryOf(window)});
        QVERIFY(entries() != before);
    }

    void windowIsEnteredOnceAndTakenOffAtOnce()
    {
        QWidget window;
        window.winId();
        platform::setExcludedFromFrames(window, true);
        platform::setExcludedFromFrames(window, true);
        QCOMPARE(entries(), Entries{entryOf(window)});
        platform::setExcludedFromFrames(window, false);
        QCOMPARE(entries(), Entries());
        platform::setExcludedFromFrames(window, false);
        QCOMPARE(entries(), Entries());
    }

    void borderReplacesTheWholeWindow()
    {
        QWidget window;
        platform::excludeBorderFromFrames(window, 4);
        window.winId();
        QCOMPARE(entries(), Entries{entryOf(window, 4)});
        platform::excludeBorderFromFrames(window, 6);
        QCOMPARE(entries(), Entries{entryOf(window, 6)});
        platform::setExcludedFromFrames(window, true);
        QCOMPARE(entries(), Entries{entryOf(window)});
    }

    /// A tool tip is another window each time.
    void toolTipIsEnteredBeforeItIsShown()
    {
        QObject owner;
        new ToolTipExclusion(&owner);
        QLabel label(QStringLiteral("label"));
        label.show();
        QCOMPARE(entries(), Entries());
        QToolTip::showText(QPoint(10, 10), QStringLiteral("tip"), &label);
        const QWidget* const tip = visibleToolTip();
        QVERIFY(tip != nullptr);
        QCOMPARE(entries(), Entries{entryOf(*tip)});
        QVERIFY(tip->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QToolTip::hideText();
        QTRY_COMPARE(entries(), Entries());
    }

    void regionFrameIsEnteredWithItsBorderAndItsToolBarAsAWhole()
    {
        DrawWindow frame;
        frame.show();
        const QWidget* const toolBar = topLevelNamed(QStringLiteral("buttonBackground"));
        QVERIFY(toolBar != nullptr);
        const Entries expected{entryOf(frame, frame.borderWidth()), entryOf(*toolBar)};
        QVERIFY(std::ranges::is_permutation(entries(), expected));
    }

    void countdownIsEnteredAsLongAsItIsThere()
    {
        SCCountdownWidget countdown(nullptr, 60'000);
        countdown.start(3);
        QVERIFY(countdown.isVisible());
        QCOMPARE(entries(), Entries{entryOf(countdown)});
    }

    void entriesAreReadByOneThreadWhileAnotherOneWritesThem()
    {
        std::atomic<bool> isOver = false;
        std::atomic<bool> isWrong = false;
        std::thread reader([&] {
            while (!isOver)
                isWrong = isWrong || entries().size() > 2;
        });
        for (int round = 0; round < 300; ++round) {
            QWidget one;
            QWidget other;
            one.winId();
            other.winId();
            platform::setExcludedFromFrames(one, true);
            platform::excludeBorderFromFrames(other, 1 + round);
        }
        isOver = true;
        reader.join();
        QVERIFY(!isWrong);
    }
};

REGISTER_TEST(testrun::gui<TestFrameExclusion>);

#include "test_frameexclusion_x11.moc"
