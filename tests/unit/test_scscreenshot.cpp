// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/savefolder.h"
#include "app/settings.h"
#include "screenshot/scscreenshot.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

QPixmap image(const QColor& colour = Qt::red)
{
    QPixmap pixmap(64, 48);
    pixmap.fill(colour);
    return pixmap;
}

QByteArray encodingOf(const QString& path)
{
    return QImageReader::imageFormat(path);
}

void store(QLatin1String key, const QString& value)
{
    openSettings()->setValue(key, value);
}

} // namespace

class TestSCScreenshot : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        m_folder = m_root->filePath(QStringLiteral("shots/of this year"));
        openSettings()->clear();
        store(settingskeys::kScreenshotSaveLocation, m_folder);
        store(settingskeys::kScreenshotFormat, QStringLiteral("PNG"));
    }

    void folderIsMadeAtOnce()
    {
        const SCScreenshot screenshot;
        QVERIFY(QDir(m_folder).exists());
        QVERIFY(screenshot.lastSavedPath().isEmpty());
    }

    void nameHasTheTimeToTheSecondAndTheFormat()
    {
        const SCScreenshot screenshot;
        const auto nameOfNow = [] {
            return "Screenshot_" + QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss")) +
                   ".png";
        };
        const QString before = nameOfNow();
        const QString name = screenshot.generateFileName();
        const QString after = nameOfNow();
        QVERIFY2(name == before || name == after, qPrintable(name));
    }

    void formatIsWrittenInAnyCase_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QByteArray>("encoding");
        QTest::newRow("PNG") << "PNG"
                             << "png" << QByteArray("png");
        QTest::newRow("png") << "png"
                             << "png" << QByteArray("png");
        QTest::newRow("JPG") << "JPG"
                             << "jpg" << QByteArray("jpeg");
        QTest::newRow("jpg") << "jpg"
                             << "jpg" << QByteArray("jpeg");
    }

    void formatIsWrittenInAnyCase()
    {
        QFETCH(const QString, stored);
        QFETCH(const QString, extension);
        QFETCH(const QByteArray, encoding);
        store(settingskeys::kScreenshotFormat, stored);
        SCScreenshot screenshot;
        QVERIFY(screenshot.saveScreenshot(image(), QString()));
        QVERIFY(screenshot.lastSavedPath().endsWith(u'.' + extension));
        QCOMPARE(encodingOf(screenshot.lastSavedPath()), encoding);
    }

    void savedFileIsReported()
    {
        SCScreenshot screenshot;
        const QSignalSpy saved(&screenshot, &SCScreenshot::screenshotSaved);
        const QSignalSpy failed(&screenshot, &SCScreenshot::error);
        QVERIFY(screenshot.saveScreenshot(image(Qt::green), QString()));
        QCOMPARE(saved.size(), 1);
        const QString path = saved.at(0).at(0).toString();
        QCOMPARE(path, screenshot.lastSavedPath());
        QVERIFY(path.startsWith(m_folder + "/Screenshot_"));
        const QImage written(path);
        QCOMPARE(written.size(), QSize(64, 48));
        QCOMPARE(written.pixelColor(5, 5), QColor(Qt::green));
        QVERIFY(failed.isEmpty());
    }

    void folderThatDoesNotExistIsMadeWithAllItsParents()
    {
        SCScreenshot screenshot;
        QVERIFY(QDir(m_root->filePath(QStringLiteral("shots"))).removeRecursively());
        QVERIFY(screenshot.saveScreenshot(image(), QString()));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files).size(), 1);
    }

    void folderChosenSinceIsUsed()
    {
        SCScreenshot screenshot;
        const QString other = m_root->filePath(QStringLiteral("elsewhere"));
        store(settingskeys::kScreenshotSaveLocation, other);
        QVERIFY(screenshot.saveScreenshot(image(), QString()));
        QVERIFY(screenshot.lastSavedPath().startsWith(other + u'/'));
    }

    void explicitPathInAFolderThatDoesNotExistIsWritten()
    {
        SCScreenshot screenshot;
        const QString path = m_root->filePath(QStringLiteral("deep/below/Schöner Schuß.image"));
        QVERIFY(screenshot.saveScreenshot(image(), path));
        QCOMPARE(screenshot.lastSavedPath(), path);
        QCOMPARE(encodingOf(path), QByteArray("png"));
    }

    void emptyImageIsRefused()
    {
        SCScreenshot screenshot;
        QVERIFY(screenshot.saveScreenshot(image(), m_root->filePath(QStringLiteral("first.png"))));
        const QString before = screenshot.lastSavedPath();
        const QSignalSpy saved(&screenshot, &SCScreenshot::screenshotSaved);
        const QSignalSpy failed(&screenshot, &SCScreenshot::error);
        const QString path = m_root->filePath(QStringLiteral("none.png"));
        QVERIFY(!screenshot.saveScreenshot(QPixmap(), path));
        QVERIFY(!screenshot.saveScreenshot(QPixmap(), QString()));
        QCOMPARE(failed.size(), 2);
        QCOMPARE(failed.at(0).at(0).toString(), QStringLiteral("Cannot save empty screenshot"));
        QVERIFY(saved.isEmpty());
        QVERIFY(!QFile::exists(path));
        QVERIFY(QDir(m_folder).isEmpty());
        QCOMPARE(screenshot.lastSavedPath(), before);
    }

    void folderThatCannotBeUsedMeansTheDefaultOne_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::newRow("empty") << QString();
        QTest::newRow("relative") << "shots";
        QTest::newRow("root") << "/";
        QTest::newRow("below a file") << QCoreApplication::applicationFilePath() + "/below";
    }

    void folderThatCannotBeUsedMeansTheDefaultOne()
    {
        QFETCH(const QString, stored);
        store(settingskeys::kScreenshotSaveLocation, stored);
        SCScreenshot screenshot;
        QVERIFY(!QFileInfo::exists(QDir::current().filePath(QStringLiteral("shots"))));
        const QSignalSpy replaced(&screenshot, &SCScreenshot::folderReplaced);
        QVERIFY(screenshot.saveScreenshot(image(), QString()));
        QCOMPARE(replaced.size(), 1);
        const QString folder = defaultSaveFolder(settingskeys::kScreenshotSaveLocation);
        QVERIFY2(screenshot.lastSavedPath().startsWith(folder + u'/'), qPrintable(screenshot.lastSavedPath()));
        QCOMPARE(openSettings()->value(settingskeys::kScreenshotSaveLocation).toString(), stored);
        QVERIFY(!QFileInfo::exists(QDir::current().filePath(QStringLiteral("shots"))));
    }

    void folderThatCanBeUsedIsNotReplaced()
    {
        SCScreenshot screenshot;
        const QSignalSpy replaced(&screenshot, &SCScreenshot::folderReplaced);
        QVERIFY(screenshot.saveScreenshot(image(), QString()));
        QCOMPARE(replaced.size(), 0);
    }

    void saveFailsWhereTheDefaultFolderCannotBeUsedEither()
    {
        const QString folder = defaultSaveFolder(settingskeys::kScreenshotSaveLocation);
        QDir(folder).removeRecursively();
        QVERIFY(QDir().mkpath(QFileInfo(folder).path()));
        QFile blocker(folder);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        store(settingskeys::kScreenshotSaveLocation, folder + "/below");
        SCScreenshot screenshot;
        const QSignalSpy failed(&screenshot, &SCScreenshot::error);
        QVERIFY(!screenshot.saveScreenshot(image(), QString()));
        QVERIFY(blocker.remove());
        QCOMPARE(failed.size(), 1);
        const QString message = failed.at(0).at(0).toString();
        QVERIFY2(message.startsWith("Failed to save screenshot to " + folder + "/Screenshot_"), qPrintable(message));
        QVERIFY(screenshot.lastSavedPath().isEmpty());
    }

    void unknownFormatFailsTheSaveAndKeepsWhatIsThere()
    {
        const QString path = m_root->filePath(QStringLiteral("kept.png"));
        SCScreenshot screenshot;
        QVERIFY(screenshot.saveScreenshot(image(Qt::blue), path));
        store(settingskeys::kScreenshotFormat, QStringLiteral("nonsense"));
        const QSignalSpy failed(&screenshot, &SCScreenshot::error);
        QVERIFY(!screenshot.saveScreenshot(image(), path));
        QCOMPARE(failed.at(0).at(0).toString(), "Failed to save screenshot to " + path);
        QCOMPARE(screenshot.lastSavedPath(), path);
        QCOMPARE(QImage(path).pixelColor(1, 1), QColor(Qt::blue));
    }

    void secondShotWithinASecondOverwritesTheFirst()
    {
        SCScreenshot screenshot;
        QString first;
        // Once more where a second ended in between.
        do {
            QVERIFY(QDir(m_folder).removeRecursively());
            QVERIFY(screenshot.saveScreenshot(image(Qt::red), QString()));
            first = screenshot.lastSavedPath();
            QVERIFY(screenshot.saveScreenshot(image(Qt::green), QString()));
        } while (screenshot.generateFileName() != QFileInfo(first).fileName());
        QCOMPARE(screenshot.lastSavedPath(), first);
        QCOMPARE(QDir(m_folder).entryList(QDir::Files).size(), 1);
        QCOMPARE(QImage(first).pixelColor(1, 1), QColor(Qt::green));
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
    QString m_folder;
};

REGISTER_TEST(windowtest::run<TestSCScreenshot>);

#include "test_scscreenshot.moc"
