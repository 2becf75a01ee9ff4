// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settingsfile.h"

#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QString>

namespace settingsfile {

namespace {

QVariant parsedValue(const QString& text)
{
    if (text == QLatin1String("true") || text == QLatin1String("false"))
        return text == QLatin1String("true");
    // Typed by hand, it may have no second quote, more behind that, or escapes that JSON does not know.
    static const QRegularExpression quoted(QStringLiteral(R"(^"((?:[^"\\]++|\\.)*+))"));
    const QRegularExpressionMatch match = quoted.match(text);
    if (!match.hasMatch())
        return text;
    const QString content = match.captured(1);
    const QJsonDocument list = QJsonDocument::fromJson("[\"" + content.toUtf8() + "\"]");
    return list.isArray() ? list[0].toString() : content;
}

QByteArray writtenValue(const QVariant& value)
{
    const bool isBool = value.typeId() == QMetaType::Bool;
    const QJsonArray list{isBool ? QJsonValue(value.toBool()) : QJsonValue(value.toString())};
    return QJsonDocument(list).toJson(QJsonDocument::Compact).chopped(1).mid(1);
}

} // namespace

bool read(QIODevice& device, QSettings::SettingsMap& values)
{
    const QByteArray bytes = device.read(kMaximumSize + 1);
    if (bytes.size() > kMaximumSize || bytes.contains('\0'))
        return false;
    QString group;
    for (const QString& untrimmed : QString::fromUtf8(bytes).split(u'\n')) {
        const QString line = untrimmed.trimmed();
        const qsizetype separator = line.indexOf(u'=');
        if (line.startsWith(u'[')) {
            const QString name = line.mid(1, line.indexOf(u']') - 1);
            group = name.isEmpty() ? QString() : name + u'/';
        } else if (separator > 0 && !line.startsWith(u';') && !line.startsWith(u'#')) {
            values.insert(group + line.left(separator).trimmed(), parsedValue(line.mid(separator + 1).trimmed()));
        }
    }
    return true;
}

bool write(QIODevice& device, const QSettings::SettingsMap& values)
{
    QByteArray bytes;
    QString currentGroup;
    for (auto entry = values.cbegin(); entry != values.cend(); ++entry) {
        const qsizetype slash = entry.key().indexOf(u'/');
        const QString group = entry.key().left(qMax(slash, 0));
        if (group != currentGroup)
            bytes += (bytes.isEmpty() ? "[" : "\n[") + group.toUtf8() + "]\n";
        currentGroup = group;
        bytes += entry.key().mid(slash + 1).toUtf8() + '=' + writtenValue(entry.value()) + '\n';
    }
    return device.write(bytes) == bytes.size();
}

} // namespace settingsfile
