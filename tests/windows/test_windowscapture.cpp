#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/testrun.h"
#include "tests/windows/windowsuser.h"

#include <QGuiApplication>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScreen>
#include <QTest>

namespace {

using windowsuser::kTimeoutMs;

/// A window that is there is not yet ready for the pointer.
constexpr int kReadyMs = 500;
constexpr int kTolerance = 12;
/// Where another program shows a white window with a grey one in its middle half.
const QRect kTarget(200, 100, 320, 200);
/// The grey one.
const QRect kButton(kTarget.left() + kTarget.width() / 4, kTarget.top() + kTarget.height() / 4, kTarget.width() / 2,
                    kTarget.height() / 2);

// Places in the main window, on its screenshot page.
constexpr QPoint kRegionTile(340, 156);
constexpr QPoint kWindowTile(453, 156);
// On the tool bar of a screenshot's frame.
constexpr int kShotBarHeight = 30;
constexpr QPoint kSaveButton(15, 15);
constexpr QPoint kPenButton(45, 15);
constexpr QPoint kClearButton(75, 15);

QColor colourAt(const QImage& image, const QPoint& place)
{
    return meanColour(image, place, 2);
}

/// Wine hears of the pointer later than of the button.
bool dragSlowly(const QPoint& from, const QPoint& to)
{
    bool done = pointTo(from);
    QTest::qWait(kReadyMs);
    done = xdotool({"mousedown", "1"}) && done;
    for (const QPoint& place : {from, (from + to) / 2, to}) {
        QTest::qWait(kReadyMs);
        done = pointTo(place) && done;
    }
    QTest::qWait(kReadyMs);
    return xdotool({"mouseup", "1"}) && done;
}

} // namespace

/// What the Windows program takes of the screen: a region of it in a recording; all of it, a region and a window in a
/// screenshot.
class TestWindowsCapture : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(m_desktop.begin(), QString());
        QCOMPARE(WineDesktop::launch(m_target, QStringLiteral("kestrano_test_windowprobe"),
                                     {QStringLiteral("target"), QString::number(kTarget.left()),
                                      QString::number(kTarget.top()), QString::number(kTarget.width()),
                                      QString::number(kTarget.height())}),
                 QString());
    }

    void cleanupTestCase()
    {
        m_target.kill();
        m_target.waitForFinished();
    }

    void aDraggedRegionIsRecordedAndNothingElse();
    void theScreenshotHotkeyAndEnterSaveTheWholeScreen();
    void aDraggedRegionIsShotAsItIsOrWithAStroke_data();
    void aDraggedRegionIsShotAsItIsOrWithAStroke();
    void aPickedWindowIsShotAndNothingElse();
    void theHookFramesTheDeepestWindowAndSwallowsNoClick();

private:
    /// Where the program will write its screenshots.
    static QDir keepShotsIn(WindowsProgram& program);
    /// The one screenshot there, once it can be read; empty when it does not come.
    static QString awaitShot(const QDir& shots);
    /// Starts the program and clicks a tile of its screenshot page.
    static void clickTile(WindowsProgram& program, const QPoint& tile);
    /// Puts the other program's window in front of the program's.
    static bool bringTargetToFront();
    /// Waits for a window of the program as large as this.
    static bool waitForWindow(const QSize& size);

    WineDesktop m_desktop;
    QProcess m_target;
};

bool TestWindowsCapture::waitForWindow(const QSize& size)
{
    QElapsedTimer waited;
    waited.start();
    do {
        const QList<WindowsWindow> windows = WineDesktop::windows();
        for (const WindowsWindow& window : windows)
            if (window.isVisible && window.program == QLatin1String("kestrano.exe") && window.place.size() == size) {
                QTest::qWait(kReadyMs);
                return true;
            }
    } while (!waited.hasExpired(kTimeoutMs));
    return false;
}

