// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/mediafile.h"
#include "tests/support/stillimage.h"
#include "tests/support/testrun.h"
#include "tests/support/x11clients.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>

namespace {

/// A busy machine takes seconds to find a camera and to start it.
constexpr int kCameraTimeoutMs = 60'000;
constexpr int kTakeMs = 1000;

/// One of the colour bars of the test camera.
struct Bar
{
    /// From the left edge of the video to its right one.
    double position;
    bool red;
    bool green;
    bool blue;
};

/// Yellow, cyan and blue.
constexpr std::array<Bar, 3> kBars{{{0.21, true, true, false}, {0.36, false, true, true}, {0.93, false, false, true}}};

bool isBar(const QColor& seen, const Bar& bar)
{
    constexpr int kDark = 80;
    constexpr int kLight = 130;
    const auto is = [](int value, bool lit) { return lit ? value > kLight : value < kDark; };
    return is(seen.red(), bar.red) && is(seen.green(), bar.green) && is(seen.blue(), bar.blue);
}

/// Whether the desktop that an image shows has the camera's video there.
bool showsCamera(const QImage& desktop, const QRect& window)
{
    return std::ranges::all_of(kBars, [&](const Bar& bar) {
        const QPoint inside(qRound(window.width() * bar.position), window.height() / 4);
        return isBar(meanColour(desktop, window.topLeft() + inside, 3), bar);
    });
}

} // namespace

/// The webcam window of the running program is recorded with the desktop that it floats over.
class TestWebcam : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QFile camera(m_folder.filePath(QStringLiteral("camera")));
        QVERIFY(camera.open(QIODevice::WriteOnly));
        qputenv("KESTRANO_TEST_CAMERA", camera.fileName().toLocal8Bit());
    }

    void webcamWindowIsInEveryFrame()
    {
        QImage white(StillImage::displaySize(), QImage::Format_RGB32);
        white.fill(Qt::white);
        const StillImage still(white);
        ProgramUnderTest program;
        regionuser::prepare(program);
        QVERIFY(program.startAndWaitUntilReady());
        QVERIFY(goBackFromRecordButton(program, kStepsToWebcam));
        ProgramUnderTest::pressKey(QStringLiteral("space"));
        QTRY_VERIFY_WITH_TIMEOUT(!cameraWindow().isEmpty(), kCameraTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(showsCamera(x11clients::grab(white.rect()), cameraWindow()), kCameraTimeoutMs);
        const QRect window = cameraWindow();
        Take take = record(program, QStringLiteral("mp4"), kTakeMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const QList<QImage> frames = MediaFile(take.path).frames();
        QVERIFY(frames.size() >= kFramesPerSecond / 2);
        const auto without =
            std::ranges::count_if(frames, [&window](const QImage& frame) { return !showsCamera(frame, window); });
        QCOMPARE(static_cast<int>(without), 0);
        // What is beside it is the desktop.
        QVERIFY(colourDistance(meanColour(frames.constLast(), QPoint(20, 340), 8), Qt::white) < 24);
    }

private:
    static QRect cameraWindow() { return visibleWindow(QStringLiteral("Webcam")).value_or(QRect()); }

    const QTemporaryDir m_folder;
};

REGISTER_TEST(testrun::core<TestWebcam>);
#include "test_webcam.moc"
