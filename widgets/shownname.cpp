// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/shownname.h"

#include <QString>

namespace {

/// Unicode's marks, embeddings, overrides and isolates.
bool changesDirection(QChar character)
{
    const char16_t code = character.unicode();
    return code == u'\u061c' || code == u'\u200e' || code == u'\u200f' || (code >= u'\u202a' && code <= u'\u202e') ||
           (code >= u'\u2066' && code <= u'\u2069');
}

} // namespace

QString shownName(const QString& text)
{
    QString shown;
    shown.reserve(text.size());
    for (const QChar character : text) {
        if (changesDirection(character))
            shown += QStringLiteral("[U+%1]").arg(uint(character.unicode()), 4, 16, QLatin1Char('0')).toUpper();
        else
            shown += character;
    }
    return shown;
}
