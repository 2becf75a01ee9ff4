// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/recordingformat.h"
#include "tests/support/testrun.h"

#include <QTest>

class TestRecordingFormat : public QObject
{
    Q_OBJECT

private slots:
    void indexOutsideTheTableIsMp4()
    {
        QCOMPARE(recordingFormatFromIndex(7), RecordingFormat::Mp4);
        QCOMPARE(recordingFormatFromIndex(-1), RecordingFormat::Mp4);
        QCOMPARE(recordingFileExtension(recordingFormatFromIndex(7)), QStringLiteral("mp4"));
    }

    void extensions()
    {
        const QStringList expected{"mp4", "avi", "flv", "gif", "mp3", "aac", "flac"};
        for (int index = 0; index < kRecordingFormatCount; ++index)
            QCOMPARE(recordingFileExtension(recordingFormatFromIndex(index)), expected.at(index));
    }

    void audioFormatsHaveNoVideo()
    {
        for (int index = 0; index < kRecordingFormatCount; ++index)
            QCOMPARE(hasVideo(recordingFormatFromIndex(index)), index < 4);
    }

    void fileGrowsByTheBitRatesOfItsEncoders()
    {
        const auto rate = [](RecordingFormat format, const QSize& size) {
            return nominalBytesPerSecond(format, size, 30, 4);
        };
        const QSize small(640, 360);
        const QSize large(1920, 1080);
        constexpr qint64 kVideo = qint64{4096} * 1000 / 8;
        constexpr qint64 kAudio = qint64{192} * 1000 / 8;
        for (const RecordingFormat format : {RecordingFormat::Mp4, RecordingFormat::Avi, RecordingFormat::Flv}) {
            QCOMPARE(rate(format, small), kVideo + kAudio);
            QCOMPARE(rate(format, large), kVideo + kAudio);
        }
        QCOMPARE(rate(RecordingFormat::Mp3, large), kAudio);
        QCOMPARE(rate(RecordingFormat::Aac, large), kAudio);
        QCOMPARE(rate(RecordingFormat::Flac, large), qint64{48000} * 4);
        QCOMPARE(rate(RecordingFormat::Gif, large), 9 * rate(RecordingFormat::Gif, small));
    }
};

REGISTER_TEST(testrun::core<TestRecordingFormat>);
#include "test_recordingformat.moc"
