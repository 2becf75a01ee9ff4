// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/display_choice.h"
#include "tests/support/testrun.h"

#include <QTest>

/// Which platform Qt is asked for.
class TestDisplayChoice : public QObject
{
    Q_OBJECT

private slots:
    void init() { qputenv("DISPLAY", ":0"); }

    void cleanup()
    {
        qunsetenv("QT_QPA_PLATFORM");
        qunsetenv("DISPLAY");
    }

    void x11IsChosenWhileTheApplicationIsMade()
    {
        qunsetenv("QT_QPA_PLATFORM");
        {
            const platform::DisplayChoice choice;
            QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray("xcb"));
        }
        QVERIFY(!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
    }

    void qtChoosesWhereThereIsNoXServer()
    {
        qunsetenv("QT_QPA_PLATFORM");
        qunsetenv("DISPLAY");
        const platform::DisplayChoice choice;
        QVERIFY(!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
    }

    void whatTheUserHasChosenStays()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        {
            const platform::DisplayChoice choice;
            QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray("offscreen"));
        }
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), QByteArray("offscreen"));
    }
};

REGISTER_TEST(testrun::core<TestDisplayChoice>);

#include "test_displaychoice_x11.moc"
