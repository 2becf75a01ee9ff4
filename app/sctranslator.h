// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>
#include <QTranslator>

/// Translates by one text file per language, ":/locales/<code>.ini": UTF-8, CR LF, no sections, lines of the form
///
///     Start Recording = "Aufnahme starten"
///
/// Qt's INI reader takes "%" in a key for an escape: write "%25". To change the language, load it, remove the
/// translator from the application and install it again, which notifies every window. Main thread.
class SCTranslator : public QTranslator
{
    Q_OBJECT

public:
    explicit SCTranslator(QObject* parent = nullptr);

    /// Of a language code such as "en_US". Numbers and dates that are shown follow (QLocale()): as the user's system
    /// has them where it speaks that language.
    /// @return false, and nothing changed, without a readable file
    bool loadLanguage(const QString& code);

    /// sourceText itself when the table does not hold it; the rest is ignored.
    QString translate(const char* context, const char* sourceText, const char* disambiguation = nullptr,
                      int n = -1) const override;

    /// Qt reports a language change only for a translator that is not empty.
    bool isEmpty() const override;

private:
    QHash<QString, QString> m_translations;
};
