// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>
#include <QTranslator>

/// Answers Qt's translation requests from one text file per language, the resource ":/locales/<code>.ini" with lines of
/// the form
///
///     Start Recording = "Aufnahme starten"
///
/// The key is the English text as the program passes it; UTF-8, CR LF, no sections. Qt's INI reader takes a "%" in a
/// key for the start of a hexadecimal escape: write it as "%25".
///
/// Main thread. To change the language, load the new one, remove the translator from the application and install it
/// again, which announces the change to every window.
class SCTranslator : public QTranslator
{
    Q_OBJECT

public:
    explicit SCTranslator(QObject* parent = nullptr);

    /// Replaces the whole table with that of a language code such as "en_US".
    ///
    /// @return false, with the table as it was, when there is no file for the code or the INI reader finds a fault in
    /// it.
    bool loadLanguage(const QString& code);

    /// sourceText itself when the table does not hold it. Context, disambiguation and plural count are ignored.
    QString translate(const char* context, const char* sourceText, const char* disambiguation = nullptr,
                      int n = -1) const override;

    /// Qt announces a language change only for a translator that is not empty.
    bool isEmpty() const override;

private:
    QHash<QString, QString> m_translations;
};
