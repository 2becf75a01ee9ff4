// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/filedetailsreader.h"
#include "files/filework.h"
#include "files/flvgiflength.h"
#include "files/medialength.h"
#include "files/mp4file.h"
#include "files/scfilemanager.h"
#include "tests/support/filelibrary.h"
#include "tests/support/windowtest.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListView>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

using Details = QHash<QString, FileDetails>;

constexpr qint64 kLengthMs = 4000;

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

std::optional<qint64> lengthMs(const QString& path)
{
    FileWork work;
    const MediaLength media = mediaLength(path, work);
    if (!media.length)
        return std::nullopt;
    return media.length->count();
}

bool isUnreadable(const QString& path)
{
    FileWork work;
    return mediaLength(path, work).isUnreadable;
}

QJsonObject propertiesOnDisk()
{
    return QJsonDocument::fromJson(filelibrary::text()).array().at(0).toObject().value("properties").toObject();
}

/// Of a file, by somebody who opens it to read and closes it again.
class ReadingWatch
{
public:
    explicit ReadingWatch(const QString& path) : m_watch(inotify_init1(IN_CLOEXEC))
    {
        inotify_add_watch(m_watch, QFile::encodeName(path).constData(), IN_CLOSE_NOWRITE);
    }
    ~ReadingWatch() { close(m_watch); }
    Q_DISABLE_COPY_MOVE(ReadingWatch)

    /// No event is handled meanwhile.
    bool waitForReading() const
    {
        pollfd watch{m_watch, POLLIN, 0};
        return poll(&watch, 1, 30'000) == 1;
    }

private:
    int m_watch;
};

/// As after a recording.
void addRecorded(SCFileManager& library, const QString& path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        file.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime);
    library.setFileInUse(path);
    library.addFile(path, QStringLiteral("video"));
    library.setFileInUse({});
}

} // namespace

