// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QMutex>
#include <QObject>
#include <QTextStream>

/// The program's log: appends time-stamped lines to a text file and echoes each message to Qt's message output. Each
/// line is flushed at once. debug(), info(), warning() and error() may be called from any thread and never fail.
class SCLogger : public QObject
{
    Q_OBJECT

public:
    /// Made on first use, on the main thread, with the application object as parent.
    static SCLogger* instance();

    ~SCLogger() override;

    /// "vexmoor_<time>.log" in the log folder.
    static QString defaultPath();

    /// Opens the log at path; an empty path means defaultPath(). Does nothing when a log is open already.
    ///
    /// @return false when the file cannot be opened; a later call may try again.
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
    QFile* m_file = new QFile(this);
    QTextStream m_stream;
    QString m_filePath;
    bool m_initialized = false;
};
