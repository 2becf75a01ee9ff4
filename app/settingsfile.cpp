#include "app/settingsfile.h"

#include <QIODevice>
#include <QStringView>

namespace settingsfile {

namespace {

constexpr int kHexDigits = 4;

bool standsForItself(QStringView text, qsizetype position)
{
    const QChar character = text.at(position);
    if (character.isHighSurrogate())
        return position + 1 < text.size() && text.at(position + 1).isLowSurrogate();
    if (character.isLowSurrogate())
        return position > 0 && text.at(position - 1).isHighSurrogate();
    return character.unicode() >= 0x20 && character.unicode() != 0x7f && character != QChar::ByteOrderMark;
}

QString escapedUnit(QChar character)
{
    switch (character.unicode()) {
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        return QStringLiteral("\\u%1").arg(character.unicode(), kHexDigits, 16, QLatin1Char('0'));
    }
}

/// Escapes what cannot stand in a line, the backslash, and the characters of special.
QString escaped(QStringView text, QStringView special)
{
    QString result;
    for (qsizetype position = 0; position < text.size(); ++position) {
        const QChar character = text.at(position);
        if (!standsForItself(text, position)) {
            result += escapedUnit(character);
            continue;
        }
        if (character == u'\\' || special.contains(character))
            result += u'\\';
        result += character;
    }
    return result;
}

/// Appends the character that the escape after a backslash at position stands for.
///
/// @return the position after the escape.
qsizetype appendUnescaped(QStringView text, qsizetype position, QString& result)
{
    const QChar kind = text.at(position + 1);
    bool isNumber = false;
    switch (kind.unicode()) {
    case 'n':
        result += u'\n';
        break;
    case 'r':
        result += u'\r';
        break;
    case 't':
        result += u'\t';
        break;
    case 'u': {
        const ushort unit = text.mid(position + 2, kHexDigits).toUShort(&isNumber, 16);
        result += isNumber ? QChar(unit) : kind;
        break;
    }
    default:
        result += kind;
    }
    return position + 2 + (isNumber ? kHexDigits : 0);
}

QString unescaped(QStringView text)
{
    QString result;
    for (qsizetype position = 0; position < text.size();) {
        if (text.at(position) == u'\\' && position + 1 < text.size())
            position = appendUnescaped(text, position, result);
        else
            result += text.at(position++);
    }
    return result;
}

/// The position of the first mark in text that no backslash stands before, -1 when there is none.
qsizetype unescapedIndexOf(QStringView text, QChar mark, qsizetype from = 0)
{
    for (qsizetype position = from; position < text.size(); ++position) {
        if (text.at(position) == mark)
            return position;
        if (text.at(position) == u'\\')
            ++position;
    }
    return -1;
}

QVariant parsedValue(QStringView text)
{
    if (text == QLatin1String("true"))
        return true;
    if (text == QLatin1String("false"))
        return false;
    if (!text.startsWith(u'"'))
        return text.toString();
    const qsizetype end = unescapedIndexOf(text, u'"', 1);
    return unescaped(end < 0 ? text.mid(1) : text.mid(1, end - 1));
}

/// "[group]" to "group/"; what has no closing bracket is taken to the end of the line.
QString parsedGroup(QStringView line)
{
    const qsizetype end = unescapedIndexOf(line, u']');
    const QString group = unescaped(end < 0 ? line.mid(1) : line.mid(1, end - 1));
    return group.isEmpty() ? QString() : group + u'/';
}

void readLine(QStringView line, QString& group, QSettings::SettingsMap& values)
{
    if (line.isEmpty() || line.startsWith(u';') || line.startsWith(u'#'))
        return;
    if (line.startsWith(u'[')) {
        group = parsedGroup(line);
        return;
    }
    const qsizetype separator = unescapedIndexOf(line, u'=');
    if (separator <= 0)
        return;
    const QString key = unescaped(line.left(separator).trimmed());
    values.insert(group + key, parsedValue(line.mid(separator + 1).trimmed()));
}

QString writtenValue(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    return u'"' + escaped(value.toString(), u"\"") + u'"';
}

QString writtenEntry(QStringView key, const QVariant& value)
{
    // Blanks at the ends of a key are taken for layout when it is read.
    const QString name = escaped(key, u"=[;#\"").replace(u' ', QLatin1String("\\u0020"));
    return name + u'=' + writtenValue(value) + u'\n';
}

/// The entries without a group; they come first, since nothing ends a group but the next one.
QString entriesWithoutGroup(const QSettings::SettingsMap& values)
{
    QString text;
    for (auto entry = values.cbegin(); entry != values.cend(); ++entry) {
        if (!entry.key().contains(u'/'))
            text += writtenEntry(entry.key(), entry.value());
    }
    return text;
}

QString entriesInGroups(const QSettings::SettingsMap& values)
{
    QString text;
    QString currentGroup;
    for (auto entry = values.cbegin(); entry != values.cend(); ++entry) {
        const qsizetype slash = entry.key().indexOf(u'/');
        if (slash < 0)
            continue;
        const QString group = entry.key().left(slash);
        if (group != currentGroup)
            text += QLatin1String(text.isEmpty() ? "[" : "\n[") + escaped(group, u"]") + QLatin1String("]\n");
        currentGroup = group;
        text += writtenEntry(QStringView(entry.key()).mid(slash + 1), entry.value());
    }
    return text;
}

} // namespace

bool read(QIODevice& device, QSettings::SettingsMap& values)
{
    const QByteArray bytes = device.read(kMaximumSize + 1);
    if (bytes.size() > kMaximumSize || bytes.contains('\0'))
        return false;
    const QString text = QString::fromUtf8(bytes);
    QString group;
    for (const QStringView line : QStringView(text).split(u'\n'))
        readLine(line.trimmed(), group, values);
    return true;
}

bool write(QIODevice& device, const QSettings::SettingsMap& values)
{
    const QByteArray bytes = (entriesWithoutGroup(values) + entriesInGroups(values)).toUtf8();
    return device.write(bytes) == bytes.size();
}

} // namespace settingsfile
