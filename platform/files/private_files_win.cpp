// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/private_files.h"

#include <QDir>

bool platform::makePrivateFolder(const QString& path)
{
    return QDir().mkpath(path);
}
