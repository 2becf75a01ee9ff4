// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/filework.h"
#include "files/flacfile.h"
#include "files/mp4file.h"
#include "files/recordingfinisher.h"
#include "files/scfilemanager.h"
#include "platform/files/file_use.h"
#include "tests/support/fulldisk.h"
#include "tests/support/mediafile.h"
#include "tests/support/testrun.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <memory>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

const QStringList kFragments{"-movflags", "+frag_keyframe+empty_moov+default_base_moof", "-frag_duration", "1000000"};

QByteArray ffmpeg(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("ffmpeg"), QStringList{"-v", "error", "-nostdin", "-y"} + arguments);
    process.waitForFinished(60'000);
    return process.readAllStandardOutput();
}

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

/// What is encoded: stream, size and hash of each packet, sorted. Files differ in how they interleave streams and round
/// times.
QList<QByteArrayList> packets(const QString& path)
{
    QList<QByteArrayList> packets;
    const QByteArrayList lines = ffmpeg({"-i", path, "-map", "0", "-c", "copy", "-f", "framehash", "-"}).split('\n');
    for (const QByteArray& line : lines) {
        const QByteArrayList fields = line.simplified().replace(' ', "").split(',');
        if (fields.size() == 6)
            packets.append({fields.at(0), fields.at(4), fields.at(5)});
    }
    std::sort(packets.begin(), packets.end());
    return packets;
}

bool isNear(double one, double other)
{
    return std::abs(one - other) < 0.002;
}

/// A disk of its own that only this process sees, for as long as the object lives.
class SmallDisk
{
public:
    SmallDisk(const QString& folder, const char* options) : m_folder(QFile::encodeName(folder))
    {
        m_isThere = unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    mount("tmpfs", m_folder.constData(), "tmpfs", 0, options) == 0;
    }
    ~SmallDisk()
    {
        if (m_isThere)
            umount2(m_folder.constData(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isThere() const { return m_isThere; }

private:
    const QByteArray m_folder;
    bool m_isThere = false;
};

} // namespace

/// What becomes of the files of recordings that are over. They are made by FFmpeg.
class TestRecordingFinisher : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_finisher = std::make_unique<RecordingFinisher>();
    }

    void cleanup() { m_finisher.reset(); }

    void fragmentedFileBecomesAPlainOneWithTheSameStreams()
    {
        const QString path = video(kFragments);
        const QList<QByteArrayList> before = packets(path);
        const MediaFile fragmented(path);
        QVERIFY(before.size() > 120);
        QVERIFY(isFragmentedMp4(path));
        QVERIFY(finish(path));
        QVERIFY(!isFragmentedMp4(path));
        QCOMPARE(packets(path), before);
        const MediaFile plain(path);
        QVERIFY2(plain.isReadable(), qPrintable(plain.error()));
        QVERIFY(isNear(plain.video()->startSeconds, fragmented.video()->startSeconds));
        // In fragments the first audio frame begins with the file, too early.
        const QList<double> audio = plain.audio()->frameSeconds;
        QVERIFY(isNear(audio.at(1), fragmented.audio()->frameSeconds.at(1)));
        QVERIFY(isNear(audio.at(1) - audio.at(0), audio.at(2) - audio.at(1)));
        QVERIFY(isNear(plain.video()->durationSeconds, fragmented.video()->durationSeconds));
        const QByteArray bytes = contents(path);
        QVERIFY2(bytes.indexOf("moov") < bytes.indexOf("mdat"), "the index is not in front");
        QCOMPARE(fileNames(), QStringList{"video.mp4"});
    }

    void fileThatEndsInTheMiddleOfAFragmentIsTakenUpToIt()
    {
        const QString path = video(kFragments);
        const QByteArray bytes = contents(path);
        write(path, bytes.first(bytes.size() * 7 / 10));
        QVERIFY(finish(path));
        QVERIFY(!isFragmentedMp4(path));
        const MediaFile file(path);
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        QVERIFY2(file.video()->durationSeconds >= 2, qPrintable(QString::number(file.video()->durationSeconds)));
        QVERIFY(file.audio()->durationSeconds >= 2);
    }

