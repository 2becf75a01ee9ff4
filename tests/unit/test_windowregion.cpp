// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "mainwindow/capture/windowregion.h"
#include "overlays/drawwindow.h"
#include "overlays/windowhighlighter.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/support/captureform.h"
#include "tests/support/pointerevents.h"
#include "tests/support/regiontiles.h"
#include "tests/support/shownwindow.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

namespace {

constexpr QRect kArea(100, 80, 320, 240);
/// Longer than several looks at the window.
constexpr int kSeveralLooksMs = 60;

/// A form whose region can be that of a window, which the test moves.
class WindowForm : public CaptureForm
{
public:
    WindowForm() { connect(m_screenshots, &ScreenshotSession::recordRequested, m_windowRegion, &WindowRegion::choose); }

    void chooseWindow(const QString& title = {})
    {
        m_windowRegion->choose(kArea, {title, [this] { return position; }, [this] { return exists; }});
    }

    void beginCountdown()
    {
        Activity::Facts facts = nothingUnderWay();
        facts.recording = [] { return RecordingState::Countdown; };
        m_activity = Activity(facts);
        m_capture->settleArea();
    }

    QRect area() const { return m_capture->area(); }
    ScreenshotSession& screenshots() { return *m_screenshots; }
    RegionOverlays& region() { return *m_region; }

    std::optional<QPoint> position = QPoint(90, 50);
    bool exists = true;

private:
    WindowRegion* m_windowRegion = new WindowRegion(*m_ui.fileNameEdit, *m_capture, *m_region, this, 5);
};

template <typename Widget>
Widget* child(const QWidget& window, const char* name)
{
    return window.findChild<Widget*>(QLatin1String(name));
}

QString field(const QWidget& window, const char* name)
{
    return child<QLineEdit>(window, name)->text();
}

QPushButton* followButton()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (auto* const button = window->findChild<QPushButton*>(QStringLiteral("followButton")))
            return button;
    }
    return nullptr;
}

QRect framedArea()
{
    return shownWindow<DrawWindow>()->geometry().adjusted(4, 4, -4, -4);
}

} // namespace

