#include "files/filerecordtext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

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

/// Goes through a text of toJsonText().
class Reader
{
public:
    explicit Reader(QByteArrayView text) : m_rest(text) {}

    bool atEnd() const { return m_rest.isEmpty(); }

    /// Goes past these characters, if they are next.
    bool skip(QByteArrayView expected)
    {
        const bool next = m_rest.startsWith(expected);
        if (next)
            m_rest = m_rest.sliced(expected.size());
        return next;
    }

    /// A string up to its closing quote; false where it has escapes or is none.
    bool read(QString& string)
    {
        const auto end = std::find_if(m_rest.begin(), m_rest.end(), [](char c) {
            return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
        });
        if (end == m_rest.end() || *end != '"')
            return false;
        const qsizetype length = end - m_rest.begin();
        string = QString::fromUtf8(m_rest.first(length));
        m_rest = m_rest.sliced(length + 1);
        return true;
    }

private:
    QByteArrayView m_rest;
};

bool readProperties(Reader& reader, QVariantMap& properties)
{
    if (!reader.skip("{"))
        return false;
    while (reader.skip(properties.isEmpty() ? "\n            \"" : ",\n            \"")) {
        QString key;
        QString value;
        // A key that comes twice would be the last one's to tell; that is rare enough not to be known here.
        if (!reader.read(key) || !reader.skip(": \"") || !reader.read(value) || properties.contains(key))
            return false;
        properties.insert(key, value);
    }
    return reader.skip("\n        }");
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

std::optional<QList<FileRecord>> fromJsonText(const QByteArray& text)
{
    if (!text.isValidUtf8())
        return {};
    QList<FileRecord> records;
    Reader reader(text);
    if (!reader.skip("["))
        return {};
    while (
        reader.skip(records.isEmpty() ? "\n    {\n        \"filepath\": \"" : ",\n    {\n        \"filepath\": \"")) {
        FileRecord record;
        if (!reader.read(record.filepath) || !reader.skip(",\n        \"properties\": ") ||
            !readProperties(reader, record.properties) || !reader.skip("\n    }"))
            return {};
        records.append(std::move(record));
    }
    if (!reader.skip("\n]\n") || !reader.atEnd())
        return {};
    return records;
}
