// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "files/scfilemanager.h"
#include "tests/support/filelibrary.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListView>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

const auto kVideo = QStringLiteral("video");
const auto kAudio = QStringLiteral("audio");
const auto kScreenshot = QStringLiteral("screenshot");

QStringList pathsOf(const QList<FileRecord>& records)
{
    QStringList paths;
    for (const FileRecord& record : records)
        paths.append(record.filepath);
    return paths;
}

QJsonObject element(const QString& path, const QJsonObject& properties)
{
    return {{"filepath", path}, {"properties", properties}};
}

void writeList(const QJsonArray& array)
{
    filelibrary::write(QJsonDocument(array).toJson());
}

/// Makes the list's file unwritable, also for an administrator, by putting a file where its folder has to be.
class BlockedFolder
{
public:
    BlockedFolder()
    {
        const QString folder = appidentity::dataFolder();
        LibraryRefuge::clear();
        QDir().mkpath(QFileInfo(folder).path());
        QFile file(folder);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    ~BlockedFolder() { unblock(); }
    BlockedFolder(const BlockedFolder&) = delete;
    BlockedFolder& operator=(const BlockedFolder&) = delete;

    static void unblock() { QFile::remove(appidentity::dataFolder()); }
};

} // namespace

/// The list of files: its order, its file on the disk, what it makes of damage.
class TestSCFileManager : public QObject
{
    Q_OBJECT

private slots:
    void init() { LibraryRefuge::clear(); }

    void secondOfTwoAddedFilesComesFirst()
    {
        const QString first = m_produced.add(QStringLiteral("first.mp4"));
        const QString second = m_produced.add(QStringLiteral("second.mp4"));
        SCFileManager library;
        library.addFile(first, kVideo);
        library.addFile(second, kVideo);
        QCOMPARE(pathsOf(library.files()), QStringList({second, first}));
        QCOMPARE(filelibrary::paths(), QStringList({second, first}));
    }

    void reversingPutsTheFirstAddedFileInFrontAlsoInTheFileAndAfterARestart()
    {
        const QString first = m_produced.add(QStringLiteral("first.mp4"));
        const QString second = m_produced.add(QStringLiteral("second.mp4"));
        QListView view;
        {
            SCFileManager library;
            library.addFile(first, kVideo);
            library.addFile(second, kVideo);
            library.setupView(&view, QString());
            library.reverseFileOrder();
            QCOMPARE(pathsOf(library.files()), QStringList({first, second}));
            QCOMPARE(filelibrary::paths(), QStringList({first, second}));
            QCOMPARE(view.model()->index(0, 0).data().toString(), QStringLiteral("first.mp4"));
        }
        const SCFileManager restarted;
        QCOMPARE(pathsOf(restarted.files()), QStringList({first, second}));
    }

    void reversingWaitsForAView()
    {
        SCFileManager library;
        library.addFile(m_produced.add(QStringLiteral("first.mp4")), kVideo);
        library.addFile(m_produced.add(QStringLiteral("second.mp4")), kVideo);
        const QStringList before = pathsOf(library.files());
        library.reverseFileOrder();
        QCOMPARE(pathsOf(library.files()), before);
    }

    void reversingAnEmptyListWritesNothing()
    {
        SCFileManager library;
        QListView view;
        library.setupView(&view, QString());
        library.reverseFileOrder();
        QVERIFY(!QFileInfo::exists(filelibrary::path()));
    }