/// The region over a window of another program.
class TestWindowRegion : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init() { windowtest::resetSettings(); }

    void windowIsFramedAndItsTitleProposed()
    {
        WindowForm form;
        form.chooseWindow(QStringLiteral(" Report: \u202Egpj.exe\n"));
        QCOMPARE(form.area(), kArea);
        QCOMPARE(framedArea(), kArea);
        QCOMPARE(selectedTiles(form), QStringList{"regionTile"});
        QCOMPARE(field(form, "widthEdit"), QStringLiteral("320"));
        QCOMPARE(field(form, "heightEdit"), QStringLiteral("240"));
        QCOMPARE(field(form, "fileNameEdit"), QStringLiteral("Report [U+202E]gpj.exe"));
    }

    void proposedNameGoesWithTheRegion()
    {
        WindowForm form;
        form.chooseWindow(QStringLiteral("One"));
        form.chooseWindow(QStringLiteral("Two"));
        QCOMPARE(field(form, "fileNameEdit"), QStringLiteral("Two"));
        QTest::mouseClick(child<Tile>(form, "fullScreenTile"), Qt::LeftButton);
        QCOMPARE(field(form, "fileNameEdit"), QString());
    }

    void typedNameStays()
    {
        WindowForm form;
        auto* const name = child<QLineEdit>(form, "fileNameEdit");
        name->setText(QStringLiteral("Mine"));
        form.chooseWindow(QStringLiteral("One"));
        QCOMPARE(name->text(), QStringLiteral("Mine"));
        name->clear();
        form.chooseWindow(QStringLiteral("One"));
        name->setText(QStringLiteral("One more"));
        QTest::mouseClick(child<Tile>(form, "fullScreenTile"), Qt::LeftButton);
        QCOMPARE(name->text(), QStringLiteral("One more"));
    }

    void followingIsOfferedForAWindowOnlyAndOffAtFirst()
    {
        WindowForm form;
        dragRegion(form, {100, 80}, {419, 319});
        QVERIFY(!followButton()->isVisible());
        form.chooseWindow();
        QVERIFY(followButton()->isVisible());
        QVERIFY(!followButton()->isChecked());
        QCOMPARE(followButton()->toolTip(), QStringLiteral("Follow the window"));
        form.position = QPoint(200, 200);
        QTest::qWait(kSeveralLooksMs);
        QCOMPARE(form.area(), kArea);
        followButton()->click();
        dragRegion(form, {100, 80}, {419, 319});
        QVERIFY(!followButton()->isVisible());
        form.position = QPoint(300, 300);
        QTest::qWait(kSeveralLooksMs);
        QCOMPARE(form.area(), kArea);
    }

    void followButtonIsWithinTheBarOfTheSmallestRegion()
    {
        WindowForm form;
        form.chooseWindow();
        shownWindow<DrawWindow>()->resize(200, 150);
        const QPushButton* const button = followButton();
        QVERIFY(button->isVisible());
        QVERIFY(button->window()->rect().contains(QRect(button->mapTo(button->window(), QPoint()), button->size())));
    }

    void regionFollowsTheWindowAsFarAsTheScreensGo_data()
    {
        QTest::addColumn<QPoint>("window");
        QTest::addColumn<QPoint>("corner");
        QTest::newRow("to the right and up") << QPoint(140, 20) << QPoint(150, 50);
        QTest::newRow("half beyond the top") << QPoint(90, -150) << QPoint(100, 0);
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QTest::newRow("beyond the far corner")
            << screen.bottomRight() - QPoint(100, 20) << screen.bottomRight() - QPoint(319, 239);
        QTest::newRow("beyond the left edge") << QPoint(-300, 50) << QPoint(1, 80);
    }

    void regionFollowsTheWindowAsFarAsTheScreensGo()
    {
        QFETCH(const QPoint, window);
        QFETCH(const QPoint, corner);
        WindowForm form;
        form.chooseWindow();
        followButton()->click();
        form.position = window;
        QTRY_COMPARE(form.area(), QRect(corner, kArea.size()));
        QCOMPARE(framedArea(), form.area());
        // Where it was beside the window, and of the same size.
        form.position = QPoint(90, 50);
        QTRY_COMPARE(form.area(), kArea);
        QCOMPARE(framedArea(), kArea);
    }

    void regionStaysWhereItIsWhileTheWindowIsNotShown()
    {
        WindowForm form;
        form.chooseWindow();
        followButton()->click();
        form.position.reset();
        QTest::qWait(kSeveralLooksMs);
        QCOMPARE(form.area(), kArea);
        form.position = QPoint(100, 60);
        QTRY_COMPARE(form.area(), kArea.translated(10, 10));
        followButton()->click();
        form.position = QPoint(200, 200);
        QTest::qWait(kSeveralLooksMs);
        QCOMPARE(form.area(), kArea.translated(10, 10));
    }

    void windowThatIsGoneIsFollowedNoMore()
    {
        WindowForm form;
        form.chooseWindow();
        followButton()->click();
        form.position.reset();
        form.exists = false;
        QTRY_VERIFY(!followButton()->isVisible());
        QVERIFY(!followButton()->isChecked());
        form.position = QPoint(200, 200);
        QTest::qWait(kSeveralLooksMs);
        QCOMPARE(form.area(), kArea);
    }

    /// A recorded region moves a moment later, or not at all where the recording ends meanwhile.
    void moveThatIsCancelledIsMadeUpFor()
    {
        WindowForm form;
        form.chooseWindow();
        followButton()->click();
        const QSignalSpy concealed(&form.region(), &RegionOverlays::frameConcealed);
        connect(
            &form.region(), &RegionOverlays::frameConcealed, &form,
            [&form] { form.region().setRecording(false, false); }, Qt::QueuedConnection);
        form.region().setRecording(true, true);
        form.position = QPoint(140, 70);
        QTRY_COMPARE(form.area(), kArea.translated(50, 20));
        QVERIFY(!concealed.isEmpty());
        QCOMPARE(framedArea(), form.area());
    }

    void draggedRegionKeepsItsNewPositionOnTheWindow()
    {
        WindowForm form;
        form.chooseWindow();
        followButton()->click();
        QWidget& bar = *followButton()->window();
        pointerevents::drag(bar, bar.geometry().center(), {40, 60});
        QCOMPARE(form.area(), kArea.translated(40, 60));
        QTest::qWait(kSeveralLooksMs);
        QCOMPARE(form.area(), kArea.translated(40, 60));
        form.position = QPoint(100, 50);
        QTRY_COMPARE(form.area(), kArea.translated(50, 60));
    }

    void windowThatMovesDuringADragIsFollowedAfterIt()
    {
        WindowForm form;
        form.chooseWindow();
        followButton()->click();
        QWidget& bar = *followButton()->window();
        const QPoint from = bar.geometry().center();
        pointerevents::press(bar, from);
        form.position = QPoint(100, 50);
        QTest::qWait(kSeveralLooksMs);
        QCOMPARE(framedArea(), kArea);
        shownWindow<DrawWindow>()->hide();
        QTRY_COMPARE(form.area(), kArea.translated(10, 0));
    }

    void recordButtonOfThePickedWindowsFrameLeadsHere()
    {
        WindowForm form;
        form.screenshots().selectWindow();
        emit shownWindow<WindowHighlighter>()->windowClicked(kArea);
        auto* const frame = shownWindow<SCScreenshotWindow>();
        auto* const record = recordButton();
        QVERIFY(record->isVisible());
        QCOMPARE(record->toolTip(), QStringLiteral("Record"));
        // The frame's own area counts.
        frame->setGeometry(kArea.translated(20, 10));
        record->click();
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QVERIFY(!form.screenshots().isActive());
        QCOMPARE(form.area(), kArea.translated(20, 10));
        QCOMPARE(selectedTiles(form), QStringList{"regionTile"});
        // No window is picked then.
        form.screenshots().frameScreen();
        QVERIFY(!recordButton()->isVisible());
    }

    void recordingThatBeginsIsOfTheWindowPickedForIt()
    {
        WindowForm form;
        QTest::mouseClick(child<Tile>(form, "windowTile"), Qt::LeftButton);
        emit shownWindow<WindowHighlighter>()->windowClicked(kArea);
        form.beginCountdown();
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QCOMPARE(form.area(), kArea);
        QCOMPARE(framedArea(), kArea);
        QCOMPARE(selectedTiles(form), QStringList{"regionTile"});
    }

    void recordingThatBeginsIsNotOfTheWindowOfAScreenshot()
    {
        WindowForm form;
        form.screenshots().selectWindow();
        emit shownWindow<WindowHighlighter>()->windowClicked(kArea);
        form.beginCountdown();
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QVERIFY(form.area() != kArea);
        QCOMPARE(selectedTiles(form), QStringList{"fullScreenTile"});
    }

    void recordingThatBeginsIsNotOfAWindowWhoseFrameWasClosed()
    {
        WindowForm form;
        QTest::mouseClick(child<Tile>(form, "windowTile"), Qt::LeftButton);
        emit shownWindow<WindowHighlighter>()->windowClicked(kArea);
        shownWindow<SCScreenshotWindow>()->cancelScreenshot();
        form.beginCountdown();
        QVERIFY(form.area() != kArea);
    }

    void laterChoiceTakesThePlaceOfThePickedWindow_data()
    {
        QTest::addColumn<QStringList>("tiles");
        QTest::newRow("full screen") << QStringList{"fullScreenTile"};
        QTest::newRow("preset") << QStringList{"regionTile"};
        QTest::newRow("typed size") << QStringList{"regionTile"};
        QTest::newRow("screen switched off") << QStringList{};
    }

    void laterChoiceTakesThePlaceOfThePickedWindow()
    {
        QFETCH(const QStringList, tiles);
        WindowForm form;
        // Has both fields of the size filled.
        QTest::mouseClick(child<Tile>(form, "fullScreenTile"), Qt::LeftButton);
        QTest::mouseClick(child<Tile>(form, "windowTile"), Qt::LeftButton);
        emit shownWindow<WindowHighlighter>()->windowClicked(kArea);
        chooseByTag(form);
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QCOMPARE(selectedTiles(form), tiles);
        const QRect chosen = form.area();
        const QString format = child<QComboBox>(form, "formatBox")->currentText();
        form.beginCountdown();
        QVERIFY(form.area() != kArea);
        QCOMPARE(form.area(), chosen);
        QCOMPARE(selectedTiles(form), tiles);
        QCOMPARE(child<QComboBox>(form, "formatBox")->currentText(), format);
    }

    void choiceForARecordingLeavesTheFrameOfAScreenshot()
    {
        WindowForm form;
        form.screenshots().selectWindow();
        emit shownWindow<WindowHighlighter>()->windowClicked(kArea);
        QTest::mouseClick(child<Tile>(form, "fullScreenTile"), Qt::LeftButton);
        QVERIFY(shownWindow<SCScreenshotWindow>() != nullptr);
    }

private:
    static void chooseByTag(const WindowForm& form)
    {
        const QByteArray tag(QTest::currentDataTag());
        if (tag == "full screen") {
            QTest::mouseClick(child<Tile>(form, "fullScreenTile"), Qt::LeftButton);
        } else if (tag == "preset") {
            emit child<QComboBox>(form, "ratioBox")->textActivated(QStringLiteral("4:3"));
        } else if (tag == "typed size") {
            auto* const edit = child<QLineEdit>(form, "widthEdit");
            edit->selectAll();
            QTest::keyClicks(edit, QStringLiteral("400"));
            QTest::keyClick(edit, Qt::Key_Return);
        } else {
            child<SCSwitchWidget>(form, "screenSwitch")->setChecked(false);
        }
    }

    static QPushButton* recordButton()
    {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            auto* const button = window->findChild<QPushButton*>(QStringLiteral("recordButton"));
            if (button != nullptr && window->objectName() == QLatin1String("buttonBackground"))
                return button;
        }
        return nullptr;
    }
};

REGISTER_TEST(windowtest::run<TestWindowRegion>);

#include "test_windowregion.moc"
