// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QCursor>
#include <QFile>
#include <QFileInfo>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>
#include <QTranslator>

#include <cstdlib>

namespace {

constexpr Durations kBrief{.toolbarFadeMs = 40, .toolbarPointerPollMs = 10};
/// Longer than such a fade and several looks at the pointer.
constexpr int kFadeIsOverMs = 120;

/// A bar that fades in a moment.
class BriefToolbar : public SCFullscreenToolbar
{
public:
    BriefToolbar() : SCFullscreenToolbar(nullptr, kBrief) {}
};

QPushButton* button(const SCFullscreenToolbar& bar, const char* name)
{
    return bar.findChild<QPushButton*>(QLatin1String(name));
}

QLabel* label(const SCFullscreenToolbar& bar, const char* name)
{
    return bar.findChild<QLabel*>(QLatin1String(name));
}

QTimer* pollTimer(const SCFullscreenToolbar& bar)
{
    return bar.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
}

QGraphicsOpacityEffect* effect(const SCFullscreenToolbar& bar)
{
    return qobject_cast<QGraphicsOpacityEffect*>(bar.graphicsEffect());
}

QPropertyAnimation* animation(const SCFullscreenToolbar& bar)
{
    return bar.findChild<QPropertyAnimation*>();
}

bool hasIcon(const QPushButton& button, const char* name)
{
    const QIcon wanted(QStringLiteral(":/res/forms/images/%1.svg").arg(QLatin1String(name)));
    return button.icon().pixmap(24, 24).toImage() == wanted.pixmap(24, 24).toImage();
}

QPoint screenPoint(int x, int y)
{
    return QGuiApplication::primaryScreen()->geometry().topLeft() + QPoint(x, y);
}

/// Far from the bar and from the top edge.
void pointAway()
{
    QCursor::setPos(screenPoint(700, 700));
}

/// At its position at the top, shown, and the pointer elsewhere.
void showAtTop(SCFullscreenToolbar& bar)
{
    pointAway();
    bar.move(screenPoint(260, 0));
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
}

/// Every text in angle brackets.
class MarkingTranslator : public QTranslator
{
public:
    using QTranslator::QTranslator;

    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* text, const char*, int) const override
    {
        return QStringLiteral("<%1>").arg(QLatin1String(text));
    }
};

} // namespace

