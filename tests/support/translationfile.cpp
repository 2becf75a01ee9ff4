// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/translationfile.h"

#include <QFile>
#include <QRegularExpression>

#include <utility>

namespace translationfile {

QByteArray bytes(const QString& code)
{
    QFile file(QStringLiteral(":/locales/%1.ini").arg(code));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<Entry> entries(const QString& code)
{
    static const QRegularExpression form(QStringLiteral("^(.+?) = \"([^\"]*)\" ?$"));
    QList<Entry> entries;
    const QStringList lines = QString::fromUtf8(bytes(code)).split(QStringLiteral("\r\n"));
    // What follows the last line's end is no line.
    for (const QString& line : lines.first(lines.size() - 1)) {
        const QRegularExpressionMatch match = form.match(line);
        entries.append(
            {match.captured(1).replace(QLatin1String("%0A"), QLatin1String("\n")).replace(QLatin1String("%25"), "%"),
             match.captured(2).replace(QLatin1String("\\n"), QLatin1String("\n"))});
    }
    return entries;
}

QStringList keys(const QString& code)
{
    QStringList keys;
    for (const Entry& entry : entries(code))
        keys.append(entry.key);
    return keys;
}

} // namespace translationfile

QString ListingTranslator::translate(const char* context, const char* text, const char* /*disambiguation*/,
                                     int /*count*/) const
{
    m_asked.append({QString::fromUtf8(context), QString::fromUtf8(text)});
    return {};
}

QSet<QString> ListingTranslator::ownTexts() const
{
    QSet<QString> texts;
    for (const Asked& asked : std::as_const(m_asked)) {
        if (!asked.context.startsWith(u'Q'))
            texts.insert(asked.text);
    }
    return texts;
}
