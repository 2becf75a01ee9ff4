// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "files/scfilemanager.h"
#include "tests/support/filelibrary.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>
#include <QThread>

#include <algorithm>

namespace {

/// From the first step on. The steps of a life take a few milliseconds each.
constexpr unsigned long kLongestLifeUs = 60000;

QStringList pathsOf(const SCFileManager& library)
{
    QStringList paths;
    for (const FileRecord& record : library.files())
        paths.append(record.filepath);
    return paths;
}

void apply(const QByteArray& step, QStringList& paths)
{
    if (step.startsWith("add "))
        paths.prepend(QString::fromUtf8(step.mid(4)));
    else if (step.startsWith("remove "))
        paths.removeOne(QString::fromUtf8(step.mid(7)));
    else if (step == "reverse")
        std::reverse(paths.begin(), paths.end());
}

/// What the list holds after the steps that were finished, and after the one that was begun as well.
struct Expected
{
    QStringList finished;
    QStringList begun;
    int steps = 0;
};

Expected replay(const QByteArray& journal, const QStringList& before)
{
    Expected expected{before, before, 0};
    for (const QByteArray& line : journal.split('\n')) {
        if (line == "done") {
            expected.finished = expected.begun;
            ++expected.steps;
        } else {
            apply(line, expected.begun);
        }
    }
    return expected;
}

} // namespace

/// The list of files of a process that is killed while it adds, deletes and reverses.
class TestFileKills : public QObject
{
    Q_OBJECT

private slots:
    void everyLoadAfterAKillHasWhatTheLastFinishedSaveHeld()
    {
        int steps = 0;
        int inTheMiddle = 0;
        QStringList before;
        QByteArray journals;
        for (int kill = 0; kill < KESTRANO_TEST_KILLS; ++kill) {
            const QByteArray journal = liveAndDie(kill);
            QVERIFY2(!journal.isEmpty(), "The process did not come up");
            journals += journal;
            const Expected expected = replay(journal, before);
            const QJsonDocument left = QJsonDocument::fromJson(filelibrary::text());
            QVERIFY2(left.isArray() || before.isEmpty(), qPrintable(QStringLiteral("kill %1").arg(kill)));
            const SCFileManager library;
            const QStringList found = pathsOf(library);
            QVERIFY2(found == expected.finished || found == expected.begun,
                     qPrintable(QStringLiteral("kill %1: %2 files, expected %3 or %4")
                                    .arg(kill)
                                    .arg(found.size())
                                    .arg(expected.finished.size())
                                    .arg(expected.begun.size())));
            steps += expected.steps;
            inTheMiddle += expected.finished != expected.begun ? 1 : 0;
            before = found;
        }
        qInfo("%d kills, %d of them in a step, after %d finished steps", KESTRANO_TEST_KILLS, inTheMiddle, steps);
        for (const char* step : {"add ", "remove ", "reverse"})
            QVERIFY2(journals.contains(step), step);
        // Else nothing would have been at risk.
        QVERIFY(inTheMiddle >= KESTRANO_TEST_KILLS / 4);
        QVERIFY(filelibrary::neighbours().filter(QStringLiteral("unreadable")).isEmpty());
    }

private:
    /// Lets the process live for a random time and kills it. Its journal, without a line that was not finished.
    QByteArray liveAndDie(int seed)
    {
        const QString journalPath = m_produced.folder() + QStringLiteral("/journal%1").arg(seed);
        QProcess keeper;
        keeper.setStandardOutputFile(QProcess::nullDevice());
        keeper.setStandardErrorFile(QProcess::nullDevice());
        keeper.start(QCoreApplication::applicationDirPath() + QStringLiteral("/kestrano_test_filekeeper"),
                     {m_refuge.name(), journalPath, m_produced.folder(), QString::number(seed)});
        QFile journal(journalPath);
        QElapsedTimer waited;
        waited.start();
        while (journal.size() == 0 && waited.elapsed() < 30000 && keeper.state() != QProcess::NotRunning) {
            QThread::msleep(1);
            keeper.waitForStarted(0);
        }
        QThread::usleep(m_random.bounded(quint32{kLongestLifeUs}));
        keeper.kill();
        keeper.waitForFinished();
        if (keeper.exitStatus() != QProcess::CrashExit || !journal.open(QIODevice::ReadOnly))
            return {};
        const QByteArray text = journal.readAll();
        return text.left(text.lastIndexOf('\n') + 1);
    }

    const LibraryRefuge m_refuge;
    ProducedFiles m_produced;
    QRandomGenerator m_random{20261121};
};

REGISTER_TEST(testrun::gui<TestFileKills>);

#include "test_filekills.moc"
