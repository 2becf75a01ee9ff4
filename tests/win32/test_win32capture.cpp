// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/testrun.h"
#include "tests/win32/win32user.h"

#include <QGuiApplication>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScreen>
#include <QTest>

#include <algorithm>

namespace {

using win32user::kTimeoutMs;

constexpr int kPollMs = 50;
constexpr int kTolerance = 12;
/// Where another program shows a white window with a grey one in its middle half.
const QRect kTarget(200, 100, 320, 200);
/// The grey one.
const QRect kButton(kTarget.left() + kTarget.width() / 4, kTarget.top() + kTarget.height() / 4, kTarget.width() / 2,
                    kTarget.height() / 2);

// Positions in the main window, on its screenshot page.
constexpr QPoint kRegionTile(340, 156);
constexpr QPoint kWindowTile(453, 156);
// On the tool bar of a screenshot's frame.
constexpr QPoint kSaveButton(15, 15);
constexpr QPoint kPenButton(45, 15);
constexpr QPoint kClearButton(75, 15);

QColor colourAt(const QImage& image, const QPoint& position)
{
    return meanColour(image, position, 2);
}

/// The window of the program that is as large as this, once it is shown.
std::optional<WindowsWindow> awaitWindow(const QSize& size)
{
    return win32user::awaitWindow([&size](const WindowsWindow& window) {
        return window.program == QLatin1String("kestrano.exe") && window.position.size() == size;
    });
}

/// Drags a region on the veil over the whole screen; whether the veil came, and went.
bool dragRegion()
{
    const auto veil = awaitWindow(QGuiApplication::primaryScreen()->size());
    if (!veil || !win32user::drag(kTarget.topLeft(), kTarget.bottomRight()))
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
class TestWin32Capture : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(m_desktop.begin(), QString());
        QCOMPARE(WineDesktop::launch(m_target, QStringLiteral("kestrano_test_win32probe"),
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
    static QDir keepShotsIn(Win32Program& program);
    /// Waits for the box that reports a screenshot, and closes it. The one screenshot there; empty when there is none.
    static QString awaitShot(const QDir& shots);
    /// Starts the program and clicks a tile of its screenshot page.
    static void clickTile(Win32Program& program, const QPoint& tile);
    /// Puts the other program's window in front of the program's.
    static bool bringTargetToFront();
    /// Moves the pointer to that window's button until the program frames it; the frame.
    static std::optional<WindowsWindow> pointAtButton();

    WineDesktop m_desktop;
    QProcess m_target;
};

void TestWin32Capture::aDraggedRegionIsRecordedAndNothingElse()
{
    Win32Program program;
    for (const char* key : {"mouse/switch", "mouse/showHighlight", "mouse/showCursor"})
        program.setSetting(QLatin1String(key), false);
    QVERIFY2(win32user::startInFront(program), qPrintable(program.transcript()));
    win32user::press(QStringList(kStepsToRegion, QStringLiteral("shift+Tab")) + QStringList{QStringLiteral("space")});
    QVERIFY(dragRegion());

    const Take take = record(program, QStringLiteral("mp4"), 2000);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const MediaFile file(WineDesktop::unixPath(take.path));
    QVERIFY2(file.isReadable(), qPrintable(file.error()));
    QCOMPARE(file.video()->size, kTarget.size());
    const QImage image = file.frameAt(file.durationSeconds() / 2);
    const QRect all = image.rect().adjusted(4, 4, -4, -4);
    for (const QPoint& corner : {all.topLeft(), all.topRight(), all.bottomLeft(), all.bottomRight()})
        QVERIFY2(colourDistance(colourAt(image, corner), Qt::white) <= kTolerance,
                 qPrintable(colourAt(image, corner).name()));
    QVERIFY2(colourDistance(colourAt(image, all.center()), QColor(128, 128, 128)) <= kTolerance,
             qPrintable(colourAt(image, all.center()).name()));
}

QDir TestWin32Capture::keepShotsIn(Win32Program& program)
{
    const QDir shots(program.profile().filePath(QStringLiteral("shots")));
    program.setSetting(QStringLiteral("screenshot/saveLocation"),
                       WineDesktop::windowsPath(shots.path()).replace('\\', '/'));
    return shots;
}

QString TestWin32Capture::awaitShot(const QDir& shots)
{
    // The box comes when the file is complete.
    const auto box = QStringLiteral("Screenshot Saved");
    if (!win32user::awaitReady(box))
        return {};
    win32user::press({QStringLiteral("Return")});
    const QStringList names = shots.entryList({"Screenshot_*.png"}, QDir::Files);
    return win32user::awaitGone(box) && names.size() == 1 ? shots.filePath(names.constFirst()) : QString();
}

void TestWin32Capture::clickTile(Win32Program& program, const QPoint& tile)
{
    const auto window = win32user::startInFront(program);
    QVERIFY2(window, qPrintable(program.transcript()));
    QVERIFY(win32user::click(*window, win32user::kScreenshotTab) && win32user::click(*window, tile));
}

void TestWin32Capture::theScreenshotHotkeyAndEnterSaveTheWholeScreen()
{
    Win32Program program;
    const QDir shots = keepShotsIn(program);
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    ProgramUnderTest::pressKey(QStringLiteral("F10"));
    QVERIFY(win32user::awaitScreenshotBar());
    ProgramUnderTest::pressKey(QStringLiteral("Return"));
    const QString path = awaitShot(shots);
    const QImage image(path);
    QCOMPARE(image.size(), QGuiApplication::primaryScreen()->size());
    QCOMPARE(image.pixelColor(kTarget.topLeft() + QPoint(10, 10)), QColor(Qt::white));
    QCOMPARE(image.pixelColor(kTarget.center()), QColor(128, 128, 128));

    QFile library(program.dataFolder().filePath(QStringLiteral("file_data.json")));
    QVERIFY(library.open(QIODevice::ReadOnly));
    QVERIFY2(library.readAll().contains(QFileInfo(path).fileName().toUtf8()), "the library does not have it");
}

void TestWin32Capture::aDraggedRegionIsShotAsItIsOrWithAStroke_data()
{
    QTest::addColumn<bool>("draws");
    QTest::newRow("as it is") << false;
    QTest::newRow("with a stroke") << true;
}

void TestWin32Capture::aDraggedRegionIsShotAsItIsOrWithAStroke()
{
    QFETCH(const bool, draws);
    Win32Program program;
    const QDir shots = keepShotsIn(program);
    clickTile(program, kRegionTile);
    QVERIFY(dragRegion());
    const auto bar = win32user::awaitScreenshotBar();
    QVERIFY(bar);
    const QPoint stroke(kTarget.center() - QPoint(0, 70));
    if (draws) {
        QVERIFY(win32user::click(*bar, kPenButton));
        QVERIFY(win32user::drag(stroke - QPoint(60, 0), stroke + QPoint(60, 0)));
        QVERIFY(win32user::click(*bar, kSaveButton));
    } else {
        // The keyboard works though the bar was pressed last.
        QVERIFY(win32user::click(*bar, kClearButton));
        win32user::press({"Return"});
    }

    const QImage image(awaitShot(shots));
    QCOMPARE(image.size(), kTarget.size());
    const QColor drawnOn = image.pixelColor(stroke - kTarget.topLeft());
    QCOMPARE(drawnOn, draws ? QColor(Qt::red) : QColor(Qt::white));
    // With the pen on, the frame is a window that is nearly see-through, below which Wine shows nothing but black.
    if (draws)
        return;
    QCOMPARE(image.pixelColor(0, 0), QColor(Qt::white));
    QCOMPARE(image.pixelColor(image.rect().bottomRight()), QColor(Qt::white));
    QCOMPARE(image.pixelColor(image.rect().center()), QColor(128, 128, 128));
}

void TestWin32Capture::aPickedWindowIsShotAndNothingElse()
{
    Win32Program program;
    const QDir shots = keepShotsIn(program);
    clickTile(program, kWindowTile);
    QVERIFY(bringTargetToFront());
    QVERIFY(pointAtButton());
    QVERIFY(xdotool({"click", "1"}));
    QVERIFY(win32user::awaitScreenshotBar());
    ProgramUnderTest::pressKey(QStringLiteral("Return"));

    const QImage image(awaitShot(shots));
    QCOMPARE(image.size(), kButton.size());
    for (const QPoint& position : {image.rect().topLeft(), image.rect().center(), image.rect().bottomRight()})
        QCOMPARE(image.pixelColor(position), QColor(128, 128, 128));
}

bool TestWin32Capture::bringTargetToFront()
{
    const auto target =
        win32user::awaitWindow([](const WindowsWindow& window) { return window.title == QLatin1String("Target"); });
    return target && win32user::bringToFront(*target) && win32user::awaitFront(target->handle);
}

std::optional<WindowsWindow> TestWin32Capture::pointAtButton()
{
    QElapsedTimer waited;
    waited.start();
    do {
        // The program may not have been looking yet.
        if (!WineDesktop::pointTo(kTarget.topLeft() + QPoint(10, 10)) || !WineDesktop::pointTo(kButton.center()))
            return std::nullopt;
        auto frame = WineDesktop::visibleWindow(QString(), kTimeoutMs);
        if (frame && frame->position.size() == kButton.size())
            return frame;
        QTest::qWait(kPollMs);
    } while (!waited.hasExpired(kTimeoutMs));
    return std::nullopt;
}

void TestWin32Capture::theHookFramesTheDeepestWindowAndSwallowsNoClick()
{
    Win32Program program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(bringTargetToFront());
    ProgramUnderTest::pressKey(QStringLiteral("ctrl+shift+h"));
    const auto frame = pointAtButton();
    QVERIFY(frame);
    QCOMPARE(WineDesktop::visibleWindow(QString(), kTimeoutMs)->handle, frame->handle);
    QCOMPARE(frame->position, kButton);
    QVERIFY(frame->isTopmost);

    m_target.readAll();
    QVERIFY(xdotool({"click", "1"}));
    QVERIFY(m_target.waitForReadyRead(kTimeoutMs));
    QCOMPARE(m_target.readAll().trimmed(), QByteArray("button pressed"));
}

REGISTER_TEST(testrun::gui<TestWin32Capture>);
#include "test_win32capture.moc"