    void fileThatEndsInTheHeadOfAFragmentIsTakenUpToIt()
    {
        const QString path = video(kFragments);
        const QByteArray bytes = contents(path);
        write(path, bytes.first(bytes.lastIndexOf("moof") + 100));
        QVERIFY(!MediaFile(path).isReadable());
        QVERIFY(finish(path));
        QVERIFY(!isFragmentedMp4(path));
        const MediaFile file(path);
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        QVERIFY2(file.video()->durationSeconds >= 2, qPrintable(QString::number(file.video()->durationSeconds)));
    }

    void headOfAFragmentThatSaysItIsEndlessIsCutOff()
    {
        const QString path = m_folder->filePath("a.mp4");
        const QByteArray beginning("\0\0\0\x08"
                                   "ftyp",
                                   8);
        write(path, beginning + QByteArray("\0\0\0\x01"
                                           "moof"
                                           "\x7f\xff\xff\xff\xff\xff\xff\xff",
                                           16));
        FileWork work;
        QVERIFY(cutBrokenFragmentHead(path, work));
        QCOMPARE(contents(path), beginning);
    }

    void fileOnAFullDiskStaysAsItIs()
    {
        const QString path = video(kFragments);
        const QByteArray before = contents(path);
        QString error;
        FileWork work;
        {
            const FullDisk disk(static_cast<rlim_t>(before.size() / 2));
            QVERIFY(makePlainMp4(path, work, error) != PlainMp4::Made);
        }
        QCOMPARE(contents(path), before);
        QCOMPARE(fileNames(), QStringList{"video.mp4"});
    }

    void diskWithoutRoomForAnotherFileLeavesTheRecording()
    {
        const QString disk = m_folder->filePath("disk");
        QVERIFY(QDir().mkdir(disk));
        const SmallDisk room(disk, "size=64m,nr_inodes=2");
        if (!room.isThere())
            QSKIP("Mounting a disk needs root");
        const QString path = disk + "/video.mp4";
        QVERIFY(QFile::copy(video(kFragments), path));
        const QByteArray before = contents(path);
        QString error;
        FileWork work;
        QCOMPARE(makePlainMp4(path, work, error), PlainMp4::NoSpace);
        QCOMPARE(contents(path), before);
        QCOMPARE(QDir(disk).entryList(QDir::Files | QDir::Hidden), QStringList{"video.mp4"});
    }

    void fileThatAnotherProcessWritesToHasToWait()
    {
        const QString path = video(kFragments);
        makeOld(path);
        QProcess writer;
        writer.start("sh", {"-c", "exec 3>>\"$0\"; echo; read -r _", path});
        QVERIFY(writer.waitForReadyRead());
        QCOMPARE(platform::isOpenForWriting(path), std::optional(true));
        QSignalSpy finished(m_finisher.get(), &RecordingFinisher::finished);
        m_finisher->add(path);
        QTest::qWait(500);
        QVERIFY(isFragmentedMp4(path));
        QVERIFY(finished.isEmpty());
        writer.closeWriteChannel();
        QVERIFY(writer.waitForFinished());
        QCOMPARE(platform::isOpenForWriting(path), std::optional(false));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30'000);
        QVERIFY(!isFragmentedMp4(path));
    }