/// How long recordings are, and what the list makes of it. They are made by FFmpeg.
class TestFileDetails : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        LibraryRefuge::clear();
    }

    void lengthOfEveryFormatIsKnown_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("name");
        const QStringList h264{"-c:v", "libx264", "-c:a", "aac"};
        const QStringList sound{"-vn"};
        const QStringList fragments{"-movflags", "+frag_keyframe+empty_moov+default_base_moof", "-frag_duration",
                                    "1000000"};
        QTest::newRow("MP4") << h264 << "a.mp4";
        QTest::newRow("MP4 in fragments") << h264 + fragments << "fragments.mp4";
        QTest::newRow("AVI") << h264 << "a.avi";
        QTest::newRow("FLV") << h264 + QStringList{"-ar", "44100"} << "a.flv";
        QTest::newRow("FLV without its length") << h264 + QStringList{"-flvflags", "no_duration_filesize"} << "b.flv";
        QTest::newRow("GIF") << QStringList{"-an"} << "a.gif";
        QTest::newRow("MP3") << sound << "a.mp3";
        QTest::newRow("MP3 without its length") << sound + QStringList{"-write_xing", "0"} << "b.mp3";
        QTest::newRow("AAC") << sound << "a.aac";
        QTest::newRow("FLAC") << sound << "a.flac";
        QTest::newRow("percent signs, blanks and colons") << h264 << "100%d a:b #?.mp4";
    }

    void lengthOfEveryFormatIsKnown()
    {
        QFETCH(const QStringList, options);
        QFETCH(const QString, name);
        const QString path = media(name, options);
        QVERIFY2(!contents(path).isEmpty(), qPrintable(path));
        const auto length = lengthMs(path);
        QVERIFY(length.has_value());
        QVERIFY2(qAbs(*length - kLengthMs) <= 150, qPrintable(QString::number(*length)));
        QVERIFY(!isUnreadable(path));
    }

    void lengthOfAFileThatWasCutOffIsWhatItHolds_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("options");
        QTest::newRow("fragments") << "a.mp4"
                                   << QStringList{"-movflags", "+frag_keyframe+empty_moov+default_base_moof",
                                                  "-frag_duration", "500000"};
        QTest::newRow("AAC") << "a.aac" << QStringList{"-vn"};
    }

    void lengthOfAFileThatWasCutOffIsWhatItHolds()
    {
        QFETCH(const QString, name);
        QFETCH(const QStringList, options);
        const QString path = media(name, options);
        const QByteArray whole = contents(path);
        write(path, whole.first(whole.size() / 2));
        const auto length = lengthMs(path);
        QVERIFY(length.has_value());
        QVERIFY2(*length > kLengthMs / 5 && *length < kLengthMs * 4 / 5, qPrintable(QString::number(*length)));
    }

    void lengthOfAFileWhoseSoundIsEmptyIsThatOfTheVideo()
    {
        const QString path = media("a.mp4", {"-movflags", "+frag_keyframe+empty_moov+default_base_moof",
                                             "-frag_duration", "500000", "-bsf:a", "noise=drop=1"});
        QVERIFY(isFragmentedMp4(path));
        const auto length = lengthMs(path);
        QVERIFY(length.has_value());
        QVERIFY2(qAbs(*length - kLengthMs) <= 150, qPrintable(QString::number(*length)));
        QVERIFY(!isUnreadable(path));
    }

    void fileThatHoldsNothingIsUnreadable_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("isUnreadable");
        QTest::newRow("empty") << QByteArray() << true;
        QTest::newRow("noise") << QByteArray(4096, '\x5a') << true;
        QTest::newRow("zeros") << QByteArray(4096, '\0') << true;
        // What leads elsewhere is not followed, and nothing is said of it.
        QTest::newRow("playlist") << QByteArray("#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\n"
                                                "http://127.0.0.1:9/a.ts\n#EXT-X-ENDLIST\n")
                                  << false;
    }

    void fileThatHoldsNothingIsUnreadable()
    {
        QFETCH(const QByteArray, bytes);
        const QString path = m_folder->filePath("a.mp4");
        write(path, bytes);
        QVERIFY(!lengthMs(path).has_value());
        QTEST(isUnreadable(path), "isUnreadable");
        QCOMPARE(contents(path), bytes);
    }

    void missingFileIsNotUnreadable()
    {
        QVERIFY(!lengthMs(m_folder->filePath("none.mp4")).has_value());
        QVERIFY(!isUnreadable(m_folder->filePath("none.mp4")));
    }

    void cancelledWorkSaysNothing()
    {
        const QString path = media("a.aac", {"-vn"});
        FileWork work;
        work.cancel();
        const MediaLength length = mediaLength(path, work);
        QVERIFY(!length.length && !length.isUnreadable);
    }

    void listSaysHowLongARecordingIsOnceItIsOver()
    {
        const QString path = media("a.mp4", {"-movflags", "+frag_keyframe+empty_moov+default_base_moof"});
        SCFileManager library;
        QListView view;
        library.setFileInUse(path);
        library.addFile(path, QStringLiteral("video"));
        library.setupView(&view, QString());
        const auto shownAtOnce = [&view] {
            return view.model()->index(0, 0).data(Qt::AccessibleDescriptionRole).toString();
        };
        QVERIFY(shownAtOnce().startsWith(QLatin1String("Being recorded")));
        library.setFileInUse({});
        library.setupView(&view, QString());
        QVERIFY(shownAtOnce().startsWith(QLatin1String("Being finished")));
        const QModelIndex row = view.model()->index(0, 0);
        QTRY_VERIFY_WITH_TIMEOUT(propertiesOnDisk().contains("durationMs"), 30'000);
        QVERIFY(qAbs(propertiesOnDisk().value("durationMs").toInteger() - kLengthMs) <= 150);
        QCOMPARE(propertiesOnDisk().value("sizeBytes").toInteger(), QFileInfo(path).size());
        QVERIFY(!propertiesOnDisk().contains("unfinished") && !propertiesOnDisk().contains("incomplete"));
        const QString shown = row.data(Qt::AccessibleDescriptionRole).toString();
        QVERIFY2(shown.startsWith(QLatin1String("Length: 0:0")), qPrintable(shown));
    }

    void recordingWithoutARecordingSaysSo()
    {
        const QString path = m_folder->filePath("a.mp4");
        write(path, "killed before the first fragment");
        SCFileManager library;
        QListView view;
        addRecorded(library, path);
        library.setupView(&view, QString());
        QTRY_COMPARE_WITH_TIMEOUT(propertiesOnDisk().value("unreadable"), QJsonValue(true), 30'000);
        const QString shown = view.model()->index(0, 0).data(Qt::AccessibleDescriptionRole).toString();
        QVERIFY2(shown.startsWith(QLatin1String("Unreadable")), qPrintable(shown));
        // Somebody puts a recording there.
        write(path, contents(media("b.mp4", {})));
        const SCFileManager restarted;
        QTRY_VERIFY_WITH_TIMEOUT(propertiesOnDisk().contains("durationMs"), 30'000);
        QVERIFY(!propertiesOnDisk().contains("unreadable"));
    }

    void recordingThatCouldNotBeFinishedIsMarked()
    {
        const QString path = m_folder->filePath("a.flac");
        write(path, QByteArray("fLaC") + QByteArray(38, '\0'));
        SCFileManager library;
        addRecorded(library, path);
        QTRY_COMPARE_WITH_TIMEOUT(propertiesOnDisk().value("incomplete"), QJsonValue(true), 30'000);
        QVERIFY(!propertiesOnDisk().contains("unfinished"));
    }

    void recordingThatIsStillWrittenToSaysSo()
    {
        const QString path = media("a.mp4", {"-movflags", "+frag_keyframe+empty_moov+default_base_moof"});
        filelibrary::write(
            QJsonDocument(QJsonArray{QJsonObject{{"filepath", path},
                                                 {"properties", QJsonObject{{"type", "video"}, {"unfinished", true}}}}})
                .toJson());
        QFile theirs(path);
        QVERIFY(theirs.open(QIODevice::ReadWrite));
        SCFileManager library;
        QListView view;
        library.setupView(&view, QString());
        const auto shown = [&view] { return view.model()->index(0, 0).data(Qt::AccessibleDescriptionRole).toString(); };
        QVERIFY(shown().startsWith(QLatin1String("Being finished")));
        QTRY_VERIFY_WITH_TIMEOUT(shown().startsWith(QLatin1String("Unfinished, Length: 0:0")), 30'000);
        QVERIFY(propertiesOnDisk().contains("unfinished"));
    }

    void recordingEndsTheReading()
    {
        const QString path = media("a.mp4", {});
        const QString other = media("a.aac", {"-vn"});
        FileDetailsReader reader;
        const QSignalSpy read(&reader, &FileDetailsReader::read);
        reader.add({{other, true, {}}});
        reader.cancelAll();
        reader.add({{path, true, {}}});
        QTRY_COMPARE_WITH_TIMEOUT(read.size(), 1, 30'000);
        QCOMPARE(read.first().first().value<Details>().keys(), QStringList{path});
        const auto details = read.first().first().value<Details>().value(path);
        QCOMPARE(details.sizeBytes, std::optional(QFileInfo(path).size()));
        // Known, and as it was.
        reader.add({{path, true, details}});
        reader.add({{path, false, {}}});
        QTRY_COMPARE_WITH_TIMEOUT(read.size(), 2, 30'000);
        QVERIFY(!read.at(1).first().value<Details>().value(path).durationMs);
    }

    void readerThatGoesWaitsForNothing()
    {
        auto reader = std::make_unique<FileDetailsReader>();
        const QString path = media("a.aac", {"-vn"});
        const auto threads = [] { return QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(); };
        const auto before = threads();
        // More than are read within the limit of the test.
        reader->add(QList<FileDetailsReader::Request>(1'000'000, {path, true, {}}));
        QVERIFY(threads() > before);
        reader.reset();
        // Its thread has the lowest of all priorities.
        QTRY_COMPARE_WITH_TIMEOUT(threads(), before, 30'000);
    }

    void deletedFileIsReadNoMore()
    {
        const QString deleted = media("a.mp4", {});
        const QString other = media("b.aac", {"-vn"});
        FileDetailsReader reader;
        const QSignalSpy read(&reader, &FileDetailsReader::read);
        const QSignalSpy finished(&reader, &FileDetailsReader::finished);
        reader.add({{deleted, true, {}}, {other, true, {}}});
        reader.add({{deleted, true, {}}});
        reader.cancel({deleted});
        QVERIFY(read.isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30'000);
        QCOMPARE(read.size(), 1);
        QCOMPARE(read.first().first().value<Details>().keys(), QStringList{other});
    }

    void deletionLetsTheReaderGoOnFromWhereItIs()
    {
        const QByteArray noise(100, '\x5a');
        const QString asItWas = m_folder->filePath("a.flv");
        const QString other = m_folder->filePath("b.flv");
        const QString last = m_folder->filePath("c.flv");
        for (const QString& path : {asItWas, other, last})
            write(path, noise);
        const FileDetails unreadable{noise.size(), std::nullopt, true, false};
        const FileDetails missing{std::nullopt, std::nullopt, false, true};
        QList<FileDetailsReader::Request> requests{
            {asItWas, true, unreadable}, {other, true, {}}, {last, true, unreadable}};
        // The reader is not through with them before the deletion.
        requests.append(QList<FileDetailsReader::Request>(20'000, {m_folder->filePath("none"), false, missing}));
        const QString deleted = m_folder->filePath("d.flv");
        requests.append({deleted, true, {}});
        const ReadingWatch watch(last);
        FileDetailsReader reader;
        const QSignalSpy read(&reader, &FileDetailsReader::read);
        const QSignalSpy finished(&reader, &FileDetailsReader::finished);
        reader.add(requests);
        QVERIFY(watch.waitForReading());
        // Who reads it again reports it.
        write(asItWas, "changed");
        reader.cancel({deleted});
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30'000);
        QCOMPARE(read.size(), 1);
        QCOMPARE(read.first().first().value<Details>().keys(), QStringList{other});
    }

    void lengthsOfFlvAndGifAreReadWithoutALibrary_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<double>("part");
        const QStringList flv{"-c:v", "libx264", "-c:a", "aac", "-ar", "44100"};
        const QStringList gif{"-an"};
        QTest::newRow("FLV") << "a.flv" << flv << 1.0;
        QTest::newRow("FLV that was cut off") << "a.flv" << flv << 0.6;
        QTest::newRow("GIF") << "a.gif" << gif << 1.0;
        QTest::newRow("GIF that was cut off") << "a.gif" << gif << 0.6;
    }

    void lengthsOfFlvAndGifAreReadWithoutALibrary()
    {
        QFETCH(const QString, name);
        QFETCH(const QStringList, options);
        QFETCH(const double, part);
        const QString path = media(name, options);
        const QByteArray whole = contents(path);
        const auto read = name.endsWith("flv") ? &flvLength : &gifLength;
        write(path, whole.first(static_cast<qsizetype>(static_cast<double>(whole.size()) * part)));
        FileWork work;
        const MediaLength media = read(path, work);
        QVERIFY(media.length.has_value());
        const auto ms = media.length->count();
        if (part < 1)
            QVERIFY2(ms > kLengthMs / 5 && ms < kLengthMs * 4 / 5, qPrintable(QString::number(ms)));
        else
            QVERIFY2(qAbs(ms - kLengthMs) <= 150, qPrintable(QString::number(ms)));
        QVERIFY(!media.isUnreadable);
        // Neither the head alone, in part or whole, nor noise has a length.
        for (const QByteArray& bytes : {whole.first(3), whole.first(9), QByteArray(4096, '\x5a'), QByteArray()}) {
            write(path, bytes);
            QVERIFY(!read(path, work).length);
            QVERIFY(read(path, work).isUnreadable);
        }
        write(path, whole);
        work.cancel();
        QVERIFY(!read(path, work).isUnreadable);
    }

private:
    QString media(const QString& name, const QStringList& options)
    {
        QString path = m_folder->filePath(name);
        QStringList arguments{"-v", "error", "-nostdin", "-y",  "-f", "lavfi", "-i", "testsrc=size=160x120:rate=10",
                              "-f", "lavfi", "-i",       "sine"};
        arguments += QStringList{"-threads", "1", "-preset", "ultrafast", "-t", QString::number(kLengthMs / 1000)} +
                     options + QStringList{"file:" + path};
        QProcess process;
        process.start(QStringLiteral("ffmpeg"), arguments);
        process.waitForFinished(60'000);
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

REGISTER_TEST(windowtest::run<TestFileDetails>);

#include "test_filedetails_x11.moc"