void TestWindowsCapture::aDraggedRegionIsRecordedAndNothingElse()
{
    WindowsProgram program;
    for (const char* key : {"mouse/switch", "mouse/showHighlight", "mouse/showCursor"})
        program.setSetting(QLatin1String(key), false);
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const auto window = WindowsProgram::mainWindowAsWindowsKnowsIt(false, kTimeoutMs);
    QVERIFY(window && WineDesktop::probe({QStringLiteral("front"), QString::number(window->handle)}));
    QTest::qWait(kReadyMs);
    for (int step = 0; step < kStepsToRegion; ++step)
        ProgramUnderTest::pressKey(QStringLiteral("shift+Tab"));
    ProgramUnderTest::pressKey(QStringLiteral("space"));
    QVERIFY(program.waitForMessage(QStringLiteral("Select region clicked"), kTimeoutMs));
    QVERIFY(waitForWindow(QGuiApplication::primaryScreen()->size()));
    QVERIFY(dragSlowly(kTarget.topLeft(), kTarget.bottomRight()));
    QTest::qWait(kReadyMs);

    const Take take = record(program, QStringLiteral("mp4"), 2000);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const MediaFile file(WineDesktop::unixPath(take.path));
    QVERIFY2(file.isReadable(), qPrintable(file.error()));
    QCOMPARE(file.video()->size, kTarget.size());
    const QImage picture = file.pictureAt(file.durationSeconds() / 2);
    const QRect all = picture.rect().adjusted(4, 4, -4, -4);
    for (const QPoint& corner : {all.topLeft(), all.topRight(), all.bottomLeft(), all.bottomRight()})
        QVERIFY2(colourDistance(colourAt(picture, corner), Qt::white) <= kTolerance,
                 qPrintable(colourAt(picture, corner).name()));
    QVERIFY2(colourDistance(colourAt(picture, all.center()), QColor(128, 128, 128)) <= kTolerance,
             qPrintable(colourAt(picture, all.center()).name()));
}

QDir TestWindowsCapture::keepShotsIn(WindowsProgram& program)
{
    const QDir shots(program.profile().filePath(QStringLiteral("shots")));
    program.setSetting(QStringLiteral("screenshot/saveLocation"),
                       WineDesktop::windowsPath(shots.path()).replace('\\', '/'));
    return shots;
}

QString TestWindowsCapture::awaitShot(const QDir& shots)
{
    QElapsedTimer waited;
    waited.start();
    do {
        const QStringList names = shots.entryList({"Screenshot_*.png"}, QDir::Files);
        if (names.size() == 1 && !QImage(shots.filePath(names.constFirst())).isNull())
            return shots.filePath(names.constFirst());
        QTest::qWait(kReadyMs);
    } while (!waited.hasExpired(kTimeoutMs));
    return {};
}

void TestWindowsCapture::clickTile(WindowsProgram& program, const QPoint& tile)
{
    const auto window = windowsuser::startInFront(program);
    QVERIFY2(window, qPrintable(program.transcript()));
    QVERIFY(windowsuser::click(*window, windowsuser::kScreenshotTab) && windowsuser::click(*window, tile));
}

void TestWindowsCapture::theScreenshotHotkeyAndEnterSaveTheWholeScreen()
{
    WindowsProgram program;
    const QDir shots = keepShotsIn(program);
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    ProgramUnderTest::pressKey(QStringLiteral("F10"));
    QTest::qWait(kTimeoutMs / 10);
    ProgramUnderTest::pressKey(QStringLiteral("Return"));
    const QString path = awaitShot(shots);
    const QImage picture(path);
    QCOMPARE(picture.size(), QGuiApplication::primaryScreen()->size());
    QCOMPARE(picture.pixelColor(kTarget.topLeft() + QPoint(10, 10)), QColor(Qt::white));
    QCOMPARE(picture.pixelColor(kTarget.center()), QColor(128, 128, 128));

    QVERIFY(WineDesktop::visibleWindow(QStringLiteral("Screenshot Saved"), kTimeoutMs));
    QFile library(program.dataFolder().filePath(QStringLiteral("file_data.json")));
    QVERIFY(library.open(QIODevice::ReadOnly));
    QVERIFY2(library.readAll().contains(QFileInfo(path).fileName().toUtf8()), "the library does not have it");
    ProgramUnderTest::pressKey(QStringLiteral("Return"));
}

void TestWindowsCapture::aDraggedRegionIsShotAsItIsOrWithAStroke_data()
{
    QTest::addColumn<bool>("draws");
    QTest::newRow("as it is") << false;
    QTest::newRow("with a stroke") << true;
}

