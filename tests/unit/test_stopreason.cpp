// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/stopreason.h"
#include "tests/support/testrun.h"

#include <QTest>

class TestStopReason : public QObject
{
    Q_OBJECT

private slots:
    void codesInPlainWords_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<StopCause>("cause");
        QTest::addColumn<QString>("words");

        using enum StopCause;
        QTest::newRow("asked for") << 0 << AsAsked << "the recording was ended as asked";
        QTest::newRow("bad path") << -1 << CannotOpen << "the path of the file is not valid";
        QTest::newRow("not opened") << -2 << CannotOpen
                                    << "the file could not be opened for writing, or its encoder not be started";
        QTest::newRow("refused") << -3 << Unknown << "the file was refused as not valid";
        QTest::newRow("not written") << -4 << CannotWrite << "the file could not be written";
        QTest::newRow("went away") << -5 << FolderGone << "the folder of the file went away";
        QTest::newRow("unsupported") << -6 << Unsupported << "the format is not supported on this computer";
        QTest::newRow("disk full") << -7 << DiskFull << "the disk is full";
        QTest::newRow("not encoded") << -8 << CannotEncode << "the video or the audio could not be encoded";
        QTest::newRow("unknown") << -4711 << Unknown << "the engine gave no known reason";
    }

    void codesInPlainWords()
    {
        QFETCH(const int, code);
        QTEST(describe({code, QString()}), "words");
    }

    void codesAsCauses_data() { codesInPlainWords_data(); }
    void codesAsCauses()
    {
        QFETCH(const int, code);
        QTEST(causeOf({code, QString()}), "cause");
    }

    void outputsOwnWordsFollowInBrackets()
    {
        QCOMPARE(describe({-2, QStringLiteral("Couldn't open 'x'")}),
                 QStringLiteral("the file could not be opened for writing, or its encoder not be started "
                                "(Couldn't open 'x')"));
    }
};

REGISTER_TEST(testrun::core<TestStopReason>);
#include "test_stopreason.moc"
