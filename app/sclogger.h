// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QMutex>
#include <QObject>
#include <QTextStream>

/// Appends time-stamped lines to a file, flushed at once, and echoes each message to Qt's message output. debug(),
/// info(), warning() and error() never fail; any thread.
class SCLogger : public QObject
{
    Q_OBJECT

public:
    /// Made at first use, on the main thread; child of the application.
    static SCLogger* instance();

    ~SCLogger() override;

    /// "vexmoor_<time>.log" in the log folder.
    static QString defaultPath();

    /// An empty path means defaultPath(). Ignored while a log is open.
    /// @return false when the file cannot be opened; a later call may try again
    bool initialize(const QString& path = QString());

    static void debug(const QString& message);
    static void info(const QString& message);
    static void warning(const QString& message);
    static void error(const QString& message);

private:
    explicit SCLogger(QObject* parent);

    bool openForAppending();
    void writeLine(const QString& text);

    QMutex m_mutex;
    // Guarded by m_mutex.
    QFile* m_file = new QFile(this);
    QTextStream m_stream;
    QString m_filePath;
    bool m_initialized = false;
};
