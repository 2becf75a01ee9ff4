// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/windows_path.h"

#include <QDir>

namespace platform {

namespace {

const auto kMark = QStringLiteral(R"(\\?\)");
const auto kDeviceMark = QStringLiteral(R"(\\.\)");
const auto kMachineMark = QStringLiteral(R"(\\?\UNC\)");
const auto kMachine = QStringLiteral(R"(\\)");

bool hasDrive(const QString& path)
{
    return path.size() > 2 && path.at(0).isLetter() && path.at(1) == u':' && path.at(2) == u'\\';
}

QString withBackslashes(QString path)
{
    return path.replace(u'/', u'\\');
}

/// Behind the mark the system takes dots and doubled separators for names.
QString cleaned(QString path)
{
    return withBackslashes(QDir::cleanPath(path.replace(u'\\', u'/')));
}

} // namespace

QString extendedWindowsPath(const QString& path)
{
    QString native = withBackslashes(path);
    if (native.startsWith(kMark) || native.startsWith(kDeviceMark))
        return native;
    if (native.startsWith(kMachine))
        return kMachineMark + cleaned(native.mid(kMachine.size()));
    return hasDrive(native) ? kMark + cleaned(native) : native;
}

QString withoutWindowsMark(const QString& path)
{
    if (path.startsWith(kMachineMark))
        return kMachine + path.mid(kMachineMark.size());
    return path.startsWith(kMark) ? path.mid(kMark.size()) : path;
}

std::optional<QString> explorerArguments(const QString& path)
{
    // No file's name holds a quote; one that came from somewhere else could end the argument early.
    if (path.isEmpty() || path.contains(u'"'))
        return {};
    // Explorer splits unquoted arguments at commas, hence quotes also where there is no blank, which an argument list
    // would leave out.
    return QStringLiteral("/select, \"%1\"").arg(withBackslashes(path));
}

} // namespace platform
