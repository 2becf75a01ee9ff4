// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>
#include <QVariantMap>

/// What is being done to a recording.
enum class FileProgress
{
    None,
    BeingRecorded,
    BeingFinished,
};

/// What a row shows of a file besides its name, in the language of QLocale(). Empty where it is not known.
struct FileRowTexts
{
    Q_DECLARE_TR_FUNCTIONS(FileRowTexts)

public:
    static FileRowTexts of(const QVariantMap& properties, FileProgress progress);

    /// For columns: about the longest of their kind.
    static FileRowTexts longest();

    /// All of it in one line, for assistive technology.
    QString description() const;

    QString date;
    QString size;
    QString length;
    /// What is the matter with a recording, in a word, and in a sentence.
    QString state;
    QString explanation;

private:
    void setFault(const QVariantMap& properties);
};
