// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"

#include "app/appidentity.h"
#include "platform/files/private_files.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QMutexLocker>
#include <QPointer>

namespace {

QString timeStamp()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

} // namespace

SCLogger* SCLogger::instance()
{
    // Cleared when the application object takes the logger along.
    static QPointer<SCLogger> logger;
    if (!logger)
        logger = new SCLogger(QCoreApplication::instance());
    return logger;
}

SCLogger::SCLogger(QObject* parent) : QObject(parent) {}

SCLogger::~SCLogger()
{
    if (m_file->isOpen()) {
        m_stream.flush();
        m_file->close();
    }
}

QString SCLogger::defaultPath()
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss"));
    return appidentity::logFolder() + QLatin1String("/vexmoor_") + stamp + QLatin1String(".log");
}

bool SCLogger::initialize(const QString& path)
{
    const QMutexLocker locker(&m_mutex);
    if (m_initialized)
        return true;

    m_filePath = path.isEmpty() ? defaultPath() : path;
    const QString folder = QFileInfo(m_filePath).absolutePath();
    // A folder of somebody's choice is not touched.
    if (folder == appidentity::logFolder())
        platform::makePrivateFolder(folder);
    else
        QDir().mkpath(folder);
    if (!openForAppending())
        return false;

    const QString stamp = timeStamp();
    m_stream << stamp << " - === Application Started ===\n";
    m_stream << stamp << " - " << QStringLiteral("Log file initialized: %1").arg(m_filePath) << '\n';
    m_stream.flush();
    m_initialized = true;
    return true;
}

bool SCLogger::openForAppending()
{
    m_file->setFileName(m_filePath);
    if (!m_file->open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text, platform::kPrivateFile)) {
        qCritical().noquote() << "Failed to open log file:" << m_filePath;
        return false;
    }
    m_stream.setDevice(m_file);
    return true;
}

void SCLogger::writeLine(const QString& text)
{
    const QMutexLocker locker(&m_mutex);
    if (!m_initialized) {
        qWarning().noquote() << "Logger not initialized, cannot write:" << text;
        return;
    }
    if (!m_file->isOpen() && !openForAppending())
        return;
    // After one line for which the disk had no room, the stream would write no other.
    m_stream.resetStatus();
    m_stream << timeStamp() << " - " << text << '\n';
    m_stream.flush();
}

void SCLogger::debug(const QString& message)
{
    instance()->writeLine(QStringLiteral("Debug: %1").arg(message));
    qDebug().noquote() << "[DEBUG]" << message;
}

void SCLogger::info(const QString& message)
{
    instance()->writeLine(QStringLiteral("Info: %1").arg(message));
    qInfo().noquote() << "[INFO]" << message;
}

void SCLogger::warning(const QString& message)
{
    instance()->writeLine(QStringLiteral("Warning: %1").arg(message));
    qWarning().noquote() << "[WARNING]" << message;
}

void SCLogger::error(const QString& message)
{
    instance()->writeLine(QStringLiteral("Error: %1").arg(message));
    qCritical().noquote() << "[ERROR]" << message;
}