void TestWindowsCapture::aDraggedRegionIsShotAsItIsOrWithAStroke()
{
    QFETCH(const bool, draws);
    WindowsProgram program;
    const QDir shots = keepShotsIn(program);
    clickTile(program, kRegionTile);
    QVERIFY(waitForWindow(QGuiApplication::primaryScreen()->size()));
    QVERIFY(dragSlowly(kTarget.topLeft(), kTarget.bottomRight()));
    QVERIFY(windowsuser::awaitReady(QStringLiteral("Screenshot")));
    const auto bar = windowsuser::awaitWindow([](const WindowsWindow& window) {
        return window.program == QLatin1String("kestrano.exe") && window.place.height() == kShotBarHeight;
    });
    QVERIFY(bar);
    const QPoint stroke(kTarget.center() - QPoint(0, 70));
    if (draws) {
        QVERIFY(windowsuser::click(*bar, kPenButton));
        QVERIFY(dragSlowly(stroke - QPoint(60, 0), stroke + QPoint(60, 0)));
        QVERIFY(windowsuser::click(*bar, kSaveButton));
    } else {
        // The keyboard works though the bar was pressed last.
        QVERIFY(windowsuser::click(*bar, kClearButton));
        windowsuser::press({"Return"});
    }

    const QImage picture(awaitShot(shots));
    QCOMPARE(picture.size(), kTarget.size());
    const QColor drawnOn = picture.pixelColor(stroke - kTarget.topLeft());
    QCOMPARE(drawnOn, draws ? QColor(Qt::red) : QColor(Qt::white));
    // With the pen on, the frame is a window that is nearly see-through, below which Wine shows nothing but black.
    if (draws)
        return;
    QCOMPARE(picture.pixelColor(0, 0), QColor(Qt::white));
    QCOMPARE(picture.pixelColor(picture.rect().bottomRight()), QColor(Qt::white));
    QCOMPARE(picture.pixelColor(picture.rect().center()), QColor(128, 128, 128));
}

void TestWindowsCapture::aPickedWindowIsShotAndNothingElse()
{
    WindowsProgram program;
    const QDir shots = keepShotsIn(program);
    clickTile(program, kWindowTile);
    QVERIFY(bringTargetToFront());
    QTest::qWait(kReadyMs);
    QVERIFY(pointTo(kTarget.topLeft() + QPoint(10, 10)) && pointTo(kButton.center()));
    QVERIFY(waitForWindow(kButton.size()));
    QVERIFY(xdotool({"click", "1"}));
    QVERIFY(windowsuser::awaitReady(QStringLiteral("Screenshot")));
    ProgramUnderTest::pressKey(QStringLiteral("Return"));

    const QImage picture(awaitShot(shots));
    QCOMPARE(picture.size(), kButton.size());
    for (const QPoint& place : {picture.rect().topLeft(), picture.rect().center(), picture.rect().bottomRight()})
        QCOMPARE(picture.pixelColor(place), QColor(128, 128, 128));
}

bool TestWindowsCapture::bringTargetToFront()
{
    const QList<WindowsWindow> windows = WineDesktop::windows();
    for (const WindowsWindow& window : windows)
        if (window.title == QLatin1String("Target"))
            return WineDesktop::probe({QStringLiteral("front"), QString::number(window.handle)});
    return false;
}

void TestWindowsCapture::theHookFramesTheDeepestWindowAndSwallowsNoClick()
{
    WindowsProgram program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(bringTargetToFront());
    ProgramUnderTest::pressKey(QStringLiteral("ctrl+shift+h"));
    QTest::qWait(kReadyMs);
    QVERIFY(pointTo(kTarget.topLeft() + QPoint(10, 10)) && pointTo(kButton.center()));
    QVERIFY(waitForWindow(kButton.size()));
    const auto frame = WineDesktop::visibleWindow(QString(), kTimeoutMs);
    QVERIFY(frame);
    QCOMPARE(frame->place, kButton);
    QVERIFY(frame->isTopmost);

    m_target.readAll();
    QVERIFY(xdotool({"click", "1"}));
    QVERIFY(m_target.waitForReadyRead(kTimeoutMs));
    QCOMPARE(m_target.readAll().trimmed(), QByteArray("button pressed"));
}

REGISTER_TEST(testrun::gui<TestWindowsCapture>);
#include "test_windowscapture.moc"
