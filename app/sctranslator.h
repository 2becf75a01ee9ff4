#pragma once

#include <QHash>
#include <QString>
#include <QTranslator>

/// Answers the toolkit's translation requests from one small text file per language, the resource
/// ":/locales/<code>.ini" with lines of the form
///
///     Start Recording = "Aufnahme starten"
///
/// The key is the English text as the program passes it; UTF-8, CR LF, no sections. The file goes through the toolkit's
/// INI reader, which takes a "%" in a key for the start of a hexadecimal escape: write it as "%25" there.
///
/// Used on the main thread only. To change the language, load the new one, take the translator out of the application
/// and install it again: installing tells every window that the language changed.
class SCTranslator : public QTranslator
{
    Q_OBJECT

public:
    explicit SCTranslator(QObject* parent = nullptr);

    /// Replaces the whole table with the one of a language code such as "en_US".
    ///
    /// @return false, with the path in the debug output and the table as it was, when there is no file for the code or
    ///         the INI reader finds a fault in it.
    bool loadLanguage(const QString& code);

    /// The translation of sourceText, or sourceText itself when the table does not hold it. One text has one
    /// translation everywhere: context, disambiguation and plural count are ignored.
    QString translate(const char* context, const char* sourceText, const char* disambiguation = nullptr,
                      int n = -1) const override;

    /// Whether the table is empty. The toolkit announces a language change only for a translator that is not.
    bool isEmpty() const override;

private:
    QHash<QString, QString> m_translations;
};
