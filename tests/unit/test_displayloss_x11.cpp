// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/display_loss.h"
#include "tests/support/testrun.h"

#include <QTest>

/// What is no loss of the X server. tests/recording/test_kills.cpp has what is.
class TestDisplayLoss : public QObject
{
    Q_OBJECT

private slots:
    void messageThatQuotesTheLossEndsNothing()
    {
        const QtMessageHandler before = qInstallMessageHandler(nullptr);
        qInstallMessageHandler(before);
        bool isLost = false;
        {
            const platform::DisplayLossAction onLoss([&isLost] { isLost = true; });
            platform::endInOrderOnDisplayLoss();
            qInfo("The X11 connection broke (error 1). Did the X11 server die?");
            qWarning("[Warning] The X11 connection broke.mp4 could not be opened");
        }
        qInstallMessageHandler(before);
        QVERIFY(!isLost);
    }
};

REGISTER_TEST(testrun::core<TestDisplayLoss>);

#include "test_displayloss_x11.moc"
