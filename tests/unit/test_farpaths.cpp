// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/savefolder.h"
#include "app/sclogger.h"
#include "app/settings.h"
#include "engine/output/ffmpegsettings.h"
#include "files/scfilemanager.h"
#include "mainwindow/recording/recordingpath.h"
#include "screenshot/scscreenshot.h"
#include "tests/support/windowtest.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QSettings>
#include <QTemporaryDir>

#include <obs.h>

namespace {

/// What Windows' older calls take of a path.
constexpr qsizetype kOldLimit = 260;

const auto kUser = QStringLiteral("/Jürgen Möller/録画 и снимки");
const QDateTime kMoment(QDate(2024, 5, 1), QTime(13, 7, 9));

/// In a user's folder with a blank, in several scripts, and beyond the old limit.
QString farFolder(const QTemporaryDir& root)
{
    QString folder = root.path() + kUser;
    while (folder.size() <= kOldLimit)
        folder += QStringLiteral("/Aufnahmen aus dem Übungsraum, 練習");
    return folder + QStringLiteral("/hier");
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// Files in folders of any length, in any script.
class TestFarPaths : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        QVERIFY(m_root->isValid());
        m_folder = farFolder(*m_root);
        QVERIFY(m_folder.size() > kOldLimit);
    }

    void logIsWrittenThere()
    {
        const QString path = m_folder + QStringLiteral("/vexmoor.log");
        QVERIFY(SCLogger::instance()->initialize(path));
        SCLogger::info(QStringLiteral("録画 started"));
        QVERIFY(contentOf(path).contains(QStringLiteral("Info: 録画 started").toUtf8()));
        QVERIFY(contentOf(path).contains(path.toUtf8()));
    }

    void settingsKeepTheFolder()
    {
        openSettings()->setValue(settingskeys::kScreenshotSaveLocation, m_folder);
        QCOMPARE(openSettings()->value(settingskeys::kScreenshotSaveLocation).toString(), m_folder);
    }

    void screenshotIsSavedThere()
    {
        openSettings()->setValue(settingskeys::kScreenshotSaveLocation, m_folder);
        openSettings()->setValue(settingskeys::kScreenshotFormat, QStringLiteral("PNG"));
        SCScreenshot screenshot;
        QPixmap image(20, 10);
        image.fill(Qt::red);
        QVERIFY(screenshot.saveScreenshot(image, QString()));
        QVERIFY(screenshot.lastSavedPath().startsWith(m_folder + u'/'));
        QCOMPARE(QImage(screenshot.lastSavedPath()).size(), QSize(20, 10));
    }

    void recordingsFolderIsMadeAndATakenNameIsSeen()
    {
        QVERIFY(!usableSaveFolder(m_folder, settingskeys::kRecordingSaveLocation).isReplaced);
        const auto next = [this] {
            return RecordingPath(m_folder, QStringLiteral("デモ"), RecordingFormat::Mp4, kMoment).full();
        };
        const QString first = next();
        QCOMPARE(first, m_folder + QStringLiteral("/デモ.mp4"));
        QFile file(first);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(next(), m_folder + QStringLiteral("/デモ (2).mp4"));
    }

    void engineGetsTheWholePathInUtf8()
    {
        const QString path = m_folder + QStringLiteral("/デモ");
        const ObsDataHandle settings = buildFfmpegSettings(RecordingFormat::Mp4, {path, 640, 480, 30, 4});
        QCOMPARE(QByteArray(obs_data_get_string(settings.get(), "url")), path.toUtf8() + ".mp4");
    }

    void listKeepsAFileThere()
    {
        const QString path = m_folder + QStringLiteral("/デモ.mp4");
        QVERIFY(!usableSaveFolder(m_folder, settingskeys::kRecordingSaveLocation).isReplaced);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        {
            SCFileManager files;
            files.addFile(path, QStringLiteral("video"));
        }
        const SCFileManager files;
        const QList<FileRecord> kept = files.filesByType(QStringLiteral("video"));
        QVERIFY(
            std::any_of(kept.begin(), kept.end(), [&](const FileRecord& record) { return record.filepath == path; }));
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
    QString m_folder;
};

REGISTER_TEST(windowtest::run<TestFarPaths>);

#include "test_farpaths.moc"
