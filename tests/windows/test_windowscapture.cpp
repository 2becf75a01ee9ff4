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

#include <algorithm>

namespace {

using windowsuser::kTimeoutMs;

constexpr int kPollMs = 50;
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
constexpr QPoint kSaveButton(15, 15);
constexpr QPoint kPenButton(45, 15);
constexpr QPoint kClearButton(75, 15);

QColor colourAt(const QImage& image, const QPoint& place)
{
    return meanColour(image, place, 2);
}

/// The window of the program that is as large as this, once it is shown.
std::optional<WindowsWindow> awaitWindow(const QSize& size)
{
    return windowsuser::awaitWindow([&size](const WindowsWindow& window) {
        return window.program == QLatin1String("kestrano.exe") && window.place.size() == size;
    });
}

/// Drags a region on the veil over the whole screen; whether the veil came, and went.
bool dragRegion()
{
    const auto veil = awaitWindow(QGuiApplication::primaryScreen()->size());
    if (!veil || !windowsuser::drag(kTarget.topLeft(), kTarget.bottomRight()))
        return false;
    return QTest::qWaitFor(
        [&veil] {
            const QList<WindowsWindow> windows = WineDesktop::windows();
            return std::none_of(windows.begin(), windows.end(), [&veil](const WindowsWindow& window) {
                return window.handle == veil->handle && window.isVisible;
            });
        },
        kTimeoutMs);
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
    /// Waits for the box that reports a screenshot, and closes it. The one screenshot there; empty when there is none.
    static QString awaitShot(const QDir& shots);
    /// Starts the program and clicks a tile of its screenshot page.
    static void clickTile(WindowsProgram& program, const QPoint& tile);
    /// Puts the other program's window in front of the program's.
    static bool bringTargetToFront();
    /// Moves the pointer to that window's button until the program frames it; the frame.
    static std::optional<WindowsWindow> pointAtButton();

    WineDesktop m_desktop;
    QProcess m_target;
};

void TestWindowsCapture::aDraggedRegionIsRecordedAndNothingElse()
{
    WindowsProgram program;
    for (const char* key : {"mouse/switch", "mouse/showHighlight", "mouse/showCursor"})
        program.setSetting(QLatin1String(key), false);
    QVERIFY2(windowsuser::startInFront(program), qPrintable(program.transcript()));
    windowsuser::press(QStringList(kStepsToRegion, QStringLiteral("shift+Tab")) + QStringList{QStringLiteral("space")});
    QVERIFY(dragRegion());

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
    // The box comes when the file is complete, and keeps the program from ending.
    const auto box = QStringLiteral("Screenshot Saved");
    if (!windowsuser::awaitReady(box))
        return {};
    windowsuser::press({QStringLiteral("Return")});
    const QStringList names = shots.entryList({"Screenshot_*.png"}, QDir::Files);
    return windowsuser::awaitGone(box) && names.size() == 1 ? shots.filePath(names.constFirst()) : QString();
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
    QVERIFY(windowsuser::awaitScreenshotBar());
    ProgramUnderTest::pressKey(QStringLiteral("Return"));
    const QString path = awaitShot(shots);
    const QImage picture(path);
    QCOMPARE(picture.size(), QGuiApplication::primaryScreen()->size());
    QCOMPARE(picture.pixelColor(kTarget.topLeft() + QPoint(10, 10)), QColor(Qt::white));
    QCOMPARE(picture.pixelColor(kTarget.center()), QColor(128, 128, 128));

    QFile library(program.dataFolder().filePath(QStringLiteral("file_data.json")));
    QVERIFY(library.open(QIODevice::ReadOnly));
    QVERIFY2(library.readAll().contains(QFileInfo(path).fileName().toUtf8()), "the library does not have it");
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
    QVERIFY(dragRegion());
    const auto bar = windowsuser::awaitScreenshotBar();
    QVERIFY(bar);
    const QPoint stroke(kTarget.center() - QPoint(0, 70));
    if (draws) {
        QVERIFY(windowsuser::click(*bar, kPenButton));
        QVERIFY(windowsuser::drag(stroke - QPoint(60, 0), stroke + QPoint(60, 0)));
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
    QVERIFY(pointAtButton());
    QVERIFY(xdotool({"click", "1"}));
    QVERIFY(windowsuser::awaitScreenshotBar());
    ProgramUnderTest::pressKey(QStringLiteral("Return"));

    const QImage picture(awaitShot(shots));
    QCOMPARE(picture.size(), kButton.size());
    for (const QPoint& place : {picture.rect().topLeft(), picture.rect().center(), picture.rect().bottomRight()})
        QCOMPARE(picture.pixelColor(place), QColor(128, 128, 128));
}

bool TestWindowsCapture::bringTargetToFront()
{
    const auto target =
        windowsuser::awaitWindow([](const WindowsWindow& window) { return window.title == QLatin1String("Target"); });
    return target && windowsuser::bringToFront(*target) && windowsuser::awaitFront(target->handle);
}

std::optional<WindowsWindow> TestWindowsCapture::pointAtButton()
{
    QElapsedTimer waited;
    waited.start();
    do {
        // The program may not have been looking yet.
        if (!WineDesktop::pointTo(kTarget.topLeft() + QPoint(10, 10)) || !WineDesktop::pointTo(kButton.center()))
            return std::nullopt;
        const auto frame = WineDesktop::visibleWindow(QString(), kTimeoutMs);
        if (frame && frame->place.size() == kButton.size())
            return frame;
        QTest::qWait(kPollMs);
    } while (!waited.hasExpired(kTimeoutMs));
    return std::nullopt;
}

void TestWindowsCapture::theHookFramesTheDeepestWindowAndSwallowsNoClick()
{
    WindowsProgram program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(bringTargetToFront());
    ProgramUnderTest::pressKey(QStringLiteral("ctrl+shift+h"));
    const auto frame = pointAtButton();
    QVERIFY(frame);
    QCOMPARE(WineDesktop::visibleWindow(QString(), kTimeoutMs)->handle, frame->handle);
    QCOMPARE(frame->place, kButton);
    QVERIFY(frame->isTopmost);

    m_target.readAll();
    QVERIFY(xdotool({"click", "1"}));
    QVERIFY(m_target.waitForReadyRead(kTimeoutMs));
    QCOMPARE(m_target.readAll().trimmed(), QByteArray("button pressed"));
}

REGISTER_TEST(testrun::gui<TestWindowsCapture>);
#include "test_windowscapture.moc"
