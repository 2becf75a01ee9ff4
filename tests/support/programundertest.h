// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/x11clients.h"

#include <QDir>
#include <QList>
#include <QMap>
#include <QPoint>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>

#include <cstdint>
#include <optional>

/// The program itself, started in a profile of its own on the display that the test runs on, and driven as a user
/// would: by keys, pointer and windows. What it says on its message output is kept with the moment it was said.
///
/// Needs an X display with a window manager (tools/private-desktop). The destructor ends the program, politely first.
class ProgramUnderTest
{
public:
    /// One message of the program.
    struct Line
    {
        /// CLOCK_MONOTONIC in nanoseconds, exact to the millisecond.
        int64_t monotonicNs = 0;
        QString text;
    };

    /// @param executable path of the program; that of this build when empty.
    explicit ProgramUnderTest(const QString& executable = {});
    virtual ~ProgramUnderTest();
    ProgramUnderTest(const ProgramUnderTest&) = delete;
    ProgramUnderTest& operator=(const ProgramUnderTest&) = delete;

    /// Root of the program's profile.
    QDir profile() const { return QDir(m_profile.path()); }
    /// Where recordings go unless a test says otherwise; does not exist before the first recording.
    QString saveFolder() const { return profile().filePath(QStringLiteral("videos")); }

    /// A value of the settings store; before start().
    void setSetting(const QString& key, const QVariant& value);

    /// Starts the program through another one, which becomes it in the end ("unshare", "-m", "sh", ...); before
    /// start().
    void startThrough(const QStringList& command) { m_wrapper = command; }
    QString executable() const { return m_executable; }
    /// Counts down for three seconds, as the user has it, and not for a moment only; before start().
    void countDownInFull() { m_countdownStepMs.reset(); }
    /// Leaves so long between two numbers of the countdown, for what is done while it is there; before start().
    void countDownBy(int stepMs) { m_countdownStepMs = stepMs; }

    /// Starts the program without waiting for anything.
    bool start();
    /// Starts the program and waits until its engine runs.
    bool startAndWaitUntilReady();
    /// CLOCK_MONOTONIC just before the process was made.
    int64_t startedAtNs() const { return m_startedAtNs; }
    qint64 processId() const { return m_process.processId(); }
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    bool waitUntilEnded(int timeoutMs);
    /// Whether the program ended by itself with exit code 0.
    bool endedWell() const;
    /// -1 while it runs, and when a signal has ended it.
    int exitCode() const;
    void kill();

    /// The first message from line @p from on that contains @p text; waits up to @p timeoutMs for it.
    std::optional<Line> waitForMessage(const QString& text, int timeoutMs, qsizetype from = 0);
    /// The messages so far. The length of the list is a position to wait from.
    const QList<Line>& messages();
    /// All messages as one text, for a test's failure report.
    QString transcript();
    /// The newest log file's text.
    QString logText() const;
    /// The newest crash report's text, empty when the program did not crash.
    QString crashReport() const;

    /// Presses and releases a key ("F9") or a combination ("ctrl+a"), wherever the focus is. Returns CLOCK_MONOTONIC at
    /// the moment it was surely pressed.
    static int64_t pressKey(const QString& key);
    static void typeText(const QString& text);
    static void click(const QPoint& rootPx);

    /// The program's main window: the one the window manager manages under the program's name. Waits for it to be
    /// shown, or minimised, as asked.
    std::optional<x11clients::Window> mainWindow(bool minimised, int timeoutMs);

    /// What the program says at the moment when the engine is asked to start.
    virtual QString startMessage() const { return QStringLiteral("Starting recording..."); }
    /// The folder of the program's own data: its log files lie below it, and its list of files.
    virtual QDir dataFolder() const;

protected:
    // What depends on the system that the program is made for.
    /// Stores settings() where the program looks for them.
    virtual bool writeSettings();
    virtual QStringList command() const;
    virtual QProcessEnvironment environment();
    /// The program's managed windows, minimised ones included.
    virtual QList<x11clients::Window> windows();
    virtual void askToEnd();
    /// Takes what the program has said since the last call, by keep().
    virtual void readMessages();
    void keep(const Line& line) { m_messages.append(line); }

    const QMap<QString, QVariant>& settings() const { return m_settings; }
    QProcess& process() { return m_process; }
    /// Asks the program to end, and insists; every class below calls it in its destructor.
    void end();

private:
    void makeFolder(QProcessEnvironment& environment, const char* variable, const char* name) const;
    void keepLine(const QByteArray& line);
    void insistOnEnd();
    QString textOfMessages() const;
    static QString newestText(const QDir& dataFolder, const QString& pattern);

    QTemporaryDir m_profile;
    QString m_executable;
    QStringList m_wrapper;
    std::optional<int> m_countdownStepMs = 100;
    QMap<QString, QVariant> m_settings;
    QProcess m_process;
    QByteArray m_partialLine;
    QList<Line> m_messages;
    int64_t m_startedAtNs = 0;
};
