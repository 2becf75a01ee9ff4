// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/crashhandler.h"

#include "app/appidentity.h"
#include "platform/files/private_files.h"
#include "platform/process/crash_report.h"

#include <QByteArray>
#include <QString>

const QString& crashFolder()
{
    static const QString folder = appidentity::logFolder();
    return folder;
}

void installCrashHandler()
{
    platform::makePrivateFolder(crashFolder());
    const QByteArray program = QByteArray(appidentity::kApplicationName) + ' ' + appidentity::kVersion;
    platform::installCrashReporter(crashFolder(), program);
}
