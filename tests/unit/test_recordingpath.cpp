// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingpath.h"
#include "tests/support/testrun.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QDateTime kFirstOfMay(QDate(2024, 5, 1), QTime(13, 7, 9));

void touch(const QString& path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

} // namespace

class TestRecordingPath : public QObject
{
    Q_OBJECT

private slots:
    void emptyNameIsMadeFromTheTime()
    {
        const RecordingPath path(QStringLiteral("/videos"), QString(), RecordingFormat::Mp4, kFirstOfMay);
        QCOMPARE(path.withoutExtension(), QStringLiteral("/videos/Recording_2024_05_01_13-07-09"));
        QCOMPARE(path.full(), QStringLiteral("/videos/Recording_2024_05_01_13-07-09.mp4"));
    }

    void blanksAroundTheNameAreDropped()
    {
        const RecordingPath path(QStringLiteral("/videos"), QStringLiteral("  demo "), RecordingFormat::Mp4,
                                 kFirstOfMay);
        QCOMPARE(path.withoutExtension(), QStringLiteral("/videos/demo"));
    }

    void formatIndexFiveGivesTheExtensionAac()
    {
        const RecordingPath path(QStringLiteral("/videos"), QStringLiteral("demo"), recordingFormatFromIndex(5),
                                 kFirstOfMay);
        QCOMPARE(path.full(), QStringLiteral("/videos/demo.aac"));
    }