    void addedFileHasItsTypeAndTheLocalTime()
    {
        SCFileManager library;
        const QDateTime before = QDateTime::currentDateTime();
        library.addFile(m_produced.add(QStringLiteral("sound.aac")), kAudio);
        const FileRecord& record = library.files().front();
        QCOMPARE(record.properties.size(), 2);
        QCOMPARE(record.properties.value("type"), QVariant(kAudio));
        const QString added = record.properties.value("dateAdded").toString();
        static const QRegularExpression form(QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d$"));
        QVERIFY2(form.match(added).hasMatch(), qPrintable(added));
        QVERIFY(qAbs(QDateTime::fromString(added, Qt::ISODate).secsTo(before)) <= 2);
    }

    void fileIsAnIndentedArrayInTheListsOrder()
    {
        SCFileManager library;
        const QString path = m_produced.add(QStringLiteral("clip.mp4"));
        library.addFile(path, kVideo);
        const QString added = library.files().front().properties.value("dateAdded").toString();
        const QString expected =
            QStringLiteral("[\n    {\n        \"filepath\": \"%1\",\n        \"properties\": {\n"
                           "            \"dateAdded\": \"%2\",\n            \"type\": \"video\"\n        }\n    }\n]\n")
                .arg(path, added);
        QCOMPARE(QString::fromUtf8(filelibrary::text()), expected);
        QVERIFY(filelibrary::neighbours().isEmpty());
    }

    void recordsAreFilteredByTheirExactTypeInTheListsOrder()
    {
        SCFileManager library;
        const QString video = m_produced.add(QStringLiteral("a.mp4"));
        const QString audio = m_produced.add(QStringLiteral("b.mp3"));
        const QString screenshot = m_produced.add(QStringLiteral("c.png"));
        const QString later = m_produced.add(QStringLiteral("d.mp4"));
        library.addFile(video, kVideo);
        library.addFile(audio, kAudio);
        library.addFile(screenshot, kScreenshot);
        library.addFile(later, kVideo);
        QCOMPARE(pathsOf(library.filesByType(kVideo)), QStringList({later, video}));
        QCOMPARE(pathsOf(library.filesByType(kAudio)), QStringList({audio}));
        QCOMPARE(pathsOf(library.filesByType(kScreenshot)), QStringList({screenshot}));
        QVERIFY(library.filesByType(QStringLiteral("Video")).isEmpty());
    }

    void recordWithoutATypeIsShownAmongAllFilesAndUnderNoType()
    {
        const QString path = m_produced.add(QStringLiteral("plain.mp4"));
        writeList({element(path, {{"dateAdded", "2025-03-07T14:05:09"}})});
        SCFileManager library;
        QListView view;
        library.setupView(&view, QString());
        QCOMPARE(view.model()->rowCount(), 1);
        for (const QString& type : {kVideo, kAudio, kScreenshot}) {
            QVERIFY(library.filesByType(type).isEmpty());
            library.setupView(&view, type);
            QCOMPARE(view.model()->rowCount(), 0);
        }
    }

    void extraKeysSurviveALoadAndASaveUnchanged()
    {
        const QString path = m_produced.add(QStringLiteral("tagged.mp4"));
        const QJsonObject properties{{"type", "video"},
                                     {"dateAdded", "2025-03-07T14:05:09"},
                                     {"rating", 4.5},
                                     {"bytes", qint64{9007199254740993}},
                                     {"favourite", true},
                                     {"nothing", QJsonValue::Null},
                                     {"tags", QJsonArray{"a", 2, QJsonArray{}}},
                                     {"nested", QJsonObject{{"deep", QJsonObject{{"er", "\u00e9"}}}}}};
        writeList({element(path, properties)});
        {
            SCFileManager library;
            QVERIFY(library.save());
        }
        QCOMPARE(QJsonDocument::fromJson(filelibrary::text()).array(), QJsonArray({element(path, properties)}));
    }

    void removalByPathRemovesOnlyTheFirstOfTwoRecordsOfAFile()
    {
        const QString twice = m_produced.add(QStringLiteral("twice.mp4"));
        const QString other = m_produced.add(QStringLiteral("other.mp4"));
        SCFileManager library;
        library.addFile(twice, kVideo);
        library.addFile(other, kVideo);
        library.addFile(twice, kAudio);
        QVERIFY(library.removeFile(twice));
        QCOMPARE(pathsOf(library.files()), QStringList({other, twice}));
        QCOMPARE(library.files().last().properties.value("type"), QVariant(kVideo));
        QCOMPARE(filelibrary::paths(), QStringList({other, twice}));
        QVERIFY(QFileInfo::exists(twice));
    }

    void removalComparesPathsExactly()
    {
        const QString path = m_produced.add(QStringLiteral("Case.mp4"));
        SCFileManager library;
        library.addFile(path, kVideo);
        QVERIFY(!library.removeFile(path.toLower()));
        QVERIFY(!library.removeFile(path + u' '));
        QCOMPARE(library.files().size(), 1);
    }

    void fileDeletedBetweenTwoRunsVanishesFromTheListAndFromItsFile()
    {
        const QString stays = m_produced.add(QStringLiteral("stays.mp4"));
        const QString goes = m_produced.add(QStringLiteral("goes.mp4"));
        // A key that the program does not know, outside the properties, is kept by the cleaning.
        QJsonObject kept = element(stays, {{"type", "video"}, {"note", "x"}});
        kept.insert("comment", "mine");
        writeList({element(goes, {{"type", "video"}}), kept});
        QVERIFY(QFile::remove(goes));
        std::unique_ptr<SCFileManager> library = std::make_unique<SCFileManager>();
        QCOMPARE(pathsOf(library->files()), QStringList({stays}));
        QCOMPARE(QJsonDocument::fromJson(filelibrary::text()).array(), QJsonArray({kept}));
        QVERIFY(filelibrary::neighbours().isEmpty());
        library.reset();
        QCOMPARE(filelibrary::paths(), QStringList({stays}));
    }

    void listWithoutLossesIsNotRewrittenWhenLoaded()
    {
        const QByteArray compact = QJsonDocument(QJsonArray{element(m_produced.add(QStringLiteral("a.mp4")), {})})
                                       .toJson(QJsonDocument::Compact);
        filelibrary::write(compact);
        const SCFileManager library;
        QCOMPARE(library.files().size(), 1);
        QCOMPARE(filelibrary::text(), compact);
    }

    void firstStartHasAnEmptyListAndOneDebugLine()
    {
        const MessageCapture log;
        SCFileManager library;
        QVERIFY(library.files().isEmpty());
        const QString line = QStringLiteral("Could not open file for reading: ") + filelibrary::path();
        QCOMPARE(log.texts(QtDebugMsg).filter(line).size(), 1);
        QVERIFY(!library.load());
        QVERIFY(!QFileInfo::exists(filelibrary::path()));
        library.addFile(m_produced.add(QStringLiteral("a.mp4")), kVideo);
        QVERIFY(library.load());
        QCOMPARE(library.files().size(), 1);
    }

    void destructionSaves()
    {
        {
            SCFileManager library;
            library.addFile(m_produced.add(QStringLiteral("a.mp4")), kVideo);
            QVERIFY(QFile::remove(filelibrary::path()));
        }
        QCOMPARE(filelibrary::paths().size(), 1);
    }

    void damagedFileReadsAsEmptyAndIsRenamed_data()
    {
        QTest::addColumn<QByteArray>("text");
        const QByteArray whole = QJsonDocument(QJsonArray{element("/a.mp4", {{"type", "video"}})}).toJson();
        QTest::newRow("truncated") << whole.left(whole.size() / 2);
        QTest::newRow("last bracket missing") << whole.left(whole.lastIndexOf(']'));
        QTest::newRow("not JSON") << QByteArray("PNG\r\n\x1a\n and so on");
        QTest::newRow("NUL bytes, as after a power cut") << QByteArray(4096, '\0');
        QTest::newRow("broken UTF-8") << QByteArray("[{\"filepath\": \"\xff\xfe\"}]");
        QTest::newRow("an object") << QByteArray("{\"filepath\": \"/a.mp4\"}");
        QTest::newRow("a number") << QByteArray("7");
        QTest::newRow("nested too deep") << QByteArray(100000, '[') + QByteArray(100000, ']');
        QTest::newRow("opened 100,000 times") << QByteArray(100000, '[');
        QTest::newRow("100 MB of brackets") << QByteArray(100'000'000, '[');
        QTest::newRow("100 MB of blanks") << QByteArray(100'000'000, ' ');
    }

    void damagedFileReadsAsEmptyAndIsRenamed()
    {
        QFETCH(const QByteArray, text);
        filelibrary::write(text);
        const QString added = m_produced.add(QStringLiteral("new.mp4"));
        {
            SCFileManager library;
            QVERIFY(library.files().isEmpty());
            // Nothing has been written over it yet.
            QVERIFY(filelibrary::text() == text);
            QVERIFY(filelibrary::neighbours().isEmpty());
            library.addFile(added, kVideo);
        }
        QCOMPARE(filelibrary::paths(), QStringList({added}));
        QCOMPARE(filelibrary::neighbours().size(), 1);
        const QString renamed = appidentity::dataFolder() + u'/' + filelibrary::neighbours().front();
        QFile kept(renamed);
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QVERIFY(kept.readAll() == text);
    }

    void twoDamagedFilesAreKeptUnderTwoNames()
    {
        for (const char* text : {"one", "two", "three"}) {
            filelibrary::write(text);
            const SCFileManager library;
        }
        QCOMPARE(filelibrary::neighbours().size(), 3);
    }

    void damagedFileIsRenamedOnce()
    {
        filelibrary::write("damaged");
        SCFileManager library;
        QVERIFY(library.save());
        QVERIFY(library.save());
        QCOMPARE(filelibrary::neighbours().size(), 1);
    }

    void emptyFileReadsAsEmptyAndLeavesNothingToKeep()
    {
        filelibrary::write("");
        {
            const SCFileManager library;
            QVERIFY(library.files().isEmpty());
        }
        const QJsonDocument written = QJsonDocument::fromJson(filelibrary::text());
        QVERIFY(written.isArray() && written.array().isEmpty());
        QVERIFY(filelibrary::neighbours().isEmpty());
    }

    void byteOrderMarkIsReadOver()
    {
        const QString path = m_produced.add(QStringLiteral("a.mp4"));
        filelibrary::write("\xef\xbb\xbf" + QJsonDocument(QJsonArray{element(path, {})}).toJson());
        const SCFileManager library;
        QCOMPARE(pathsOf(library.files()), QStringList({path}));
    }

    void folderOfTheFilesNameStaysAndIsReported()
    {
        QVERIFY(QDir().mkpath(filelibrary::path() + QLatin1String("/inner")));
        SCFileManager library;
        const QSignalSpy errors(&library, &SCFileManager::error);
        QVERIFY(library.files().isEmpty());
        library.addFile(m_produced.add(QStringLiteral("a.mp4")), kVideo);
        QCOMPARE(errors.size(), 1);
        QCOMPARE(library.files().size(), 1);
        QVERIFY(QFileInfo(filelibrary::path() + QLatin1String("/inner")).isDir());
    }

    void elementsOfWrongTypesAreLeftOut()
    {
        const QString good = m_produced.add(QStringLiteral("good.mp4"));
        writeList({7, "text", QJsonValue::Null, true, QJsonArray{"filepath"}, QJsonObject{},
                   QJsonObject{{"filepath", 12}}, QJsonObject{{"filepath", QJsonArray{good}}},
                   QJsonObject{{"filepath", ""}}, QJsonObject{{"filepath", QString(QChar(0)) + good}},
                   element(QDir::rootPath(), {}), element(m_produced.folder(), {}),
                   QJsonObject{{"filepath", good}, {"properties", "none"}}});
        const SCFileManager library;
        QCOMPARE(library.files(), QList<FileRecord>({{good, {}}}));
        QCOMPARE(filelibrary::paths(), QStringList({good}));
    }

    void typeOfAWrongTypeIsNone()
    {
        const QString path = m_produced.add(QStringLiteral("a.mp4"));
        writeList({element(path, {{"type", QJsonArray{"video"}}}), element(path, {{"type", 7}})});
        SCFileManager library;
        QCOMPARE(library.files().size(), 2);
        QVERIFY(library.filesByType(kVideo).isEmpty());
        QCOMPARE(library.filesByType(QStringLiteral("7")).size(), 1);
    }

    void hundredMegabytesOfRecordsAreRead()
    {
        const QString path = m_produced.add(QStringLiteral("a.mp4"));
        const QByteArray one = QJsonDocument(element(path, {{"type", "video"}, {"filler", QString(1 << 20, u'x')}}))
                                   .toJson(QJsonDocument::Compact);
        QByteArray text = "[" + one;
        constexpr int kRecords = 100;
        for (int number = 1; number < kRecords; ++number)
            text += "," + one;
        filelibrary::write(text + "]");
        const SCFileManager library;
        QCOMPARE(library.files().size(), kRecords);
    }

    void unusualNamesSurvive_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blanks") << " two  blanks .mp4";
        QTest::newRow("single quotes") << "it's 'here'.mp4";
        QTest::newRow("percent signs") << "100%1 %20 %n %s.mp4";
        QTest::newRow("leading dashes") << "--help -rf.mp4";
        QTest::newRow("shell") << "$(reboot) `id` ; & #!.mp4";
        QTest::newRow("comma") << "a,b,select.mp4";
        QTest::newRow("Japanese") << u"\u9332\u753b_\u4f8b.mp4"_qs;
        QTest::newRow("Arabic") << u"\u062a\u0633\u062c\u064a\u0644.mp4"_qs;
        QTest::newRow("outside the first plane") << u"\U0001F3AC.mp4"_qs;
        QTest::newRow("markup") << "&lt;b&gt;bold.mp4";
        if (QDir::separator() != u'/')
            return;
        QTest::newRow("double quotes") << "say \"so\".mp4";
        QTest::newRow("line breaks") << "one\ntwo\r\nthree\t.mp4";
        QTest::newRow("backslashes") << "a\\b\\\\c.mp4";
        QTest::newRow("control characters") << u"\u0001\u001b[31m\u007f.mp4"_qs;
    }

