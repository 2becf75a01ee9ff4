// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/recordingrescue.h"

#include "app/sclogger.h"
#include "platform/files/held_file.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <utility>

namespace {

/// The output reports its end before it writes indexes and headers. On a bad disk it may never close the file.
void waitUntilClosed(const platform::HeldFile& file)
{
    constexpr qint64 kLimitMs = 15'000;
    constexpr unsigned long kPollMs = 50;
    QElapsedTimer waited;
    waited.start();
    while (file.isWrittenTo() && !waited.hasExpired(kLimitMs))
        QThread::msleep(kPollMs);
}

} // namespace

RecordingRescue::RecordingRescue(QObject* parent) : QObject(parent)
{
    m_thread.setMaxThreadCount(1);
}

RecordingRescue::~RecordingRescue()
{
    m_thread.waitForDone();
}

bool RecordingRescue::begin(std::shared_ptr<const platform::HeldFile> file, const QString& target)
{
    const QFileInfo info(target);
    if (!QDir().mkpath(info.path()) || !QFile(target).open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        SCLogger::error(
            QStringLiteral("What was recorded cannot be saved in the default folder: %1").arg(info.fileName()));
        return false;
    }
    m_thread.start([this, file = std::move(file), target] {
        waitUntilClosed(*file);
        QString error;
        const bool isWhole = file->copyTo(target, error);
        const QString name = QFileInfo(target).fileName();
        if (!isWhole && QFileInfo(target).size() == 0)
            QFile::remove(target);
        if (isWhole)
            SCLogger::info(QStringLiteral("What was recorded is saved in the default folder: %1").arg(name));
        else
            SCLogger::error(QStringLiteral("Not all of what was recorded could be saved (%1): %2").arg(error, name));
        QMetaObject::invokeMethod(
            this, [this, target, isWhole] { emit done(target, isWhole); }, Qt::QueuedConnection);
    });
    return true;
}
