// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/testrun.h"
#include "tests/win32/win32user.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <memory>

using namespace win32user;

namespace {

// Positions in the main window.
constexpr QPoint kDeleteSelected(731, 433);
constexpr QPoint kEmptyPosition(76, 420);

/// Across a row of the list, from the left edge of the main window.
enum Column
{
    Name = 300,
    FolderIcon = 774,
    DeleteIcon = 799
};

QPoint rowPosition(int row, Column column)
{
    constexpr int kFirstRow = 117;
    constexpr int kRowHeight = 32;
    return {column, kFirstRow + row * kRowHeight};
}

// The box that asks before a deletion has a check box, Delete and Cancel, in this order; Cancel has the keyboard.
const QStringList kDelete{"shift+Tab", "space"};
const QStringList kDeleteFromDisk{"shift+Tab", "shift+Tab", "space", "Tab", "space"};
const QStringList kCheckAndCancel{"shift+Tab", "shift+Tab", "space", "Tab", "Tab", "space"};

} // namespace

/// The Windows program's list of files, worked by keys and pointer.
class TestWin32Library : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_desktop.begin(), QString()); }
    void init() { m_program = std::make_unique<Win32Program>(); }
    void cleanup() { m_program.reset(); }

    void libraryDropsWhatIsGoneAndShowsAFileInItsFolder();
    void oneFileIsDeletedFromTheListOrFromDiskAsAsked();
    void selectedFilesAreDeletedFromDiskTogether();

private:
    QDir made() const { return m_program->profile().filePath(QStringLiteral("made")); }

    /// Makes files that the list has, and opens the page that shows them.
    /// @param gone of these files, the ones that are not on the disk.
    void startWithFiles(const QStringList& names, const QStringList& gone = {});
    /// The names in the list as it is stored.
    QStringList listed() const;
    /// Clicks elsewhere first: a second click at the same position would make it a double one.
    bool clickMain(const QPoint& position) const { return click(m_main, kEmptyPosition) && click(m_main, position); }
    /// Answers the box that asks before a deletion. Whether it came and went.
    static bool answerBox(const QStringList& keys);

    WineDesktop m_desktop;
    std::unique_ptr<Win32Program> m_program;
    WindowsWindow m_main;
};

void TestWin32Library::startWithFiles(const QStringList& names, const QStringList& gone)
{
    QVERIFY(m_program->dataFolder().mkpath(QStringLiteral(".")) && made().mkpath(QStringLiteral(".")));
    QJsonArray list;
    for (const QString& name : names) {
        QFile file(made().filePath(name));
        QVERIFY(gone.contains(name) || file.open(QIODevice::WriteOnly));
        list.append(QJsonObject{{"filepath", WineDesktop::windowsPath(file.fileName()).replace('\\', '/')},
                                {"properties", QJsonObject{{"type", "video"}}}});
    }
    QFile file(m_program->dataFolder().filePath(QStringLiteral("file_data.json")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(list).toJson()) > 0);
    file.close();
    const auto window = startInFront(*m_program);
    QVERIFY2(window, qPrintable(m_program->transcript()));
    m_main = *window;
    QVERIFY(clickMain(kFilesTab));
}

QStringList TestWin32Library::listed() const
{
    QFile file(m_program->dataFolder().filePath(QStringLiteral("file_data.json")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList names;
    const QJsonArray array = QJsonDocument::fromJson(file.readAll()).array();
    for (const auto& record : array)
        names.append(record.toObject().value(QLatin1String("filepath")).toString().section(QLatin1Char('/'), -1));
    return names;
}

bool TestWin32Library::answerBox(const QStringList& keys)
{
    const auto title = QStringLiteral("Delete");
    if (!awaitReady(title))
        return false;
    press(keys);
    return awaitGone(title) && awaitReady(QStringLiteral("Kestrano"));
}

void TestWin32Library::libraryDropsWhatIsGoneAndShowsAFileInItsFolder()
{
    startWithFiles({"new.mp4", "gone.mp4", "old.mp4"}, {"gone.mp4"});
    QCOMPARE(listed(), QStringList({"new.mp4", "old.mp4"}));
    QVERIFY(clickMain(rowPosition(1, FolderIcon)));
    const auto explorer = awaitWindow([](const WindowsWindow& window) {
        return window.program == QLatin1String("explorer.exe") && window.title == QLatin1String("made");
    });
    QVERIFY(explorer && closeBySystem(*explorer));
    QVERIFY(awaitReady(m_main.title));
    // The second row is the third file's, and its icon opened no box.
    QVERIFY(clickMain(rowPosition(1, DeleteIcon)));
    QVERIFY(answerBox(kDelete));
    QTRY_COMPARE_WITH_TIMEOUT(listed(), QStringList{"new.mp4"}, kTimeoutMs);
}

void TestWin32Library::oneFileIsDeletedFromTheListOrFromDiskAsAsked()
{
    const QStringList all{"a.mp4", "b.mp4", "c.mp4"};
    startWithFiles(all);
    for (const QStringList& answer : {QStringList{"Escape"}, QStringList{"Return"}, kCheckAndCancel}) {
        QVERIFY(clickMain(rowPosition(1, DeleteIcon)));
        QVERIFY(answerBox(answer));
    }
    QVERIFY(clickMain(rowPosition(1, DeleteIcon)));
    const auto box = awaitReady(QStringLiteral("Delete"));
    QVERIFY(box && closeBySystem(*box) && awaitGone(box->title) && awaitReady(m_main.title));
    QCOMPARE(listed(), all);
    QCOMPARE(made().entryList(QDir::Files), all);

    QVERIFY(clickMain(rowPosition(1, DeleteIcon)));
    QVERIFY(answerBox(kDelete));
    QTRY_COMPARE_WITH_TIMEOUT(listed(), QStringList({"a.mp4", "c.mp4"}), kTimeoutMs);
    QCOMPARE(made().entryList(QDir::Files), all);
    QVERIFY(clickMain(rowPosition(1, DeleteIcon)));
    QVERIFY(answerBox(kDeleteFromDisk));
    QTRY_COMPARE_WITH_TIMEOUT(listed(), QStringList({"a.mp4"}), kTimeoutMs);
    QTRY_COMPARE_WITH_TIMEOUT(made().entryList(QDir::Files), QStringList({"a.mp4", "b.mp4"}), kTimeoutMs);
}

void TestWin32Library::selectedFilesAreDeletedFromDiskTogether()
{
    const QStringList all{"a.mp4", "b.mp4", "c.mp4"};
    startWithFiles(all);
    QVERIFY(clickMain(rowPosition(0, Name)) && xdotool({"keydown", "ctrl"}));
    const bool selected = click(m_main, rowPosition(2, Name));
    QVERIFY(xdotool({"keyup", "ctrl"}) && selected);
    QVERIFY(clickMain(kDeleteSelected));
    QVERIFY(answerBox(kCheckAndCancel));
    QCOMPARE(listed(), all);
    QCOMPARE(made().entryList(QDir::Files), all);
    QVERIFY(clickMain(kDeleteSelected));
    QVERIFY(answerBox(kDeleteFromDisk));
    QTRY_COMPARE_WITH_TIMEOUT(listed(), QStringList{"b.mp4"}, kTimeoutMs);
    QTRY_COMPARE_WITH_TIMEOUT(made().entryList(QDir::Files), QStringList{"b.mp4"}, kTimeoutMs);
}

REGISTER_TEST(testrun::gui<TestWin32Library>);
#include "test_win32library.moc"