    void unusualNamesSurvive()
    {
        QFETCH(const QString, name);
        const QString path = m_produced.add(name);
        {
            SCFileManager library;
            library.addFile(path, kVideo);
        }
        SCFileManager library;
        QCOMPARE(pathsOf(library.files()), QStringList({path}));
        QListView view;
        library.setupView(&view, kVideo);
        QCOMPARE(view.model()->index(0, 0).data().toString(), name);
        QCOMPARE(view.model()->index(0, 0).data(SCFileManager::kPathRole).toString(), path);
        QVERIFY(library.removeFile(path));
        QVERIFY(filelibrary::paths().isEmpty());
    }

    void failedSaveLeavesTheListAndIsReportedOnce()
    {
        const QString path = m_produced.add(QStringLiteral("a.mp4"));
        SCFileManager library;
        const QSignalSpy errors(&library, &SCFileManager::error);
        const BlockedFolder blocked;
        library.addFile(path, kVideo);
        library.addFile(path, kAudio);
        QVERIFY(!library.save());
        QCOMPARE(library.files().size(), 2);
        QCOMPARE(errors.size(), 1);
        QVERIFY(errors.front().front().toString().startsWith(QLatin1String("The list of files could not be saved: ")));

        BlockedFolder::unblock();
        QVERIFY(library.save());
        QCOMPARE(filelibrary::paths(), QStringList({path, path}));
        const BlockedFolder blockedAgain;
        QVERIFY(!library.save());
        QCOMPARE(errors.size(), 2);
    }

    void remainsOfKilledSavesGoAndOtherNeighboursStay()
    {
        filelibrary::write("[]");
        const QStringList others{"file_data.json.backup", "file_data.json.Before",  "file_data.json.COPIED",
                                 "file_data.json.a1B2c3", "file_data.json.aBcDeFg", "notes.txt"};
        const QDateTime hourAgo = QDateTime::currentDateTime().addSecs(-3600);
        const auto leave = [&](const QString& name, const QDateTime& time) {
            QFile file(appidentity::dataFolder() + u'/' + name);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
        };
        for (const QString& name : others + QStringList{"file_data.json.aBcDeF"})
            leave(name, hourAgo);
        leave(QStringLiteral("file_data.json.xYzXyZ"), QDateTime::currentDateTime());
        const SCFileManager library;
        QStringList expected = others + QStringList{"file_data.json.xYzXyZ"};
        expected.sort();
        QStringList found = filelibrary::neighbours();
        found.sort();
        QCOMPARE(found, expected);
    }

private:
    ProducedFiles m_produced;
};

REGISTER_TEST(windowtest::run<TestSCFileManager>);

#include "test_scfilemanager.moc"
