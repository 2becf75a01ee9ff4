// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/addresses.h"
#include "tests/support/testrun.h"
#include "widgets/desktopservices.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// Files that are handed to xdg-open, for which a script stands in.
class TestFileOpening : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_notOpened = 0; }
    void cleanup() { qputenv("PATH", m_path); }

    void exitCodesOfTheDesktop_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("failures");
        QTest::newRow("opened") << 0 << 0;
        QTest::newRow("no file") << 2 << 1;
        QTest::newRow("no program") << 3 << 1;
        QTest::newRow("program failed") << 4 << 1;
        // Of the player that it runs itself.
        QTest::newRow("another") << 130 << 0;
    }

    void exitCodesOfTheDesktop()
    {
        QFETCH(const int, code);
        QFETCH(const int, failures);
        useXdgOpen(QStringLiteral("exit %1").arg(code));
        open(QStringLiteral("/videos/a b #1.mp4"));
        QTRY_COMPARE(argument(), QByteArray("file:///videos/a%20b%20%231.mp4\n"));
        QTRY_COMPARE(openings(), 0);
        QCOMPARE(m_notOpened, failures);
    }

    void programThatCannotBeStartedIsReported()
    {
        useXdgOpen({});
        QFile script(m_folder.filePath(QStringLiteral("xdg-open")));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/no/such/interpreter\n");
        script.close();
        open(QStringLiteral("/videos/a.mp4"));
        QTRY_COMPARE(m_notOpened, 1);
    }

    void callerThatHasGoneIsNotTold()
    {
        useXdgOpen(QStringLiteral("exit 3"));
        auto context = std::make_unique<QObject>();
        openFile(QStringLiteral("/videos/a.mp4"), *context, [this] { ++m_notOpened; });
        context.reset();
        QTRY_COMPARE(openings(), 0);
        QCOMPARE(m_notOpened, 0);
    }

    void qtOpensWhereThereIsNoXdgOpen()
    {
        qputenv("PATH", "/nowhere");
        {
            const OpenedAddresses system({"file"});
            open(QStringLiteral("/videos/a.mp4"));
            QCOMPARE(system.files(), QStringList{"/videos/a.mp4"});
            QCOMPARE(m_notOpened, 0);
        }
        open(QStringLiteral("/videos/a.mp4"));
        QCOMPARE(m_notOpened, 1);
    }

private:
    void open(const QString& path)
    {
        openFile(path, *this, [this] { ++m_notOpened; });
    }

    void useXdgOpen(const QString& end)
    {
        QFile script(m_folder.filePath(QStringLiteral("xdg-open")));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(QStringLiteral("#!/bin/sh\necho \"$1\" >'%1'\n%2\n").arg(argumentPath(), end).toUtf8());
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QFile::remove(argumentPath());
        qputenv("PATH", m_folder.path().toUtf8() + ':' + m_path);
    }

    QString argumentPath() const { return m_folder.filePath(QStringLiteral("argument")); }

    QByteArray argument() const
    {
        QFile file(argumentPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Children that have not been waited for.
    static int openings()
    {
        QFile children(QStringLiteral("/proc/self/task/%1/children").arg(QCoreApplication::applicationPid()));
        return children.open(QIODevice::ReadOnly) ? static_cast<int>(children.readAll().count(' ')) : -1;
    }

    const QByteArray m_path = qgetenv("PATH");
    QTemporaryDir m_folder;
    int m_notOpened = 0;
};

REGISTER_TEST(testrun::gui<TestFileOpening>);

#include "test_fileopening_x11.moc"