    void nameThatEndsInTheExtensionDoesNotGetItTwice_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("file");
        const auto row = [](const char* what, const QString& typed, const QString& file) {
            QTest::newRow(what) << typed << file;
        };
        row("the format's", "demo.mp4", "demo.mp4");
        row("in capitals", "demo.MP4", "demo.mp4");
        row("blanks around", " demo.mp4 ", "demo.mp4");
        row("blank before", "demo .mp4", "demo.mp4");
        row("dot after", "demo.mp4.", "demo.mp4");
        row("twice, as typed", "demo.mp4.mp4", "demo.mp4.mp4");
        row("another format's", "demo.gif", "demo.gif.mp4");
        row("without a dot", "mp4", "mp4.mp4");
        row("nothing else", ".mp4", "Recording_2024_05_01_13-07-09.mp4");
        row("device", "CON.mp4", "Recording_2024_05_01_13-07-09.mp4");
    }

    void nameThatEndsInTheExtensionDoesNotGetItTwice()
    {
        QFETCH(const QString, typed);
        QFETCH(const QString, file);
        const RecordingPath path(QStringLiteral("/videos"), typed, RecordingFormat::Mp4, kFirstOfMay);
        QCOMPARE(path.full(), QLatin1String("/videos/") + file);
    }

    void nameThatEndsInTheExtensionIsNumberedWhenItIsTaken()
    {
        const QTemporaryDir folder;
        touch(folder.filePath(QStringLiteral("demo.flac")));
        const RecordingPath path(folder.path(), QStringLiteral("demo.flac"), RecordingFormat::Flac, kFirstOfMay);
        QCOMPARE(path.full(), folder.filePath(QStringLiteral("demo (2).flac")));
    }

    void nameLosesWhatAFileNameCannotHold_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("cleaned");
        const auto row = [](const char* what, const QString& typed, const QString& cleaned) {
            QTest::newRow(what) << typed << cleaned;
        };
        row("plain", "demo", "demo");
        row("inner blanks stay", "my demo 1", "my demo 1");
        row("slash", "a/b", "ab");
        row("backslash", "a\\b", "ab");
        row("path upwards", "../../etc/passwd", "....etcpasswd");
        row("reserved characters", "a:b*c?d\"e<f>g|h", "abcdefgh");
        row("control characters",
            QStringLiteral("a\tb\nc\x01"
                           "d\x7f"
                           "e"),
            "abcde");
        row("zero character", QString("a") + QChar(u'\0') + QString("b"), "ab");
        row("half a surrogate pair", QString("a") + QChar(0xd83d) + QString("b"), "ab");
        row("whole surrogate pair stays", QString::fromUtf8("a🎬b"), QString::fromUtf8("a🎬b"));
        row("letters of any script stay", QString::fromUtf8("録画 Ü é"), QString::fromUtf8("録画 Ü é"));
        row("dots at the end", "demo...", "demo");
        row("dots and blanks at the end", "demo . . ", "demo");
        row("dot inside stays", "v1.2", "v1.2");
        row("dot at the beginning stays", ".hidden", ".hidden");
        row("device name", "CON", "");
        row("device name in small letters", "nul", "");
        row("device name with a number", "COM1", "");
        row("device name with a raised number", QString::fromUtf8("lpt²"), "");
        row("device name with an ending", "con.demo", "demo");
        row("two device names", "aux.prn.demo", "demo");
        row("device name and a blank", "NUL .demo", "demo");
        row("device name that the cut leaves", "CON" + QString(236, u' ') + QChar(u'録'), "");
        row("device name within a word stays", "console", "console");
        row("percent signs stay", "100%d %1", "100%d %1");
        row("one dot", ".", "");
        row("two dots", "..", "");
        row("only blanks", "   ", "");
        row("only forbidden characters", "/?*", "");
    }

    void nameLosesWhatAFileNameCannotHold()
    {
        QFETCH(QString, typed);
        QTEST(cleanedRecordingName(typed), "cleaned");
    }

    void nothingLeftCountsAsEmpty()
    {
        for (const char* typed : {"..", ".", "CON", "  ", "///"}) {
            const RecordingPath path(QStringLiteral("/videos"), QLatin1String(typed), RecordingFormat::Gif,
                                     kFirstOfMay);
            QCOMPARE(path.full(), QStringLiteral("/videos/Recording_2024_05_01_13-07-09.gif"));
        }
    }

    void longNameLeavesRoomForANumberAndTheExtension()
    {
        const QString cleaned = cleanedRecordingName(QString(400, QLatin1Char('x')));
        QVERIFY((cleaned + " (9999).flac").toUtf8().size() <= 255);
        QVERIFY(cleaned.size() >= 230);
    }

    void longNameIsNotCutWithinACharacter()
    {
        const QString cleaned = cleanedRecordingName(QLatin1Char('x') + QString::fromUtf8("🎬").repeated(100));
        QVERIFY(cleaned.toUtf8().size() <= 240);
        QVERIFY(cleaned.back().isLowSurrogate());
        QCOMPARE(QString::fromUtf8(cleaned.toUtf8()), cleaned);
    }

    void takenNameGetsANumberBeforeTheExtension()
    {
        const QTemporaryDir folder;
        touch(folder.filePath(QStringLiteral("demo.mp4")));
        const auto next = [&](RecordingFormat format) {
            return RecordingPath(folder.path(), QStringLiteral("demo"), format, kFirstOfMay);
        };
        QCOMPARE(next(RecordingFormat::Mp4).full(), folder.filePath(QStringLiteral("demo (2).mp4")));
        QCOMPARE(next(RecordingFormat::Mp4).withoutExtension(), folder.filePath(QStringLiteral("demo (2)")));
        touch(folder.filePath(QStringLiteral("demo (2).mp4")));
        QCOMPARE(next(RecordingFormat::Mp4).full(), folder.filePath(QStringLiteral("demo (3).mp4")));
        QCOMPARE(next(RecordingFormat::Avi).full(), folder.filePath(QStringLiteral("demo.avi")));
    }

    void folderOfThatNameCountsAsTaken()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("demo.mp4")));
        const RecordingPath path(folder.path(), QStringLiteral("demo"), RecordingFormat::Mp4, kFirstOfMay);
        QCOMPARE(path.full(), folder.filePath(QStringLiteral("demo (2).mp4")));
    }
};

REGISTER_TEST(testrun::core<TestRecordingPath>);
#include "test_recordingpath.moc"
