// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/stockengine.h"
#include "tests/support/systemvsegments.h"
#include "tests/support/testrun.h"

#include <QTemporaryDir>
#include <QTest>

#include <obs.h>

namespace {

/// The permissions with which everybody may read the screen, and after which nobody removes it.
constexpr int kForEverybody = 0777;

QList<int> ownSegments()
{
    return systemvsegments::leftBehindBy(QCoreApplication::applicationPid());
}

/// Sources take their settings over with the engine's next frame.
bool waitForEngineFrames(std::uint32_t count)
{
    const std::uint32_t wanted = obs_get_total_frames() + count;
    return QTest::qWaitFor([wanted] { return obs_get_total_frames() >= wanted; }, 20'000);
}

} // namespace

/// Which memory the engine shares with the X server, by the stock plug-ins.
class TestCaptureSegments : public QObject
{
    Q_OBJECT

private slots:
    void directRecordingSharesNoSegment()
    {
        StockEngine stock;
        QCOMPARE(stock.start(), QString());
        QCOMPARE(ownSegments(), QList<int>());
        stock.engine().setSceneRendered(true);
        stock.engine().setCaptureCursor(false);
        stock.engine().setCursorEffects(true);
        QVERIFY(stock.setMargins(10, 10, 10, 10));
        QVERIFY(waitForEngineFrames(5));
        QCOMPARE(ownSegments(), QList<int>());
        QCOMPARE(stock.begin(m_folder.filePath(QStringLiteral("direct")), 0), QString());
        QCOMPARE(ownSegments(), QList<int>());
        QCOMPARE(stock.end(), QString());
        QCOMPARE(ownSegments(), QList<int>());
    }

    /// Nobody can change what the stock plug-in does then.
    void sceneSharesOneWhileItIsRendered()
    {
        qputenv("KESTRANO_CAPTURE", "scene");
        StockEngine stock;
        const QString failure = stock.start();
        qunsetenv("KESTRANO_CAPTURE");
        QCOMPARE(failure, QString());
        stock.engine().setSceneRendered(true);
        QTRY_COMPARE(ownSegments(), QList<int>{kForEverybody});
        stock.release();
        QCOMPARE(ownSegments(), QList<int>());
    }

private:
    QTemporaryDir m_folder;
};

REGISTER_TEST(testrun::gui<TestCaptureSegments>);

#include "test_capturesegments.moc"
