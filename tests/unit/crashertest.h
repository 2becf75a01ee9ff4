// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>

/// One run of the test program that crashes, and what it left in the folder of crash reports.
class CrasherRun
{
public:
    /// Runs it to its end and collects the reports it made; the folder is empty afterwards.
    ///
    /// @param enoughBytes when not 0, the program is ended once it has written that much of its report: a dump of the
    ///        whole memory takes minutes under Wine.
    explicit CrasherRun(const QString& way, qint64 enoughBytes = 0) : CrasherRun(QStringList{way}, enoughBytes) {}

    /// @param arguments the way to crash, and how many seconds its report may take.
    explicit CrasherRun(const QStringList& arguments, qint64 enoughBytes = 0);

    /// Runs it with another folder for its reports, which must exist.
    static CrasherRun into(const QString& folder, const QString& way, qint64 enoughBytes = 0)
    {
        return CrasherRun(QStringList{way}, enoughBytes, folder);
    }

    /// Names of the files in the crash folder.
    const QStringList& reportNames() const { return m_names; }
    /// Content of the one report; of the last by name where there are several.
    QByteArray report() const { return m_reports.isEmpty() ? QByteArray() : m_reports.constLast(); }
    /// Content of all of them, by name.
    const QList<QByteArray>& reports() const { return m_reports; }
    /// Whether the one report has the name of a crash between this run's start and end.
    bool isNamedAfterTheCrash() const;
    const QString& folder() const { return m_folder; }
    QProcess::ExitStatus exitStatus() const { return m_exitStatus; }
    int exitCode() const { return m_exitCode; }
    qint64 processId() const { return m_processId; }

private:
    CrasherRun(const QStringList& arguments, qint64 enoughBytes, const QString& folder);
    void waitUntilEnded(QProcess& process, qint64 enoughBytes);
    qint64 writtenBytes() const;
    void collectReports();

    QString m_folder;
    QStringList m_names;
    QList<QByteArray> m_reports;
    QDateTime m_started;
    QDateTime m_ended;
    qint64 m_processId = 0;
    QProcess::ExitStatus m_exitStatus = QProcess::NormalExit;
    int m_exitCode = -1;
};
