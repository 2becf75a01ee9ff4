#include "files/filerecordtext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

/// Written as it is between quotes. Lone surrogates, which are not, need a look at their neighbours.
bool isPlain(QChar c)
{
    return c.unicode() >= 0x20 && c != u'"' && c != u'\\' && !c.isSurrogate();
}

void appendString(QByteArray& text, const QString& string)
{
    if (std::all_of(string.begin(), string.end(), isPlain)) {
        text.append('"').append(string.toUtf8()).append('"');
        return;
    }
    const QByteArray inBrackets = QJsonDocument(QJsonArray{string}).toJson(QJsonDocument::Compact);
    text.append(inBrackets.mid(1, inBrackets.size() - 2));
}

bool isString(const QVariant& value)
{
    return value.metaType().id() == QMetaType::QString;
}

void appendStrings(QByteArray& text, const QVariantMap& properties)
{
    text.append('{');
    const char* separator = "\n            ";
    for (auto property = properties.begin(); property != properties.end(); ++property) {
        text.append(separator);
        appendString(text, property.key());
        text.append(": ");
        appendString(text, property.value().toString());
        separator = ",\n            ";
    }
    text.append("\n        }");
}

void appendProperties(QByteArray& text, const QVariantMap& properties)
{
    if (std::all_of(properties.begin(), properties.end(), isString)) {
        appendStrings(text, properties);
        return;
    }
    // Anything else is the toolkit's to write. A line break between quotes is never a bare one.
    const QByteArray object = QJsonDocument(QJsonObject::fromVariantMap(properties)).toJson(QJsonDocument::Indented);
    text.append(object.trimmed().replace("\n", "\n        "));
}

} // namespace

QByteArray toJsonText(const QList<FileRecord>& records)
{
    constexpr qsizetype kUsualBytes = 240;
    QByteArray text;
    text.reserve(records.size() * kUsualBytes);
    text.append('[');
    const char* separator = "\n    {\n        \"filepath\": ";
    for (const FileRecord& record : records) {
        text.append(separator);
        appendString(text, record.filepath);
        text.append(",\n        \"properties\": ");
        appendProperties(text, record.properties);
        text.append("\n    }");
        separator = ",\n    {\n        \"filepath\": ";
    }
    return text.append("\n]\n");
}
