// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/channels.h"
#include "tests/engine/loudness.h"
#include "tests/engine/stockengine.h"
#include "tests/support/soundserver.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <memory>

namespace {

constexpr int kTimeoutMs = 30'000;

} // namespace

/// The stock plug-ins and a real sound server that is late, killed and restarted; nothing is recorded.
class TestStockSoundServer : public QObject
{
    Q_OBJECT

private slots:
    void serverThatIsLateAndKilledTwiceIsMeteredAgain()
    {
        SoundServer server;
        StockEngine stock;
        QCOMPARE(stock.start(), QString());
        const Loudness desktop(stock.engine(), &ObsWrapper::playerVolumeDataChange);
        for (int time = 0; time < 3; ++time) {
            QVERIFY(server.start());
            QCOMPARE(stock.playTone(), QString());
            QTRY_VERIFY_WITH_TIMEOUT(desktop.isHeard(), kTimeoutMs);
            QCOMPARE(nameOnChannel(1), QStringLiteral("Desktop Audio"));
            // Nobody switched it on.
            QCOMPARE(nameOnChannel(2), QStringLiteral("nothing"));
            server.kill();
            QTRY_VERIFY_WITH_TIMEOUT(!desktop.isHeard(), kTimeoutMs);
        }
        stock.release();
    }
};

REGISTER_TEST(testrun::gui<TestStockSoundServer>);

#include "test_stocksoundserver.moc"