    void fileThatAnotherInstanceRecordsKeepsNoneWaiting()
    {
        const QString theirs = m_folder->filePath("theirs.mp4");
        const QString path = video(kFragments);
        QVERIFY(QFile::copy(path, theirs));
        const int recording = open(QFile::encodeName(theirs).constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
        QVERIFY(recording >= 0);
        QSignalSpy finished(m_finisher.get(), &RecordingFinisher::finished);
        m_finisher->add(theirs, RecordingFinisher::Recorder::Other);
        m_finisher->add(path);
        // It would be waited for longer than this.
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 10'000);
        QCOMPARE(finished.first().first().toString(), path);
        QVERIFY(isFragmentedMp4(theirs));
        close(recording);
        m_finisher->add(theirs, RecordingFinisher::Recorder::Other);
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, 30'000);
        QVERIFY(!isFragmentedMp4(theirs));
    }

    void fileThatAnotherInstanceFinishesIsLeftToIt()
    {
        const QString path = video(kFragments);
        const QByteArray before = contents(path);
        write(unfinishedMp4Path(path), "of another instance");
        const int theirs = open(QFile::encodeName(unfinishedMp4Path(path)).constData(), O_RDONLY | O_CLOEXEC);
        QCOMPARE(flock(theirs, LOCK_EX | LOCK_NB), 0);
        QString error;
        FileWork work;
        QCOMPARE(makePlainMp4(path, work, error), PlainMp4::Cancelled);
        QCOMPARE(contents(path), before);
        QCOMPARE(contents(unfinishedMp4Path(path)), QByteArray("of another instance"));
        close(theirs);
        QCOMPARE(makePlainMp4(path, work, error), PlainMp4::Made);
        QCOMPARE(fileNames(), QStringList{"video.mp4"});
    }

    void whatSomebodyElseHasPutThereIsLeftAlone_data()
    {
        QTest::addColumn<bool>("isTheirs");
        QTest::newRow("second name of another file") << false;
        QTest::newRow("another user's file") << true;
    }
    void whatSomebodyElseHasPutThereIsLeftAlone()
    {
        QFETCH(const bool, isTheirs);
        const QString path = video(kFragments);
        const QString unfinished = unfinishedMp4Path(path);
        const QString other = m_folder->filePath("other");
        const QByteArray name = QFile::encodeName(isTheirs ? unfinished : other);
        write(QFile::decodeName(name), "of somebody else");
        if (isTheirs && chown(name.constData(), 65534, 65534) != 0)
            QSKIP("Only root can be two users");
        if (!isTheirs)
            QCOMPARE(link(name.constData(), QFile::encodeName(unfinished).constData()), 0);
        QString error;
        FileWork work;
        QCOMPARE(makePlainMp4(path, work, error), PlainMp4::Made);
        QVERIFY(!isFragmentedMp4(path));
        QCOMPARE(contents(unfinished), QByteArray("of somebody else"));
        QCOMPARE(fileNames().size(), isTheirs ? 2 : 3);
    }

    void linkStaysAsItIs()
    {
        const QString path = video(kFragments);
        const QString link = m_folder->filePath("link.mp4");
        QVERIFY(QFile::link(path, link));
        QVERIFY(finish(link));
        QVERIFY(QFileInfo(link).isSymLink());
        QVERIFY(isFragmentedMp4(path));
    }

    void missingFileIsNotMade_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("MP4") << "a.mp4";
        QTest::newRow("FLAC") << "a.flac";
    }
    void missingFileIsNotMade()
    {
        QFETCH(const QString, name);
        QVERIFY(finish(m_folder->filePath(name)));
        QCOMPARE(fileNames(), QStringList());
    }

