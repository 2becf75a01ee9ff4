// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/settings.h"
#include "screenshot/scscreenshot.h"
#include "tests/support/fulldisk.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QRandomGenerator>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// Noise, of which no encoder makes little.
QPixmap noise(quint32 seed)
{
    QImage image(200, 150, QImage::Format_RGB32);
    QRandomGenerator random(seed);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, random.generate() | 0xff000000);
    }
    return QPixmap::fromImage(image);
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// Screenshots on a disk that runs full at any byte.
class TestScreenshotDisk : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        const auto settings = openSettings();
        settings->clear();
        settings->setValue(settingskeys::kScreenshotSaveLocation, m_folder->path());
    }

    void fullDiskFailsTheSaveAndLeavesNoHalfOfAFile_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<int>("bytes");
        for (const char* format : {"PNG", "JPG"}) {
            for (const int bytes : {0, 1, 1000, 8192, 16384, -100, -1})
                QTest::addRow("%s, %d bytes", format, bytes) << QString(format) << bytes;
        }
    }

    void fullDiskFailsTheSaveAndLeavesNoHalfOfAFile()
    {
        QFETCH(const QString, format);
        QFETCH(const int, bytes);
        openSettings()->setValue(settingskeys::kScreenshotFormat, format);
        const QString path = m_folder->filePath(QStringLiteral("shot"));
        SCScreenshot screenshot;
        const QPixmap image = noise(1);
        QVERIFY(screenshot.saveScreenshot(image, path));
        const QByteArray whole = contents(path);
        QVERIFY(whole.size() > 17000);
        // From the end where it is negative.
        const qint64 room = bytes < 0 ? whole.size() + bytes : bytes;
        for (const QString& target : {path, m_folder->filePath(QStringLiteral("new")), QString()}) {
            const QSignalSpy saved(&screenshot, &SCScreenshot::screenshotSaved);
            const QSignalSpy failed(&screenshot, &SCScreenshot::error);
            {
                const FullDisk full(static_cast<rlim_t>(room));
                QVERIFY(!screenshot.saveScreenshot(image, target));
            }
            QVERIFY(saved.isEmpty());
            QCOMPARE(failed.size(), 1);
            QVERIFY(failed.at(0).at(0).toString().startsWith(QLatin1String("Failed to save screenshot to ")));
            QCOMPARE(screenshot.lastSavedPath(), path);
            QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList{"shot"});
            QVERIFY(contents(path) == whole);
        }
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

REGISTER_TEST(testrun::gui<TestScreenshotDisk>);

#include "test_screenshotdisk_x11.moc"
