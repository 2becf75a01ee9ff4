// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/console.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <array>
#include <cstdio>
#include <sys/stat.h>

/// The console of X11 systems, where a process started from a terminal writes to it of itself.
class TestConsole : public QObject
{
    Q_OBJECT

private slots:
    void theStandardStreamsAreLeftAsTheyAre()
    {
        const std::array streams{fileno(stdout), fileno(stderr)};
        std::array<struct stat, 2> before = {};
        std::array<struct stat, 2> after = {};
        for (std::size_t index = 0; index < streams.size(); ++index)
            QCOMPARE(fstat(streams.at(index), &before.at(index)), 0);
        QVERIFY(!platform::attachToParentConsole());
        QCOMPARE((std::array{fileno(stdout), fileno(stderr)}), streams);
        for (std::size_t index = 0; index < streams.size(); ++index) {
            QCOMPARE(fstat(streams.at(index), &after.at(index)), 0);
            QCOMPARE(after.at(index).st_dev, before.at(index).st_dev);
            QCOMPARE(after.at(index).st_ino, before.at(index).st_ino);
        }
    }
};

REGISTER_TEST(testrun::core<TestConsole>);
#include "test_console.moc"