    void recordingIsFinishedWhenItIsOverAndTheListKnows()
    {
        const QString path = video(kFragments);
        makeOld(path);
        SCFileManager files;
        files.setFileInUse(path);
        files.addFile(path, QStringLiteral("video"));
        QVERIFY(contents(FileStore::path()).contains("unfinished"));
        files.setFileInUse({});
        QTRY_VERIFY_WITH_TIMEOUT(!contents(FileStore::path()).contains("unfinished"), 20'000);
        QVERIFY(!isFragmentedMp4(path));
    }

    void recordingThatIsMovedIsFinishedWhenItIsSaved()
    {
        const QString lost = m_folder->filePath(QStringLiteral("gone/demo.mp4"));
        const QString path = video(kFragments);
        makeOld(path);
        SCFileManager files;
        files.setFileInUse(lost);
        files.addFile(lost, QStringLiteral("video"));
        files.moveFile(lost, path);
        QCOMPARE(files.files().at(0).filepath, path);
        QVERIFY(contents(FileStore::path()).contains(path.toUtf8()));
        QVERIFY(!contents(FileStore::path()).contains(lost.toUtf8()));
        files.setFileInUse({});
        // It is still being written.
        QTest::qWait(1500);
        QVERIFY(contents(FileStore::path()).contains("unfinished"));
        QVERIFY(isFragmentedMp4(path));
        files.setFileSaved(path);
        QTRY_VERIFY_WITH_TIMEOUT(!contents(FileStore::path()).contains("unfinished"), 20'000);
        QVERIFY(!isFragmentedMp4(path));
    }

    void nextStartFinishesWhatIsNot()
    {
        const QString path = video(kFragments);
        makeOld(path);
        {
            SCFileManager files;
            files.setFileInUse(path);
            files.addFile(path, QStringLiteral("video"));
        }
        QVERIFY(isFragmentedMp4(path));
        const SCFileManager files;
        QTRY_VERIFY_WITH_TIMEOUT(!contents(FileStore::path()).contains("unfinished"), 20'000);
        QVERIFY(!isFragmentedMp4(path));
    }

    void fileThatIsGoneLeavesNothingBeside()
    {
        const QString path = m_folder->filePath("gone.mp4");
        write(path, "recorded");
        {
            SCFileManager files;
            files.setFileInUse(path);
            files.addFile(path, QStringLiteral("video"));
        }
        write(unfinishedMp4Path(path), "half");
        QVERIFY(QFile::remove(path));
        const SCFileManager files;
        QCOMPARE(fileNames(), QStringList());
    }

    void plainFileStaysAsItIs()
    {
        const QString path = video({});
        const QByteArray before = contents(path);
        QVERIFY(finish(path));
        QCOMPARE(contents(path), before);
    }

    void fileWithoutARecordingStaysAsItIs_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << "a.mp4" << QByteArray();
        QTest::newRow("no MP4") << "a.mp4" << QByteArray("moof moof moof moof moof");
        QTest::newRow("head alone") << "a.mp4"
                                    << QByteArray("\0\0\0\x08"
                                                  "ftyp"
                                                  "\0\0\0\x08"
                                                  "moof",
                                                  16);
        QTest::newRow("size of nothing") << "a.mp4"
                                         << QByteArray("\0\0\0\x08"
                                                       "ftyp"
                                                       "\0\0\0\x01"
                                                       "moov",
                                                       16);
        QTest::newRow("size below the head") << "a.mp4"
                                             << QByteArray("\0\0\0\x08"
                                                           "ftyp"
                                                           "\0\0\0\x02"
                                                           "moov",
                                                           16);
        QTest::newRow("size beyond everything") << "a.mp4"
                                                << QByteArray("\0\0\0\x08"
                                                              "ftyp"
                                                              "\0\0\0\x01"
                                                              "mdat"
                                                              "\x7f\xff\xff\xff\xff\xff\xff\xff",
                                                              24);
        QTest::newRow("empty FLAC") << "a.flac" << QByteArray();
        QTest::newRow("FLAC without sound") << "a.flac" << QByteArray("fLaC") + QByteArray(38, '\0');
        QTest::newRow("another format") << "a.avi" << QByteArray("RIFF");
    }
    void fileWithoutARecordingStaysAsItIs()
    {
        QFETCH(const QString, name);
        QFETCH(const QByteArray, bytes);
        const QString path = m_folder->filePath(name);
        write(path, bytes);
        QVERIFY(finish(path));
        QCOMPARE(contents(path), bytes);
        QCOMPARE(fileNames(), QStringList{name});
    }

    void cancelledFileStaysAsItIsAndNothingIsBesideIt()
    {
        const QString path = video(kFragments);
        const QByteArray before = contents(path);
        QString error;
        FileWork work;
        work.cancel();
        QCOMPARE(makePlainMp4(path, work, error), PlainMp4::Cancelled);
        QCOMPARE(contents(path), before);
        QCOMPARE(fileNames(), QStringList{"video.mp4"});
        m_finisher->add(path);
        m_finisher->cancel(path);
        QCOMPARE(contents(path), before);
        QCOMPARE(fileNames(), QStringList{"video.mp4"});
        QVERIFY(finish(path));
        QVERIFY(!isFragmentedMp4(path));
    }

    void cancelTakesAwayWhatAKilledProgramHasLeft()
    {
        const QString path = m_folder->filePath("video.mp4");
        write(unfinishedMp4Path(path), "half");
        m_finisher->cancel(path);
        QCOMPARE(fileNames(), QStringList());
    }

    void finisherThatGoesLeavesAFileThatPlays()
    {
        const QString path = video(kFragments);
        const QList<QByteArrayList> before = packets(path);
        m_finisher->add(path);
        m_finisher.reset();
        QCOMPARE(packets(path), before);
        QCOMPARE(fileNames(), QStringList{"video.mp4"});
    }

    void flacSaysHowLongItIs()
    {
        const QString path = flac();
        const QByteArray complete = contents(path);
        write(path, withoutLength(complete));
        QVERIFY(finish(path));
        QCOMPARE(contents(path), complete);
    }

    void flacThatWasCutOffSaysWhatItHolds()
    {
        const QString path = flac();
        const QByteArray complete = withoutLength(contents(path));
        write(path, complete.first(complete.size() * 2 / 3));
        QString error;
        FileWork work;
        QVERIFY2(writeFlacLength(path, work, error), qPrintable(error));
        const auto samples = ffmpeg({"-i", path, "-f", "s16le", "-"}).size() / 4;
        const quint64 stated = lengthOf(contents(path));
        // The last frame is not complete.
        QVERIFY2(stated >= static_cast<quint64>(samples) && stated <= static_cast<quint64>(samples) + 4608,
                 qPrintable(QStringLiteral("%1 stated, %2 there").arg(stated).arg(samples)));
    }

private:
    QString video(const QStringList& options)
    {
        QString path = m_folder->filePath(QStringLiteral("video.mp4"));
        ffmpeg(QStringList{"-f", "lavfi", "-i", "testsrc=size=160x120:rate=30", "-f", "lavfi", "-i", "sine", "-t", "4",
                           "-c:v", "libx264", "-c:a", "aac"} +
               options + QStringList{path});
        return path;
    }

    QString flac()
    {
        QString path = m_folder->filePath(QStringLiteral("sound.flac"));
        ffmpeg({"-f", "lavfi", "-i", "anoisesrc=sample_rate=48000", "-t", "20", "-ac", "2", "-c:a", "flac", path});
        return path;
    }

    static quint64 lengthOf(const QByteArray& flac)
    {
        quint64 length = static_cast<quint8>(flac.at(21)) & 0x0FU;
        for (int i = 22; i < 26; ++i)
            length = length << 8 | static_cast<quint8>(flac.at(i));
        return length;
    }

    /// As a recording leaves it.
    static QByteArray withoutLength(QByteArray flac)
    {
        flac[21] = static_cast<char>(flac.at(21) & '\xF0');
        return flac.replace(22, 4, QByteArray(4, '\0'));
    }

    /// Nobody writes to it any more.
    static void makeOld(const QString& path)
    {
        QFile file(path);
        if (file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
            file.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime);
    }

    bool finish(const QString& path)
    {
        makeOld(path);
        QSignalSpy finished(m_finisher.get(), &RecordingFinisher::finished);
        m_finisher->add(path);
        return finished.wait(30'000) && finished.first().first().toString() == path;
    }

    QStringList fileNames() const { return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<RecordingFinisher> m_finisher;
};

REGISTER_TEST(testrun::gui<TestRecordingFinisher>);

#include "test_recordingfinisher_x11.moc"
