#pragma once

#include <QFile>
#include <QMutex>
#include <QObject>
#include <QTextStream>

/// The program's one log: appends time-stamped lines to a text file and echoes every message with its level to the
/// toolkit's message output.
///
/// The level operations may be called from any thread and never fail towards the caller. Each line is flushed at once,
/// so that the file is complete up to the last message when the process dies.
class SCLogger : public QObject
{
    Q_OBJECT

public:
    /// The single logger, made on first use with the application object as parent. The first call comes from the main
    /// thread during start-up; concurrent first use is not guarded.
    static SCLogger* instance();

    ~SCLogger() override;

    /// The path of the log of a program that is started now: "vexmoor_<time>.log" in the log folder.
    static QString defaultPath();

    /// Opens the log at path; an empty path means defaultPath(). Missing folders are made. A no-op returning true when
    /// a log is open already.
    ///
    /// @return false when the file cannot be opened ("Failed to open log file:" goes to the message output); a
    ///         later call may try again.
    bool initialize(const QString& path = QString());

    static void debug(const QString& message);
    static void info(const QString& message);
    static void warning(const QString& message);
    static void error(const QString& message);

private:
    explicit SCLogger(QObject* parent);

    bool openForAppending();
    void writeLine(const QString& text);

    QMutex m_mutex; ///< guards what follows
    QFile m_file{this};
    QTextStream m_stream;
    QString m_filePath;
    bool m_initialized = false;
};
