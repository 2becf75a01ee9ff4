// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/notices.h"

#include "app/sclogger.h"

void Notices::post(const Notice& notice)
{
    SCLogger::info(QStringLiteral("Notice: %1").arg(notice.text));
    emit posted(notice);
}
