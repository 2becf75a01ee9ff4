// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "widgets/shownname.h"

#include <QTest>

class TestShownName : public QObject
{
    Q_OBJECT

private slots:
    void whatChangesTheDirectionIsShownByItsNumber_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");
        QTest::newRow("plain") << "demo 1.mp4"
                               << "demo 1.mp4";
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("override") << QStringLiteral("demo\u202e4pm.exe") << "demo[U+202E]4pm.exe";
        QTest::newRow("first of the embeddings") << QStringLiteral("\u202a") << "[U+202A]";
        QTest::newRow("isolates") << QStringLiteral("\u2066a\u2069") << "[U+2066]a[U+2069]";
        QTest::newRow("marks") << QStringLiteral("\u200ea\u200fb\u061cc") << "[U+200E]a[U+200F]b[U+061C]c";
        QTest::newRow("neighbours") << QStringLiteral("\u200d\u2029\u202f\u2065\u206a")
                                    << QStringLiteral("\u200d\u2029\u202f\u2065\u206a");
        QTest::newRow("Hebrew and Japanese")
            << QStringLiteral("\u05d0 \u9332.mp4") << QStringLiteral("\u05d0 \u9332.mp4");
    }

    void whatChangesTheDirectionIsShownByItsNumber()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, shown);
        QCOMPARE(shownName(name), shown);
    }
};

REGISTER_TEST(testrun::core<TestShownName>);

#include "test_shownname.moc"
