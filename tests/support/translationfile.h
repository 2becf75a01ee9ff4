// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>
#include <QTranslator>

/// A compiled-in translation file, read line by line and not through the program's reader.
namespace translationfile {

struct Entry
{
    QString key;
    QString value;
};

/// As it lies in the resources; empty where there is none of that code.
QByteArray bytes(const QString& code);

/// Every line's key and value with their escapes resolved, in the order of the file. A line of another form gives an
/// entry without a key.
QList<Entry> entries(const QString& code);

QStringList keys(const QString& code);

} // namespace translationfile

/// Leaves every text as it is, and notes which ones are asked for.
class ListingTranslator : public QTranslator
{
public:
    struct Asked
    {
        QString context;
        QString text;
        bool operator==(const Asked&) const = default;
    };

    QString translate(const char* context, const char* text, const char* disambiguation, int count) const override;
    bool isEmpty() const override { return false; }

    /// The texts of those contexts that are the program's own classes, not Qt's.
    QSet<QString> ownTexts() const;

private:
    mutable QList<Asked> m_asked;
};
