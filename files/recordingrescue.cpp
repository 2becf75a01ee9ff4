// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/recordingrescue.h"

#include "app/sclogger.h"
#include "platform/files/held_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

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
        QString error;
        const bool isWhole = file->copyTo(target, error);
        const QString name = QFileInfo(target).fileName();
        if (isWhole)
            SCLogger::info(QStringLiteral("What was recorded is saved in the default folder: %1").arg(name));
        else
            SCLogger::error(QStringLiteral("Not all of what was recorded could be saved (%1): %2").arg(error, name));
        QMetaObject::invokeMethod(
            this, [this, target, isWhole] { emit done(target, isWhole); }, Qt::QueuedConnection);
    });
    return true;
}
