// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/shownpath.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QTest>

class TestShownPath : public QObject
{
    Q_OBJECT

private slots:
    void homeIsShort()
    {
        const QString home = QDir::homePath();
        const auto native = [](const QString& path) { return QDir::toNativeSeparators(path); };
        QCOMPARE(shownPath(home + "/Videos/a.mp4"), native("~/Videos/a.mp4"));
        QCOMPARE(shownPath(native(home + "/Videos")), native("~/Videos"));
        QCOMPARE(shownPath(home), QString("~"));
    }

    void whatIsNotBelowHomeStays()
    {
        for (const QString& path : {QDir::homePath() + "er/a", QString("/media/disk"), QString("relative"), QString()})
            QCOMPARE(shownPath(path), path);
    }
};

REGISTER_TEST(testrun::core<TestShownPath>);

#include "test_shownpath.moc"
