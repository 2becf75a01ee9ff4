// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testprofile.h"

#include <QByteArray>
#include <QDir>

namespace {

void pointTo(const char* variable, const QString& folder)
{
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv(variable, QDir::toNativeSeparators(folder).toLocal8Bit());
}

} // namespace

TestProfile::TestProfile()
{
    pointTo("HOME", path() + QLatin1String("/home"));
    pointTo("XDG_CONFIG_HOME", path() + QLatin1String("/config"));
    pointTo("XDG_DATA_HOME", path() + QLatin1String("/data"));
    pointTo("XDG_CACHE_HOME", path() + QLatin1String("/cache"));
    pointTo("TMPDIR", path() + QLatin1String("/tmp"));
}

QString TestProfile::path() const
{
    return m_root.path();
}