class TestSCFullscreenToolbar : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::screens().size(), 2);
        QCOMPARE(QGuiApplication::primaryScreen()->geometry(), QRect(0, 800, 800, 800));
    }

    void barIsMadeAsItIsToBe()
    {
        BriefToolbar bar;
        QCOMPARE(bar.size(), QSize(280, 40));
        QCOMPARE(bar.minimumSize(), bar.maximumSize());
        QCOMPARE(bar.windowFlags().toInt(), 0x4001B);
        QVERIFY(bar.testAttribute(Qt::WA_TranslucentBackground));
        QVERIFY(bar.testAttribute(Qt::WA_NoSystemBackground));
        const auto* const layout = qobject_cast<QHBoxLayout*>(bar.layout());
        QVERIFY(layout != nullptr);
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(layout->spacing(), 0);
        const auto* const container = bar.findChild<QWidget*>(QStringLiteral("containerWidget"));
        QVERIFY(container != nullptr);
        QCOMPARE(container->minimumSize(), QSize(280, 40));
        QCOMPARE(container->maximumSize(), QSize(280, 40));
        QVERIFY(!bar.isVisible());
        showAtTop(bar);
        QCOMPARE(bar.windowFlags().toInt(), 0x4001B);
        QCOMPARE(bar.geometry(), QRect(screenPoint(260, 0), QSize(280, 40)));
        QCOMPARE(bar.frameGeometry(), bar.geometry());
    }

    void controlsHaveTheirNamesIconsAndTexts()
    {
        const SCFullscreenToolbar bar;
        const QPushButton* const record = button(bar, "recordButton");
        QVERIFY(hasIcon(*record, "start-recording"));
        QCOMPARE(record->toolTip(), QStringLiteral("Start Recording"));
        const QPushButton* const pin = button(bar, "autoHideButton");
        QVERIFY(pin->isCheckable());
        QVERIFY(hasIcon(*pin, "pin"));
        QCOMPARE(pin->toolTip(), QStringLiteral("Toggle Auto-Hide"));
        QCOMPARE(label(bar, "timerLabel")->text(), QStringLiteral("00:00:00"));
        for (const QPushButton* const each : bar.findChildren<QPushButton*>())
            QVERIFY2(!each->accessibleName().isEmpty(), qPrintable(each->objectName()));
        for (const QLabel* const each : bar.findChildren<QLabel*>())
            QVERIFY2(!each->accessibleName().isEmpty(), qPrintable(each->objectName()));
    }

    void styleSheetIsLoadedAndSaidSo()
    {
        const MessageCapture messages;
        const SCFullscreenToolbar bar;
        QCOMPARE(messages.texts(QtDebugMsg), QStringList{"Loaded stylesheet from: :/res/style/fullscreen-toolbar.qss"});
        QFile file(QStringLiteral(":/res/style/fullscreen-toolbar.qss"));
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        QCOMPARE(bar.styleSheet(), QString::fromUtf8(file.readAll()));
    }

    void nothingIsCutOff()
    {
        BriefToolbar bar;
        bar.setAudioOnly(true);
        bar.setTimeText(QStringLiteral("88:88:88"));
        showAtTop(bar);
        for (const QWidget* const part : bar.findChildren<QWidget*>()) {
            if (!part->isVisible())
                continue;
            QVERIFY2(part->parentWidget()->rect().contains(part->geometry()), qPrintable(part->objectName()));
            QVERIFY2(part->width() >= part->minimumSizeHint().width(), qPrintable(part->objectName()));
        }
    }

    void autoHideIsOffUntilThePinIsUsed()
    {
        BriefToolbar bar;
        showAtTop(bar);
        QVERIFY(!pollTimer(bar)->isActive());
        QVERIFY(button(bar, "autoHideButton")->isChecked());
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
        QCOMPARE(effect(bar)->opacity(), 1.0);
        button(bar, "autoHideButton")->click();
        QVERIFY(pollTimer(bar)->isActive());
        QTRY_VERIFY(!bar.isVisible());
    }

    void pressedPinKeepsTheBarInPlace()
    {
        BriefToolbar bar;
        showAtTop(bar);
        bar.onAutoHideToggled(false);
        QVERIFY(!button(bar, "autoHideButton")->isChecked());
        QVERIFY(pollTimer(bar)->isActive());
        bar.onAutoHideToggled(true);
        QVERIFY(button(bar, "autoHideButton")->isChecked());
        QVERIFY(!pollTimer(bar)->isActive());
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
    }

    void pinPressedDuringAFadeBringsTheBarBack()
    {
        BriefToolbar bar;
        showAtTop(bar);
        bar.onAutoHideToggled(false);
        QTRY_VERIFY(effect(bar)->opacity() < 1.0);
        bar.onAutoHideToggled(true);
        QTRY_COMPARE(effect(bar)->opacity(), 1.0);
        QVERIFY(bar.isVisible());
    }

    void withAutoHideOnThePointerAtTheVeryTopBringsTheBarBack_data()
    {
        QTest::addColumn<int>("y");
        QTest::addColumn<bool>("comesBack");
        QTest::newRow("first row of the screen") << 0 << true;
        QTest::newRow("10 pixels below") << 10 << true;
        QTest::newRow("11 pixels below") << 11 << false;
        QTest::newRow("in the bar's position") << 30 << false;
    }

    void withAutoHideOnThePointerAtTheVeryTopBringsTheBarBack()
    {
        QFETCH(const int, y);
        QFETCH(const bool, comesBack);
        BriefToolbar bar;
        showAtTop(bar);
        bar.onAutoHideToggled(false);
        QTRY_VERIFY(!bar.isVisible());
        // The column does not matter.
        QCursor::setPos(screenPoint(comesBack ? 5 : 400, y));
        QTest::qWait(kFadeIsOverMs);
        QCOMPARE(bar.isVisible(), comesBack);
        QCOMPARE(effect(bar)->opacity(), comesBack ? 1.0 : 0.0);
    }

    void fadesAndLooksTakeTheirTime()
    {
        const SCFullscreenToolbar bar;
        QCOMPARE(animation(bar)->duration(), 150);
        QCOMPARE(pollTimer(bar)->interval(), 50);
    }

    void aFadeOutThatFinishesAtOpacityZeroHidesTheBar()
    {
        BriefToolbar bar;
        showAtTop(bar);
        const QSignalSpy finished(animation(bar), &QPropertyAnimation::finished);
        bar.onAutoHideToggled(false);
        bar.checkMousePosition();
        QCOMPARE(animation(bar)->endValue().toDouble(), 0.0);
        QVERIFY(bar.isVisible());
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(effect(bar)->opacity(), 0.0);
        QVERIFY(!bar.isVisible());
    }

    void anInterruptedFadeDoesNotHideTheBar()
    {
        SCFullscreenToolbar bar(nullptr, {.toolbarFadeMs = 2000, .toolbarPointerPollMs = 10});
        showAtTop(bar);
        bar.onAutoHideToggled(false);
        QTRY_VERIFY(effect(bar)->opacity() < 1.0);
        QVERIFY(effect(bar)->opacity() > 0.0);
        QCursor::setPos(screenPoint(400, 0));
        QTRY_COMPARE(effect(bar)->opacity(), 1.0);
        QVERIFY(bar.isVisible());
    }

    void lookingAtThePointerDoesNotHoldUpTheFade()
    {
        BriefToolbar bar;
        showAtTop(bar);
        bar.onAutoHideToggled(false);
        bar.checkMousePosition();
        QTRY_VERIFY(effect(bar)->opacity() < 1.0);
        bar.checkMousePosition();
        QCOMPARE(animation(bar)->startValue().toDouble(), 1.0);
        QTRY_VERIFY(!bar.isVisible());
    }

    void pointerInsideKeepsTheBar()
    {
        BriefToolbar bar;
        showAtTop(bar);
        QCursor::setPos(screenPoint(400, 30));
        bar.onAutoHideToggled(false);
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
        QCOMPARE(effect(bar)->opacity(), 1.0);
    }

    void leavingTheBarFadesItOut()
    {
        BriefToolbar bar;
        showAtTop(bar);
        QCursor::setPos(screenPoint(400, 30));
        bar.onAutoHideToggled(false);
        pollTimer(bar)->stop();
        QEvent leave(QEvent::Leave);
        // Onto one of its own tool tips, say.
        QApplication::sendEvent(&bar, &leave);
        QCOMPARE(animation(bar)->state(), QAbstractAnimation::Stopped);
        pointAway();
        QApplication::sendEvent(&bar, &leave);
        QCOMPARE(animation(bar)->endValue().toDouble(), 0.0);
        QTRY_VERIFY(!bar.isVisible());
    }

    void concealedBarIsNotToBeSeenUntilItIsRevealed()
    {
        BriefToolbar bar;
        bar.setConcealed(true);
        showAtTop(bar);
        QVERIFY(!bar.mask().isEmpty());
        QVERIFY(!bar.mask().intersects(bar.rect()));
        bar.setConcealed(false);
        QVERIFY(bar.mask().isEmpty() || bar.mask().contains(bar.rect().center()));
    }

    void toolTipsStayOutOfTheRecordedArea()
    {
        const auto visibleTip = []() -> QWidget* {
            for (QWidget* const window : QApplication::topLevelWidgets()) {
                if (window->inherits("QTipLabel") && window->isVisible())
                    return window;
            }
            return nullptr;
        };
        BriefToolbar bar;
        showAtTop(bar);
        QPushButton* const pause = button(bar, "pauseButton");
        QHelpEvent asked(QEvent::ToolTip, pause->rect().center(), pause->mapToGlobal(pause->rect().center()));
        QApplication::sendEvent(pause, &asked);
        QVERIFY(visibleTip() != nullptr);
        const QRect below(bar.x() - 50, bar.geometry().bottom() + 1, bar.width() + 100, 200);
        QVERIFY(visibleTip()->geometry().intersects(below));
        bar.setRecordedArea(below);
        QApplication::sendEvent(pause, &asked);
        QVERIFY(visibleTip() != nullptr);
        QVERIFY(!visibleTip()->geometry().intersects(below));
        bar.setRecordedArea(QGuiApplication::primaryScreen()->geometry());
        QApplication::sendEvent(pause, &asked);
        QVERIFY(visibleTip() == nullptr);
    }

    void leavingAPinnedBarChangesNothing()
    {
        BriefToolbar bar;
        showAtTop(bar);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(&bar, &leave);
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
    }

    void barElsewhereFadesInUnderThePointer()
    {
        BriefToolbar bar;
        pointAway();
        bar.move(screenPoint(260, 400));
        bar.show();
        bar.onAutoHideToggled(false);
        QTRY_VERIFY(!bar.isVisible());
        QCursor::setPos(screenPoint(400, 420));
        QTRY_VERIFY(bar.isVisible());
    }

    void theLayeredAlphaNeverExceeds230Of255()
    {
        QCOMPARE(SCFullscreenToolbar::layeredAlpha(0.0), 0);
        QCOMPARE(SCFullscreenToolbar::layeredAlpha(0.5), 115);
        QCOMPARE(SCFullscreenToolbar::layeredAlpha(0.9999), 229);
        QCOMPARE(SCFullscreenToolbar::layeredAlpha(1.0), 230);
        BriefToolbar bar;
        showAtTop(bar);
        int highest = 0;
        connect(animation(bar), &QPropertyAnimation::valueChanged, this, [&highest](const QVariant& value) {
            highest = std::max(highest, SCFullscreenToolbar::layeredAlpha(value.toDouble()));
        });
        bar.onAutoHideToggled(false);
        QTRY_VERIFY(!bar.isVisible());
        QCursor::setPos(screenPoint(400, 0));
        QTRY_COMPARE(effect(bar)->opacity(), 1.0);
        QCOMPARE(highest, 230);
    }

    void barThatIsPutAwayStaysAwayAndLooksOutForNothing()
    {
        BriefToolbar bar;
        showAtTop(bar);
        QCursor::setPos(screenPoint(400, 0));
        bar.onAutoHideToggled(false);
        bar.hide();
        QVERIFY(!pollTimer(bar)->isActive());
        bar.checkMousePosition();
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(!bar.isVisible());
        bar.show();
        QVERIFY(bar.isVisible());
        QVERIFY(pollTimer(bar)->isActive());
    }

    void barThatHadFadedAwayIsSeenWhenItIsShownAgain()
    {
        BriefToolbar bar;
        showAtTop(bar);
        bar.onAutoHideToggled(false);
        QTRY_VERIFY(!bar.isVisible());
        bar.hide();
        bar.onAutoHideToggled(true);
        QVERIFY(!bar.isVisible());
        bar.show();
        QTRY_COMPARE(effect(bar)->opacity(), 1.0);
        QVERIFY(bar.isVisible());
    }

    void topEdgeOnlyWaitsForThePointer()
    {
        BriefToolbar bar;
        pointAway();
        bar.move(screenPoint(260, 0));
        bar.setTopEdgeOnly(true);
        QVERIFY(!bar.isVisible());
        bar.show();
        QVERIFY(!bar.isVisible());
        QVERIFY(!button(bar, "autoHideButton")->isChecked());
        QCursor::setPos(screenPoint(400, 30));
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(!bar.isVisible());
        // At the top of the screen above.
        QCursor::setPos(screenPoint(400, -800));
        bar.checkMousePosition();
        QVERIFY(!bar.isVisible());
        QCursor::setPos(screenPoint(400, 10));
        QTRY_VERIFY(bar.isVisible());
        QCursor::setPos(screenPoint(400, 30));
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
        pointAway();
        QTRY_VERIFY(!bar.isVisible());
        bar.hide();
        QCursor::setPos(screenPoint(400, 0));
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(!bar.isVisible());
    }

    void barThatWaitsForThePointerIsShownWhileItHasTheKeyboard()
    {
        BriefToolbar bar;
        QVERIFY(!bar.offersKeyboard());
        pointAway();
        bar.move(screenPoint(260, 0));
        bar.setTopEdgeOnly(true);
        bar.show();
        QVERIFY(!bar.isVisible());
        QVERIFY(bar.offersKeyboard());
        bar.takeKeyboard();
        QTRY_VERIFY(bar.hasKeyboard());
        for (const char* name : {"recordButton", "pauseButton", "autoHideButton"}) {
            QTRY_COMPARE(QApplication::focusWidget(), button(bar, name));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
        QWidget other;
        other.show();
        QTRY_VERIFY(!bar.isVisible());
        QVERIFY(bar.offersKeyboard());
        bar.hide();
        QVERIFY(!bar.offersKeyboard());
    }

    void topEdgeOnlyReleasesThePinForAsLongAsItLasts()
    {
        BriefToolbar bar;
        showAtTop(bar);
        bar.setTopEdgeOnly(true);
        QVERIFY(!button(bar, "autoHideButton")->isChecked());
        QTRY_VERIFY(!bar.isVisible());
        bar.setTopEdgeOnly(false);
        QVERIFY(button(bar, "autoHideButton")->isChecked());
        QTRY_COMPARE(effect(bar)->opacity(), 1.0);
        QVERIFY(bar.isVisible());
        QVERIFY(!pollTimer(bar)->isActive());
    }

    void topEdgeOnlyLeavesAPinOutThatTheUserHasReleased()
    {
        BriefToolbar bar;
        showAtTop(bar);
        button(bar, "autoHideButton")->click();
        bar.setTopEdgeOnly(true);
        bar.setTopEdgeOnly(false);
        QVERIFY(!button(bar, "autoHideButton")->isChecked());
        QVERIFY(pollTimer(bar)->isActive());
    }

    void pinKeepsABarInSightThatWaitsAtTheTopEdgeUntilItIsHidden()
    {
        BriefToolbar bar;
        showAtTop(bar);
        bar.setTopEdgeOnly(true);
        QCursor::setPos(screenPoint(400, 0));
        QTRY_COMPARE(effect(bar)->opacity(), 1.0);
        button(bar, "autoHideButton")->click();
        pointAway();
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(bar.isVisible());
        QCOMPARE(effect(bar)->opacity(), 1.0);
        // The next recording has not been asked about.
        bar.hide();
        bar.setTopEdgeOnly(true);
        bar.show();
        QVERIFY(!bar.isVisible());
        QVERIFY(!button(bar, "autoHideButton")->isChecked());
    }

    void pinThatTheUserTakesOutMeanwhileStaysOut()
    {
        BriefToolbar bar;
        showAtTop(bar);
        bar.setTopEdgeOnly(true);
        button(bar, "autoHideButton")->click();
        button(bar, "autoHideButton")->click();
        bar.setTopEdgeOnly(false);
        QVERIFY(!button(bar, "autoHideButton")->isChecked());
    }

    void topEdgeOnlyShowsNothingThatIsNotWanted()
    {
        BriefToolbar bar;
        QCursor::setPos(screenPoint(400, 0));
        bar.setTopEdgeOnly(true);
        QTest::qWait(kFadeIsOverMs);
        QVERIFY(!bar.isVisible());
        bar.show();
        QVERIFY(bar.isVisible());
    }

    void recordButtonTogglesAndReports()
    {
        BriefToolbar bar;
        const QSignalSpy toggled(&bar, &SCFullscreenToolbar::recordingToggled);
        button(bar, "recordButton")->click();
        QCOMPARE(toggled, (QList<QVariantList>{{true}}));
        button(bar, "recordButton")->click();
        QCOMPARE(toggled, (QList<QVariantList>{{true}, {false}}));
        bar.setRecording(true);
        QCOMPARE(toggled.size(), 2);
        bar.toggleRecording();
        QCOMPARE(toggled.last(), QVariantList{false});
    }

    void recordButtonShowsWhetherARecordingRuns()
    {
        BriefToolbar bar;
        const QPushButton* const record = button(bar, "recordButton");
        bar.setRecording(true);
        QVERIFY(hasIcon(*record, "stop-recording"));
        QCOMPARE(record->toolTip(), QStringLiteral("Stop Recording"));
        QCOMPARE(record->accessibleName(), QStringLiteral("Stop Recording"));
        bar.setRecording(false);
        QVERIFY(hasIcon(*record, "start-recording"));
        QCOMPARE(record->toolTip(), QStringLiteral("Start Recording"));
    }

    void toolTipSaysThePauseKey()
    {
        BriefToolbar bar;
        const QPushButton* const pause = button(bar, "pauseButton");
        bar.setRecording(true);
        bar.setPauseKey(QStringLiteral("Shift+F9"));
        QCOMPARE(pause->toolTip(), QStringLiteral("Pause Recording (Shift+F9)"));
        bar.setPaused(true);
        QCOMPARE(pause->toolTip(), QStringLiteral("Resume Recording (Shift+F9)"));
        QCOMPARE(pause->accessibleName(), QStringLiteral("Resume Recording"));
        bar.setPausable(false);
        QCOMPARE(pause->toolTip(), QStringLiteral("This format cannot be paused"));
        bar.setPausable(true);
        bar.setPauseKey({});
        QCOMPARE(pause->toolTip(), QStringLiteral("Resume Recording"));
    }

    void timeIsShown()
    {
        BriefToolbar bar;
        bar.setTimeText(QStringLiteral("01:02:03"));
        QCOMPARE(label(bar, "timerLabel")->text(), QStringLiteral("01:02:03"));
    }

    void pauseButtonReportsAndShowsWhatTheOwnerSays()
    {
        BriefToolbar bar;
        bar.setRecording(true);
        const QPushButton* const pause = button(bar, "pauseButton");
        const QSignalSpy toggled(&bar, &SCFullscreenToolbar::pauseToggled);
        QVERIFY(hasIcon(*pause, "pause-recording"));
        QCOMPARE(pause->toolTip(), QStringLiteral("Pause Recording"));
        button(bar, "pauseButton")->click();
        QCOMPARE(toggled, (QList<QVariantList>{{true}}));
        QCOMPARE(pause->toolTip(), QStringLiteral("Pause Recording"));
        bar.setPaused(true);
        QVERIFY(hasIcon(*pause, "resume-recording"));
        QCOMPARE(pause->toolTip(), QStringLiteral("Resume Recording"));
        QCOMPARE(pause->accessibleName(), QStringLiteral("Resume Recording"));
        button(bar, "pauseButton")->click();
        QCOMPARE(toggled, (QList<QVariantList>{{true}, {false}}));
        bar.setRecording(false);
        QVERIFY(hasIcon(*pause, "pause-recording"));
        QCOMPARE(toggled.size(), 2);
    }

    void formatThatCannotPauseSaysSoByADisabledButton()
    {
        BriefToolbar bar;
        QPushButton* const pause = button(bar, "pauseButton");
        QVERIFY(pause->isEnabled());
        const QSignalSpy toggled(&bar, &SCFullscreenToolbar::pauseToggled);
        bar.setPausable(false);
        QVERIFY(!pause->isEnabled());
        QCOMPARE(pause->toolTip(), QStringLiteral("This format cannot be paused"));
        pause->click();
        QCOMPARE(toggled.size(), 0);
        bar.setPausable(true);
        QVERIFY(pause->isEnabled());
        QCOMPARE(pause->toolTip(), QStringLiteral("Pause Recording"));
    }

    void audioOnlyLooksDifferentAndBackAgain()
    {
        BriefToolbar bar;
        showAtTop(bar);
        const QImage image = bar.grab().toImage();
        bar.setAudioOnly(true);
        QVERIFY(label(bar, "audioOnlyLabel")->isVisible());
        QCoreApplication::sendPostedEvents();
        const QImage audio = bar.grab().toImage();
        QVERIFY(audio != image);
        QCOMPARE(audio.pixelColor(100, 0).name(), QStringLiteral("#007acc"));
        bar.setAudioOnly(false);
        QVERIFY(!label(bar, "audioOnlyLabel")->isVisible());
        QCoreApplication::sendPostedEvents();
        QCOMPARE(bar.grab().toImage(), image);
    }

    void languageChangeChangesEveryText()
    {
        BriefToolbar bar;
        bar.setRecording(true);
        MarkingTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QCoreApplication::sendPostedEvents();
        QCOMPARE(button(bar, "recordButton")->toolTip(), QStringLiteral("<Stop Recording>"));
        QCOMPARE(button(bar, "pauseButton")->toolTip(), QStringLiteral("<Pause Recording>"));
        QCOMPARE(button(bar, "autoHideButton")->toolTip(), QStringLiteral("<Toggle Auto-Hide>"));
        QCOMPARE(label(bar, "timerLabel")->accessibleName(), QStringLiteral("<Elapsed Time>"));
        QCOMPARE(label(bar, "audioOnlyLabel")->toolTip(), QStringLiteral("<Sound Only>"));
        bar.setPaused(true);
        bar.setPausable(false);
        QCOMPARE(button(bar, "pauseButton")->accessibleName(), QStringLiteral("<Resume Recording>"));
        QCOMPARE(button(bar, "pauseButton")->toolTip(), QStringLiteral("<This format cannot be paused>"));
        QCoreApplication::removeTranslator(&translator);
    }

    /// A pointer that moves over the program's own windows need not be waited for.
    void pointerMovingOverTheProgramsWindowsIsNoticedAtOnce()
    {
        BriefToolbar bar;
        showAtTop(bar);
        QWidget other;
        other.show();
        bar.onAutoHideToggled(false);
        QVERIFY(animation(bar)->state() == QAbstractAnimation::Stopped);
        QTest::mouseMove(&other, QPoint(5, 5));
        pointAway();
        QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), QPointF(5, 5), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&other, &move);
        QCOMPARE(animation(bar)->state(), QAbstractAnimation::Running);
    }
};

namespace {

/// The primary screen stands below another one: its top edge is not where the desktop begins.
int runBelowAnotherScreen(int argc, char* argv[])
{
    // In the current folder, by its name alone: what stands after a colon would be another option to Qt, which takes
    // the first screen by name for the primary one.
    QTemporaryFile screens(QStringLiteral("screens.XXXXXX.json"));
    const QByteArray screen = R"({"name": "%1", "x": 0, "y": %2, "width": 800, "height": 800,
                                  "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1})";
    const QString text =
        QStringLiteral(R"({"screens": [%1, %2]})")
            .arg(QString::fromUtf8(screen).arg("primary").arg(800), QString::fromUtf8(screen).arg("upper").arg(0));
    if (!screens.open() || screens.write(text.toUtf8()) < 0 || !screens.flush())
        return EXIT_FAILURE;
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFileInfo(screens.fileName()).fileName().toLocal8Bit());
    return testrun::gui<TestSCFullscreenToolbar>(argc, argv);
}

} // namespace

REGISTER_TEST(runBelowAnotherScreen);

#include "test_scfullscreentoolbar.moc"
