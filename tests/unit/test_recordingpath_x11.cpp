// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingpath.h"
#include "tests/support/testrun.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// What only a system with symbolic links can show.
class TestRecordingPathX11 : public QObject
{
    Q_OBJECT

private slots:
    void linkThatLeadsNowhereCountsAsTaken()
    {
        const QTemporaryDir folder;
        QVERIFY(QFile::link(folder.filePath(QStringLiteral("gone")), folder.filePath(QStringLiteral("demo.mp4"))));
        const RecordingPath path(folder.path(), QStringLiteral("demo"), RecordingFormat::Mp4,
                                 QDateTime::currentDateTime());
        QCOMPARE(path.full(), folder.filePath(QStringLiteral("demo (2).mp4")));
    }
};

REGISTER_TEST(testrun::core<TestRecordingPathX11>);
#include "test_recordingpath_x11.moc"
