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
};

REGISTER_TEST(testrun::core<TestRecordingFormat>);
#include "test_recordingformat.moc"
