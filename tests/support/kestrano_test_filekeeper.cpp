// SPDX-License-Identifier: GPL-3.0-or-later
// Adds, deletes and reverses in the list of files until it is killed, and notes in a journal before and after
// each step, in a line that is on its way to the disk when the step begins.
//
// Usage: kestrano_test_filekeeper LIBRARY JOURNAL FOLDER SEED
//
//   LIBRARY  name of the test's library, see LibraryRefuge
//   FOLDER   where the files that are added lie; they are made as they are needed

#include "app/appidentity.h"
#include "files/scfilemanager.h"
#include "tests/support/filelibrary.h"

#include <QApplication>
#include <QFile>
#include <QListView>
#include <QRandomGenerator>

#include <cstdio>

namespace {

constexpr int kFewestFiles = 3;
constexpr int kMostFiles = 200;

class Keeper
{
public:
    Keeper(QFile& journal, const QString& folder, quint32 seed) : m_journal(journal), m_folder(folder), m_random(seed)
    {
        m_library.setupView(&m_view, QString());
    }

    void step()
    {
        const qsizetype count = m_library.files().size();
        const quint32 choice = m_random.bounded(10U);
        if (count < kFewestFiles || (count < kMostFiles && choice < 6))
            add();
        else if (choice < 8)
            remove(m_library.files().at(m_random.bounded(count)).filepath);
        else
            reverse();
    }

private:
    void add()
    {
        const QString path = QStringLiteral("%1/%2.mp4").arg(m_folder).arg(m_random.generate64(), 16, 16, QChar(u'0'));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s cannot be made", qPrintable(path));
        file.close();
        note("add " + path.toUtf8());
        m_library.addFile(path, QStringLiteral("video"));
        note("done");
    }

    void remove(const QString& path)
    {
        note("remove " + path.toUtf8());
        m_library.removeFile(path);
        note("done");
    }

    void reverse()
    {
        note("reverse");
        m_library.reverseFileOrder();
        note("done");
    }

    void note(const QByteArray& line)
    {
        if (m_journal.write(line + '\n') < 0 || !m_journal.flush())
            qFatal("The journal cannot be written");
    }

    QFile& m_journal;
    QString m_folder;
    QRandomGenerator m_random;
    QListView m_view;
    SCFileManager m_library;
};

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 5) {
        std::fprintf(stderr, "Usage: kestrano_test_filekeeper LIBRARY JOURNAL FOLDER SEED\n");
        return 2;
    }
    appidentity::apply();
    const LibraryRefuge refuge(QString::fromLocal8Bit(argv[1]));
    QApplication application(argc, argv);
    QFile journal(QString::fromLocal8Bit(argv[2]));
    if (!journal.open(QIODevice::WriteOnly | QIODevice::Append))
        return 2;
    Keeper keeper(journal, QString::fromLocal8Bit(argv[3]), QByteArray(argv[4]).toUInt());
    journal.write("ready\n");
    journal.flush();
    while (true)
        keeper.step();
}
